// Duplicate in the address space editor: numbered copies of the selected
// item, asked for in the Duplicate dialog.
#include "addressspace/MainFrm.h"

#include <memory>

#include "addressspace/DuplicateCommand.h"
#include "addressspace/NameNumbering.h"
#include "addressspace/dlgDuplicate.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/ui/WaitCursor.h"

void CMainFrame::OnEditDuplicate()
{
    Log(3, "CMainFrame::OnEditDuplicate" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> rows = m_list.SelectedRows();
        if (rows.size() != 1 || !m_listBranch) {
            ::MessageBeep(MB_OK);   // one item at a time
            return;
        }
        const ItemPtr item = m_rows.ItemAt(rows.front());
        const BranchPtr branch = m_listBranch;
        CdlgDuplicate dialog(item->Name(), [&](size_t count) {
            return CNameNumbering::CountOn(item->Name(), count,
                                           [&](const std::wstring& name) { return bool(branch->FindItem(name)); });
        });
        if (dialog.DoModal(Hwnd()) != IDOK)
            return;
        CL::CWaitCursor wait;
        auto command = std::make_unique<CDuplicateCommand>(item, dialog.count);
        const CDuplicateCommand& duplicate = *command;
        ShowEdit(m_document.Execute(std::move(command)));
        SelectRowsOf(duplicate.Copies());
    });
}
