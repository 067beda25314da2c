#pragma once
// CEditorPlace: where the user was in the editor's views (the expanded
// branches, the selected branch and the selected rows), taken by the paths
// of names before the views are emptied, so that after a reload, a save or
// another address space the same places are opened and selected again
// where they still exist.
#include <windows.h>

#include <commctrl.h>

#include <set>
#include <string>
#include <vector>

#include "addressspace/NoCaseLess.h"

class CEditorPlace {
public:
    using Path = std::vector<std::wstring>;   // branch names below the root

    // Takes the tree's expanded and selected nodes and the given row names.
    void Capture(HWND tree, std::vector<std::wstring> selectedRows);
    bool Empty() const noexcept { return !m_captured; }
    void Clear();

    // Expands the captured branches that the tree has, and returns the node
    // of the selected branch (or its nearest ancestor that is still there).
    HTREEITEM Restore(HWND tree) const;
    // Whether a row of that name was selected.
    bool RowSelected(const std::wstring& name) const { return m_rows.count(name) != 0; }

private:
    void CaptureNode(HWND tree, HTREEITEM node, Path& path);
    static HTREEITEM Find(HWND tree, const Path& path, bool nearest);

    bool m_captured = false;
    std::vector<Path> m_expanded;
    Path m_selected;
    std::set<std::wstring, NoCaseLess> m_rows;
};
