// Finding branches and items by part of a name or path, or by a pattern.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "addressspace/AddressSpaceSearch.h"

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;
using Names = std::vector<std::wstring>;

namespace {

class AddressSpaceSearch : public testing::Test {
protected:
    void SetUp() override
    {
        const BranchPtr plant = Branch(*space->RootBranch(), L"Plant");
        const BranchPtr line1 = Branch(*plant, L"Line1");
        Item(*line1, L"Speed");
        Item(*line1, L"Setpoint");
        Item(*line1, L"Motor7");
        Branch(*plant, L"Line2");
        Item(*space->RootBranch(), L"Heartbeat");
    }
    static BranchPtr Branch(COPCServerAddressSpaceBranch& parent, const wchar_t* name)
    {
        BranchPtr branch = BranchPtr::Make(name);
        parent.AddBranch(branch);
        return branch;
    }
    static void Item(COPCServerAddressSpaceBranch& branch, const wchar_t* name)
    {
        ItemPtr item = ItemPtr::Make(COPCItem::kReadable, 1000, false, WORD(192), VT_I4, nullptr);
        item->Rename(name);
        branch.AddItem(item);
    }
    Names Paths(const std::wstring& query)
    {
        const CAddressSpaceSearch search(*space);
        Names paths;
        for (size_t index : search.Find(query))
            paths.push_back(search.At(index).path);
        return paths;
    }

    CL::CSmartPtr<COPCServerAddressSpace> space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
};

} // namespace

TEST_F(AddressSpaceSearch, EveryBranchAndItemIsTakenInTreeOrder)
{
    const CAddressSpaceSearch search(*space);
    Names paths;
    for (size_t i = 0; i < search.Size(); ++i)
        paths.push_back(search.At(i).path);
    EXPECT_EQ(paths, (Names{L"Heartbeat", L"Plant", L"Plant.Line1", L"Plant.Line1.Motor7", L"Plant.Line1.Setpoint",
                            L"Plant.Line1.Speed", L"Plant.Line2"}));
    EXPECT_FALSE(search.At(1).item) << "a branch has no item";
    EXPECT_EQ(search.At(3).branch->Name(), L"Line1") << "an item's branch";
}

TEST_F(AddressSpaceSearch, PartOfANameOrPathMatchesIgnoringCase)
{
    EXPECT_EQ(Paths(L"sp"), (Names{L"Plant.Line1.Speed"}));
    EXPECT_EQ(Paths(L"LINE1.S"), (Names{L"Plant.Line1.Setpoint", L"Plant.Line1.Speed"}));
    EXPECT_EQ(Paths(L"line"), (Names{L"Plant.Line1", L"Plant.Line1.Motor7", L"Plant.Line1.Setpoint",
                                     L"Plant.Line1.Speed", L"Plant.Line2"}));
    EXPECT_TRUE(Paths(L"").empty());
    EXPECT_TRUE(Paths(L"nothing").empty());
}

TEST_F(AddressSpaceSearch, APatternMatchesAWholeNameOrAWholePath)
{
    EXPECT_EQ(Paths(L"s*"), (Names{L"Plant.Line1.Setpoint", L"Plant.Line1.Speed"}));
    EXPECT_EQ(Paths(L"motor?"), (Names{L"Plant.Line1.Motor7"}));
    EXPECT_EQ(Paths(L"plant.*.speed"), (Names{L"Plant.Line1.Speed"}));
    EXPECT_EQ(Paths(L"Line?"), (Names{L"Plant.Line1", L"Plant.Line2"}));
    EXPECT_TRUE(Paths(L"peed*").empty()) << "a pattern is not a part";
}

TEST_F(AddressSpaceSearch, TheLimitStopsAfterTheFirstMatches)
{
    const CAddressSpaceSearch search(*space);
    EXPECT_EQ(search.Find(L"l", 2).size(), 2u);
}

TEST_F(AddressSpaceSearch, WildcardsMatchRunsAndSingleCharacters)
{
    EXPECT_TRUE(CAddressSpaceSearch::Matches(L"*", L""));
    EXPECT_TRUE(CAddressSpaceSearch::Matches(L"a*b*c", L"axxbyyc"));
    EXPECT_FALSE(CAddressSpaceSearch::Matches(L"a*b*c", L"axxbyy"));
    EXPECT_TRUE(CAddressSpaceSearch::Matches(L"a?c", L"abc"));
    EXPECT_FALSE(CAddressSpaceSearch::Matches(L"a?c", L"ac"));
    EXPECT_TRUE(CAddressSpaceSearch::Matches(L"*ab", L"aab"));
}
