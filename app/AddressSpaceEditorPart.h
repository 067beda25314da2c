#pragma once
// What the tray window needs of the address space editor (m_wndMain): the
// editor is built elsewhere and handed to CDummyWnd, which keeps it for its
// whole life and creates its window on demand.
#include <windows.h>

#include <string>

namespace CL {

class IAddressSpaceEditor {
public:
    virtual ~IAddressSpaceEditor() = default;
    // The editor's window; NULL while it is not open.
    virtual HWND Window() const = 0;
    // Runs before the window is created (loading the server's address
    // space); false when the user declined and nothing is to be opened.
    virtual bool PrepareOpen() = 0;
    // Creates the window; false on failure with the last error set.
    virtual bool Create() = 0;
    // Replaces the model with the exchange file's content (after the
    // options changed).
    virtual void ReloadFromFile() = 0;
    // Takes a kept address space version into the open editor as one
    // undoable change (the change history's Restore). Throws when the file
    // cannot be loaded.
    virtual void RestoreVersion(const std::wstring& file) = 0;
    // The review of changes (the change history's compares): the open
    // editor's address space against a version; a version against the
    // server's address space now; two versions (older, newer). Throw when a
    // file cannot be loaded.
    virtual void CompareWithVersion(const std::wstring& file) = 0;
    virtual void CompareVersionWithServer(HWND owner, const std::wstring& file) = 0;
    virtual void CompareVersions(HWND owner, const std::wstring& older, const std::wstring& newer) = 0;
};

} // namespace CL
