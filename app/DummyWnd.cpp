#include "app/DummyWnd.h"

#include <shellapi.h>

#include <cwchar>

#include "app/AboutDlg.h"
#include "app/ServiceJournal.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/ServiceControl.h"
#include "common/ui/Dpi.h"
#include "common/Exception.h"
#include "config/Settings.h"
#include "historian/HistorianAccess.h"
#include "res/resource.h"

namespace {

constexpr DWORD kServiceTimeoutMs = 30000;
constexpr wchar_t kStartTitle[] = L"Start Varnel OPC Server";
constexpr wchar_t kStopTitle[] = L"Stop Varnel OPC Server";

NOTIFYICONDATAW TrayIconRecord(HWND owner)
{
    NOTIFYICONDATAW nid = {};
    nid.cbSize = sizeof nid;
    nid.hWnd = owner;
    nid.uID = CDummyWnd::kTrayIconId;
    return nid;
}

// Shows a window of the tray (editor, explorer) on top without moving or
// resizing it, restoring it first when it is minimised.
void RestoreAndRaise(HWND window)
{
    if (::IsIconic(window))
        ::ShowWindow(window, SW_RESTORE);
    ::SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_SHOWWINDOW);
    ::SetForegroundWindow(window);
}

} // namespace

CDummyWnd::CDummyWnd(const CL::MenuFlags& flags) : m_flags(flags) {}

// The window goes while this object is still whole, so that OnDestroy
// removes the tray icon and closes the editor and explorer windows.
CDummyWnd::~CDummyWnd()
{
    DestroyWindow();
}

void CDummyWnd::SetAddressSpaceEditor(std::unique_ptr<CL::IAddressSpaceEditor> editor)
{
    m_wndMain = std::move(editor);
}

void CDummyWnd::SetDatabaseExplorer(std::unique_ptr<CL::IDatabaseExplorer> explorer)
{
    m_explorer = std::move(explorer);
}

void CDummyWnd::SetOptionsDialog(std::unique_ptr<CL::IOptionsDialog> options)
{
    m_options = std::move(options);
}

void CDummyWnd::SetSettingsAppliedHandler(std::function<void()> handler)
{
    m_settingsApplied = std::move(handler);
}

LRESULT CDummyWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        return OnCreate();
    case WM_DESTROY:
        OnDestroy();
        return 0;
    case WM_CLOSE:
        OnClose();
        return 0;
    case kShellNoteMessage:
        OnShellNote(lParam);
        return 0;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam));
        return 0;
    default:
        return DefaultProc(message, wParam, lParam);
    }
}

void CDummyWnd::OnCommand(WORD id)
{
    switch (id) {
    case ID_MN_CONTROL:
        OnControl();
        break;
    case ID_MN_DBEXPLORER:
        OnMnDBExplorer();
        break;
    case ID_MN_OPTIONS:
        OnMnOptions();
        break;
    case ID_MN_ABOUT:
        OnMnAbout();
        break;
    case ID_MN_START_SERVER:
        OnMnStartServer();
        break;
    case ID_MN_STOP_SERVER:
        OnMnStopServer();
        break;
    case ID_MN_SHUTDOWN:
        OnShutdown();
        break;
    default:
        break;
    }
}

std::wstring CDummyWnd::TrayTip()
{
    std::wstring tip = g_Settings.Title + L" OPC Server Control Panel";
    if (tip.size() > 127)
        tip.resize(127);
    return tip;
}

LRESULT CDummyWnd::OnCreate()
{
    Log(3, "CDummyWnd::OnCreate [DummyWnd, 143]");
    CL::RunReported([this] {
        NOTIFYICONDATAW nid = TrayIconRecord(Hwnd());
        nid.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
        nid.uCallbackMessage = kShellNoteMessage;
        const CL::CDpi dpi = CL::CDpi::Of(nullptr);
        m_trayIcon.reset(static_cast<HICON>(::LoadImageW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN), IMAGE_ICON,
                                                         dpi.Metric(SM_CXSMICON), dpi.Metric(SM_CYSMICON), 0)));
        nid.hIcon = m_trayIcon.get();
        if (!nid.hIcon)
            CL::ThrowLastError(L"nid.hIcon = ::LoadIconW(_AtlBaseModule.GetModuleInstance (), "
                               L"((LPWSTR)((ULONG_PTR)((WORD)(201)))))");
        const std::wstring tip = TrayTip();
        wcsncpy(nid.szTip, tip.c_str(), 127);
        if (!::Shell_NotifyIconW(NIM_ADD, &nid))
            CL::ThrowLastError(L"Shell_NotifyIconW(0x00000000, &nid)");
    });
    return 0;
}

void CDummyWnd::OnDestroy()
{
    Log(3, "CDummyWnd::OnDestroy [DummyWnd, 173]");
    CL::RunReported([this] {
        NOTIFYICONDATAW nid = TrayIconRecord(Hwnd());
        MV_CHECK(::Shell_NotifyIconW(NIM_DELETE, &nid));
        if (m_wndMain && ::IsWindow(m_wndMain->Window()))
            ::DestroyWindow(m_wndMain->Window());
        if (m_explorer && ::IsWindow(m_explorer->Window()))
            ::DestroyWindow(m_explorer->Window());
    });
}

// Closing the hidden window (the system ending the session, or another
// program asking it to close) ends the program the same way as Exit, without
// the question; the shut-down destroys this window.
void CDummyWnd::OnClose()
{
    Log(3, "CDummyWnd::OnClose" + MV_POS());
    ::PostQuitMessage(0);
}

void CDummyWnd::OnShellNote(LPARAM lParam)
{
    if (LogEnabled(4))
        Log(4, "CDummyWnd::OnShellNote [DummyWnd, 72]");
    switch (LOWORD(lParam)) {
    case WM_LBUTTONDBLCLK:
        OnControl();
        break;
    case WM_RBUTTONDOWN:
        CL::RunReported([this] { ShowTrayMenu(); });
        break;
    default:
        break;
    }
}

std::wstring CDummyWnd::ServerStatusCaption()
{
    try {
        return CL::IsServiceRunning(g_Settings.ServiceName) ? L"OPC Server (Running)" : L"OPC Server (Stopped)";
    } catch (...) {
        return L"OPC Server";
    }
}

CL::UniqueMenu CDummyWnd::BuildTrayMenu() const
{
    CL::UniqueMenu menu(::LoadMenuW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDR_TRAYMENU)));
    if (!menu)
        CL::ThrowLastError(L"hMenu = ::LoadMenuW (_AtlBaseModule.GetModuleInstance (), "
                           L"((LPWSTR)((ULONG_PTR)((WORD)(203)))))");
    const HMENU popup = ::GetSubMenu(menu.get(), 0);
    if (!popup)
        CL::ThrowLastError(L"hMenuTrackPopup = ::GetSubMenu (hMenu, 0)");

    // The server submenu is the third item from the end.
    std::wstring caption = ServerStatusCaption();
    MENUITEMINFOW item = {};
    item.cbSize = sizeof item;
    item.fMask = MIIM_STRING;
    item.dwTypeData = caption.data();
    MV_CHECK(::SetMenuItemInfoW(popup, ::GetMenuItemCount(popup) - 3, TRUE, &item));

    if (!m_flags.ShowAddressSpace)
        MV_CHECK(::DeleteMenu(popup, ID_MN_CONTROL, MF_BYCOMMAND));
    if (!m_flags.ShowHdaExplorer)
        MV_CHECK(::DeleteMenu(popup, ID_MN_DBEXPLORER, MF_BYCOMMAND));
    if (!m_flags.ShowOptions)
        MV_CHECK(::DeleteMenu(popup, ID_MN_OPTIONS, MF_BYCOMMAND));
    if (!m_flags.ShowAbout)
        MV_CHECK(::DeleteMenu(popup, ID_MN_ABOUT, MF_BYCOMMAND));
    // Without the server: first the separator before "Exit", then the
    // server submenu that has moved into its place.
    if (!m_flags.ServerPresent) {
        MV_CHECK(::DeleteMenu(popup, ::GetMenuItemCount(popup) - 2, MF_BYPOSITION));
        MV_CHECK(::DeleteMenu(popup, ::GetMenuItemCount(popup) - 2, MF_BYPOSITION));
    }
    return menu;
}

void CDummyWnd::ShowTrayMenu()
{
    ::SetForegroundWindow(Hwnd());
    POINT point = {};
    if (!::GetCursorPos(&point))
        Log(0, "::GetCursorPos (&point) != 0 [DummyWnd, 87]");
    CL::UniqueMenu menu = BuildTrayMenu();
    ::TrackPopupMenu(::GetSubMenu(menu.get(), 0), TPM_LEFTALIGN, point.x, point.y, 0, Hwnd(), nullptr);
    if (!::DestroyMenu(menu.release()))
        Log(0, "::DestroyMenu (hMenu) != 0 [DummyWnd, 128]");
}

void CDummyWnd::OnControl()
{
    Log(3, "CDummyWnd::OnControl [DummyWnd, 197]");
    CL::RunReported([this] {
        if (!m_wndMain) {
            Log(2, "No address space editor in this build" + MV_POS());
            return;
        }
        if (!::IsWindow(m_wndMain->Window())) {
            if (!m_wndMain->PrepareOpen())
                return;
            if (!m_wndMain->Create())
                CL::ThrowLastError(L"m_wndMain.CreateEx()");
            Log(3, "m_wndMain created [DummyWnd, 214]");
        } else if (::IsIconic(m_wndMain->Window())) {
            ::ShowWindow(m_wndMain->Window(), SW_RESTORE);
        }
        const HWND window = m_wndMain->Window();
        if (!::SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_SHOWWINDOW))
            CL::ThrowLastError(L"m_wndMain.SetWindowPos (((HWND)0), 0, 0, 0, 0, 0x0001 | 0x0002 | 0x0040)");
        if (!::SetForegroundWindow(window))
            CL::ThrowLastError(L"SetForegroundWindow (m_wndMain)");
    });
}

void CDummyWnd::OnMnDBExplorer()
{
    Log(3, "CDummyWnd::OnMnDBExplorer [DummyWnd, 329]");
    CL::RunReported([this] {
        // Without a database layer there is no database to reach.
        if (!m_explorer || !m_explorer->IsDatabaseAccessible()) {
            CL::ShowHistorianNotAccessible();
            return;
        }
        if (!::IsWindow(m_explorer->Window()))
            m_explorer->Create();
        if (::IsWindow(m_explorer->Window()))
            RestoreAndRaise(m_explorer->Window());
    });
}

void CDummyWnd::OnMnOptions()
{
    Log(3, "CDummyWnd::OnMnOptions [DummyWnd, 296]");
    CL::RunReported([this] { RunOptions([this] { return m_options->Run(::GetActiveWindow()); }); });
}

bool CDummyWnd::RunOptions(const std::function<bool()>& run)
{
    if (m_wndMain && ::IsWindow(m_wndMain->Window())) {
        Inform(L"Please, close the OPC Address Space window and try again.", L"Options");
        return false;
    }
    if (!m_options) {
        Log(2, "No options dialog in this build" + MV_POS());
        return false;
    }
    if (!run())
        return false;
    // The settings are in force now: a reload that fails (no exchange
    // file, say) is reported on its own and does not keep the historian
    // on the old settings.
    if (m_wndMain)
        CL::RunReported([this] { m_wndMain->ReloadFromFile(); });
    if (m_settingsApplied)
        m_settingsApplied();
    return true;
}

void CDummyWnd::OnMnAbout()
{
    Log(3, "CDummyWnd::OnMnAbout" + MV_POS());
    CL::RunReported([] {
        CAboutDlg dialog;
        dialog.DoModal(::GetActiveWindow());
    });
}

void CDummyWnd::OnMnStartServer()
{
    Log(3, "CDummyWnd::OnMnStartServer [DummyWnd, 363]");
    CL::RunReported([this] {
        if (CL::IsServiceRunning(g_Settings.ServiceName)) {
            Inform(L"The server is already running.", kStartTitle);
            return;
        }
        CL::JournalServiceStarted(g_Settings.ServiceName,
                                  CL::StartServiceAndWait(g_Settings.ServiceName, L"", 0, kServiceTimeoutMs));
    });
}

void CDummyWnd::OnMnStopServer()
{
    Log(3, "CDummyWnd::OnMnStopServer [DummyWnd, 385]");
    CL::RunReported([this] {
        if (!CL::IsServiceRunning(g_Settings.ServiceName)) {
            Inform(L"The server is already stopped.", kStopTitle);
            return;
        }
        if (Ask(L"Are you sure you want to stop the server (all OPC clients will be disconnected)?",
                kStopTitle) != IDYES)
            return;
        CL::JournalServiceStopped(g_Settings.ServiceName,
                                  CL::StopServiceAndWait(g_Settings.ServiceName, L"", 0, kServiceTimeoutMs));
    });
}

void CDummyWnd::OnShutdown()
{
    Log(3, "CDummyWnd::OnShutdown [DummyWnd, 233]");
    CL::RunReported([this] {
        if (Ask(L"Have you closed all the windows of this application?", L"Exit") == IDYES)
            ::PostQuitMessage(0);
    });
}

int CDummyWnd::Ask(const wchar_t* text, const wchar_t* title)
{
    return ::MessageBoxW(Hwnd(), text, title, MB_YESNOCANCEL | MB_ICONQUESTION);
}

void CDummyWnd::Inform(const wchar_t* text, const wchar_t* title)
{
    ::MessageBoxW(Hwnd(), text, title, MB_OK | MB_ICONINFORMATION);
}
