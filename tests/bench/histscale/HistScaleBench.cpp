// Benchmark of the historian windows at plant scale: 100,000,000 values, 1,000
// items, 1,000,000 stored runs of 100 values (generate.py writes them in bulk;
// item 0 holds 1,000,000 values), on SQLite and on PostgreSQL.
//
//   bench_histscale.exe measure <ODBC connection string> <label>
//   bench_histscale.exe bounds     the UTC bounds of the 100,000-value read
//
// measure drives the real windows as the UI tests do and prints, for the
// database given: the explorer's refresh over all items, a filter typed
// into it, "Show data" of 100,000 and of 1,000,000 values (with the
// process's peak memory), "Save data..." of 1,000,000 values as CSV and as
// XML (read included), the historian's range read of 100,000 values (for the
// comparison with the sqlite3 tool in run.sh), and the delete of one item's
// period. Each line: "<what> seconds=<s> count=<n> target=<s or ->".
#include <windows.h>
#include <commctrl.h>
#include <psapi.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/BenchTiming.h"
#include "common/Text.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/historian/Historian.h"
#include "common/ReplacingFile.h"
#include "historian/HistoryCsvWriter.h"
#include "historian/PickerTime.h"
#include "historian/dlgDBExplorer.h"
#include "historian/dlgHistData.h"
#include "res/resource.h"
#include "support/FileDialogAnswer.h"
#include "support/HistorianTestDb.h"
#include "support/TestSupport.h"

namespace {

constexpr double kBase = 45000.0;   // 15 March 2023, UTC (as generate.py)
constexpr double kSecond = 1.0 / 86400.0;
const wchar_t kBigItem[] = L"Plant.Area00.Item0000";
const wchar_t kDeleteItem[] = L"Bench.DeleteMe";

void Pump()
{
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

int ListCount(HWND list)
{
    return static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
}

void Line(const char* what, double seconds, long long count, double target)
{
    if (target > 0)
        std::printf("%-40s seconds=%.3f count=%lld target=%.2f %s\n", what, seconds, count, target,
                    seconds <= target ? "ok" : "OVER");
    else
        std::printf("%-40s seconds=%.3f count=%lld target=-\n", what, seconds, count);
    std::fflush(stdout);
}

double PeakMegabytes()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof counters;
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(std::max(counters.PeakWorkingSetSize, counters.PeakPagefileUsage)) / (1024.0 * 1024.0);
}

// The platform's share of a keystroke that changes the number of rows: a
// bare owner-data list view of the explorer list's size and columns, its row
// count changed from 1,000 to 100 and repainted (the list view updates its
// scroll bars on every count it is given; under Wine that alone takes
// milliseconds).
double BareListCountChange(HWND like)
{
    RECT rect = {};
    ::GetClientRect(like, &rect);
    HWND parent = ::GetParent(like);
    HWND list = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_REPORT | LVS_OWNERDATA,
                                  0, 0, rect.right, rect.bottom, parent, nullptr, ::GetModuleHandleW(nullptr), nullptr);
    HWND header = ListView_GetHeader(like);
    const int columns = header ? Header_GetItemCount(header) : 4;
    for (int c = 0; c < columns; ++c) {
        LVCOLUMNW column = {};
        column.mask = LVCF_WIDTH | LVCF_TEXT;
        column.cx = ListView_GetColumnWidth(like, c);
        column.pszText = const_cast<wchar_t*>(L"Column");
        ListView_InsertColumn(list, c, &column);
    }
    ListView_SetItemCountEx(list, 1000, 0);
    ::UpdateWindow(list);
    const double start = Bench::Seconds();
    ListView_SetItemCountEx(list, 100, 0);
    ::RedrawWindow(list, nullptr, nullptr, RDW_UPDATENOW);
    const double seconds = Bench::SecondsSince(start);
    ::DestroyWindow(list);
    return seconds;
}

void MeasureExplorer(CL::CHistorian& historian)
{
    CdlgDBExplorer explorer(historian);
    double start = Bench::Seconds();
    explorer.Create();   // its creation refreshes
    ::ShowWindow(explorer, SW_SHOW);
    ::UpdateWindow(explorer);
    Line("explorer open and refresh", Bench::SecondsSince(start), ListCount(explorer.List().Hwnd()), 2.0);
    start = Bench::Seconds();
    ::SendMessageW(explorer, WM_COMMAND, MAKEWPARAM(ID_DBEXPLORER_REFRESH, 0), 0);
    ::UpdateWindow(explorer);
    Line("explorer refresh", Bench::SecondsSince(start), ListCount(explorer.List().Hwnd()), 2.0);
    // One keystroke after another, the slowest one counted: from the
    // changed text until the window has painted what changed (the list's
    // rows and the status bar's count), not only until the rows are
    // filtered. A keystroke after which the list had nothing to repaint did
    // not reach the screen, and the figure counts as missed.
    double slowest = 0;
    bool listRedrawn = true;
    std::wstring typed;
    for (const wchar_t c : std::wstring(L"item09")) {
        typed += c;
        start = Bench::Seconds();
        ::SetWindowTextW(explorer.FilterBar().Edit(), typed.c_str());
        listRedrawn = listRedrawn && ::GetUpdateRect(explorer.List().Hwnd(), nullptr, FALSE);
        ::RedrawWindow(explorer, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        slowest = std::max(slowest, Bench::SecondsSince(start));
    }
    if (!listRedrawn)
        std::printf("filter keystroke: the list was not invalidated by a change of the filter\n");
    Line("filter keystroke (slowest of 6)", listRedrawn ? slowest : 999.0, ListCount(explorer.List().Hwnd()), 0.02);
    Line("  a bare list view: 1,000 to 100 rows", BareListCountChange(explorer.List().Hwnd()), 100, 0);
    explorer.DestroyWindow();
}

void MeasureShowData(CL::CHistorian& historian)
{
    for (const unsigned max : {100000u, 0u}) {
        CdlgHistData dialog(historian);
        dialog.m_itemId = kBigItem;
        dialog.m_useFrom = BST_UNCHECKED;
        dialog.m_useTo = BST_UNCHECKED;
        dialog.m_maxCount = max;
        const HWND window = dialog.Create(nullptr, IDD_HISTDATA);
        ::ShowWindow(window, SW_SHOW);
        Pump();
        const double start = Bench::Seconds();
        ::SendMessageW(::GetDlgItem(window, IDC_HISTDATA_BTN_REFRESH), BM_CLICK, 0, 0);
        ::UpdateWindow(window);
        const double seconds = Bench::SecondsSince(start);
        const int rows = ListCount(::GetDlgItem(window, IDC_HISTDATA_LIST));
        Line(max ? "Show data, 100,000 values" : "Show data, 1,000,000 values", seconds, rows, max ? 0.5 : 3.0);
        ::DestroyWindow(window);
    }
    std::printf("%-40s megabytes=%.0f target=600 %s\n", "peak memory after 1,000,000 values", PeakMegabytes(),
                PeakMegabytes() <= 600 ? "ok" : "OVER");
}

void MeasureSave(CL::CHistorian& historian)
{
    test::TempDir folder;
    double csvSeconds = 0;
    for (const wchar_t* name : {L"export.csv", L"export.xlsx", L"export.xml"}) {
        CdlgHistData dialog(historian);
        dialog.m_itemId = kBigItem;
        dialog.m_useFrom = BST_UNCHECKED;
        dialog.m_useTo = BST_UNCHECKED;
        dialog.m_maxCount = 0;
        const HWND window = dialog.Create(nullptr, IDD_HISTDATA);
        const std::wstring file = folder.File(name);
        const double start = Bench::Seconds();
        {
            test::FileDialogAnswer answer(file);
            ::SendMessageW(::GetDlgItem(window, IDC_HISTDATA_OPEN_FILE), BM_CLICK, 0, 0);
            answer.Answered();
        }
        const double seconds = Bench::SecondsSince(start);
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        ::GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data);
        const long long bytes =
            static_cast<long long>(data.nFileSizeLow) + (static_cast<long long>(data.nFileSizeHigh) << 32);
        const std::wstring kind = std::wstring(name).substr(7);
        if (kind == L"csv") {
            csvSeconds = seconds;
            Line("Save data CSV, 1,000,000 values (bytes)", seconds, bytes, 3.0);
        } else if (kind == L"xlsx") {
            // The workbook's target: 1.5 times the CSV save of the same values.
            Line("Save data workbook, 1,000,000 values (bytes)", seconds, bytes, 1.5 * csvSeconds);
        } else {
            Line("Save data XML, 1,000,000 values (bytes)", seconds, bytes, 0.0);
        }
        ::DestroyWindow(window);
        ::DeleteFileW(file.c_str());
    }
}

// Where the time of the CSV save goes: the read of the 1,000,000 values
// (fetch and decoding of the stored runs) and the formatting and writing of
// the records, each alone.
void MeasureSaveParts(CL::CHistorian& historian)
{
    test::TempDir folder;
    CL::CHistorianValues values;
    double start = Bench::Seconds();
    historian.ReadRange(kBigItem, false, 0, false, 0, 0, values);
    Line("  its read of 1,000,000 values", Bench::SecondsSince(start), static_cast<long long>(values.Size()), 0.0);
    start = Bench::Seconds();
    {
        CL::CReplacingFile file(folder.File(L"parts.csv"), L"bench");
        CL::CHistoryCsvWriter writer(file);
        writer.Write(kBigItem, values);
        file.Commit();
    }
    Line("  its CSV formatting and writing", Bench::SecondsSince(start), static_cast<long long>(values.Size()), 0.0);
}

// The first 1,000 runs of the big item: 100,000 values.
void Bounds(double& from, double& to)
{
    from = kBase;
    to = kBase + 100000 * kSecond - kSecond / 2;
}

void MeasureRead(CL::CHistorian& historian)
{
    double from = 0;
    double to = 0;
    Bounds(from, to);
    double best = 1e9;
    size_t count = 0;
    for (int i = 0; i < 3; ++i) {
        CL::CHistorianValues values;
        const double start = Bench::Seconds();
        historian.ReadRange(kBigItem, true, from, true, to, 0, values);
        best = std::min(best, Bench::SecondsSince(start));
        count = values.Size();
    }
    Line("range read, 100,000 values (best of 3)", best, static_cast<long long>(count), 0.0);
}

void MeasureDelete(CL::CHistorian& historian, const std::wstring& connection)
{
    {
        CL::CHistoricDataWriter writer(connection);
        writer.Connection().Execute(L"BEGIN");
        for (int run = 0; run < 1000; ++run) {
            std::vector<CL::CHistoricValue> values;
            for (int k = 0; k < 100; ++k)
                values.push_back({kBase + (run * 100 + k) * kSecond, 192, CL::CVariant::R8(k)});
            writer.AppendRun(kDeleteItem, values);
        }
        writer.Connection().Execute(L"COMMIT");
    }
    const double start = Bench::Seconds();
    historian.DeleteItems({kDeleteItem}, true, kBase + 25000 * kSecond, true, kBase + 75000 * kSecond);
    Line("delete one item's period (500 of 1,000 runs)", Bench::SecondsSince(start), 0, 0.0);
    historian.DeleteItems({kDeleteItem}, false, 0, false, 0);
}

int Measure(const std::wstring& connection, const std::wstring& label)
{
    test::ComScope com;
    CL::RegisterHistorianControlClasses();
    CL::CHistorian historian;
    historian.Configure(connection, CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    std::printf("--- %ls\n", label.c_str());
    MeasureExplorer(historian);
    MeasureShowData(historian);
    MeasureSave(historian);
    MeasureSaveParts(historian);
    MeasureRead(historian);
    MeasureDelete(historian, connection);
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::wstring command = argc > 1 ? argv[1] : L"";
    try {
        if (command == L"measure" && argc > 3)
            return Measure(argv[2], argv[3]);
        if (command == L"bounds") {
            double from = 0;
            double to = 0;
            Bounds(from, to);
            std::printf("%.14f %.14f\n", from, to);
            return 0;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    } catch (...) {
        std::fprintf(stderr, "failed\n");
        return 1;
    }
    std::fprintf(stderr, "usage: bench_histscale measure <connection> <label> | bounds\n");
    return 2;
}
