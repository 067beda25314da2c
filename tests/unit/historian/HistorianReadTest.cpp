// Reading values and the summary from a real historian database.
#include "HistorianFixture.h"

using namespace historian_test;
using CL::CHistorian;
using CL::CHistorianValues;

namespace {

using HistorianRead = HistorianDb;
using HistorianSummary = HistorianDb;

} // namespace

TEST_P(HistorianRead, NeitherBoundReturnsAllValuesInRunOrderThenRecordOrder)
{
    // Runs written out of time order; the second run's records are not in
    // time order either: record order within a run is kept.
    WriteRun(L"Tank.Level", {10, 11, 12});
    WriteRun(L"Tank.Level", {1, 3, 2});
    WriteRun(L"Other.Item", {0, 5});
    WriteRun(L"Tank.Level", {20});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"Tank.Level", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 3, 2, 10, 11, 12, 20}));
    ASSERT_EQ(out.times.size(), 7u);
    ASSERT_EQ(out.qualities.size(), 7u);
    EXPECT_EQ(out.qualities[0], 192);
}

TEST_P(HistorianRead, TimesComeAsFileTimesOfTheRecords)
{
    m_writer->AppendRun(L"t", {{At(1.5) + 250.0 / 86400000.0, 0xC0, CL::CVariant::R8(1)}});
    CHistorianValues out;
    ASSERT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    ASSERT_EQ(out.times.size(), 1u);
    SYSTEMTIME st;
    ASSERT_TRUE(::FileTimeToSystemTime(&out.times[0], &st));
    EXPECT_EQ(st.wYear, 2023);
    EXPECT_EQ(st.wMonth, 3);
    EXPECT_EQ(st.wDay, 15);
    EXPECT_EQ(st.wHour, 1);
    EXPECT_EQ(st.wMinute, 30);
    EXPECT_EQ(st.wSecond, 0);
    EXPECT_EQ(st.wMilliseconds, 250);
}

TEST_P(HistorianRead, BothBoundsReturnFromInclusiveToExclusive)
{
    WriteRun(L"t", {1, 2, 3});
    WriteRun(L"t", {4, 5});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", true, At(2), true, At(4), 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{2, 3}));
}

TEST_P(HistorianRead, OnlyLowerBoundReturnsValuesFromItOn)
{
    WriteRun(L"t", {1, 2, 3});
    WriteRun(L"t", {4, 5});
    CHistorianValues out;
    // The upper value is ignored as a bound but still narrows the rows by
    // its value in the query; 100 hours lies past every run.
    EXPECT_EQ(m_historian.ReadRange(L"t", true, At(3), false, At(100), 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{3, 4, 5}));
}

TEST_P(HistorianRead, OnlyUpperBoundReturnsValuesBeforeIt)
{
    WriteRun(L"t", {1, 2, 3});
    WriteRun(L"t", {4, 5});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, At(0), true, At(4), 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3}));
}

TEST_P(HistorianRead, SwitchedOffBoundStillNarrowsTheRowsByItsValue)
{
    // The has-from flag admits "TimeFrom <= to": with `to` left at a value
    // before the second run, that run is not even read.
    WriteRun(L"t", {1, 2});
    WriteRun(L"t", {10, 11});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", true, At(0), false, At(5), 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2}));
    ASSERT_FALSE(m_statements.empty());
    EXPECT_EQ(m_statements.back(), Sql().RangeQuery(L"t", true, At(0), false, At(5)));
}

TEST_P(HistorianRead, MaximumCountOfFiveOverSevenDeliversFiveWithMoreData)
{
    WriteRun(L"t", {1, 2, 3});
    WriteRun(L"t", {4, 5, 6, 7});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 5, out), static_cast<HRESULT>(0x40041003));
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3, 4, 5}));
    EXPECT_EQ(out.times.size(), 5u);
    EXPECT_EQ(out.qualities.size(), 5u);
}

TEST_P(HistorianRead, MaximumCountEqualToTheMatchesIsNoMoreData)
{
    WriteRun(L"t", {1, 2, 3});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 3, out), S_OK);
    EXPECT_EQ(out.Size(), 3u);
}

TEST_P(HistorianRead, ReadMatchingNothingReturnsNoData)
{
    WriteRun(L"t", {1, 2, 3});
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"unknown", false, 0.0, false, 0.0, 0, out), static_cast<HRESULT>(0x40041002));
    EXPECT_EQ(out.Size(), 0u);
    EXPECT_EQ(m_historian.ReadRange(L"t", true, At(1.5), true, At(2), 0, out), static_cast<HRESULT>(0x40041002));
    EXPECT_EQ(out.Size(), 0u);
}

TEST_P(HistorianRead, RowWithValCountZeroIsSkippedWithBadInfoInFields)
{
    WriteRun(L"t", {1});
    uint32_t used = 0;
    const CL::CVariant buffer = PatchedBuffer(ValuesAt({2}), used, [](BYTE*) {});
    m_writer->AppendRawRow(L"t", At(2), At(2), CL::CVariant::UI4(0), buffer, CL::CVariant::UI4(used));
    WriteRun(L"t", {3});
    const test::LogCapture log;
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 3}));
    EXPECT_TRUE(log.Contains(1, "Bad info in fields [Historian, 225]")) << log.Dump();
}

TEST_P(HistorianRead, RowWithoutByteArrayIsSkippedWithBadInfoInFields)
{
    m_writer->Connection().Execute(L"INSERT INTO HistoricData (ItemID, TimeFrom, TimeTo, ValCount, CacheUsedSize) "
                                   L"VALUES ('t', 1, 1, 1, 26)");
    WriteRun(L"t", {3});
    const test::LogCapture log;
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{3}));
    EXPECT_TRUE(log.Contains(1, "Bad info in fields [Historian, 225]")) << log.Dump();
}

TEST_P(HistorianRead, CorruptRowDeliversItsValuesBeforeTheFaultAndTheReadGoesOn)
{
    WriteRun(L"t", {1});
    // Three VT_R8 records of 26 bytes; the third one's type becomes
    // VT_DISPATCH, which a stored value can never have.
    uint32_t used = 0;
    const CL::CVariant buffer = PatchedBuffer(ValuesAt({2, 3, 4}), used, [](BYTE* data) {
        data[52 + 10] = VT_DISPATCH;
        data[52 + 11] = 0;
    });
    m_writer->AppendRawRow(L"t", At(2), At(4), CL::CVariant::UI4(3), buffer, CL::CVariant::UI4(used));
    WriteRun(L"t", {5});
    const test::LogCapture log;
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2, 3, 5}));
    EXPECT_TRUE(log.ContainsLike(1, "CException: Exception CException: Error=0x80028019(",
                                 "Source='Error in stream' [Historian, 266]"))
        << log.Dump();
    EXPECT_TRUE(log.Contains(1, "Bad info in DB [Historian, 267]")) << log.Dump();
}

TEST_P(HistorianRead, UsedSizeBeyondTheBufferIsBadInfoInDb)
{
    uint32_t used = 0;
    const CL::CVariant buffer = PatchedBuffer(ValuesAt({1}), used, [](BYTE*) {});
    m_writer->AppendRawRow(L"t", At(1), At(1), CL::CVariant::UI4(1), buffer,
                           CL::CVariant::UI4(buffer.parray->rgsabound[0].cElements + 1));
    WriteRun(L"t", {2});
    const test::LogCapture log;
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{2}));
    EXPECT_TRUE(log.ContainsLike(1, "CException: ", "Source='used size is more than cache size' [Historian, 266]"))
        << log.Dump();
    EXPECT_TRUE(log.Contains(1, "Bad info in DB [Historian, 267]")) << log.Dump();
}

TEST_P(HistorianRead, SpareBytesAfterTheUsedSizeAreNeverRead)
{
    // A cache grown by its writer keeps spare room; the row stores it whole.
    CL::var_length_container cache;
    cache.Reserve(4096);
    cache.Append(At(1), 192, CL::CVariant::R8(1));
    cache.Append(At(2), 192, CL::CVariant::R8(2));
    m_writer->AppendRun(L"t", cache, At(1), At(2));
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    EXPECT_EQ(Hours(out), (std::vector<double>{1, 2}));
}

TEST_P(HistorianRead, MissingTableFailsTheWholeReadWithFailedToReadDb)
{
    test::HistorianTestDb empty(GetParam(), false);
    CHistorian historian;
    historian.Configure(empty.ConnectionString(), CHistorian::kNoLimit, CHistorian::kNoLimit, 50);
    const test::LogCapture log;
    CHistorianValues out;
    EXPECT_EQ(historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), static_cast<HRESULT>(0x40041002));
    EXPECT_TRUE(log.ContainsLike(1, "_com_error: ", "(0x80004005) [Historian, 275]")) << log.Dump();
    EXPECT_TRUE(log.Contains(1, "Failed to read DB [Historian, 276]")) << log.Dump();
}

TEST_P(HistorianRead, ItemIdWithSingleQuoteMakesTheQueryFail)
{
    WriteRun(L"it's", {1});
    const test::LogCapture log;
    CHistorianValues out;
    EXPECT_EQ(m_historian.ReadRange(L"it's", false, 0.0, false, 0.0, 0, out), static_cast<HRESULT>(0x40041002));
    ASSERT_FALSE(m_statements.empty());
    EXPECT_EQ(m_statements.back(), Sql().RangeQuery(L"it's", false, 0.0, false, 0.0)) << "no escaping";
    EXPECT_TRUE(log.Contains(1, "Failed to read DB [Historian, 276]")) << log.Dump();
}

TEST_P(HistorianRead, StringAndArrayValuesComeBackAsStored)
{
    CL::CVariant text(std::wstring_view(L"fill level \x00E9"));
    CL::CVariant numbers = CL::StringToVariant(L"1\r\n2\r\n3", VT_ARRAY | VT_I4, CL::kLocaleInvariant, L"\r\n");
    m_writer->AppendRun(L"t", {{At(1), 192, text}, {At(2), 0x40, numbers}});
    CHistorianValues out;
    ASSERT_EQ(m_historian.ReadRange(L"t", false, 0.0, false, 0.0, 0, out), S_OK);
    ASSERT_EQ(out.Size(), 2u);
    ASSERT_EQ(out.values[0].vt, VT_BSTR);
    EXPECT_STREQ(out.values[0].bstrVal, L"fill level \x00E9");
    ASSERT_EQ(out.values[1].vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(CL::VariantToString(out.values[1], CL::kLocaleInvariant, L","), L"1,2,3");
    EXPECT_EQ(out.qualities[1], 0x40);
}

TEST_P(HistorianSummary, OneEntryPerItemInItemIdOrder)
{
    WriteRun(L"b.item", {5, 6});
    WriteRun(L"a.item", {1, 2, 3});
    WriteRun(L"b.item", {1, 2, 3, 4});
    WriteRun(L"c.item", {7});
    const auto summary = m_historian.ReadSummary();
    ASSERT_EQ(summary.size(), 3u);
    EXPECT_EQ(summary[0].itemId, L"a.item");
    ExpectColumnTime(GetParam(), summary[0].timeFrom, At(1));
    ExpectColumnTime(GetParam(), summary[0].timeTo, At(3));
    EXPECT_EQ(summary[0].valueCount, 3);
    EXPECT_EQ(summary[1].itemId, L"b.item");
    ExpectColumnTime(GetParam(), summary[1].timeFrom, At(1));
    ExpectColumnTime(GetParam(), summary[1].timeTo, At(6));
    EXPECT_EQ(summary[1].valueCount, 6);
    EXPECT_EQ(summary[2].itemId, L"c.item");
    EXPECT_EQ(summary[2].valueCount, 1);
    EXPECT_EQ(m_statements, std::vector<std::wstring>{Sql().SummaryQuery()});
}

TEST_P(HistorianSummary, EmptyTableHasNoEntries)
{
    EXPECT_TRUE(m_historian.ReadSummary().empty());
}

TEST_P(HistorianSummary, DatabaseThatCannotBeOpenedRaisesTheDriversText)
{
    CHistorian historian;
    const std::wstring connection = GetParam() == DbKind::Sqlite
                                        ? L"Driver={SQLite3};Database=/nonexistent-folder/Historian.db"
                                        : L"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=x;Uid=x;";
    historian.Configure(connection, CHistorian::kNoLimit, CHistorian::kNoLimit, 50);
    try {
        historian.ReadSummary();
        ADD_FAILURE() << "no error";
    } catch (const _com_error& e) {
        const std::string text = CL::Narrow(CL::DbErrorDescription(e));
        EXPECT_NE(text.find(GetParam() == DbKind::Sqlite ? "connect failed" : "onnection refused"), std::string::npos)
            << text;
    }
}

INSTANTIATE_TEST_SUITE_P(, HistorianRead, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
INSTANTIATE_TEST_SUITE_P(, HistorianSummary, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
