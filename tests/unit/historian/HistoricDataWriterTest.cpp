// The server's side of table HistoricData, as the simulator and the tests
// use it.
#include "HistorianFixture.h"

using namespace historian_test;

namespace {

class HistoricDataWriter : public testing::TestWithParam<DbKind> {
protected:
    test::ComScope m_com;
};

} // namespace

TEST_P(HistoricDataWriter, AppendHistoricRunCreatesTheTableAndAppendsOneRun)
{
    test::HistorianTestDb db(GetParam(), false);
    CL::AppendHistoricRun(db.ConnectionString(), L"Sim.Ramp", ValuesAt({1, 2, 3}));
    CL::AppendHistoricRun(db.ConnectionString(), L"Sim.Ramp", ValuesAt({4}));
    EXPECT_EQ(db.RowCount(L"Sim.Ramp"), 2);
    CL::CHistorian historian;
    historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    CL::CHistorianValues out;
    EXPECT_EQ(historian.ReadRange(L"Sim.Ramp", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3, 4}));
    const auto summary = historian.ReadSummary();
    ASSERT_EQ(summary.size(), 1u);
    EXPECT_EQ(summary[0].valueCount, 4);
}

TEST_P(HistoricDataWriter, RowColumnsFollowTheRun)
{
    test::HistorianTestDb db(GetParam());
    CL::CHistoricDataWriter(db.ConnectionString()).AppendRun(L"x", ValuesAt({2, 5}));
    const auto connection = db.Connect();
    const auto row = connection->Query(L"SELECT * FROM HistoricData");
    ASSERT_FALSE(row->IsEof());
    ExpectColumnTime(GetParam(), row->Field(L"TimeFrom").dblVal, At(2));
    ExpectColumnTime(GetParam(), row->Field(L"TimeTo").dblVal, At(5));
    EXPECT_EQ(row->Field(L"ValCount").lVal, 2);
    EXPECT_EQ(row->Field(L"CacheUsedSize").lVal, 52);
}

TEST_P(HistoricDataWriter, RunWithoutValuesIsRefused)
{
    test::HistorianTestDb db(GetParam());
    EXPECT_THROW(CL::AppendHistoricRun(db.ConnectionString(), L"x", {}), CL::CException);
    EXPECT_EQ(db.RowCount(), 0);
}

TEST_P(HistoricDataWriter, ValueThatCannotBeStoredIsRefused)
{
    test::HistorianTestDb db(GetParam());
    CL::CVariant unsupported;
    unsupported.vt = VT_ERROR;
    unsupported.scode = E_FAIL;
    EXPECT_THROW(CL::AppendHistoricRun(db.ConnectionString(), L"x", {{At(1), 192, unsupported}}), CL::CException);
    EXPECT_EQ(db.RowCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(, HistoricDataWriter, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
