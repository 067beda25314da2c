// Benchmark of the historian windows on a SQLite database through ODBC: one
// item with 100,000 archived values (1,000 runs of 100, doubles and texts)
// and 10,000 further items with one short run each.
//
//   bench_histwin.exe build   <db>   writes the database
//   bench_histwin.exe measure <db>   times the windows against the reads
//
// measure drives the real windows, as the UI tests do: "Show data" from the
// click to all rows in the list (painted), a sort by "Value" and one by
// "Time (UTC)", "Save data..." of the values to XML (the save dialog
// answered by a watcher thread), and the explorer's refresh over all items.
// Each figure is printed with the historian's own read time for the same
// data as its baseline, and the sorted orders are checked against the
// comparison rule (code-unit order of the texts).
#include <windows.h>
#include <commctrl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/BenchTiming.h"
#include "common/LocalTime.h"
#include "common/Text.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/historian/Historian.h"
#include "historian/PickerTime.h"
#include "historian/dlgDBExplorer.h"
#include "historian/HistoryExport.h"
#include "historian/dlgHistData.h"
#include "res/resource.h"
#include "support/FileDialogAnswer.h"
#include "support/HistorianTestDb.h"
#include "support/TestSupport.h"

namespace {

constexpr int kRuns = 1000;
constexpr int kValuesPerRun = 100;
constexpr int kOtherItems = 10000;
constexpr double kBase = 45000.0;            // 15 March 2023, UTC
constexpr double kSecond = 1.0 / 86400.0;
const wchar_t kItem[] = L"Bench.Tank.Level";

std::wstring ConnectionString(const std::wstring& path)
{
    return L"Driver={SQLite3};Database=" + path + L";";
}

int Build(const std::wstring& path)
{
    CL::CHistoricDataWriter writer(ConnectionString(path));
    writer.CreateTable();
    writer.Connection().Execute(L"BEGIN");
    for (int run = 0; run < kRuns; ++run) {
        std::vector<CL::CHistoricValue> values;
        for (int i = 0; i < kValuesPerRun; ++i) {
            const int n = run * kValuesPerRun + i;
            // Every fifth value a text; the others doubles of varied length.
            CL::CVariant value = n % 5 == 4 ? CL::CVariant(CL::Format(L"state %d", n % 97))
                                            : CL::CVariant::R8((n * 7919 % 100003) / 7.0);
            values.push_back({kBase + n * kSecond, static_cast<WORD>(n % 3 ? 192 : 64), value});
        }
        writer.AppendRun(kItem, values);
    }
    for (int item = 0; item < kOtherItems; ++item) {
        const double start = kBase + (item % 1440) / 1440.0;
        writer.AppendRun(CL::Format(L"Plant.Area%03d.Item%05d", item % 100, item),
                         {{start, 192, CL::CVariant::R8(item)}, {start + kSecond, 192, CL::CVariant::R8(item + 1)}});
    }
    writer.Connection().Execute(L"COMMIT");
    return 0;
}

void Pump()
{
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

std::wstring Cell(HWND list, int row, int column)
{
    wchar_t text[4096] = {};
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = text;
    item.cchTextMax = 4096;
    ::SendMessageW(list, LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
    return text;
}

// Whether the list shows its rows in code-unit order of the column's texts.
bool InTextOrder(HWND list, int column, bool ascending)
{
    const int count = static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    std::wstring previous = Cell(list, 0, column);
    for (int i = 1; i < count; ++i) {
        std::wstring text = Cell(list, i, column);
        if (ascending ? text < previous : previous < text)
            return false;
        previous = std::move(text);
    }
    return true;
}

void ClickHeader(HWND list, int column)
{
    const HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
    RECT r = {};
    ::SendMessageW(header, HDM_GETITEMRECT, column, reinterpret_cast<LPARAM>(&r));
    const LPARAM at = MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    ::SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(header, WM_LBUTTONUP, 0, at);
}

void Line(const char* what, double seconds, double baseline, const char* baselineWhat, const char* note = "")
{
    std::printf("%-36s %8.3f s   %-24s %8.3f s  %6.2f x  %s\n", what, seconds, baselineWhat, baseline,
                seconds / baseline, note);
}

int Measure(const std::wstring& path)
{
    test::ComScope com;
    CL::RegisterHistorianControlClasses();
    CL::CHistorian historian;
    historian.Configure(ConnectionString(path), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);

    // Baselines: the historian's reads of the same data.
    double start = Bench::Seconds();
    CL::CHistorianValues values;
    historian.ReadRange(kItem, false, 0.0, false, 0.0, 0, values);
    const double readSeconds = Bench::SecondsSince(start);
    start = Bench::Seconds();
    const size_t items = historian.ReadSummary().size();
    const double summarySeconds = Bench::SecondsSince(start);

    CdlgHistData dialog(historian);
    dialog.m_itemId = kItem;
    dialog.m_useFrom = BST_UNCHECKED;
    dialog.m_useTo = BST_UNCHECKED;
    dialog.m_maxCount = 0;
    const HWND window = dialog.Create(nullptr, IDD_HISTDATA);
    ::ShowWindow(window, SW_SHOW);
    Pump();
    const HWND list = ::GetDlgItem(window, IDC_HISTDATA_LIST);

    start = Bench::Seconds();
    ::SendMessageW(::GetDlgItem(window, IDC_HISTDATA_BTN_REFRESH), BM_CLICK, 0, 0);
    ::UpdateWindow(window);
    const double showSeconds = Bench::SecondsSince(start);
    const int rows = static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));

    start = Bench::Seconds();
    ClickHeader(list, 0);
    ::UpdateWindow(list);
    const double sortValueSeconds = Bench::SecondsSince(start);
    const bool valueOrder = InTextOrder(list, 0, true);

    start = Bench::Seconds();
    ClickHeader(list, 1);
    ::UpdateWindow(list);
    const double sortTimeSeconds = Bench::SecondsSince(start);
    const bool timeOrder = InTextOrder(list, 1, true);

    test::TempDir folder;
    const std::wstring file = folder.File(L"export.xml");
    start = Bench::Seconds();
    {
        test::FileDialogAnswer answer(file);
        ::SendMessageW(::GetDlgItem(window, IDC_HISTDATA_OPEN_FILE), BM_CLICK, 0, 0);
        answer.Answered();
    }
    const double exportSeconds = Bench::SecondsSince(start);
    const size_t exportBytes = test::ReadFileBytes(file).size();
    // The export's own part: the document built and saved, without the read
    // and the save dialog.
    start = Bench::Seconds();
    CL::ExportHistory(kItem, values, folder.File(L"direct.xml"));
    const double documentSeconds = Bench::SecondsSince(start);
    ::DestroyWindow(window);

    CdlgDBExplorer explorer(historian);
    explorer.Create();
    ::ShowWindow(explorer, SW_SHOW);
    Pump();
    start = Bench::Seconds();
    ::SendMessageW(explorer, WM_COMMAND, MAKEWPARAM(ID_DBEXPLORER_REFRESH, 0), 0);
    ::UpdateWindow(explorer);
    const double refreshSeconds = Bench::SecondsSince(start);
    const int explorerRows = static_cast<int>(::SendMessageW(explorer.List().Hwnd(), LVM_GETITEMCOUNT, 0, 0));
    explorer.DestroyWindow();

    std::printf("%-36s %10s   %-24s %10s  %8s\n", "window operation", "time", "baseline (historian)", "time",
                "ratio");
    Line("Show data (100,000 values)", showSeconds, readSeconds, "ReadRange of the item");
    Line("sort by \"Value\"", sortValueSeconds, readSeconds, "ReadRange of the item", valueOrder ? "order ok" : "ORDER WRONG");
    Line("sort by \"Time (UTC)\"", sortTimeSeconds, readSeconds, "ReadRange of the item", timeOrder ? "order ok" : "ORDER WRONG");
    Line("Save data... (XML, save dialog too)", exportSeconds, readSeconds, "ReadRange of the item");
    Line("  of which the XML document", documentSeconds, readSeconds, "ReadRange of the item");
    Line("explorer refresh (10,001 items)", refreshSeconds, summarySeconds, "ReadSummary");
    std::printf("rows shown %d, values read %zu, export %zu bytes, explorer rows %d of %zu items\n", rows,
                values.Size(), exportBytes, explorerRows, items);
    const bool ok = rows == static_cast<int>(values.Size()) && valueOrder && timeOrder && exportBytes > 0 &&
                    explorerRows == static_cast<int>(items);
    return ok ? 0 : 1;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: bench_histwin build|measure <db host path>\n");
        return 2;
    }
    const std::wstring command = argv[1];
    try {
        if (command == L"build")
            return Build(argv[2]);
        if (command == L"measure")
            return Measure(argv[2]);
    } catch (...) {
        std::fprintf(stderr, "failed\n");
        return 1;
    }
    return 2;
}
