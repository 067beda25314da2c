// Benchmark of the historian over a SQLite database through ODBC: 100 items
// of 1,000 runs with 100 VT_R8 values each (10 million values).
//
//   bench_historian.exe build   <db>                  writes the database
//   bench_historian.exe summary <db>                  times ReadSummary
//   bench_historian.exe read    <db> <item> [bounded] times ReadRange
//   bench_historian.exe delete  <db>                  times a bounded DeleteItems of every item
//   bench_historian.exe parts   <db> <item>           where the time of an unbounded ReadRange goes
//
// <db> is the host path of the SQLite file. Each timing command prints one
// line "seconds=<s> count=<n>" (count: summary entries, values read, or
// rows left). The script run.sh builds the database once, runs these and
// the sqlite3 command-line baselines, and prints the ratios.
#include <windows.h>
#include <comdef.h>
#include <shellapi.h>
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "bench/BenchTiming.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/historian/DbError.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/historian/Historian.h"
#include "common/historian/HistorianSql.h"

namespace {

constexpr int kItems = 100;
constexpr int kRunsPerItem = 1000;
constexpr int kValuesPerRun = 100;
constexpr double kBase = 45000.0;            // 15 March 2023, UTC
constexpr double kSecond = 1.0 / 86400.0;    // values one second apart

std::wstring ItemName(int i)
{
    return CL::Format(L"Plant.Area%02d.Item%03d", i / 10, i);
}

// The bounds of the bounded read and delete: the middle half of every item.
double LowerBound()
{
    return kBase + (kRunsPerItem * kValuesPerRun / 4) * kSecond;
}
double UpperBound()
{
    return kBase + (3 * kRunsPerItem * kValuesPerRun / 4) * kSecond;
}

std::wstring ConnectionString(const wchar_t* path)
{
    return std::wstring(L"Driver={SQLite3};Database=") + path + L";";
}

int Build(const wchar_t* path)
{
    CL::CHistoricDataWriter writer(ConnectionString(path));
    // Rows of 2.6 KB fill 8 KiB pages three at a time (a 4 KiB page would
    // hold only one), so the file stays close to the 260 MB of its values.
    writer.Connection().Execute(L"PRAGMA page_size = 8192");
    writer.Connection().Execute(L"PRAGMA journal_mode = OFF");
    writer.Connection().Execute(L"PRAGMA synchronous = OFF");
    writer.CreateTable();
    CL::CVariant value;
    value.vt = VT_R8;
    for (int item = 0; item < kItems; ++item) {
        writer.Connection().Execute(L"BEGIN");
        for (int run = 0; run < kRunsPerItem; ++run) {
            CL::var_length_container cache;
            cache.Reserve(kValuesPerRun * 26);   // a full run, no spare room
            const int first = run * kValuesPerRun;
            for (int v = 0; v < kValuesPerRun; ++v) {
                value.dblVal = item * 1000.0 + (first + v) * 0.5;
                cache.Append(kBase + (first + v) * kSecond, 192, value);
            }
            writer.AppendRun(ItemName(item), cache, kBase + first * kSecond,
                             kBase + (first + kValuesPerRun - 1) * kSecond);
        }
        writer.Connection().Execute(L"COMMIT");
    }
    std::printf("built %d rows\n", kItems * kRunsPerItem);
    return 0;
}

int Summary(const wchar_t* path)
{
    CL::CHistorian historian;
    historian.Configure(ConnectionString(path), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    const double start = Bench::Seconds();
    const auto summary = historian.ReadSummary();
    std::printf("seconds=%.4f count=%zu\n", Bench::SecondsSince(start), summary.size());
    return summary.size() == kItems ? 0 : 1;
}

int Read(const wchar_t* path, const wchar_t* item, bool bounded)
{
    CL::CHistorian historian;
    historian.Configure(ConnectionString(path), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    CL::CHistorianValues out;
    const double start = Bench::Seconds();
    const HRESULT hr = historian.ReadRange(item, bounded, LowerBound(), bounded, UpperBound(), 0, out);
    std::printf("seconds=%.4f count=%zu\n", Bench::SecondsSince(start), out.Size());
    return hr == S_OK ? 0 : 1;
}

int Delete(const wchar_t* path)
{
    CL::CHistorian historian;
    historian.Configure(ConnectionString(path), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    std::vector<std::wstring> items;
    for (int i = 0; i < kItems; ++i)
        items.push_back(ItemName(i));
    const double start = Bench::Seconds();
    historian.DeleteItems(items, true, LowerBound(), true, UpperBound());
    const double seconds = Bench::SecondsSince(start);
    long rows = 0;
    for (const auto& entry : historian.ReadSummary())
        rows += entry.valueCount / kValuesPerRun;
    std::printf("seconds=%.4f count=%ld\n", seconds, rows);
    return 0;
}

// The item's range query walked with bare ODBC calls, each column read
// into one reused buffer: the driver and the driver manager alone.
size_t BareOdbcRead(const std::wstring& connection, const std::wstring& sql)
{
    SQLHENV env = SQL_NULL_HENV;
    SQLHDBC dbc = SQL_NULL_HDBC;
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    ::SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env);
    ::SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    ::SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc);
    std::wstring text = connection;
    SQLSMALLINT outLength = 0;
    size_t bytes = 0;
    if (SQL_SUCCEEDED(::SQLDriverConnectW(dbc, nullptr, reinterpret_cast<SQLWCHAR*>(text.data()),
                                          static_cast<SQLSMALLINT>(text.size()), nullptr, 0, &outLength,
                                          SQL_DRIVER_NOPROMPT))) {
        ::SQLAllocHandle(SQL_HANDLE_STMT, dbc, &stmt);
        std::wstring query = sql;
        if (SQL_SUCCEEDED(::SQLExecDirectW(stmt, reinterpret_cast<SQLWCHAR*>(query.data()), SQL_NTS))) {
            SQLSMALLINT columns = 0;
            ::SQLNumResultCols(stmt, &columns);
            // A 16 KiB chunk, then the rest of a longer value in one more call,
            // as the program reads (a buffer of a megabyte for every column
            // costs more under Wine than the data: its length is what moves).
            std::vector<BYTE> chunk(16384);
            std::vector<BYTE> rest;
            while (SQL_SUCCEEDED(::SQLFetch(stmt))) {
                for (SQLUSMALLINT c = 1; c <= columns; ++c) {
                    SQLLEN indicator = 0;
                    ::SQLGetData(stmt, c, SQL_C_BINARY, chunk.data(), static_cast<SQLLEN>(chunk.size()), &indicator);
                    if (indicator <= 0)
                        continue;
                    bytes += static_cast<size_t>(indicator);
                    if (static_cast<size_t>(indicator) > chunk.size()) {
                        rest.resize(static_cast<size_t>(indicator) - chunk.size());
                        ::SQLGetData(stmt, c, SQL_C_BINARY, rest.data(), static_cast<SQLLEN>(rest.size()), &indicator);
                    }
                }
            }
        }
        ::SQLFreeHandle(SQL_HANDLE_STMT, stmt);
        ::SQLDisconnect(dbc);
    }
    ::SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    ::SQLFreeHandle(SQL_HANDLE_ENV, env);
    return bytes;
}

// The best of three runs of the work, in seconds.
template <typename Work>
double BestOfThree(Work work)
{
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        const double start = Bench::Seconds();
        work();
        best = std::min(best, Bench::SecondsSince(start));
    }
    return best;
}

// An unbounded ReadRange of the item taken apart, each stage timed on its
// own (best of three, after one read that warms the page cache):
//   connect    opening the connection (the driver manager, the driver),
//   bare ODBC  connect, the query and every column of every row read with
//              bare ODBC calls into one buffer,
//   recordset  connect and the same walk through the program's recordset
//              (each field into a VARIANT, the blob into a SAFEARRAY),
//   ReadRange  all of it, the values decoded into the result.
int Parts(const wchar_t* path, const wchar_t* item)
{
    const std::wstring connection = ConnectionString(path);
    CL::CHistorian historian;
    historian.Configure(connection, CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    CL::CHistorianValues values;
    historian.ReadRange(item, false, 0, false, 0, 0, values);
    std::wstring sql;
    {
        const auto open = CL::OpenDbConnection(connection);
        sql = CL::CHistorianSql(CL::CHistorianSql::DialectOf(open->DbmsName())).RangeQuery(item, false, 0, false, 0);
    }
    const double connect = BestOfThree([&] { CL::OpenDbConnection(connection); });
    size_t bytes = 0;
    const double bare = BestOfThree([&] { bytes = BareOdbcRead(connection, sql); });
    size_t rows = 0;
    const double recordset = BestOfThree([&] {
        const auto open = CL::OpenDbConnection(connection);
        rows = 0;
        for (auto set = open->Query(sql); !set->IsEof(); set->MoveNext()) {
            set->Field(L"ItemValues");
            ++rows;
        }
    });
    const double whole = BestOfThree([&] {
        values.Clear();
        historian.ReadRange(item, false, 0, false, 0, 0, values);
    });
    std::printf("read parts: connect %.4f s, bare ODBC %.4f s (%zu bytes), recordset %.4f s (%zu rows), "
                "ReadRange %.4f s (%zu values)\n",
                connect, bare, bytes, recordset, rows, whole, values.Size());
    std::printf("read parts: query and fetch in the driver %.4f s, the program's copies %.4f s, the decode %.4f s\n",
                bare - connect, recordset - bare, whole - recordset);
    return 0;
}

} // namespace

int main()
{
    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    int rc = 2;
    try {
        const std::wstring command = argc > 1 ? argv[1] : L"";
        if (command == L"build" && argc == 3)
            rc = Build(argv[2]);
        else if (command == L"summary" && argc == 3)
            rc = Summary(argv[2]);
        else if (command == L"read" && (argc == 4 || argc == 5))
            rc = Read(argv[2], argv[3], argc == 5);
        else if (command == L"parts" && argc == 4)
            rc = Parts(argv[2], argv[3]);
        else if (command == L"delete" && argc == 3)
            rc = Delete(argv[2]);
        else if (command == L"bounds")
            std::printf("%.14f %.14f\n", LowerBound(), UpperBound()), rc = 0;
        else
            std::fprintf(stderr, "usage: bench_historian build|summary|read|delete|bounds <db> [item [bounded]]\n");
    } catch (const CL::CException& e) {
        std::fprintf(stderr, "failed: %s\n", CL::Narrow(e.Text()).c_str());
        rc = 1;
    } catch (const _com_error& e) {
        std::fprintf(stderr, "failed: database error 0x%08X: %s\n", static_cast<unsigned>(e.Error()),
                     CL::Narrow(CL::DbErrorDescription(e)).c_str());
        rc = 1;
    }
    ::CoUninitialize();
    ::LocalFree(argv);
    return rc;
}
