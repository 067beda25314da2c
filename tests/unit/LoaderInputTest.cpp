// Inputs that the mutation campaign (tests/fuzz) found mishandled, kept as
// edge cases of their loaders.
#include <gtest/gtest.h>

#include <string>

#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

namespace {

const std::string kHeader = "Path,Data type,Value\r\n";

} // namespace

// A NUL inside a name would reach the model as a shorter (or empty) name:
// the line is reported and the others are imported.
TEST(CsvImportInput, PathWithANulCharacterIsRejectedWithItsLine)
{
    const std::string bytes = kHeader + std::string("Plant.\0Speed,VT_I4,1\r\n", 22) + "Plant.Count,VT_I4,2\r\n";
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv(bytes);
    ASSERT_EQ(plan.rejected.size(), 1u);
    EXPECT_EQ(plan.rejected[0].line, 2u);
    EXPECT_EQ(plan.rejected[0].reason, L"the path holds a NUL character");
    ASSERT_EQ(plan.items.size(), 1u);
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    const CL::CsvImportResult result = CL::ApplyCsvImport(plan, *space, false);
    EXPECT_EQ(result.added, 1u);
    EXPECT_TRUE(space->RootBranch()->FindBranch(L"Plant")->FindItem(L"Count"));
}
