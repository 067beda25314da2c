#include "app/Application.h"

#include <commctrl.h>
#include <objbase.h>

#include <memory>

#include "common/DiagnosticLog.h"
#include "app/AddressSpaceEditor.h"
#include "app/DatabaseExplorer.h"
#include "app/DummyWnd.h"
#include "app/HistorianSettings.h"
#include "common/ErrorReport.h"
#include "app/MenuFlags.h"
#include "app/MessageLoop.h"
#include "app/OptionsDialogRunner.h"
#include "app/SingleInstance.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/historian/Historian.h"
#include "config/Settings.h"

namespace CL {

std::wstring InstanceMutexName(const std::wstring& serviceName)
{
    return serviceName + L"Mutex";
}

namespace {

MenuFlags DecideMenuFlags()
{
    MenuFlags flags;
    ApplyCommandLineSwitches(::GetCommandLineW(), flags);
    ApplyServerPresence(ServerExecutableExists(GetInstallationFolderPath(kServerExecutableName)), flags);
    return flags;
}

// Everything from COM to the end of the message loop; returns at once (0)
// when another instance runs.
int RunBody(UniqueKernelHandle& mutex)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    LoadSettings();
    Log(2, "Starting ................................................... [MorvaneGui, 50]");

    // Other software (installer, server) looks for this mutex to see that
    // the control panel runs; the program itself never asks.
    mutex.reset(::CreateMutexW(nullptr, FALSE, InstanceMutexName(g_Settings.ServiceName).c_str()));

    if (IsAnotherInstanceRunning()) {
        ::MessageBoxW(nullptr, kAlreadyRunningText, kAlreadyRunningTitle, MB_OK | MB_ICONINFORMATION);
        mutex.reset();
        return 0;
    }

    ::DefWindowProcW(nullptr, 0, 0, 0);
    INITCOMMONCONTROLSEX icc = {sizeof icc, ICC_COOL_CLASSES | ICC_BAR_CLASSES | ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
    ::InitCommonControlsEx(&icc);

    CMessageLoop loop;
    CMessageLoop::SetCurrent(&loop);
    struct LoopRegistration {
        ~LoopRegistration() { CMessageLoop::SetCurrent(nullptr); }
    } registration;

    // The one historian of the process, shared by the windows that read the
    // database. A configuration failure is reported and start-up goes on.
    auto historian = std::make_unique<CHistorian>();
    RunReported([&] { ConfigureHistorian(*historian, g_Settings); });

    const MenuFlags flags = DecideMenuFlags();
    auto dummy = std::make_unique<CDummyWnd>(flags);
    // The editor's and the explorer's "Change History..." open the tray's.
    CDummyWnd* tray = dummy.get();
    auto editor = std::make_unique<CAddressSpaceEditor>(*historian);
    editor->Frame().SetChangeHistoryHook([tray](HWND owner) { tray->OpenChangeHistory(owner); });
    auto explorer = std::make_unique<CDatabaseExplorer>(*historian);
    explorer->Explorer().onChangeHistory = [tray](HWND owner) { tray->OpenChangeHistory(owner); };
    dummy->SetAddressSpaceEditor(std::move(editor));
    dummy->SetDatabaseExplorer(std::move(explorer));
    dummy->SetOptionsDialog(std::make_unique<COptionsDialogRunner>());
    dummy->SetSettingsAppliedHandler([&historian] { ConfigureHistorian(*historian, g_Settings); });
    if (!dummy->CreateEx())
        ThrowLastError(L"wndDummy.CreateEx ()");

    loop.Run();

    // Shut-down in order: the tray window, the historian, the loop, COM, the
    // last line.
    if (dummy->IsWindow())
        dummy->DestroyWindow();
    dummy.reset();
    historian.reset();
    CMessageLoop::SetCurrent(nullptr);
    ::CoUninitialize();
    Log(2, "Stopped [MorvaneGui, 147]");
    return 0;
}

} // namespace

int RunControlPanel(HINSTANCE /*instance*/)
{
    UniqueKernelHandle mutex;
    try {
        return RunBody(mutex);
    } catch (...) {
        // The failure has been shown; the program ends like any other run.
        ReportException();
        return 0;
    }
}

} // namespace CL
