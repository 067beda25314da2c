#pragma once
// CEditorStatus: the editor's status bar panes beside the prompt: the items
// of the branch the list shows, the items of the whole address space, and
// "Modified" while there are unsaved changes. Counting walks the branches
// only (each branch knows how many items it holds), so it stays cheap on
// an address space of a hundred thousand items.
#include <string>
#include <vector>

#include "addressspace/OPCServerAddressSpaceBranch.h"
#include "common/ui/FrameBars.h"

class CEditorStatus {
public:
    enum Pane { kBranchPane = 1, kTotalPane = 2, kModifiedPane = 3 };
    static constexpr wchar_t kModified[] = L"Modified";
    // "Modified: 1 change", "Modified: 12 changes" (the differences from
    // the address space as last loaded or saved; a double-click on the pane
    // opens their review).
    static std::wstring ModifiedText(size_t changes);

    // The widths of the panes right of the prompt, in pixels at 96 dpi.
    static std::vector<int> PaneWidths();
    // The items in this branch and every branch below it.
    static size_t CountItems(const COPCServerAddressSpaceBranch& root);
    static std::wstring BranchText(size_t items);
    static std::wstring TotalText(size_t items);

    // Shows the counts of the listed branch (none: an empty pane) and of the
    // address space, and the dirty flag with the number of changes.
    static void Show(CL::CFrameBars& bars, const COPCServerAddressSpaceBranch* listed,
                     const COPCServerAddressSpaceBranch& root, bool dirty, size_t changes = 0);
};
