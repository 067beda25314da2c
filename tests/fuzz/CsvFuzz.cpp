#include "CsvFuzz.h"

#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

namespace fuzz {


namespace {

const std::vector<std::string> kCsvTokens = {
    ",", "\"", "\"\"", "\r\n", "\n", "\r", "\xEF\xBB\xBF", "VT_I4", "VT_R8 | VT_ARRAY", "VT_BSTR | VT_ARRAY",
    "VT_BOGUS", "VT_EMPTY", "VT_VARIANT", "\\.", "\\\\", "\\x", "..", ".", "Path", "path", "Data type",
    "Scan rate", "Value", "Readable", "true", "false", "2", "-1", "4294967296", "\"a\nb\"", "\"x\"y\""};

size_t CountItems(const COPCServerAddressSpaceBranch& branch)
{
    size_t count = branch.ItemCount();
    for (const auto& child : branch.Branches())
        count += CountItems(*child);
    return count;
}

} // namespace

CCsvFuzz::CCsvFuzz(std::string base) : m_base(std::move(base)), m_mutator(kCsvTokens) {}

void CCsvFuzz::RunOne(CFuzzRandom& random, LoaderCounts& counts)
{
    m_input = m_mutator.Mutate(m_base, random);
    CL::CsvImportPlan plan;
    try {
        plan = CL::ReadAddressSpaceCsv(m_input);
    } catch (...) {
        const std::string kind = CaughtKind();
        ++counts.refused;
        ++counts.errors[kind];
        if (kind.rfind("CException ", 0) != 0)
            counts.Violation("refused with " + kind);
        return;
    }
    ++counts.loaded;
    for (const CL::CsvRejectedLine& line : plan.rejected)
        if (line.reason.empty())
            counts.Violation("a rejected line without a reason");
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    try {
        const CL::CsvImportResult result = CL::ApplyCsvImport(plan, *space, random.OneIn(2));
        if (CountItems(*space->RootBranch()) != result.added)
            counts.Violation("the import added another number of items than it reports");
        if (result.added + result.updated + result.leftAlone != plan.items.size())
            counts.Violation("the import did not account for every line of its plan");
    } catch (...) {
        counts.Violation("applying a read plan threw " + CaughtText());
    }
}

} // namespace fuzz
