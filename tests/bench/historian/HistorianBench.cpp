// Benchmark of the historian over a SQLite database through ODBC: 100 items
// of 1,000 runs with 100 VT_R8 values each (10 million values).
//
//   bench_historian.exe build   <db>                  writes the database
//   bench_historian.exe summary <db>                  times ReadSummary
//   bench_historian.exe read    <db> <item> [bounded] times ReadRange
//   bench_historian.exe delete  <db>                  times a bounded DeleteItems of every item
//
// <db> is the host path of the SQLite file. Each timing command prints one
// line "seconds=<s> count=<n>" (count: summary entries, values read, or
// rows left). The script run.sh builds the database once, runs these and
// the sqlite3 command-line baselines, and prints the ratios.
#include <windows.h>
#include <comdef.h>
#include <shellapi.h>

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
