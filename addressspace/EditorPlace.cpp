#include "addressspace/EditorPlace.h"

#include "addressspace/BranchTree.h"

void CEditorPlace::Clear()
{
    m_captured = false;
    m_expanded.clear();
    m_selected.clear();
    m_rows.clear();
}

void CEditorPlace::Capture(HWND tree, std::vector<std::wstring> selectedRows)
{
    Clear();
    const HTREEITEM root = TreeView_GetRoot(tree);
    if (!root)
        return;
    Path path;
    CaptureNode(tree, root, path);
    const HTREEITEM selected = TreeView_GetSelection(tree);
    for (HTREEITEM node = selected; node && node != root; node = TreeView_GetParent(tree, node))
        if (const COPCServerAddressSpaceBranch* branch = CBranchTree::BranchOf(tree, node))
            m_selected.insert(m_selected.begin(), branch->Name());
    m_rows.insert(selectedRows.begin(), selectedRows.end());
    m_captured = true;
}

void CEditorPlace::CaptureNode(HWND tree, HTREEITEM node, Path& path)
{
    if (!(TreeView_GetItemState(tree, node, TVIS_EXPANDED) & TVIS_EXPANDED))
        return;
    m_expanded.push_back(path);
    for (HTREEITEM child = TreeView_GetChild(tree, node); child; child = TreeView_GetNextSibling(tree, child)) {
        const COPCServerAddressSpaceBranch* branch = CBranchTree::BranchOf(tree, child);
        if (!branch)
            continue;
        path.push_back(branch->Name());
        CaptureNode(tree, child, path);
        path.pop_back();
    }
}

HTREEITEM CEditorPlace::Find(HWND tree, const Path& path, bool nearest)
{
    HTREEITEM node = TreeView_GetRoot(tree);
    for (const std::wstring& name : path) {
        HTREEITEM child = TreeView_GetChild(tree, node);
        while (child) {
            const COPCServerAddressSpaceBranch* branch = CBranchTree::BranchOf(tree, child);
            if (branch && EqualNoCase(branch->Name(), name))
                break;
            child = TreeView_GetNextSibling(tree, child);
        }
        if (!child)
            return nearest ? node : nullptr;
        node = child;
    }
    return node;
}

HTREEITEM CEditorPlace::Restore(HWND tree) const
{
    for (const Path& path : m_expanded)
        if (const HTREEITEM node = Find(tree, path, false))
            TreeView_Expand(tree, node, TVE_EXPAND);
    return Find(tree, m_selected, true);
}
