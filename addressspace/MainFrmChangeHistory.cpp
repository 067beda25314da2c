// CMainFrame: View, Change History opens the journal of the changes made to
// the server (the window belongs to the application shell, reached through
// the hook).
#include "addressspace/MainFrm.h"

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/ui/WaitCursor.h"
#include "addressspace/ReplaceModelCommand.h"

void CMainFrame::OnViewChangeHistory()
{
    Log(3, "CMainFrame::OnViewChangeHistory" + MV_POS());
    CL::RunReported([this] {
        if (m_changeHistory)
            m_changeHistory(Hwnd());
    });
}

void CMainFrame::RestoreVersion(const std::wstring& file)
{
    Log(3, "CMainFrame::RestoreVersion" + MV_POS());
    CL::CWaitCursor wait;
    auto model = CAddressSpaceDocument::ModelPtr::Make();
    model->Load(file);
    const size_t slash = file.find_last_of(L"\\/");
    const std::wstring name = slash == std::wstring::npos ? file : file.substr(slash + 1);
    ShowEdit(m_document.Execute(
        std::make_unique<CReplaceModelCommand>(m_document, std::move(model), L"Restore Version '" + name + L"'")));
    m_bars.SetStatusText(L"Version " + name + L" restored. Save sends it to the server.");
}
