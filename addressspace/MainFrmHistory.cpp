// Undo and redo in the address space editor, and how the views follow an
// edit that the history made: the tree brought up to the model (its nodes,
// and so what was expanded, kept), the touched branch selected, and rows
// selected by their items.
#include "addressspace/MainFrm.h"

#include <unordered_set>

#include "addressspace/BranchTree.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/ui/WaitCursor.h"

void CMainFrame::OnEditUndo()
{
    Log(3, "CMainFrame::OnEditUndo" + MV_POS());
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        if (const CEditCommand* undone = m_document.Undo())
            ShowEdit(*undone);
        else
            ::MessageBeep(MB_OK);
    });
}

void CMainFrame::OnEditRedo()
{
    Log(3, "CMainFrame::OnEditRedo" + MV_POS());
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        if (const CEditCommand* redone = m_document.Redo())
            ShowEdit(*redone);
        else
            ::MessageBeep(MB_OK);
    });
}

void CMainFrame::ShowEdit(const CEditCommand& command)
{
    if (CBranchTree::BranchOf(m_tree, RootNode()) != m_document.Model()->RootBranch().get()) {
        ClearViews();   // another model: every node goes
        FillViews();
    } else {
        CBranchTree::Sync(m_tree, RootNode(), *m_document.Model()->RootBranch());
    }
    HTREEITEM node = CBranchTree::NodeOf(m_tree, command.TouchedBranch());
    if (!node)
        node = RootNode();
    TreeView_EnsureVisible(m_tree, node);
    if (TreeView_GetSelection(m_tree) != node)
        TreeView_SelectItem(m_tree, node);   // the selection change fills the list
    else
        FillList(CBranchTree::BranchOf(m_tree, node));
}

void CMainFrame::SelectRowsOf(const std::vector<ItemPtr>& items)
{
    std::unordered_set<const COPCItem*> wanted;
    for (const ItemPtr& item : items)
        wanted.insert(item.get());
    const bool all = !wanted.empty() && wanted.size() == m_list.DisplayCount();
    // One redraw at the end, not one per row (a paste or a drop selects thousands).
    ::SendMessageW(m_list, WM_SETREDRAW, FALSE, 0);
    ListView_SetItemState(m_list, -1, all ? LVIS_SELECTED : 0, LVIS_SELECTED | LVIS_FOCUSED);
    int focus = all ? 0 : -1;
    for (size_t display = 0; !all && display < m_list.DisplayCount(); ++display) {
        if (!wanted.count(m_rows.ItemAt(m_list.SourceRowAt(display)).get()))
            continue;
        ListView_SetItemState(m_list, static_cast<int>(display), LVIS_SELECTED, LVIS_SELECTED);
        if (focus < 0)
            focus = static_cast<int>(display);
    }
    if (focus >= 0)
        ListView_SetItemState(m_list, focus, LVIS_FOCUSED, LVIS_FOCUSED);
    ::SendMessageW(m_list, WM_SETREDRAW, TRUE, 0);
    ::InvalidateRect(m_list, nullptr, FALSE);
    if (focus >= 0)
        ListView_EnsureVisible(m_list, focus, FALSE);
}
