#pragma once
// The workbook import under mutation, through the import's own reading and
// applying: either the archive's bytes are damaged (flips, cuts, splices of
// the zip itself) or one of its parts is mutated as text and the archive
// packed again. A file is refused as a whole with CException (no workbook,
// damaged, truncated, a zip bomb, malformed XML, no header with Path), or
// read into a plan whose rows not taken are listed with their reasons;
// applying the plan adds or updates exactly the plan's items and never
// throws.
#include <string>
#include <utility>
#include <vector>

#include "FuzzTarget.h"
#include "TextMutator.h"

namespace fuzz {

class CWorkbookFuzz final : public IFuzzTarget {
public:
    // folder: where the packed inputs are written.
    explicit CWorkbookFuzz(const std::wstring& folder);

    const char* Name() const override { return "Workbook import"; }
    const std::string& CurrentInput() const override { return m_input; }
    void RunOne(CFuzzRandom& random, LoaderCounts& counts) override;

private:
    std::string Packed(const std::vector<std::pair<std::string, std::string>>& parts) const;

    std::wstring m_file;
    std::string m_base;
    std::vector<std::pair<std::string, std::string>> m_parts;
    std::string m_input;
    CTextMutator m_xmlMutator;
    CTextMutator m_byteMutator;
};

} // namespace fuzz
