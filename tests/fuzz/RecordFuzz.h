#pragma once
// A historian row's stored run under mutation, read as the historian reads a
// row: the byte array with the row's used size and value count attached to a
// value cache, then every record decoded into values, times and qualities.
// Each row either reads or fails with CException carrying a code of the
// stored format (the historian then logs the row and goes on with the next).
#include <string>
#include <vector>

#include "FuzzTarget.h"

namespace fuzz {

class CRecordFuzz final : public IFuzzTarget {
public:
    CRecordFuzz();

    const char* Name() const override { return "historian row"; }
    const std::string& CurrentInput() const override { return m_input; }
    void RunOne(CFuzzRandom& random, LoaderCounts& counts) override;

private:
    void Mutate(CFuzzRandom& random, uint32_t& usedSize, uint32_t& valueCount);

    std::vector<std::string> m_bases;
    std::string m_input;
};

} // namespace fuzz
