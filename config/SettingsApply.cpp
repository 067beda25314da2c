#include "config/SettingsApply.h"

#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "config/SettingsApplyTrail.h"
#include "config/SettingsJournal.h"

namespace {

// A change that failed after writing its backup, until a change of the same
// folder succeeds: the settings it put in, the backup, and whether the
// service ran before it began (the failed change may have stopped it; the
// one that succeeds starts it). Only a retry of that change (the same
// settings) keeps its backup; any other change backs up the file it replaces.
struct UnfinishedChange {
    CSettings settings;
    std::wstring backup;
    bool serviceWasRunning = false;
};
UnfinishedChange g_unfinished;

std::string Quoted(const std::wstring& name)
{
    return "'" + CL::Narrow(name) + "'";
}

std::string Milliseconds(DWORD milliseconds)
{
    return std::to_string(milliseconds) + " ms";
}

// The unfinished change when its backup lies in this folder and still exists.
UnfinishedChange UnfinishedChangeIn(const std::wstring& folder)
{
    const std::wstring& backup = g_unfinished.backup;
    if (backup.size() <= folder.size() || !CL::EqualsNoCase(std::wstring_view(backup).substr(0, folder.size()), folder) ||
        ::GetFileAttributesW(backup.c_str()) == INVALID_FILE_ATTRIBUTES)
        return {};
    return g_unfinished;
}

} // namespace

CSettingsApply::CSettingsApply(CL::IServerControl& server, std::wstring installationFolder)
    : m_server(server), m_folder(std::move(installationFolder))
{
}

std::wstring CSettingsApply::Apply(const CSettings& newSettings)
{
    UnfinishedChange unfinished = UnfinishedChangeIn(m_folder);
    if (!(unfinished.settings == newSettings))
        unfinished.backup.clear();   // not a retry: this change backs up the file on disk
    CSettingsApplyTrail trail(unfinished.backup.empty() ? CL::Narrow(m_folder + CL::kSettingsFileName) + " (unchanged)"
                                                        : CL::Narrow(unfinished.backup));
    try {
        const std::wstring oldService = g_Settings.ServiceName;
        trail.Begin("the state query of service " + Quoted(oldService));
        const bool running = m_server.IsServiceRunning(oldService);
        trail.Done("service " + Quoted(oldService) + (running ? " was running" : " was not running"));
        const bool wasRunning = running || unfinished.serviceWasRunning;
        Log(2, "Applying new settings: service " + Quoted(oldService) + (wasRunning ? " running" : " not running") +
                   MV_POS());

        StopService(trail, oldService);
        RunServer(trail, L" /u");
        const std::wstring backup =
            unfinished.backup.empty() ? WriteBackup(trail, newSettings, wasRunning)
                                      : KeepBackup(trail, unfinished.backup);
        SaveNewSettings(trail, newSettings);
        RunServer(trail, L" /i");
        if (wasRunning)
            StartService(trail, g_Settings.ServiceName);
        g_unfinished = {};
        Log(2, "New settings applied" + MV_POS());
        JournalSettingsChange(backup, g_Settings);
        return backup;
    } catch (...) {
        trail.LogFailure();
        throw;
    }
}

// A service still stopping after the time-out is a result: the change goes on.
void CSettingsApply::StopService(CSettingsApplyTrail& trail, const std::wstring& name)
{
    trail.Begin("the stop of service " + Quoted(name));
    if (m_server.StopServiceAndWait(name, kServiceTimeoutMs)) {
        trail.Done("service " + Quoted(name) + " stopped");
        return;
    }
    Log(1, "Service " + Quoted(name) + " did not stop within " + Milliseconds(kServiceTimeoutMs) +
               "; the settings change goes on" + MV_POS());
    trail.Done("service " + Quoted(name) + " asked to stop (not stopped within " + Milliseconds(kServiceTimeoutMs) + ")");
}

// A service not yet running after the time-out is a result as well.
void CSettingsApply::StartService(CSettingsApplyTrail& trail, const std::wstring& name)
{
    trail.Begin("the start of service " + Quoted(name));
    if (m_server.StartServiceAndWait(name, kServiceTimeoutMs))
        return;
    Log(1, "Service " + Quoted(name) + " did not start within " + Milliseconds(kServiceTimeoutMs) +
               "; the new settings are in force" + MV_POS());
}

// The server executable of the installation folder with one argument. The
// path is quoted so that a folder with blanks names the right program.
void CSettingsApply::RunServer(CSettingsApplyTrail& trail, const wchar_t* argument)
{
    const std::wstring commandLine = L"\"" + m_folder + CL::kServerExecutableName + L"\"" + argument;
    trail.Begin("running " + CL::Narrow(commandLine));
    const DWORD exitCode = m_server.RunAndWait(commandLine);
    Log(2, CL::Narrow(commandLine) + " ended with exit code " + std::to_string(exitCode) + MV_POS());
    trail.Done(CL::Narrow(commandLine) + " ran (exit code " + std::to_string(exitCode) + ")");
}

// The settings the change replaces: those of the file on disk, which after
// an abandoned failed change may differ from the record; the record when
// there is no readable file.
CSettings CSettingsApply::SettingsOnDisk() const
{
    const std::wstring file = m_folder + CL::kSettingsFileName;
    const DWORD attributes = ::GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return g_Settings;
    CSettings onDisk = g_Settings;
    try {
        LoadSettingsFrom(file, onDisk);
    } catch (const CL::CException& e) {
        Log(1, "The settings file " + CL::Narrow(file) + " cannot be read (" + CL::Narrow(e.Text()) +
                   "); the backup holds the settings of the program" + MV_POS());
        return g_Settings;
    }
    return onDisk;
}

std::wstring CSettingsApply::WriteBackup(CSettingsApplyTrail& trail, const CSettings& change, bool serviceWasRunning)
{
    SYSTEMTIME utc;
    ::GetSystemTime(&utc);
    const std::wstring backup = m_folder + BackupSettingsFileName(utc);
    trail.Begin("the backup of the settings in force to " + CL::Narrow(backup));
    SaveSettingsTo(backup, SettingsOnDisk());
    g_unfinished = {change, backup, serviceWasRunning};
    trail.PreviousSettingsAt(CL::Narrow(backup));
    trail.Done("backup written to " + CL::Narrow(backup));
    Log(2, "Previous settings saved in " + CL::Narrow(backup) + MV_POS());
    return backup;
}

// The backup of the unfinished change holds the settings in force before it.
std::wstring CSettingsApply::KeepBackup(CSettingsApplyTrail& trail, const std::wstring& backup)
{
    trail.Done("backup of the unfinished change kept in " + CL::Narrow(backup));
    Log(2, "Previous settings are still in " + CL::Narrow(backup) + MV_POS());
    return backup;
}

void CSettingsApply::SaveNewSettings(CSettingsApplyTrail& trail, const CSettings& newSettings)
{
    const std::wstring file = m_folder + CL::kSettingsFileName;
    trail.Begin("the save of the new settings to " + CL::Narrow(file));
    g_Settings = newSettings;
    trail.Done("new settings stored in the program");
    SaveSettingsTo(file, g_Settings);
    trail.Done("new settings saved to " + CL::Narrow(file));
}
