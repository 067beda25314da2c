#pragma once
// The editor's tree of branches as a tree view: one node per branch, the
// node's lParam a reference to its branch (released on TVN_DELETEITEM),
// children sorted by name without regard to letter case. Sync brings a
// tree that was shown before some edits up to the model again, keeping the
// nodes (and so their expanded state) of branches that are still there.
#include <windows.h>

#include <commctrl.h>

#include <string>

#include "addressspace/OPCServerAddressSpaceBranch.h"

class CBranchTree {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;

    static constexpr wchar_t kRootText[] = L"Address Space";

    // The text of a branch's node: its name, or kRootText for an unnamed root.
    static std::wstring Label(const COPCServerAddressSpaceBranch& branch);
    // The branch of a node, or null.
    static COPCServerAddressSpaceBranch* BranchOf(HWND tree, HTREEITEM node);

    // A node for the branch, last under parentNode (null: at the top).
    static HTREEITEM Insert(HWND tree, HTREEITEM parentNode, const BranchPtr& branch);
    // Nodes for every branch below `branch`, under its node.
    static void InsertSubtree(HWND tree, HTREEITEM node, const COPCServerAddressSpaceBranch& branch);
    static void SortChildren(HWND tree, HTREEITEM parentNode);

    // Makes the nodes below `node` match the sub-branches below `branch`:
    // nodes of branches that went are deleted, branches that came get
    // nodes, renamed ones get their new text, and changed levels are sorted.
    static void Sync(HWND tree, HTREEITEM node, const COPCServerAddressSpaceBranch& branch);

    // The node of a branch shown in the tree, or null when it has none.
    static HTREEITEM NodeOf(HWND tree, const COPCServerAddressSpaceBranch* branch);
};
