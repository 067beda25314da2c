// Rename in place in the address space editor: F2 (or a slow second click)
// edits the name of the selected branch in the tree or of the focused item
// in the list, with the model's name rules and the duplicate messages of
// the branch and item dialogs.
#include "addressspace/MainFrm.h"

#include <utility>

#include "addressspace/BranchTree.h"
#include "addressspace/EditorTexts.h"
#include "addressspace/NoCaseLess.h"
#include "addressspace/RenameBranchCommand.h"
#include "addressspace/RenameItemCommand.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "res/resource.h"

void CMainFrame::OnEditRename()
{
    Log(3, "CMainFrame::OnEditRename" + MV_POS());
    CL::RunReported([this] {
        if (TreeHasFocus()) {
            const HTREEITEM node = SelectedNode();
            const COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, node);
            if (branch && branch->Parent())
                TreeView_EditLabel(m_tree, node);
            else
                ::MessageBeep(MB_OK);   // the root has no name
            return;
        }
        const long long row = m_list.FocusedRow();
        const int line = row < 0 ? -1 : m_list.DisplayIndexOf(static_cast<size_t>(row));
        if (line >= 0) {
            ::SetFocus(m_list);
            ListView_EditLabel(m_list, line);
        }
    });
}

bool CMainFrame::EditingLabel(HWND window) const
{
    const HWND treeEdit = m_tree ? TreeView_GetEditControl(m_tree) : nullptr;
    const HWND listEdit = m_list.Hwnd() ? ListView_GetEditControl(m_list.Hwnd()) : nullptr;
    return window && (window == treeEdit || window == listEdit);
}

// The root keeps its (empty) name.
bool CMainFrame::OnTreeBeginLabelEdit(const NMTVDISPINFOW& info)
{
    const COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, info.item.hItem);
    return !branch || !branch->Parent();
}

// The rename runs after the label edit has gone (a posted message): a
// message box shown while the control ends its edit would end it again.
void CMainFrame::OnTreeEndLabelEdit(const NMTVDISPINFOW& info)
{
    const COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, info.item.hItem);
    if (!info.item.pszText || !branch)
        return;   // cancelled
    m_pendingRename = PendingRename{BranchPtr(const_cast<COPCServerAddressSpaceBranch*>(branch)), nullptr,
                                    info.item.pszText};
    ::PostMessageW(Hwnd(), kRenameMessage, 0, 0);
}

void CMainFrame::OnListEndLabelEdit(const NMLVDISPINFOW& info)
{
    if (!info.item.pszText || info.item.iItem < 0)
        return;   // cancelled
    const size_t row = m_list.SourceRowAt(static_cast<size_t>(info.item.iItem));
    m_pendingRename = PendingRename{nullptr, m_rows.ItemAt(row), info.item.pszText};
    ::PostMessageW(Hwnd(), kRenameMessage, 0, 0);
}

void CMainFrame::OnRenameMessage()
{
    Log(3, "CMainFrame::OnRenameMessage" + MV_POS());
    const PendingRename rename = std::exchange(m_pendingRename, PendingRename());
    CL::RunReported([this, &rename] {
        if (rename.branch)
            RenameBranch(rename.branch, rename.name);
        else if (rename.item)
            RenameItem(rename.item, rename.name);
    });
}

void CMainFrame::RenameBranch(const BranchPtr& branch, const std::wstring& name)
{
    COPCServerAddressSpaceBranch* parent = branch->Parent();
    if (!parent || EqualNoCase(name, branch->Name()))
        return;   // gone meanwhile, or a change of letter case only: nothing changes
    if (parent->FindBranch(name)) {
        ShowError(kDuplicateBranchText, L"Add Branch");
        return;
    }
    m_document.Execute(std::make_unique<CRenameBranchCommand>(branch, name));
    const HTREEITEM node = CBranchTree::NodeOf(m_tree, branch.get());
    if (node)
        CBranchTree::Sync(m_tree, TreeView_GetParent(m_tree, node), *parent);
}

void CMainFrame::RenameItem(const ItemPtr& item, const std::wstring& name)
{
    COPCServerAddressSpaceBranch* branch = item->Parent();
    if (!branch || EqualNoCase(name, item->Name()))
        return;
    if (branch->FindItem(name)) {
        ShowError(kDuplicateItemText, L"Add Item");
        return;
    }
    m_document.Execute(std::make_unique<CRenameItemCommand>(item, name));
    for (size_t row = 0; row < m_rows.RowCount(); ++row) {
        if (m_rows.ItemAt(row).get() == item.get()) {
            m_rows.Refresh(row);
            m_list.UpdateRow(row);
        }
    }
}
