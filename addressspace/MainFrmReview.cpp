// The editor's review of changes: the command that opens the review window,
// the "Modified" pane's count and its double-click.
#include "addressspace/AddressSpaceCompare.h"
#include "addressspace/EditorStatus.h"
#include "addressspace/MainFrm.h"
#include "addressspace/dlgReviewChanges.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "res/resource.h"

ReviewServices CMainFrame::MakeReviewServices()
{
    ReviewServices services;
    services.serverNow = [this] { return m_exchange.FetchFromServer(); };
    services.historianSummary = m_historianSummary;
    // Save in the review is the editor's Save, question included.
    services.save = [this] { ::SendMessageW(Hwnd(), WM_COMMAND, MAKEWPARAM(ID_AS_FILE_SAVE, 0), 0); };
    services.edited = [this](CEditCommand& command) { ShowEdit(command); };
    services.filter = m_find.Query();
    return services;
}

void CMainFrame::ReviewChanges()
{
    CdlgReviewChanges dialog(m_document, MakeReviewServices());
    dialog.DoModal(Hwnd());
    ShowStatus();
}

void CMainFrame::ReviewChangesAgainst(CAddressSpaceDocument::ModelPtr before, std::wstring label)
{
    CdlgReviewChanges dialog(m_document, MakeReviewServices());
    dialog.CompareEditorWith(std::move(before), std::move(label));
    dialog.DoModal(Hwnd());
    ShowStatus();
}

void CMainFrame::OnFileReview()
{
    Log(3, "CMainFrame::OnFileReview" + MV_POS());
    CL::RunReported([this] { ReviewChanges(); });
}

void CMainFrame::OnStatusDoubleClick(const NMMOUSE& click)
{
    if (click.dwItemSpec != static_cast<DWORD_PTR>(CEditorStatus::kModifiedPane) || !m_document.IsDirty())
        return;
    Log(3, "CMainFrame::OnStatusDoubleClick" + MV_POS());
    CL::RunReported([this] { ReviewChanges(); });
}

// Counted again only when the document moved on: one compare per edit, not
// one per message.
size_t CMainFrame::ChangeCount()
{
    if (!m_changeCount.valid || m_changeCount.revision != m_document.Revision()) {
        m_changeCount.count =
            SummarizeDifferences(CompareAddressSpaces(*m_document.Baseline(), *m_document.Model())).Total();
        m_changeCount.revision = m_document.Revision();
        m_changeCount.valid = true;
    }
    return m_changeCount.count;
}
