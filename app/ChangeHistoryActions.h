#pragma once
// What the change history can do beyond listing the journal, given by the
// application shell that owns the editor and the options dialog. An empty
// function leaves its button disabled.
#include <windows.h>

#include <functional>
#include <string>

namespace CL {

struct ChangeHistoryActions {
    // Takes a kept address space version into the editor (opening it first)
    // as one undoable change; true when it was taken.
    std::function<bool(HWND owner, const std::wstring& version)> restoreAddressSpace;
    // Opens the Options dialog filled from a settings backup; its OK runs
    // the settings change. True when new settings were applied.
    std::function<bool(HWND owner, const std::wstring& backup)> restoreSettings;
    // Shows the differences between two address space files (older, newer).
    std::function<void(HWND owner, const std::wstring& older, const std::wstring& newer)> compareFiles;
    // Shows the differences between a version and the editor's address
    // space, or the server's address space now.
    std::function<void(HWND owner, const std::wstring& version)> compareWithEditor;
    std::function<void(HWND owner, const std::wstring& version)> compareWithServer;
};

} // namespace CL
