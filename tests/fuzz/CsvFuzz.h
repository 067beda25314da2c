#pragma once
// The CSV import under mutation, through the import's own reading and
// applying: a file is refused as a whole with CException (not UTF-8, no
// header, no Path column, a column named twice), or read into a plan whose
// bad lines are listed with their line numbers; applying the plan adds or
// updates exactly the plan's items and never throws.
#include <string>

#include "FuzzTarget.h"
#include "TextMutator.h"

namespace fuzz {

class CCsvFuzz final : public IFuzzTarget {
public:
    // base: the exported CSV of the sample address space.
    explicit CCsvFuzz(std::string base);

    const char* Name() const override { return "CSV import"; }
    const std::string& CurrentInput() const override { return m_input; }
    void RunOne(CFuzzRandom& random, LoaderCounts& counts) override;

private:
    std::string m_base;
    std::string m_input;
    CTextMutator m_mutator;
};

} // namespace fuzz
