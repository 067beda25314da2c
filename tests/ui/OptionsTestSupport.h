#pragma once
// Shared by the tests of the options dialogs: a scripted server control that
// records what the dialog asked of it, with a look at the installation
// folder at each server run, and small helpers that drive dialog controls.
#include <windows.h>
#include <objbase.h>

#include <functional>
#include <string>
#include <vector>

#include "config/ServerControlPart.h"
#include "support/ComApartment.h"
#include "support/DialogScript.h"   // SetItemText, IsChecked
#include "support/TestSupport.h"

namespace test {

class FakeServerControl : public CL::IServerControl {
public:
    explicit FakeServerControl(std::wstring folder) : m_folder(std::move(folder)) {}

    bool running = false;        // the state IsServiceRunning reports
    bool stopsInTime = true;     // StopServiceAndWait's answer
    bool startsInTime = true;    // StartServiceAndWait's answer
    // Every call in order: "running? <name>", "stop <name>", "start <name>",
    // "run <command line>".
    std::vector<std::wstring> calls;
    // What the installation folder held at each run: the number of backup
    // files and the ServiceName of the settings file ("" when it is missing).
    struct FolderLook {
        size_t backups = 0;
        std::wstring settingsServiceName;
    };
    std::vector<FolderLook> looks;
    // Runs instead of the recorded run when set (e.g. the real runner).
    std::function<DWORD(const std::wstring&)> runner;
    // Called with each call's text (as recorded in `calls`) before the call
    // does anything: a test makes one step fail by throwing from it.
    std::function<void(const std::wstring&)> onCall;

    bool IsServiceRunning(const std::wstring& name) override;
    bool StopServiceAndWait(const std::wstring& name, DWORD timeoutMs) override;
    bool StartServiceAndWait(const std::wstring& name, DWORD timeoutMs) override;
    DWORD RunAndWait(const std::wstring& commandLine) override;

protected:
    void Record(const std::wstring& call);

private:
    std::wstring m_folder;
};

// The backup files ("Morvane.ini.xml.*") of a folder, full paths.
std::vector<std::wstring> BackupFiles(const std::wstring& folder);

// Dialog control helpers (same thread as the dialog, or across threads),
// beside those of DialogScript.h.
std::wstring ItemText(HWND dialog, int id);
// A click as the user makes it (BM_CLICK): a check box toggles, a radio
// button is chosen, and the dialog gets BN_CLICKED.
void Click(HWND dialog, int id);
bool IsEnabled(HWND dialog, int id);

} // namespace test
