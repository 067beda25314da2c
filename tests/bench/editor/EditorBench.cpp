// The address space editor on a large address space: the 100,000-item space
// of the address space benchmark plus one branch "Big" of 10,000 items at
// the root, saved and loaded from a file as the editor gets it from the
// server. Measured in one run under Wine, on the test display:
//   - the file load (the baseline),
//   - creating and showing the editor with its tree filled,
//   - filling the list when the 10,000-item branch is selected,
//   - sorting that list by "Name" and by "Current Value",
//   - Find over the whole address space, the first results (one screen)
//     and all results, for part of a name and for a pattern,
//   - copy and paste of the 10,000 rows (into their own branch, so every
//     name gets the next free number), duplicate x10,000 through its dialog,
//   - a drag of the 10,000 rows onto the root's node (the move and the
//     views' update after the drop),
//   - undo and redo of deleting the 10,000-item branch,
//   - the status bar's item counts (the listed branch and the whole address
//     space), brought up to date after every edit: one update.
// Prints one figure per line, the targets, and the ratio of the editor's own
// time to the load.
//
// usage: bench_editor.exe <file to write>
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>

#include "addressspace/AddressSpaceSearch.h"
#include "addressspace/EditorLayout.h"
#include "addressspace/EditorStatus.h"
#include "addressspace/ItemRows.h"
#include "addressspace/MainFrm.h"
#include "bench/BenchAddressSpace.h"
#include "bench/BenchTiming.h"
#include "common/Exception.h"
#include "common/RegistryKey.h"
#include "common/Text.h"
#include "res/resource.h"
#include "support/DialogScript.h"
#include "support/TestSupport.h"

namespace {

using Bench::Seconds;
constexpr int kBigItems = 10000;
constexpr double kTargetShow = 0.5;
constexpr double kTargetFill = 0.3;
constexpr double kTargetSort = 0.3;
constexpr double kTargetFind = 0.05;
constexpr double kTargetUndo = 0.3;
constexpr double kTargetOther = 1.0;
constexpr double kTargetStatus = 0.005;   // a small part of the quickest edit
constexpr int kStatusRuns = 100;
constexpr size_t kFirstResults = 50;   // about one screen of the results list

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
    std::printf("%s %.3f (target <= %.2f: %s)\n", name, seconds, target, seconds <= target ? "met" : "MISSED");
}

// Times one search and prints it with its number of matches.
size_t TimeFind(const CAddressSpaceSearch& search, const char* name, const std::wstring& query, size_t limit)
{
    const double start = Seconds();
    const size_t found = search.Find(query, limit).size();
    const double seconds = Seconds() - start;
    std::printf("%s (%zu matches) ", name, found);
    Print("seconds", seconds, kTargetFind);
    return found;
}

void Command(CMainFrame& frame, WORD id)
{
    ::SendMessageW(frame, WM_COMMAND, MAKEWPARAM(id, 0), 0);
    ::UpdateWindow(frame);
    Pump();
}

double TimeCommand(CMainFrame& frame, WORD id)
{
    const double start = Seconds();
    Command(frame, id);
    return Seconds() - start;
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
        // The bench's window keeps its layout apart from the program's.
        const std::wstring layoutKey = CEditorLayout::DefaultKey() + L" Bench";
        frame.SetLayoutKey(layoutKey);
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

        const double indexStart = Seconds();
        const CAddressSpaceSearch search(*frame.Document().Model());
        const double index = Seconds() - indexStart;
        const size_t nameFirst = TimeFind(search, "find_name_first_results", L"item4242", kFirstResults);
        const size_t nameAll = TimeFind(search, "find_name_all_results", L"item4242", SIZE_MAX);
        const size_t patternFirst = TimeFind(search, "find_pattern_first_results", L"area?.line*.unit3.item*7",
                                             kFirstResults);
        const size_t patternAll = TimeFind(search, "find_pattern_all_results", L"area?.line*.unit3.item*7", SIZE_MAX);

        // Copy all 10,000 rows of Big, paste them into Big, take the paste back.
        ::SetFocus(frame.List());
        ListView_SetItemState(frame.List(), -1, LVIS_SELECTED, LVIS_SELECTED);
        const double copy = TimeCommand(frame, ID_AS_EDIT_COPY);
        const double paste = TimeCommand(frame, ID_AS_EDIT_PASTE);
        const int pastedRows = ListView_GetItemCount(frame.List());
        Command(frame, ID_AS_EDIT_UNDO);

        // Duplicate one row 10,000 times through the dialog, then take it back.
        ::SetFocus(frame.List());
        ListView_SetItemState(frame.List(), -1, 0, LVIS_SELECTED);
        ListView_SetItemState(frame.List(), 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
        double duplicate = 0;
        {
            test::DialogScript script({{L"Duplicate", [&duplicate](HWND dialog) {
                                            ::SetDlgItemTextW(dialog, IDC_DUPLICATE_COUNT, L"10000");
                                            duplicate = Seconds();
                                            ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
                                        }}});
            Command(frame, ID_AS_EDIT_DUPLICATE);
            duplicate = Seconds() - duplicate;
            if (!script.Finished())
                throw CL::CException(E_FAIL, L"no Duplicate dialog");
        }
        const int duplicatedRows = ListView_GetItemCount(frame.List());
        Command(frame, ID_AS_EDIT_UNDO);

        // Drag all rows of Big onto the root's node with the mouse messages of
        // a drag, then take the move back.
        ::SetFocus(frame.List());
        ListView_SetItemState(frame.List(), -1, LVIS_SELECTED, LVIS_SELECTED);
        RECT row = {};
        ListView_GetItemRect(frame.List(), 0, &row, LVIR_LABEL);
        const POINT press = {row.left + 5, (row.top + row.bottom) / 2};
        ::PostMessageW(frame.List(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(press.x, press.y));
        ::PostMessageW(frame.List(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(press.x + 40, press.y + 40));
        Pump();
        const bool dragging = frame.Dragging();
        RECT node = {};
        TreeView_GetItemRect(frame.Tree(), TreeView_GetRoot(frame.Tree()), &node, TRUE);
        POINT drop = {(node.left + node.right) / 2, (node.top + node.bottom) / 2};
        ::MapWindowPoints(frame.Tree(), frame, &drop, 1);
        const double moveStart = Seconds();
        ::PostMessageW(frame, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(drop.x, drop.y));
        ::PostMessageW(frame, WM_LBUTTONUP, 0, MAKELPARAM(drop.x, drop.y));
        Pump();
        ::UpdateWindow(frame);
        const double move = Seconds() - moveStart;
        const size_t movedToRoot = frame.Document().Model()->RootBranch()->ItemCount();
        Command(frame, ID_AS_EDIT_UNDO);

        // Delete the Big branch from the tree, then undo and redo.
        TreeView_SelectItem(frame.Tree(), big);
        ::SetFocus(frame.Tree());
        Command(frame, ID_AS_EDIT_DELETE);
        const bool deleted = !frame.Document().Model()->RootBranch()->FindBranch(L"Big");
        const double undo = TimeCommand(frame, ID_AS_EDIT_UNDO);
        const int undoneRows = ListView_GetItemCount(frame.List());
        const double redo = TimeCommand(frame, ID_AS_EDIT_REDO);
        const bool redone = !frame.Document().Model()->RootBranch()->FindBranch(L"Big");

        // The status bar's counts, as every edit brings them up to date, on
        // the 100,000 items left after the redo took Big away again.
        const double statusStart = Seconds();
        for (int run = 0; run < kStatusRuns; ++run)
            CEditorStatus::Show(frame.Bars(), frame.ListBranch(), *frame.Document().Model()->RootBranch(), true);
        const double statusUpdate = (Seconds() - statusStart) / kStatusRuns;
        wchar_t total[64] = {};
        ::SendMessageW(frame.Bars().StatusBar(), SB_GETTEXTW, CEditorStatus::kTotalPane, reinterpret_cast<LPARAM>(total));
        const size_t counted = CEditorStatus::CountItems(*frame.Document().Model()->RootBranch());

        std::printf("items %d in the list, %u tree nodes\n", rows, nodes);
        std::printf("load_seconds %.3f\n", load);
        Print("editor_shown_seconds", show, kTargetShow);
        Print("list_fill_10000_seconds", fill, kTargetFill);
        Print("sort_by_name_seconds", sortName, kTargetSort);
        Print("sort_by_current_value_seconds", sortValue, kTargetSort);
        std::printf("find_index_seconds %.3f (taken when the dialog opens)\n", index);
        Print("copy_10000_rows_seconds", copy, kTargetOther);
        Print("paste_10000_rows_seconds", paste, kTargetOther);
        Print("duplicate_x10000_seconds", duplicate, kTargetOther);
        Print("drag_move_10000_rows_seconds", move, kTargetOther);
        Print("undo_delete_10000_item_branch_seconds", undo, kTargetUndo);
        Print("redo_delete_10000_item_branch_seconds", redo, kTargetOther);
        std::printf("status_counts_update_seconds %.6f on %zu items (target <= %.3f: %s)\n", statusUpdate, counted,
                    kTargetStatus, statusUpdate <= kTargetStatus ? "met" : "MISSED");
        std::printf("editor_to_load_ratio %.3f\n", show / load);
        std::printf("editor_with_list_to_load_ratio %.3f\n", (show + fill) / load);
        if (!nameSorted || !valueSorted) {
            std::fprintf(stderr, "the list is not shown in the order of the sorted column\n");
            status = 1;
        }
        if (nameFirst != nameAll || nameAll != 11 || patternFirst != kFirstResults || patternAll != 1000) {
            std::fprintf(stderr, "find gave %zu/%zu and %zu/%zu matches\n", nameFirst, nameAll, patternFirst,
                         patternAll);
            status = 1;
        }
        if (pastedRows != 2 * kBigItems || duplicatedRows != 2 * kBigItems) {
            std::fprintf(stderr, "paste showed %d rows, duplicate %d\n", pastedRows, duplicatedRows);
            status = 1;
        }
        if (!dragging || movedToRoot != static_cast<size_t>(kBigItems)) {
            std::fprintf(stderr, "drag started %d, %zu items moved to the root\n", dragging, movedToRoot);
            status = 1;
        }
        if (!deleted || !redone || undoneRows != kBigItems) {
            std::fprintf(stderr, "delete %d, undo showed %d rows, redo %d\n", deleted, undoneRows, redone);
            status = 1;
        }
        if (rows != kBigItems) {
            std::fprintf(stderr, "the list shows %d rows, expected %d\n", rows, kBigItems);
            status = 1;
        }
        if (counted != 100000u || CEditorStatus::TotalText(counted) != total) {
            std::fprintf(stderr, "the status bar counted %zu items and shows '%ls'\n", counted, total);
            status = 1;
        }
        frame.Document().SetDirty(false);
        frame.DestroyWindow();
        CL::CRegistryKey::Delete(HKEY_CURRENT_USER, layoutKey);
    } catch (const CL::CException& e) {
        std::fprintf(stderr, "%ls\n", e.Text().c_str());
        status = 1;
    }
    ::CoUninitialize();
    return status;
}
