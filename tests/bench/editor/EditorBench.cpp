// The address space editor on a large address space: the 100,000-item space
// of the address space benchmark plus one branch "Big" of 10,000 items at
// the root, saved and loaded from a file as the editor gets it from the
// server. Measured in one run under Wine, on the test display:
//   - the file load (the baseline),
//   - creating and showing the editor with its tree filled,
//   - filling the list when the 10,000-item branch is selected,
//   - sorting that list by "Name" and by "Current Value".
// Prints one figure per line, the targets, and the ratio of the editor's own
// time to the load.
//
// usage: bench_editor.exe <file to write>
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>

#include "addressspace/ItemRows.h"
#include "addressspace/MainFrm.h"
#include "bench/BenchAddressSpace.h"
#include "bench/BenchTiming.h"
#include "common/Exception.h"
#include "common/Text.h"

namespace {

using Bench::Seconds;
constexpr int kBigItems = 10000;
constexpr double kTargetShow = 0.5;
constexpr double kTargetFill = 0.3;
constexpr double kTargetSort = 0.3;

// Handles what the windows have queued (painting included).
void Pump()
{
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

void AddBigBranch(COPCServerAddressSpace& space)
{
    auto big = Bench::BranchPtr::Make(L"Big");
    space.RootBranch()->AddBranch(big);
    for (int n = 0; n < kBigItems; ++n) {
        auto item = Bench::MakeItem(n);
        item->Rename((L"Signal" + std::to_wstring((n * 7919) % kBigItems)).c_str());
        big->AddItem(item);
    }
}

HTREEITEM ChildNamed(HWND tree, HTREEITEM parent, const std::wstring& name)
{
    for (HTREEITEM child = TreeView_GetChild(tree, parent); child; child = TreeView_GetNextSibling(tree, child)) {
        const auto* branch = CMainFrame::NodeBranch(tree, child);
        if (branch && branch->Name() == name)
            return child;
    }
    return nullptr;
}

double TimeSort(CMainFrame& frame, int column)
{
    const double start = Seconds();
    frame.ReportList().OnColumnClick(column);
    ::UpdateWindow(frame.List());
    Pump();
    return Seconds() - start;
}

// Whether the list shows its rows in ascending order of the column.
bool ShownSorted(CMainFrame& frame, int column)
{
    const CL::CReportList& list = frame.ReportList();
    for (size_t i = 1; i < list.DisplayCount(); ++i) {
        const size_t before = list.SourceRowAt(i - 1), after = list.SourceRowAt(i);
        const bool descending = frame.Rows().ComparesByText(column)
                                    ? frame.Rows().CellText(after, column) < frame.Rows().CellText(before, column)
                                    : frame.Rows().Less(after, before, column);
        if (descending)
            return false;
    }
    return true;
}

void Print(const char* name, double seconds, double target)
{
    std::printf("%s %.3f (target <= %.1f: %s)\n", name, seconds, target, seconds <= target ? "met" : "MISSED");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_editor.exe <file>\n");
        return 2;
    }
    const std::wstring path = CL::Widen(argv[1]);
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    INITCOMMONCONTROLSEX icc = {sizeof icc, ICC_BAR_CLASSES | ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
    ::InitCommonControlsEx(&icc);
    int status = 0;
    try {
        {
            auto space = Bench::Build();
            AddBigBranch(*space);
            space->Save(path);
        }
        const double loadStart = Seconds();
        auto loaded = CAddressSpaceDocument::ModelPtr::Make();
        loaded->Load(path);
        const double load = Seconds() - loadStart;

        CMainFrame frame{CAddressSpaceExchange([] { return std::wstring(L"MvBenchNoService"); }, path)};
        frame.Document().SetModel(loaded);
        const double showStart = Seconds();
        if (!frame.Create())
            CL::ThrowLastError(L"CMainFrame::Create");
        ::ShowWindow(frame, SW_SHOWNORMAL);
        ::UpdateWindow(frame);
        Pump();
        const double show = Seconds() - showStart;
        const unsigned nodes = TreeView_GetCount(frame.Tree());

        const HTREEITEM big = ChildNamed(frame.Tree(), TreeView_GetRoot(frame.Tree()), L"Big");
        if (!big)
            throw CL::CException(E_FAIL, L"no Big branch in the tree");
        const double fillStart = Seconds();
        TreeView_SelectItem(frame.Tree(), big);
        ::UpdateWindow(frame.List());
        Pump();
        const double fill = Seconds() - fillStart;
        const int rows = ListView_GetItemCount(frame.List());

        const double sortName = TimeSort(frame, CItemRows::kName);
        const bool nameSorted = ShownSorted(frame, CItemRows::kName);
        const double sortValue = TimeSort(frame, CItemRows::kCurrentValue);
        const bool valueSorted = ShownSorted(frame, CItemRows::kCurrentValue);

        std::printf("items %d in the list, %u tree nodes\n", rows, nodes);
        std::printf("load_seconds %.3f\n", load);
        Print("editor_shown_seconds", show, kTargetShow);
        Print("list_fill_10000_seconds", fill, kTargetFill);
        Print("sort_by_name_seconds", sortName, kTargetSort);
        Print("sort_by_current_value_seconds", sortValue, kTargetSort);
        std::printf("editor_to_load_ratio %.3f\n", show / load);
        std::printf("editor_with_list_to_load_ratio %.3f\n", (show + fill) / load);
        if (!nameSorted || !valueSorted) {
            std::fprintf(stderr, "the list is not shown in the order of the sorted column\n");
            status = 1;
        }
        if (rows != kBigItems) {
            std::fprintf(stderr, "the list shows %d rows, expected %d\n", rows, kBigItems);
            status = 1;
        }
        frame.Document().SetDirty(false);
        frame.DestroyWindow();
    } catch (const CL::CException& e) {
        std::fprintf(stderr, "%ls\n", e.Text().c_str());
        status = 1;
    }
    ::CoUninitialize();
    return status;
}
