#pragma once
// Helpers of the setup tests: the built setup programs, silent runs of them,
// what they leave in the registry, the Start menu and the installation
// folder, and control panels running from a folder.
#include <windows.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "ServerSimulator.h"

#define SETUP_TEST_WIDEN2(text) L##text
#define SETUP_TEST_WIDEN(text) SETUP_TEST_WIDEN2(text)

namespace setup_test {

// The version of the older setup (tests/CMakeLists.txt).
inline constexpr wchar_t kOlderVersion[] = SETUP_TEST_WIDEN(MORVANE_TEST_OLDER_VERSION);

inline constexpr wchar_t kUninstallKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\MorvaneGui";
inline constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr wchar_t kRunValue[] = L"MorvaneGui";
inline constexpr wchar_t kUninstallerName[] = L"MorvaneGui-uninstall.exe";
inline constexpr wchar_t kShortcutName[] = L"Varnel OPC Server Control Panel.lnk";
// Exit code of a silent setup that found no folder to install into.
inline constexpr DWORD kExitNoFolder = 3;

// The 64-bit setup of this build (dist/MorvaneGui-<version>-x64-setup.exe).
std::wstring CurrentSetupPath();
// A setup of an older version (MORVANE_TEST_OLDER_VERSION) whose
// MorvaneGui.exe differs from this build's by a few bytes at its end.
std::wstring OlderSetupPath();
std::wstring OlderPanelPath();

// The simulated server of a setup test: services named "MvSetup...".
test::SimulatedServer::Options ServerOptions(bool registerService = true);
std::wstring WithoutTrailingBackslash(std::wstring folder);

// Runs a setup or uninstaller with the arguments and waits for its end;
// returns its exit code (STILL_ACTIVE when it did not end in time).
DWORD RunSilently(const std::wstring& exe, const std::wstring& arguments,
                  std::chrono::milliseconds timeout = std::chrono::seconds(60));

// A value of HKLM (64-bit view); nullopt when the key or value is missing.
std::optional<std::wstring> MachineString(const wchar_t* key, const wchar_t* value);
std::optional<DWORD> MachineDword(const wchar_t* key, const wchar_t* value);
bool MachineKeyExists(const wchar_t* key);
// Removes what a setup may have left behind: the uninstall entry, the logon
// entry, the Start menu shortcut.
void RemoveSetupTraces();

// The shortcut in every user's Start menu, and the program it starts ("" when
// it cannot be read).
std::wstring ShortcutPath();
std::wstring ShortcutTarget(const std::wstring& link);

// Every file under a folder (relative name -> contents).
using FolderContents = std::map<std::wstring, std::string>;
FolderContents ReadFolder(const std::wstring& folder);

// A control panel running from the given executable: its tray window and
// process id (0 when none runs).
struct RunningPanel {
    HWND tray = nullptr;
    DWORD processId = 0;
};
RunningPanel FindRunningPanel(const std::wstring& exePath);
RunningPanel WaitForRunningPanel(const std::wstring& exePath, std::chrono::milliseconds timeout);
// Closes the panel through its tray window and waits for its end; returns
// its exit code (STILL_ACTIVE when it did not end).
DWORD CloseRunningPanel(const RunningPanel& panel);

// The windows of a setup run with its pages (not silently). Its main window
// holds the buttons (Next/Install = IDOK, Cancel = IDCANCEL) and the current
// page, a child dialog; its message boxes are owned by the main window.
inline constexpr int kDirectoryEditId = 1019;     // the folder on the directory page
inline constexpr int kDirectoryTextId = 1006;     // the text above it
inline constexpr int kComponentsTreeId = 1032;    // the options of the components page
inline constexpr int kHeaderTitleId = 1037;       // the title in the main window's header
// The main window once its first page is up and Next can be pressed.
HWND WaitForSetupWindow(DWORD processId, std::chrono::milliseconds timeout);
// The control of the current page, once that page shows it.
HWND WaitForPageControl(HWND setupWindow, int id, std::chrono::milliseconds timeout);
// The text of a control of another process (WM_GETTEXT).
std::wstring ControlText(HWND control);
// A message box owned by the setup's main window.
HWND WaitForSetupMessageBox(HWND setupWindow, std::chrono::milliseconds timeout);

} // namespace setup_test
