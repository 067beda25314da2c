// Find in the address space editor: the Find dialog over the whole address
// space, F3 and Shift+F3 through the last search's matches, and showing a
// match in the tree and the list.
#include "addressspace/MainFrm.h"

#include <memory>

#include "addressspace/BranchTree.h"
#include "addressspace/dlgFind.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/ui/WaitCursor.h"

void CMainFrame::OnEditFind()
{
    Log(3, "CMainFrame::OnEditFind" + MV_POS());
    CL::RunReported([this] {
        std::unique_ptr<CAddressSpaceSearch> search;
        {
            CL::CWaitCursor wait;
            search = std::make_unique<CAddressSpaceSearch>(*m_document.Model());
        }
        CdlgFind dialog(*search);
        dialog.query = m_find.Query();
        if (dialog.DoModal(Hwnd()) != IDOK)
            return;
        const CAddressSpaceSearch::Entry& entry = search->At(dialog.matches.at(dialog.chosen));
        ShowMatch(entry);
        m_find.Set(dialog.query, entry);
    });
}

void CMainFrame::OnEditFindNext(bool forward)
{
    Log(3, "CMainFrame::OnEditFindNext" + MV_POS());
    if (!m_find.HasQuery()) {
        OnEditFind();
        return;
    }
    CL::RunReported([this, forward] {
        CL::CWaitCursor wait;
        if (const auto entry = m_find.Step(*m_document.Model(), forward))
            ShowMatch(*entry);
        else
            ::MessageBeep(MB_OK);
    });
}

void CMainFrame::ShowMatch(const CAddressSpaceSearch::Entry& entry)
{
    const HTREEITEM node = CBranchTree::NodeOf(m_tree, entry.branch.get());
    if (!node)
        throw CL::CException(E_POINTER, L"CMainFrame::ShowMatch");
    TreeView_EnsureVisible(m_tree, node);
    if (TreeView_GetSelection(m_tree) != node)
        TreeView_SelectItem(m_tree, node);   // the selection change fills the list
    if (!entry.item) {
        ::SetFocus(m_tree);
        return;
    }
    for (size_t row = 0; row < m_rows.RowCount(); ++row) {
        if (m_rows.ItemAt(row).get() == entry.item.get()) {
            m_list.Select(row, true);
            break;
        }
    }
    ::SetFocus(m_list);
}
