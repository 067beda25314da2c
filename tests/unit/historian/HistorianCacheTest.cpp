// Runs held in memory: storing them, the retention rules after each store,
// the destructor, and delivering them with a range read.
#include "HistorianFixture.h"

#include "config/Settings.h"
#include "support/ProcessState.h"

using namespace historian_test;
using CL::CHistorian;
using CL::CHistorianValues;

namespace {

using HistorianCache = HistorianDb;

void CacheAt(CHistorian& historian, const std::wstring& id, std::initializer_list<double> hours)
{
    for (double h : hours)
        historian.CacheValue(id, At(h), 192, CL::CVariant::R8(h));
}

struct RetentionCase {
    long keepLastValues;
    long keepLastMinutes;
};

void PrintTo(const RetentionCase& rules, std::ostream* out)
{
    *out << "keep-last-values " << rules.keepLastValues << ", keep-last-minutes " << rules.keepLastMinutes;
}

} // namespace

TEST_P(HistorianCache, SaveStoresTheRunAsOneRowWithItsWholeArray)
{
    CacheAt(m_historian, L"t", {1, 2, 3});
    m_historian.SaveCaches();
    EXPECT_EQ(m_statements, std::vector<std::wstring>{Sql().EmptyRowQuery()});
    const auto connection = m_db.Connect();
    const auto row = connection->Query(L"SELECT * FROM HistoricData");
    ASSERT_FALSE(row->IsEof());
    EXPECT_STREQ(row->Field(L"ItemID").bstrVal, L"t");
    ExpectColumnTime(GetParam(), row->Field(L"TimeFrom").dblVal, At(1));
    ExpectColumnTime(GetParam(), row->Field(L"TimeTo").dblVal, At(3));
    EXPECT_EQ(row->Field(L"ValCount").lVal, 3);
    EXPECT_EQ(row->Field(L"CacheUsedSize").lVal, 3 * 26);
    const CL::CVariant& values = row->Field(L"ItemValues");
    ASSERT_EQ(values.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(values.parray->rgsabound[0].cElements, CL::var_length_container::kMinimumCapacity)
        << "the capacity is stored too";
    row->MoveNext();
    EXPECT_TRUE(row->IsEof());

    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3}));
}

TEST_P(HistorianCache, SavedRunIsEmptiedAndTheNextRunStartsAfresh)
{
    CacheAt(m_historian, L"t", {1, 2});
    m_historian.SaveCaches();
    m_historian.SaveCaches();
    EXPECT_EQ(m_db.RowCount(), 1) << "an empty run is not stored";
    CacheAt(m_historian, L"t", {5});
    m_historian.SaveCaches();
    const auto summary = m_historian.ReadSummary();
    ASSERT_EQ(summary.size(), 1u);
    EXPECT_EQ(summary[0].valueCount, 3);
    CHistorianValues out;
    m_historian.ReadRange(L"t", true, At(4), false, At(100), 0, out);
    EXPECT_EQ(Hours(out), (std::vector<double>{5}));
}

TEST_P(HistorianCache, SaveWithNothingCachedOpensNoConnection)
{
    CHistorian historian;
    historian.Configure(L"Driver={No Such Driver}", CHistorian::kNoLimit, CHistorian::kNoLimit, 50);
    EXPECT_NO_THROW(historian.SaveCaches());
}

TEST_P(HistorianCache, SaveLogsItsTraceLineAtDebugLevel)
{
    const test::SettingsKeeper keepSettings;
    g_Settings.TraceLevel = 3;
    CacheAt(m_historian, L"t", {1});
    const test::LogCapture log;
    m_historian.SaveCaches();
    EXPECT_TRUE(log.Contains(3, "CItem::SaveCache [Historian, 443]")) << log.Dump();
}

TEST_P(HistorianCache, KeepLastValuesDeletesRunsOlderThanTheNewestThatHoldEnough)
{
    Configure(5, CHistorian::kNoLimit);
    WriteRun(L"t", {1, 2, 3});
    WriteRun(L"t", {4, 5, 6});
    WriteRun(L"t", {7, 8, 9});
    WriteRun(L"other", {1, 2, 3});
    CacheAt(m_historian, L"t", {10, 11, 12});
    m_historian.SaveCaches();
    EXPECT_EQ(m_statements, (std::vector<std::wstring>{Sql().EmptyRowQuery(), Sql().KeepLastValuesStatement(5, L"t")}));
    CHistorianValues out;
    m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out);
    EXPECT_EQ(Hours(out), (std::vector<double>{7, 8, 9, 10, 11, 12}))
        << "the newest runs holding fewer than 5 values stay, so a few more than 5 remain";
    EXPECT_EQ(m_db.RowCount(L"other"), 1);
}

TEST_P(HistorianCache, KeepLastMinutesDeletesRunsWhoseLastValueIsOlder)
{
    Configure(CHistorian::kNoLimit, 60);
    const double now = NowUtc();
    const double minute = 1.0 / 1440.0;
    m_writer->AppendRun(L"t", {{now - 180 * minute, 192, CL::CVariant::R8(1)}, {now - 90 * minute, 192, CL::CVariant::R8(2)}});
    m_writer->AppendRun(L"t", {{now - 70 * minute, 192, CL::CVariant::R8(3)}, {now - 30 * minute, 192, CL::CVariant::R8(4)}});
    m_writer->AppendRun(L"other", {{now - 180 * minute, 192, CL::CVariant::R8(9)}});
    m_historian.CacheValue(L"t", now, 192, CL::CVariant::R8(5));
    m_historian.SaveCaches();
    ASSERT_EQ(m_statements.size(), 2u);
    EXPECT_EQ(m_statements[1].substr(0, 41), L"\t\t\t\tDELETE FROM HistoricData \t\t\t\tWHERE Ti");
    CHistorianValues out;
    m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out);
    EXPECT_EQ(Hours(out), (std::vector<double>{3, 4, 5}));
    EXPECT_EQ(m_db.RowCount(L"other"), 1);
}

TEST_P(HistorianCache, CutOffIsNowLessTheMinutes)
{
    const double before = NowUtc();
    const double cutOff = CL::CHistorianItem::CutOffTime(60);
    const double after = NowUtc();
    EXPECT_GE(cutOff, before - 60.0 / 1440.0 - 1e-9);
    EXPECT_LE(cutOff, after - 60.0 / 1440.0 + 1e-9);
}

TEST_P(HistorianCache, BothRetentionRulesRunInOrder)
{
    Configure(1000, 600);
    CacheAt(m_historian, L"t", {1});
    m_historian.SaveCaches();
    ASSERT_EQ(m_statements.size(), 3u);
    EXPECT_EQ(m_statements[1], Sql().KeepLastValuesStatement(1000, L"t"));
    EXPECT_EQ(m_statements[2].substr(0, 29), L"\t\t\t\tDELETE FROM HistoricData ");
    EXPECT_EQ(m_db.RowCount(), 0) << "the run of 15 March 2023 is older than 600 minutes";
}

TEST_P(HistorianCache, ItemIdWithSingleQuoteMakesItsRetentionStatementFail)
{
    Configure(5, CHistorian::kNoLimit);
    CacheAt(m_historian, L"it's", {1});
    const test::LogCapture log;
    EXPECT_NO_THROW(m_historian.SaveCaches());
    EXPECT_EQ(m_db.RowCount(), 1) << "the row itself goes in as parameters";
    ASSERT_EQ(m_statements.size(), 2u);
    EXPECT_EQ(m_statements[1], Sql().KeepLastValuesStatement(5, L"it's"));
    EXPECT_TRUE(log.ContainsLike(1, "_com_error: ", " [Historian, 493]")) << log.Dump();
}

TEST_P(HistorianCache, FailedStoreIsLoggedAndKeepsTheValues)
{
    test::HistorianTestDb noTable(GetParam(), false);
    CHistorian historian;
    historian.Configure(noTable.ConnectionString(), CHistorian::kNoLimit, CHistorian::kNoLimit, 50);
    CacheAt(historian, L"t", {1, 2});
    const test::LogCapture log;
    EXPECT_NO_THROW(historian.SaveCaches());
    EXPECT_TRUE(log.ContainsLike(1, "_com_error: ", " [Historian, 477]")) << log.Dump();
    CHistorianValues out;
    historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out, true);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2})) << "the run is still in memory";
}

TEST_P(HistorianCache, DestructorSavesEveryCache)
{
    {
        CHistorian historian;
        historian.Configure(m_db.ConnectionString(), CHistorian::kNoLimit, CHistorian::kNoLimit, 50);
        CacheAt(historian, L"a", {1, 2});
        CacheAt(historian, L"b", {3});
    }
    EXPECT_EQ(m_db.RowCount(L"a"), 1);
    EXPECT_EQ(m_db.RowCount(L"b"), 1);
}

TEST_P(HistorianCache, MemoryRunIsDeliveredAfterTheRowsWithInclusiveUpperBound)
{
    WriteRun(L"Tank", {1, 2});
    CacheAt(m_historian, L"TANK", {3, 4, 5});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"tank", true, At(2), true, At(4), 0, out, true), S_OK)
        << "the item IDs compare case-insensitively";
    EXPECT_EQ(Hours(out), (std::vector<double>{3, 4}));
    EXPECT_EQ(m_historian.ReadRange(L"Tank", false, 0.0, false, 0.0, 0, out, false), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2})) << "without the flag the memory run stays out";
}

TEST_P(HistorianCache, MemoryRunBeforeTheLowerBoundIsSkippedWhole)
{
    CacheAt(m_historian, L"t", {1, 2});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", true, At(3), false, 0.0, 0, out, true), static_cast<HRESULT>(0x40041002));
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, true, At(0.5), 0, out, true), static_cast<HRESULT>(0x40041002));
}

TEST_P(HistorianCache, MemoryRunCountsTowardsTheMaximum)
{
    WriteRun(L"t", {1, 2});
    CacheAt(m_historian, L"t", {3, 4});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 3, out, true), static_cast<HRESULT>(0x40041003));
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3}));
}

INSTANTIATE_TEST_SUITE_P(, HistorianCache, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);

// Retention switched off (0, negative or 0x7FFFFFFF) executes no statement.
class HistorianRetention : public testing::TestWithParam<std::tuple<DbKind, RetentionCase>> {};

TEST_P(HistorianRetention, SwitchedOffRulesExecuteNoRetentionStatement)
{
    const auto [kind, rules] = GetParam();
    test::ComScope com;
    test::HistorianTestDb db(kind);
    std::vector<std::wstring> statements;
    CL::CHistoricDataWriter(db.ConnectionString()).AppendRun(L"t", ValuesAt({1, 2, 3}));
    {
        CHistorian historian;
        historian.Configure(db.ConnectionString(), rules.keepLastValues, rules.keepLastMinutes, 50);
        historian.SetStatementObserver([&](const std::wstring& sql) { statements.push_back(sql); });
        CacheAt(historian, L"t", {4});
        historian.SaveCaches();
    }
    EXPECT_EQ(statements, std::vector<std::wstring>{L"SELECT * FROM HistoricData WHERE 1=2"});
    EXPECT_EQ(db.RowCount(), 2);
}

std::string RetentionCaseName(const testing::TestParamInfo<std::tuple<DbKind, RetentionCase>>& info)
{
    const auto name = [](long v) {
        return v == 0x7FFFFFFF ? std::string("NoLimit") : v == 0 ? std::string("Zero") : std::string("Negative");
    };
    const DbKind kind = std::get<0>(info.param);
    const RetentionCase rules = std::get<1>(info.param);
    return test::DbKindName(kind) + "_Values" + name(rules.keepLastValues) + "_Minutes" + name(rules.keepLastMinutes);
}

INSTANTIATE_TEST_SUITE_P(, HistorianRetention,
                         testing::Combine(testing::Values(DbKind::Sqlite, DbKind::PostgreSql),
                                          testing::Values(RetentionCase{0x7FFFFFFF, 0x7FFFFFFF}, RetentionCase{0, 0},
                                                          RetentionCase{0, 0x7FFFFFFF}, RetentionCase{0x7FFFFFFF, 0},
                                                          RetentionCase{-1, -60})),
                         RetentionCaseName);

TEST(HistorianDestructor, FailureToSaveIsLoggedAndNeverThrows)
{
    test::ComScope com;
    const test::LogCapture log;
    {
        CHistorian historian;
        historian.Configure(L"Driver={SQLite3};Database=/nonexistent-folder/Historian.db", CHistorian::kNoLimit,
                            CHistorian::kNoLimit, 50);
        CacheAt(historian, L"t", {1});
    }
    EXPECT_TRUE(log.ContainsLike(1, "_com_error: [SQLite]connect failed", " [Historian, 59]")) << log.Dump();
}
