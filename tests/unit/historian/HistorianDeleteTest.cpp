// Removing runs from a real historian database.
#include "HistorianFixture.h"

using namespace historian_test;
using CL::CHistorianValues;

namespace {

using HistorianDelete = HistorianDb;

} // namespace

TEST_P(HistorianDelete, DeleteAllRemovesEveryRow)
{
    WriteRun(L"a", {1, 2});
    WriteRun(L"b", {3});
    m_historian.DeleteAll();
    EXPECT_EQ(m_db.RowCount(), 0);
    EXPECT_EQ(m_statements, std::vector<std::wstring>{L"DELETE FROM HistoricData"});
}

TEST_P(HistorianDelete, EmptySelectionExecutesNothing)
{
    WriteRun(L"a", {1, 2});
    m_historian.DeleteItems({}, true, At(0), true, At(10));
    EXPECT_TRUE(m_statements.empty());
    EXPECT_EQ(m_db.RowCount(), 1);
}

TEST_P(HistorianDelete, ItemsWithoutBoundsLoseAllTheirRunsAndNoOtherItem)
{
    WriteRun(L"a", {1, 2});
    WriteRun(L"a", {3});
    WriteRun(L"b", {1});
    WriteRun(L"c", {1});
    m_historian.DeleteItems({L"a", L"c"}, false, 0.0, false, 0.0);
    EXPECT_EQ(m_db.RowCount(L"a"), 0);
    EXPECT_EQ(m_db.RowCount(L"b"), 1);
    EXPECT_EQ(m_db.RowCount(L"c"), 0);
    EXPECT_EQ(m_statements, std::vector<std::wstring>{Sql().DeleteItemsStatement({L"a", L"c"}, false, 0.0, false, 0.0)});
}

TEST_P(HistorianDelete, BoundsLeaveStraddlingRunsWhole)
{
    WriteRun(L"a", {1, 2, 3});       // straddles the lower bound
    WriteRun(L"a", {4, 5});          // wholly inside
    WriteRun(L"a", {6, 7, 8});       // straddles the upper bound
    WriteRun(L"b", {4, 5});          // inside, but not selected
    m_historian.DeleteItems({L"a"}, true, At(2), true, At(7));
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"a", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3, 6, 7, 8})) << "values outside the range stay with their runs";
    EXPECT_EQ(m_db.RowCount(L"b"), 1);
}

TEST_P(HistorianDelete, UpperBoundIsExclusiveForTheRunsEnd)
{
    WriteRun(L"a", {4, 5});
    m_historian.DeleteItems({L"a"}, true, At(4), true, At(5));
    EXPECT_EQ(m_db.RowCount(L"a"), 1) << "a run ending at the upper bound is not inside";
    m_historian.DeleteItems({L"a"}, true, At(4), true, At(5.5));
    EXPECT_EQ(m_db.RowCount(L"a"), 0) << "a run starting at the lower bound is inside";
}

TEST_P(HistorianDelete, ItemIdWithSingleQuoteMakesTheStatementFail)
{
    WriteRun(L"it's", {1});
    EXPECT_THROW(m_historian.DeleteItems({L"it's"}, false, 0.0, false, 0.0), _com_error);
    EXPECT_EQ(m_statements, std::vector<std::wstring>{Sql().DeleteItemsStatement({L"it's"}, false, 0.0, false, 0.0)});
    EXPECT_EQ(m_db.RowCount(), 1);
}

INSTANTIATE_TEST_SUITE_P(, HistorianDelete, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
