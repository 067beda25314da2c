// The connection layer of the historian: backend choice, the field value
// types both backends deliver, and failures carrying the database's text.
#include <gtest/gtest.h>

#include <comdef.h>
#include <sqlext.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/HistorianTestDb.h"
#include "common/Text.h"
#include "common/historian/AdoConnection.h"
#include "common/historian/DbConnection.h"
#include "common/historian/DbError.h"
#include "common/historian/HistorianSql.h"
#include "common/historian/OdbcConnection.h"

using test::DbKind;
using test::HistorianTestDb;

namespace {

CL::CVariant Bytes(const std::string& bytes)
{
    CL::CVariant v;
    v.vt = VT_ARRAY | VT_UI1;
    v.parray = ::SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!bytes.empty())
        std::memcpy(v.parray->pvData, bytes.data(), bytes.size());
    return v;
}

std::string BytesOf(const VARIANT& v)
{
    const ULONG n = v.parray->rgsabound[0].cElements;
    return std::string(static_cast<const char*>(v.parray->pvData), n);
}

std::vector<CL::DbField> Row(const std::wstring& id, double from, const std::string& blob, ULONG count = 3)
{
    std::vector<CL::DbField> fields;
    fields.push_back({L"ItemID", CL::CVariant(id)});
    fields.push_back({L"TimeFrom", CL::CVariant::R8(from)});
    fields.push_back({L"TimeTo", CL::CVariant::R8(from + 1.0)});
    fields.push_back({L"ValCount", CL::CVariant::UI4(count)});
    fields.push_back({L"ItemValues", Bytes(blob)});
    fields.push_back({L"CacheUsedSize", CL::CVariant::UI4(static_cast<ULONG>(blob.size()))});
    return fields;
}

// Runs work and returns the _com_error it raised (fails the test when none).
template <typename Work>
_com_error CatchDbError(Work&& work)
{
    try {
        work();
    } catch (const _com_error& e) {
        return e;
    }
    ADD_FAILURE() << "no _com_error was raised";
    return _com_error(S_OK);
}

std::wstring ErrorSource(const _com_error& e)
{
    IErrorInfo* info = e.ErrorInfo();
    if (!info)
        return L"";
    BSTR source = nullptr;
    info->GetSource(&source);
    info->Release();
    std::wstring text = source ? source : L"";
    ::SysFreeString(source);
    return text;
}

class OdbcConnection : public testing::TestWithParam<DbKind> {
protected:
    test::ComScope m_com;
    HistorianTestDb m_db{GetParam()};
};

std::string KindName(const testing::TestParamInfo<DbKind>& info)
{
    return test::DbKindName(info.param);
}

} // namespace

TEST(DbConnectionChoice, ProviderStringsGoThroughAdo)
{
    EXPECT_TRUE(CL::IsOleDbConnectionString(L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\x.mdb"));
    EXPECT_TRUE(CL::IsOleDbConnectionString(L"provider=SQLOLEDB;Data Source=srv"));
    EXPECT_TRUE(CL::IsOleDbConnectionString(L"  \tPROVIDER=MSDASQL;Data Source=dsn"));
}

TEST(DbConnectionChoice, OtherStringsGoThroughOdbc)
{
    EXPECT_FALSE(CL::IsOleDbConnectionString(L"Driver={SQLite3};Database=/tmp/x.db"));
    EXPECT_FALSE(CL::IsOleDbConnectionString(L"DSN=Historian"));
    EXPECT_FALSE(CL::IsOleDbConnectionString(L"Data Source=x;Provider=SQLOLEDB"));
    EXPECT_FALSE(CL::IsOleDbConnectionString(L"Provider =SQLOLEDB"));
    EXPECT_FALSE(CL::IsOleDbConnectionString(L""));
}

TEST_P(OdbcConnection, ReportsItsDatabaseProduct)
{
    const auto connection = m_db.Connect();
    EXPECT_EQ(CL::CHistorianSql::DialectOf(connection->DbmsName()),
              GetParam() == DbKind::Sqlite ? CL::SqlDialect::Sqlite : CL::SqlDialect::PostgreSql)
        << CL::Narrow(connection->DbmsName());
}

TEST_P(OdbcConnection, FieldsComeAsTextDoubleIntegerAndByteArray)
{
    const auto connection = m_db.Connect();
    const std::string blob("\x01\x00\xFF\x7F" "abc", 7);
    connection->AppendRow(L"SELECT * FROM HistoricData WHERE 1=2", L"HistoricData", Row(L"Plant.Tank 1", 45000.25, blob));

    const auto recordset = connection->Query(L"SELECT * FROM HistoricData");
    ASSERT_FALSE(recordset->IsEof());
    const CL::CVariant& id = recordset->Field(L"ItemID");
    ASSERT_EQ(id.vt, VT_BSTR);
    EXPECT_STREQ(id.bstrVal, L"Plant.Tank 1");
    const CL::CVariant& from = recordset->Field(L"timefrom");   // names are matched case-insensitively
    ASSERT_EQ(from.vt, VT_R8);
    EXPECT_EQ(from.dblVal, 45000.25);
    const CL::CVariant& count = recordset->Field(L"ValCount");
    ASSERT_EQ(count.vt, VT_I4);
    EXPECT_EQ(count.lVal, 3);
    const CL::CVariant& values = recordset->Field(L"ItemValues");
    ASSERT_EQ(values.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(BytesOf(values), blob);
    recordset->MoveNext();
    EXPECT_TRUE(recordset->IsEof());
}

TEST_P(OdbcConnection, AggregatesComeAsDoubleAndInteger)
{
    const auto connection = m_db.Connect();
    connection->AppendRow(L"", L"HistoricData", Row(L"a", 45000.5, "x", 4));
    connection->AppendRow(L"", L"HistoricData", Row(L"a", 45001.5, "y", 6));
    const auto recordset = connection->Query(
        L"SELECT ItemID as a, min(TimeFrom) as b, max(TimeTo) as c, sum(ValCount) as d FROM HistoricData "
        L"GROUP BY ItemID ORDER BY ItemID");
    ASSERT_FALSE(recordset->IsEof());
    EXPECT_EQ(recordset->Field(L"a").vt, VT_BSTR);
    ASSERT_EQ(recordset->Field(L"b").vt, VT_R8);
    EXPECT_EQ(recordset->Field(L"b").dblVal, 45000.5);
    ASSERT_EQ(recordset->Field(L"c").vt, VT_R8);
    EXPECT_EQ(recordset->Field(L"c").dblVal, 45002.5);
    ASSERT_EQ(recordset->Field(L"d").vt, VT_I4) << "sum() is a 64-bit integer in PostgreSQL";
    EXPECT_EQ(recordset->Field(L"d").lVal, 10);
}

TEST_P(OdbcConnection, SumBeyond32BitsIsAnOverflowError)
{
    const auto connection = m_db.Connect();
    connection->AppendRow(L"", L"HistoricData", Row(L"a", 1.0, "x", 0x7FFFFFFF));
    connection->AppendRow(L"", L"HistoricData", Row(L"a", 2.0, "x", 0x7FFFFFFF));
    const _com_error e = CatchDbError([&] { connection->Query(L"SELECT sum(ValCount) AS d FROM HistoricData"); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), static_cast<unsigned long>(DISP_E_OVERFLOW));
    EXPECT_NE(CL::DbErrorDescription(e).find(L"'d'"), std::wstring::npos) << CL::Narrow(CL::DbErrorDescription(e));
}

TEST_P(OdbcConnection, NullComesAsVtNull)
{
    const auto connection = m_db.Connect();
    connection->Execute(L"INSERT INTO HistoricData (ItemID, TimeFrom, TimeTo, ValCount, CacheUsedSize) "
                        L"VALUES ('n', 1, 2, 3, 4)");
    const auto recordset = connection->Query(L"SELECT ItemValues FROM HistoricData");
    ASSERT_FALSE(recordset->IsEof());
    EXPECT_EQ(recordset->Field(L"ItemValues").vt, VT_NULL);
}

TEST_P(OdbcConnection, LargeBlobsAndLongTextsComeBackWhole)
{
    const auto connection = m_db.Connect();
    std::string blob(300000, '\0');
    for (size_t i = 0; i < blob.size(); ++i)
        blob[i] = static_cast<char>(i * 7 + i / 251);
    const std::wstring id(200, L'\x00E9');   // beyond the first text chunk in bytes, not ASCII
    connection->AppendRow(L"", L"HistoricData", Row(id, 1.0, blob));
    const auto recordset = connection->Query(L"SELECT ItemID, ItemValues FROM HistoricData");
    ASSERT_FALSE(recordset->IsEof());
    EXPECT_EQ(std::wstring(recordset->Field(L"ItemID").bstrVal), id);
    EXPECT_EQ(BytesOf(recordset->Field(L"ItemValues")), blob);
}

TEST_P(OdbcConnection, EmptyBlobComesBackAsEmptyArray)
{
    const auto connection = m_db.Connect();
    connection->AppendRow(L"", L"HistoricData", Row(L"e", 1.0, ""));
    const auto recordset = connection->Query(L"SELECT ItemValues FROM HistoricData");
    ASSERT_FALSE(recordset->IsEof());
    const CL::CVariant& values = recordset->Field(L"ItemValues");
    ASSERT_EQ(values.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(values.parray->rgsabound[0].cElements, 0u);
}

TEST_P(OdbcConnection, DeleteMatchingNothingIsNoFailure)
{
    const auto connection = m_db.Connect();
    EXPECT_NO_THROW(connection->Execute(L"DELETE FROM HistoricData WHERE ItemID = 'none'"));
}

TEST_P(OdbcConnection, BadStatementRaisesTheDatabasesText)
{
    const auto connection = m_db.Connect();
    const _com_error e = CatchDbError([&] { connection->Execute(L"DELETE FROM NoSuchTable"); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), static_cast<unsigned long>(E_FAIL));
    const std::wstring text = CL::DbErrorDescription(e);
    EXPECT_NE(CL::Narrow(text).find(GetParam() == DbKind::Sqlite ? "no such table" : "does not exist"),
              std::string::npos)
        << CL::Narrow(text);
    EXPECT_EQ(ErrorSource(e), L"SQLExecDirectW");
}

TEST_P(OdbcConnection, UnknownFieldIsAnError)
{
    const auto connection = m_db.Connect();
    connection->AppendRow(L"", L"HistoricData", Row(L"a", 1.0, "x"));
    const auto recordset = connection->Query(L"SELECT ItemID FROM HistoricData");
    const _com_error e = CatchDbError([&] { recordset->Field(L"Nope"); });
    EXPECT_NE(CL::DbErrorDescription(e).find(L"'Nope'"), std::wstring::npos);
}

INSTANTIATE_TEST_SUITE_P(, OdbcConnection, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);

TEST(OdbcConnectionFailure, DatabaseThatCannotBeOpenedRaisesTheDriversText)
{
    test::ComScope com;
    test::TempDir dir;
    const std::wstring missingFolder = test::HostPath(dir.File(L"missing")) + L"/Historian.db";
    const _com_error e = CatchDbError([&] { CL::COdbcConnection(L"Driver={SQLite3};Database=" + missingFolder); });
    const std::string text = CL::Narrow(CL::DbErrorDescription(e));
    EXPECT_NE(text.find("[SQLite]connect failed"), std::string::npos) << text;
    EXPECT_EQ(ErrorSource(e), L"SQLDriverConnectW");
}

TEST(OdbcConnectionFailure, ServerThatDoesNotAnswerRaisesTheDriversText)
{
    test::ComScope com;
    const _com_error e = CatchDbError([] {
        CL::COdbcConnection(L"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=postgres;Uid=morvane;");
    });
    const std::string text = CL::Narrow(CL::DbErrorDescription(e));
    EXPECT_NE(text.find("onnection refused"), std::string::npos) << text;
}

namespace {

// What the driver manager itself says to a connection with an unknown
// driver: its return code and the texts of its diagnostic records (none on
// some driver managers, e.g. Wine 10's).
struct DriverManagerAnswer {
    SQLRETURN rc = SQL_SUCCESS;
    std::vector<std::wstring> messages;
};

DriverManagerAnswer AskDriverManager(const wchar_t* connectionString)
{
    DriverManagerAnswer answer;
    SQLHANDLE env = SQL_NULL_HANDLE;
    SQLHANDLE dbc = SQL_NULL_HANDLE;
    EXPECT_TRUE(SQL_SUCCEEDED(::SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)));
    ::SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    EXPECT_TRUE(SQL_SUCCEEDED(::SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc)));
    std::wstring text = connectionString;
    SQLWCHAR completed[1024];
    SQLSMALLINT completedLength = 0;
    answer.rc = ::SQLDriverConnectW(dbc, nullptr, reinterpret_cast<SQLWCHAR*>(text.data()), SQL_NTS, completed,
                                    static_cast<SQLSMALLINT>(std::size(completed)), &completedLength,
                                    SQL_DRIVER_NOPROMPT);
    for (SQLSMALLINT record = 1;; ++record) {
        SQLWCHAR state[6] = {};
        SQLINTEGER nativeError = 0;
        SQLWCHAR message[1024] = {};
        SQLSMALLINT length = 0;
        if (!SQL_SUCCEEDED(::SQLGetDiagRecW(SQL_HANDLE_DBC, dbc, record, state, &nativeError, message,
                                            static_cast<SQLSMALLINT>(std::size(message)), &length)))
            break;
        answer.messages.push_back(reinterpret_cast<const wchar_t*>(message));
    }
    ::SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    ::SQLFreeHandle(SQL_HANDLE_ENV, env);
    return answer;
}

} // namespace

// The user reads the driver manager's own text where it gives one, and the
// program's plain statement of the failed call where it gives none.
TEST(OdbcConnectionFailure, UnknownDriverRaisesTheDriverManagersText)
{
    test::ComScope com;
    const wchar_t* const connectionString = L"Driver={No Such Driver};Database=x";
    const DriverManagerAnswer manager = AskDriverManager(connectionString);
    ASSERT_FALSE(SQL_SUCCEEDED(manager.rc)) << "the driver manager accepted an unknown driver";
    const _com_error e = CatchDbError([&] { CL::COdbcConnection{connectionString}; });
    const std::wstring text = CL::DbErrorDescription(e);
    if (manager.messages.empty()) {
        EXPECT_EQ(text, CL::Format(L"SQLDriverConnectW failed with return code %d and no diagnostic record.",
                                   static_cast<int>(manager.rc)));
        return;
    }
    for (std::wstring message : manager.messages) {
        for (wchar_t& c : message) {
            if (c == L'\r' || c == L'\n')
                c = L' ';
        }
        EXPECT_NE(text.find(message), std::wstring::npos) << CL::Narrow(text);
    }
}

// ADO under Wine opens DSN connections and executes statements (it reads no
// rows there); the data source "MorvaneTestDsn" is a SQLite file that the
// test environment defines in its user ODBC data source file.
TEST(AdoConnection, OpensDataSourceAndExecutesStatements)
{
    test::ComScope com;
    const std::wstring table = CL::Format(L"AdoTest%lu", ::GetCurrentProcessId());
    {
        CL::CAdoConnection connection(L"Provider=MSDASQL;Data Source=MorvaneTestDsn");
        connection.Execute(L"CREATE TABLE " + table + L" (ItemID VARCHAR(255), ValCount INTEGER)");
        connection.Execute(L"INSERT INTO " + table + L" VALUES ('written by ADO', 42)");
    }
    const auto odbc = CL::OpenDbConnection(L"DSN=MorvaneTestDsn");
    {
        const auto recordset = odbc->Query(L"SELECT ItemID, ValCount FROM " + table);
        ASSERT_FALSE(recordset->IsEof());
        EXPECT_STREQ(recordset->Field(L"ItemID").bstrVal, L"written by ADO");
        EXPECT_EQ(recordset->Field(L"ValCount").lVal, 42);
    }
    odbc->Execute(L"DROP TABLE " + table);
}

TEST(AdoConnection, ProviderStringOpensThroughAdo)
{
    test::ComScope com;
    const auto connection = CL::OpenDbConnection(L"  provider=MSDASQL;Data Source=MorvaneTestDsn");
    EXPECT_NE(dynamic_cast<CL::CAdoConnection*>(connection.get()), nullptr);
}

TEST(AdoConnection, BadStatementRaisesComError)
{
    test::ComScope com;
    CL::CAdoConnection connection(L"Provider=MSDASQL;Data Source=MorvaneTestDsn");
    const _com_error e = CatchDbError([&] { connection.Execute(L"THIS IS NOT SQL"); });
    EXPECT_TRUE(FAILED(e.Error()));
}

TEST(AdoConnection, UnknownDataSourceRaisesComError)
{
    test::ComScope com;
    const _com_error e = CatchDbError([] { CL::CAdoConnection(L"Provider=MSDASQL;Data Source=NoSuchDataSource"); });
    EXPECT_TRUE(FAILED(e.Error()));
}
