#pragma once
// CSettingsApply: puts new settings into force for the server, the heavy part
// of the options dialog's OK. In this order: note whether the service runs,
// stop it, run "Morvane.exe /u" and wait, write the backup of the settings in
// force, store the new settings in the record and save the file, run
// "Morvane.exe /i" and wait, and start the service again under its new name
// if it was running. A service that does not stop or start within the
// time-out is a result, not a failure: it is logged as a warning and the
// sequence goes on. A failure throws at the step where it happened; the
// steps done before it are not undone, and one error line in the log names
// the failed step, the steps done and where the previous settings are.
#include <windows.h>

#include <string>

#include "config/ServerControlPart.h"
#include "config/Settings.h"

class CSettingsApplyTrail;

class CSettingsApply {
public:
    static constexpr DWORD kServiceTimeoutMs = 30000;

    // installationFolder ends with a backslash; it holds Morvane.exe, the
    // settings file and its backups.
    CSettingsApply(CL::IServerControl& server, std::wstring installationFolder);

    // Applies newSettings to g_Settings and the server; returns the backup
    // file's full path; the backup holds the settings file on disk that the
    // change replaces. When an earlier change of this folder failed after
    // its backup was written (the record then already holds that change's
    // settings) and this is a retry of it (the same settings), that backup
    // still holds the settings in force before the change: it is kept and
    // returned instead of being overwritten by a backup of settings that
    // never went into force. Any other change writes its own backup. Either
    // way the service is started at the end when it ran before the failed
    // change began (that change stopped it, not the administrator).
    std::wstring Apply(const CSettings& newSettings);

private:
    void StopService(CSettingsApplyTrail& trail, const std::wstring& name);
    void StartService(CSettingsApplyTrail& trail, const std::wstring& name);
    void RunServer(CSettingsApplyTrail& trail, const wchar_t* argument);
    CSettings SettingsOnDisk() const;
    std::wstring WriteBackup(CSettingsApplyTrail& trail, const CSettings& change, bool serviceWasRunning);
    static std::wstring KeepBackup(CSettingsApplyTrail& trail, const std::wstring& backup);
    void SaveNewSettings(CSettingsApplyTrail& trail, const CSettings& newSettings);

    CL::IServerControl& m_server;
    std::wstring m_folder;
};
