// The statement texts of the historian, character for character.
#include <gtest/gtest.h>

#include "common/historian/HistorianSql.h"

using CL::CHistorianSql;
using CL::SqlDialect;

namespace {

const CHistorianSql kStandard(SqlDialect::Standard);
const CHistorianSql kPostgres(SqlDialect::PostgreSql);
const CHistorianSql kSqlite(SqlDialect::Sqlite);

} // namespace

TEST(HistorianSql, RangeQueryWithoutBoundsSelectsTheItemInTimeFromOrder)
{
    EXPECT_EQ(kStandard.RangeQuery(L"Plant.Tank1.Level", false, 1.0, false, 2.0),
              L"SELECT * FROM HistoricData WHERE [ItemID]='Plant.Tank1.Level' ORDER BY [TimeFrom]");
}

TEST(HistorianSql, RangeQueryWithBothBoundsPrintsEachGuardWithTheOtherBound)
{
    EXPECT_EQ(kStandard.RangeQuery(L"x", true, 45000.25, true, 45001.5),
              L"SELECT * FROM HistoricData WHERE [ItemID]='x' and ([TimeFrom] <= 45001.50000000000000) "
              L"and ([TimeTo] >= 45000.25000000000000) ORDER BY [TimeFrom]");
}

TEST(HistorianSql, HasFromFlagAdmitsTheClausePrintedWithTheUpperBound)
{
    EXPECT_EQ(kStandard.RangeQuery(L"x", true, 1.0, false, 2.0),
              L"SELECT * FROM HistoricData WHERE [ItemID]='x' and ([TimeFrom] <= 2.00000000000000) ORDER BY [TimeFrom]");
}

TEST(HistorianSql, HasToFlagAdmitsTheClausePrintedWithTheLowerBound)
{
    EXPECT_EQ(kStandard.RangeQuery(L"x", false, 1.0, true, 2.0),
              L"SELECT * FROM HistoricData WHERE [ItemID]='x' and ([TimeTo] >= 1.00000000000000) ORDER BY [TimeFrom]");
}

TEST(HistorianSql, TimesArePrintedWithFourteenDecimals)
{
    EXPECT_EQ(kStandard.RangeQuery(L"x", true, 0.0, false, 45123.123456789012),
              L"SELECT * FROM HistoricData WHERE [ItemID]='x' and ([TimeFrom] <= 45123.12345678901329) ORDER BY [TimeFrom]");
}

TEST(HistorianSql, ItemIdIsPlacedBetweenQuotesWithoutEscaping)
{
    EXPECT_EQ(kStandard.RangeQuery(L"it's", false, 0.0, false, 0.0),
              L"SELECT * FROM HistoricData WHERE [ItemID]='it's' ORDER BY [TimeFrom]");
}

TEST(HistorianSql, SummaryQuery)
{
    EXPECT_EQ(kStandard.SummaryQuery(),
              L"SELECT ItemID as a, min(TimeFrom) as b, max(TimeTo) as c, sum(ValCount) as d FROM HistoricData "
              L"GROUP BY ItemID ORDER BY ItemID");
}

TEST(HistorianSql, DeleteAllStatement)
{
    EXPECT_EQ(kStandard.DeleteAllStatement(), L"DELETE FROM HistoricData");
}

TEST(HistorianSql, EmptyRowQuery)
{
    EXPECT_EQ(kStandard.EmptyRowQuery(), L"SELECT * FROM HistoricData WHERE 1=2");
}

TEST(HistorianSql, DeleteItemsOfOneItemWithoutBounds)
{
    EXPECT_EQ(kStandard.DeleteItemsStatement({L"a.b"}, false, 1.0, false, 2.0),
              L"DELETE FROM HistoricData WHERE ([ItemID] = 'a.b')");
}

TEST(HistorianSql, DeleteItemsJoinsIdsWithOrAndAppendsBothBounds)
{
    EXPECT_EQ(kStandard.DeleteItemsStatement({L"a", L"b", L"c"}, true, 45000.5, true, 45001.75),
              L"DELETE FROM HistoricData WHERE ([ItemID] = 'a' or [ItemID] = 'b' or [ItemID] = 'c') "
              L"AND ([TimeFrom] >= 45000.50000000000000) AND ([TimeTo] < 45001.75000000000000)");
}

TEST(HistorianSql, DeleteItemsWithOnlyTheUpperBound)
{
    EXPECT_EQ(kStandard.DeleteItemsStatement({L"a"}, false, 1.0, true, 2.0),
              L"DELETE FROM HistoricData WHERE ([ItemID] = 'a') AND ([TimeTo] < 2.00000000000000)");
}

TEST(HistorianSql, DeleteItemsOfAnEmptyListIsNoStatement)
{
    EXPECT_EQ(kStandard.DeleteItemsStatement({}, true, 1.0, true, 2.0), L"");
}

TEST(HistorianSql, KeepLastValuesStatementWithItsTabsAndSpaces)
{
    EXPECT_EQ(kStandard.KeepLastValuesStatement(1000, L"Tank.Level"),
              L"\t\t\t\tDELETE hd FROM HistoricData hd "
              L"\t\t\t\tWHERE 1000 <= ( "
              L"\t\t\t\t\t\tSELECT SUM(ValCount) "
              L"\t\t\t\t\t\tFROM HistoricData hd2 "
              L"\t\t\t\t\t\tWHERE hd2.TimeFrom > hd.TimeFrom AND hd2.ItemID = 'Tank.Level' "
              L"\t\t\t\t\t) "
              L"\t\t\t\t\tAND hd.ItemID = 'Tank.Level' "
              L"\t\t\t");
}

TEST(HistorianSql, KeepLastMinutesStatementWithItsTabsAndSpaces)
{
    EXPECT_EQ(kStandard.KeepLastMinutesStatement(45000.5, L"Tank.Level"),
              L"\t\t\t\tDELETE FROM HistoricData "
              L"\t\t\t\tWHERE TimeTo < 45000.50000000000000 "
              L"\t\t\t\t\tAND ItemID = 'Tank.Level' "
              L"\t\t\t");
}

TEST(HistorianSql, PostgreSqlGetsPlainNames)
{
    EXPECT_EQ(kPostgres.RangeQuery(L"x", true, 1.0, true, 2.0),
              L"SELECT * FROM HistoricData WHERE ItemID='x' and (TimeFrom <= 2.00000000000000) "
              L"and (TimeTo >= 1.00000000000000) ORDER BY TimeFrom");
    EXPECT_EQ(kPostgres.DeleteItemsStatement({L"a", L"b"}, true, 1.0, true, 2.0),
              L"DELETE FROM HistoricData WHERE (ItemID = 'a' or ItemID = 'b') "
              L"AND (TimeFrom >= 1.00000000000000) AND (TimeTo < 2.00000000000000)");
}

TEST(HistorianSql, PostgreSqlDeletesWithTheAliasAfterTheTable)
{
    EXPECT_EQ(kPostgres.KeepLastValuesStatement(5, L"t"),
              L"\t\t\t\tDELETE FROM HistoricData hd "
              L"\t\t\t\tWHERE 5 <= ( "
              L"\t\t\t\t\t\tSELECT SUM(ValCount) "
              L"\t\t\t\t\t\tFROM HistoricData hd2 "
              L"\t\t\t\t\t\tWHERE hd2.TimeFrom > hd.TimeFrom AND hd2.ItemID = 't' "
              L"\t\t\t\t\t) "
              L"\t\t\t\t\tAND hd.ItemID = 't' "
              L"\t\t\t");
}

TEST(HistorianSql, SqliteKeepsBracketsAndDeletesWithAsAlias)
{
    EXPECT_EQ(kSqlite.RangeQuery(L"x", true, 1.0, true, 2.0), kStandard.RangeQuery(L"x", true, 1.0, true, 2.0));
    EXPECT_EQ(kSqlite.DeleteItemsStatement({L"a"}, true, 1.0, true, 2.0),
              kStandard.DeleteItemsStatement({L"a"}, true, 1.0, true, 2.0));
    const std::wstring standard = kStandard.KeepLastValuesStatement(5, L"t");
    const std::wstring sqlite = kSqlite.KeepLastValuesStatement(5, L"t");
    EXPECT_EQ(sqlite.substr(0, 35), L"\t\t\t\tDELETE FROM HistoricData AS hd ");
    EXPECT_EQ(sqlite.substr(35), standard.substr(35)) << "only the head differs";
}

TEST(HistorianSql, StatementsWithoutDialectWordsAreTheSameEverywhere)
{
    for (const CHistorianSql* sql : {&kPostgres, &kSqlite}) {
        EXPECT_EQ(sql->SummaryQuery(), kStandard.SummaryQuery());
        EXPECT_EQ(sql->DeleteAllStatement(), kStandard.DeleteAllStatement());
        EXPECT_EQ(sql->EmptyRowQuery(), kStandard.EmptyRowQuery());
        EXPECT_EQ(sql->KeepLastMinutesStatement(1.5, L"t"), kStandard.KeepLastMinutesStatement(1.5, L"t"));
    }
}

TEST(HistorianSql, DialectFollowsTheReportedDatabaseName)
{
    EXPECT_EQ(CHistorianSql::DialectOf(L"PostgreSQL"), SqlDialect::PostgreSql);
    EXPECT_EQ(CHistorianSql::DialectOf(L"SQLite"), SqlDialect::Sqlite);
    EXPECT_EQ(CHistorianSql::DialectOf(L"Microsoft SQL Server"), SqlDialect::Standard);
    EXPECT_EQ(CHistorianSql::DialectOf(L"MS Jet"), SqlDialect::Standard);
    EXPECT_EQ(CHistorianSql::DialectOf(L""), SqlDialect::Standard);
}
