// The server simulator's entry point. Without arguments it runs as the
// Windows service named by the ServiceName of the Morvane.ini.xml beside it
// (archiving into the ADOConnection database when CustomADOConnection is set).
// " /u" and " /i" (the server's unregister and register calls) are recorded
// in its event log; --register-service and --delete-service register and
// remove the service for a demo installation.
#include <windows.h>
#include <objbase.h>
#include <shellapi.h>

#include "SimFiles.h"
#include "SimKnobs.h"
#include "SimRegistration.h"
#include "SimReport.h"
#include "SimService.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "config/Settings.h"

namespace {

std::wstring SelfPath()
{
    wchar_t path[32768] = {};
    ::GetModuleFileNameW(nullptr, path, 32768);
    return path;
}

// The settings of the installation folder; the defaults when the file is
// missing or cannot be read.
CSettings ReadSettings(const std::wstring& folder)
{
    CSettings settings;
    try {
        LoadSettingsFrom(folder + CL::kSettingsFileName, settings);
    } catch (...) {
        settings = CSettings();
    }
    return settings;
}

// " /u" or " /i": recorded; with the ServiceOnInstall knob the service is
// also deleted or registered, as the real server does.
int RunInstallCall(const std::wstring& call, sim::CSimReport& report)
{
    report.Event("command line " + CL::ToUtf8(call));
    const sim::SimKnobs knobs = sim::ReadKnobs(report.Folder());
    if (call == L"/u" && knobs.goneAfterUnregister) {
        const BOOL moved = ::MoveFileExW(SelfPath().c_str(), (report.Folder() + sim::kGoneExecutableName).c_str(),
                                         MOVEFILE_REPLACE_EXISTING);
        report.Event(CL::FormatA("moved away: error %lu", moved ? 0ul : ::GetLastError()));
    }
    if (!knobs.serviceOnInstall)
        return 0;
    const CSettings settings = ReadSettings(report.Folder());
    const DWORD error = call == L"/i"
        ? sim::RegisterSimulatorService(settings.ServiceName,
                                        SelfPath(),
                                        settings.Title + L" OPC Server")
        : sim::DeleteSimulatorService(settings.ServiceName, 30000);
    report.Event(CL::FormatA("%s service %s: error %lu", call == L"/i" ? "register" : "delete",
                             CL::ToUtf8(settings.ServiceName).c_str(), error));
    return 0;
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    sim::CSimReport report(sim::ExecutableFolder());

    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    CL::UniqueLocalMemory argvOwner(reinterpret_cast<HLOCAL>(argv));
    const std::wstring last = argv && argc > 1 ? argv[argc - 1] : L"";

    if (CL::EqualsNoCase(last, L"/u") || CL::EqualsNoCase(last, L"/i"))
        return RunInstallCall(CL::EqualsNoCase(last, L"/u") ? L"/u" : L"/i", report);

    const CSettings settings = ReadSettings(report.Folder());
    if (last == sim::kRegisterSwitch)
        return static_cast<int>(sim::RegisterSimulatorService(settings.ServiceName, SelfPath(),
                                                              settings.Title + L" OPC Server"));
    if (last == sim::kDeleteSwitch)
        return static_cast<int>(sim::DeleteSimulatorService(settings.ServiceName, 30000));

    const std::wstring archiveConnection =
        settings.CustomADOConnection && !CL::TrimWhiteSpace(settings.ADOConnection).empty() ? settings.ADOConnection
                                                                                          : std::wstring();
    sim::CSimService service(settings.ServiceName, archiveConnection, report);
    const int exitCode = service.Run();
    ::CoUninitialize();
    return exitCode;
}
