// The explorer's filter of item IDs: contained text or a '*'/'?' pattern,
// letter case ignored, and the explorer rows it narrows (with the time a
// keystroke may take over 10,000 items).
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "common/Text.h"
#include "historian/DBExplorerRows.h"
#include "historian/ItemFilter.h"

namespace {

bool Passes(const wchar_t* filter, const wchar_t* id)
{
    return CL::CItemFilter(filter).Matches(CL::CItemFilter::FoldCase(id));
}

std::vector<CL::CHistorianSummaryEntry> Items(int count)
{
    std::vector<CL::CHistorianSummaryEntry> items;
    for (int i = 0; i < count; ++i)
        items.push_back({CL::Format(L"Plant.Area%02d.Unit%04d.Value", i % 40, i), 45000.0 + i, 45001.0 + i, i + 1});
    return items;
}

} // namespace

TEST(ItemFilter, EmptyTextKeepsEveryId)
{
    EXPECT_TRUE(Passes(L"", L"anything"));
    EXPECT_TRUE(Passes(L"", L""));
}

TEST(ItemFilter, PlainTextKeepsIdsThatContainItIgnoringCase)
{
    EXPECT_TRUE(Passes(L"tank", L"Plant.TANK1.Level"));
    EXPECT_TRUE(Passes(L"Level", L"Plant.Tank1.level"));
    EXPECT_FALSE(Passes(L"tank2", L"Plant.Tank1.Level"));
    EXPECT_TRUE(Passes(L"beh\u00C4lter", L"Anlage.Beh\u00E4lter-1"));
}

TEST(ItemFilter, StarAndQuestionMarkMakeAPatternForTheWholeId)
{
    EXPECT_TRUE(Passes(L"plant.*.level", L"Plant.Tank1.Level"));
    EXPECT_FALSE(Passes(L"plant.*", L"XPlant.Tank1"));   // a pattern is anchored at both ends
    EXPECT_TRUE(Passes(L"*tank?.*", L"Plant.Tank7.Temp"));
    EXPECT_FALSE(Passes(L"*tank?.*", L"Plant.Tank17.Temp"));
    EXPECT_TRUE(Passes(L"*", L""));
    EXPECT_TRUE(Passes(L"a*b*c", L"aXXbYYbc"));
    EXPECT_FALSE(Passes(L"a*b*c", L"aXXbYYbd"));
    EXPECT_TRUE(CL::CItemFilter(L"a?").IsPattern());
    EXPECT_FALSE(CL::CItemFilter(L"a.b").IsPattern());
}

TEST(DBExplorerRows, FilterKeepsTheMatchingRowsInSummaryOrderAndCountsAll)
{
    CL::CDBExplorerRows rows;
    rows.Assign({{L"b.Temp", 45000.0, 45001.0, 3}, {L"a.TEMP", 45000.0, 45001.0, 9}, {L"c.Level", 45000.0, 45001.0, 1}});
    rows.SetFilter(L"temp");
    ASSERT_EQ(rows.RowCount(), 2u);
    EXPECT_EQ(rows.TotalCount(), 3u);
    EXPECT_EQ(rows.ItemId(0), L"b.Temp");
    EXPECT_EQ(rows.ItemId(1), L"a.TEMP");
    EXPECT_EQ(rows.CellText(1, CL::CDBExplorerRows::kCount), L"9");
    EXPECT_TRUE(rows.Less(1, 0, CL::CDBExplorerRows::kItemId));
    rows.SetFilter(L"");
    EXPECT_EQ(rows.RowCount(), 3u);
}

TEST(DBExplorerRows, AFilterStaysWhenTheRowsAreReplaced)
{
    CL::CDBExplorerRows rows;
    rows.SetFilter(L"*.level");
    rows.Assign({{L"b.Temp", 45000.0, 45001.0, 3}, {L"c.Level", 45000.0, 45001.0, 1}});
    ASSERT_EQ(rows.RowCount(), 1u);
    EXPECT_EQ(rows.ItemId(0), L"c.Level");
}

TEST(DBExplorerRows, FilteringTenThousandItemsTakesAtMostTwentyMillisecondsPerKeystroke)
{
    CL::CDBExplorerRows rows;
    rows.Assign(Items(10000));
    // Typing "unit00" and then a pattern, one keystroke at a time.
    const std::vector<std::wstring> typed = {L"u", L"un", L"uni", L"unit", L"unit0", L"unit00", L"*area1?.*7.value"};
    std::chrono::nanoseconds slowest{0};
    for (const std::wstring& text : typed) {
        const auto start = std::chrono::steady_clock::now();
        rows.SetFilter(text);
        slowest = std::max(slowest, std::chrono::steady_clock::now() - start);
    }
    EXPECT_EQ(rows.RowCount(), 250u);   // area 17 (the only one of 10..19 with units ending in 7)
    EXPECT_LE(std::chrono::duration_cast<std::chrono::milliseconds>(slowest).count(), 20);
}
