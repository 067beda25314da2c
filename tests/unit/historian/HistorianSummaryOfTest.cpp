// The historian's summary of some items only (the review of changes asks
// for the items a change concerns): listed IDs, every ID below a branch
// path, quotes and the LIKE wildcards inside names taken as they are.
#include <algorithm>

#include "HistorianFixture.h"
#include "common/historian/HistorianSummaryOf.h"

using namespace historian_test;

namespace {

using HistorianSummaryOf = HistorianDb;

std::vector<std::wstring> Ids(const std::vector<CL::CHistorianSummaryEntry>& summary)
{
    std::vector<std::wstring> ids;
    for (const auto& entry : summary)
        ids.push_back(entry.itemId);
    std::sort(ids.begin(), ids.end());
    return ids;
}

} // namespace

TEST_P(HistorianSummaryOf, ListedIdsAndEverythingBelowABranchPath)
{
    WriteRun(L"Plant.Line1.Speed", {1, 2, 3});
    WriteRun(L"Plant.Line1.Speed", {4});
    WriteRun(L"Plant.Line1.Sub.Flow", {1});
    WriteRun(L"Plant.Line10.Speed", {1});
    WriteRun(L"Plant.Line2.Level", {5, 6});
    WriteRun(L"Tank's.Level", {7});
    const auto summary = CL::ReadSummaryOf(m_historian, {L"Plant.Line2.Level", L"Tank's.Level", L"Missing"},
                                           {L"Plant.Line1"});
    EXPECT_EQ(Ids(summary), (std::vector<std::wstring>{L"Plant.Line1.Speed", L"Plant.Line1.Sub.Flow",
                                                        L"Plant.Line2.Level", L"Tank's.Level"}));
    for (const auto& entry : summary)
        if (entry.itemId == L"Plant.Line1.Speed") {
            EXPECT_EQ(entry.valueCount, 4);
            ExpectColumnTime(GetParam(), entry.timeFrom, At(1));
            ExpectColumnTime(GetParam(), entry.timeTo, At(4));
        }
}

TEST_P(HistorianSummaryOf, WildcardsInAPathAreTakenLiterally)
{
    WriteRun(L"A_B.x", {1});
    WriteRun(L"AxB.x", {1});
    WriteRun(L"C%D.y", {1});
    WriteRun(L"CzzD.y", {1});
    EXPECT_EQ(Ids(CL::ReadSummaryOf(m_historian, {}, {L"A_B", L"C%D"})),
              (std::vector<std::wstring>{L"A_B.x", L"C%D.y"}));
}

TEST_P(HistorianSummaryOf, NothingAskedQueriesNothingAndALongListReadsTheWholeSummary)
{
    WriteRun(L"a", {1});
    WriteRun(L"b", {1});
    EXPECT_TRUE(CL::ReadSummaryOf(m_historian, {}, {}).empty());
    std::vector<std::wstring> many(CL::kMaxSummaryNames + 1, L"zz");
    EXPECT_EQ(Ids(CL::ReadSummaryOf(m_historian, many, {})), (std::vector<std::wstring>{L"a", L"b"}));
}

INSTANTIATE_TEST_SUITE_P(, HistorianSummaryOf, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
