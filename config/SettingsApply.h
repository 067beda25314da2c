#pragma once
// CSettingsApply: puts new settings into force for the server, the heavy part
// of the options dialog's OK. In this order: note whether the service runs,
// stop it, run "Morvane.exe /u" and wait, write the backup of the settings in
// force, store the new settings in the record and save the file, run
// "Morvane.exe /i" and wait, and start the service again under its new name
// if it was running. A failure throws at the step where it happened; the
// steps done before it are not undone.
#include <windows.h>

#include <string>

#include "config/ServerControlPart.h"
#include "config/Settings.h"

class CSettingsApply {
public:
    static constexpr DWORD kServiceTimeoutMs = 30000;

    // installationFolder ends with a backslash; it holds Morvane.exe, the
    // settings file and its backups.
    CSettingsApply(CL::IServerControl& server, std::wstring installationFolder);

    // Applies newSettings to g_Settings and the server; returns the backup
    // file's full path.
    std::wstring Apply(const CSettings& newSettings);

private:
    void RunServer(const wchar_t* argument);

    CL::IServerControl& m_server;
    std::wstring m_folder;
};
