// CDummyWnd: the change history, opened from the editor's and the
// explorer's menus. Its Restore of an address space version opens the
// editor as the tray menu does (loading the server's address space first)
// and takes the version into it; its Restore of a settings backup runs the
// options dialog filled from the backup under the tray's options rule.
#include "app/DummyWnd.h"

#include "addressspace/AddressSpaceExchange.h"
#include "app/dlgChangeHistory.h"
#include "common/ChangeJournal.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "config/Settings.h"

CL::ChangeHistoryActions CDummyWnd::HistoryActions()
{
    CL::ChangeHistoryActions actions;
    if (m_wndMain)
        actions.restoreAddressSpace = [this](HWND, const std::wstring& version) {
            if (!ShowEditor())
                return false;
            m_wndMain->RestoreVersion(version);
            return true;
        };
    if (m_wndMain) {
        actions.compareFiles = [this](HWND owner, const std::wstring& older, const std::wstring& newer) {
            m_wndMain->CompareVersions(owner, older, newer);
        };
        // The editor's address space: the editor is opened (loaded from the
        // server) when it is not open yet.
        actions.compareWithEditor = [this](HWND, const std::wstring& version) {
            if (ShowEditor())
                m_wndMain->CompareWithVersion(version);
        };
        actions.compareWithServer = [this](HWND owner, const std::wstring& version) {
            m_wndMain->CompareVersionWithServer(owner, version);
        };
    }
    if (m_options)
        actions.restoreSettings = [this](HWND owner, const std::wstring& backup) {
            return RunOptions([this, owner, &backup] { return m_options->RunFrom(owner, backup); });
        };
    return actions;
}

void CDummyWnd::OpenChangeHistory(HWND owner)
{
    Log(3, "CDummyWnd::OpenChangeHistory" + MV_POS());
    CL::RunReported([this, owner] {
        CL::CdlgChangeHistory dialog(CL::CChangeJournal::Instance(),
                                     CAddressSpaceExchange::ExchangeFilePath(GetInstallationFolderPath(L"")),
                                     CVersionRetention(), HistoryActions());
        dialog.DoModal(owner);
    });
}

bool CDummyWnd::ShowEditor()
{
    OnControl();
    return m_wndMain && ::IsWindow(m_wndMain->Window());
}
