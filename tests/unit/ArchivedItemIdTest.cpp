// The item ID under which the server archives an item: its branches below
// the root and its own name joined with ".".
#include <gtest/gtest.h>

#include "addressspace/ItemId.h"
#include "addressspace/ItemRows.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "common/Variant.h"

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;

namespace {

ItemPtr NewItem(const wchar_t* name, DWORD rights = COPCItem::kReadable, DWORD scanRate = 1000, bool archive = false)
{
    ItemPtr item = ItemPtr::Make(rights, scanRate, archive, WORD(192), VARTYPE(VT_R8), nullptr);
    item->Rename(name);
    return item;
}

} // namespace

TEST(ArchivedItemId, JoinsTheBranchesBelowTheRootAndTheItemNameWithDots)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    BranchPtr plant = BranchPtr::Make(L"Plant");
    BranchPtr line = BranchPtr::Make(L"Line1");
    space->RootBranch()->AddBranch(plant);
    plant->AddBranch(line);
    ItemPtr speed = NewItem(L"Speed");
    line->AddItem(speed);
    EXPECT_EQ(ArchivedItemId(*speed), L"Plant.Line1.Speed");
}

TEST(ArchivedItemId, ItemOfTheRootIsItsNameAlone)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    ItemPtr beat = NewItem(L"Heartbeat");
    space->RootBranch()->AddItem(beat);
    EXPECT_EQ(ArchivedItemId(*beat), L"Heartbeat");
}

TEST(ArchivedItemId, NamedRootHasNoPartInTheId)
{
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    space->RootBranch()->Rename(L"Server");
    BranchPtr area = BranchPtr::Make(L"Area");
    space->RootBranch()->AddBranch(area);
    ItemPtr item = NewItem(L"Level");
    area->AddItem(item);
    EXPECT_EQ(ArchivedItemId(*item), L"Area.Level");
}

TEST(ArchivedItemId, ItemOutsideAnyBranchIsItsName)
{
    ItemPtr loose = NewItem(L"Loose");
    EXPECT_EQ(ArchivedItemId(*loose), L"Loose");
}

// The editor list's six column texts of an item.
TEST(EditorItemRows, CellsShowNameTypeValueAccessScanRateAndArchive)
{
    ItemPtr item = NewItem(L"Speed", COPCItem::kReadable | COPCItem::kWritable, 250, true);
    item->SetValue(CL::CVariant::R8(12.5));
    const auto cells = CItemRows::Cells(*item);
    EXPECT_EQ(cells[CItemRows::kName], L"Speed");
    EXPECT_EQ(cells[CItemRows::kDataType], L"VT_R8");
    EXPECT_EQ(cells[CItemRows::kCurrentValue], L"12.5");
    EXPECT_EQ(cells[CItemRows::kAccess], L"RW");
    EXPECT_EQ(cells[CItemRows::kScanRate], L"250");
    EXPECT_EQ(cells[CItemRows::kArchive], L"X");
}

TEST(EditorItemRows, AccessIsRWOrEmptyAndArchiveEmptyWhenNotArchived)
{
    EXPECT_EQ(CItemRows::Cells(*NewItem(L"a", COPCItem::kReadable))[CItemRows::kAccess], L"R");
    EXPECT_EQ(CItemRows::Cells(*NewItem(L"b", COPCItem::kWritable))[CItemRows::kAccess], L"W");
    EXPECT_EQ(CItemRows::Cells(*NewItem(L"c", 0))[CItemRows::kAccess], L"");
    EXPECT_EQ(CItemRows::Cells(*NewItem(L"d", 0, 1000, false))[CItemRows::kArchive], L"");
}

TEST(EditorItemRows, CurrentValueIsCutTo2048Characters)
{
    ItemPtr item = NewItem(L"Long");
    item->SetCanonicalDataType(VT_BSTR);
    item->SetValue(CL::CVariant(std::wstring(3000, L'x')));
    EXPECT_EQ(CItemRows::Cells(*item)[CItemRows::kCurrentValue], std::wstring(2048, L'x'));
}

TEST(EditorItemRows, ColumnsAreTheSixTitlesInOrder)
{
    std::vector<std::wstring> titles;
    for (const auto& column : CItemRows::Columns())
        titles.push_back(column.title);
    EXPECT_EQ(titles, (std::vector<std::wstring>{L"Name", L"Data type", L"Current Value", L"Access", L"Scan Rate",
                                                 L"Archive"}));
}

TEST(EditorItemRows, ScanRateSortsAsANumberAndNamesIgnoreCase)
{
    CItemRows rows;
    rows.Assign({NewItem(L"beta", 1, 1000), NewItem(L"Alpha", 1, 250)});
    EXPECT_TRUE(rows.Less(1, 0, CItemRows::kScanRate)) << "250 before 1000";
    EXPECT_FALSE(rows.Less(0, 1, CItemRows::kScanRate));
    EXPECT_TRUE(rows.Less(1, 0, CItemRows::kName)) << "Alpha before beta";
}
