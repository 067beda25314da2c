#include "config/SettingsApply.h"

#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/Text.h"

namespace {

// A service that did not reach the wanted state within the time-out.
const HRESULT kTimeoutError = HRESULT_FROM_WIN32(ERROR_TIMEOUT);

} // namespace

CSettingsApply::CSettingsApply(CL::IServerControl& server, std::wstring installationFolder)
    : m_server(server), m_folder(std::move(installationFolder))
{
}

std::wstring CSettingsApply::Apply(const CSettings& newSettings)
{
    const std::wstring oldService = g_Settings.ServiceName;
    const bool wasRunning = m_server.IsServiceRunning(oldService);
    Log(2, "Applying new settings: service '" + CL::Narrow(oldService) + (wasRunning ? "' running" : "' not running") +
               MV_POS());

    if (!m_server.StopServiceAndWait(oldService, kServiceTimeoutMs))
        throw CL::CException(kTimeoutError, L"StopServiceAndWait (g_Settings.ServiceName, L\"\", 0, 30000)");
    RunServer(L" /u");

    SYSTEMTIME utc;
    ::GetSystemTime(&utc);
    const std::wstring backup = m_folder + BackupSettingsFileName(utc);
    SaveSettingsTo(backup, g_Settings);
    Log(2, "Previous settings saved in " + CL::Narrow(backup) + MV_POS());

    g_Settings = newSettings;
    SaveSettingsTo(m_folder + CL::kSettingsFileName, g_Settings);
    RunServer(L" /i");

    if (wasRunning && !m_server.StartServiceAndWait(g_Settings.ServiceName, kServiceTimeoutMs))
        throw CL::CException(kTimeoutError, L"StartServiceAndWait (g_Settings.ServiceName, L\"\", 0, 30000)");
    Log(2, "New settings applied" + MV_POS());
    return backup;
}

// The server executable of the installation folder with one argument. The
// path is quoted so that a folder with blanks names the right program.
void CSettingsApply::RunServer(const wchar_t* argument)
{
    const std::wstring commandLine = L"\"" + m_folder + CL::kServerExecutableName + L"\"" + argument;
    const DWORD exitCode = m_server.RunAndWait(commandLine);
    Log(2, CL::Narrow(commandLine) + " ended with exit code " + std::to_string(exitCode) + MV_POS());
}
