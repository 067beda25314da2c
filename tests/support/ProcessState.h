#pragma once
// The process-wide state that a test may change and must put back: the
// settings record (with the log's trace level), the current directory and,
// shared with every other program of the Wine session, the clipboard and the
// registry keys the program and the tests write. A snapshot before and after
// each test tells what a test left behind.
#include <windows.h>

#include <string>
#include <vector>

#include "config/Settings.h"

namespace test {

// The data of one clipboard format. Formats whose data is not global memory
// (bitmaps, metafiles) are kept by their number alone; the system makes them
// from their memory forms (CF_DIB) again.
struct ClipboardFormat {
    UINT format = 0;
    bool memory = false;
    std::string bytes;

    bool operator==(const ClipboardFormat&) const = default;
};

// The clipboard's formats and data as they are now. Empty when the clipboard
// is empty or could not be opened (opened is false then).
struct ClipboardContent {
    bool opened = false;
    std::vector<ClipboardFormat> formats;

    static ClipboardContent Read();
    // Empties the clipboard and puts the memory formats back (the formats the
    // system makes from others, e.g. CF_TEXT from CF_UNICODETEXT, are left to it).
    void Write() const;
    bool operator==(const ClipboardContent& other) const { return formats == other.formats; }
};

// Puts the clipboard back as it was at construction: for tests that copy.
class ClipboardKeeper {
public:
    ClipboardKeeper() : m_before(ClipboardContent::Read()) {}
    ~ClipboardKeeper();
    ClipboardKeeper(const ClipboardKeeper&) = delete;
    ClipboardKeeper& operator=(const ClipboardKeeper&) = delete;

private:
    ClipboardContent m_before;
};

// Puts the settings record back as it was at construction: for tests that
// set keys of the process's own record.
class SettingsKeeper {
public:
    SettingsKeeper() : m_before(g_Settings) {}
    ~SettingsKeeper() { g_Settings = m_before; }
    SettingsKeeper(const SettingsKeeper&) = delete;
    SettingsKeeper& operator=(const SettingsKeeper&) = delete;

private:
    CSettings m_before;
};

// Puts the current directory back as it was at construction: for tests that
// answer the editor's Open and Save As dialogs, which (as the system's file
// dialogs do without OFN_NOCHANGEDIR) leave the process in the chosen folder.
class CurrentDirectoryKeeper {
public:
    CurrentDirectoryKeeper();
    ~CurrentDirectoryKeeper();
    CurrentDirectoryKeeper(const CurrentDirectoryKeeper&) = delete;
    CurrentDirectoryKeeper& operator=(const CurrentDirectoryKeeper&) = delete;

private:
    std::wstring m_before;
};

struct ProcessState {
    CSettings settings;
    std::wstring currentDirectory;
    // Only when `shared` was asked for (nothing else changes them meanwhile).
    bool shared = false;
    ClipboardContent clipboard;
    std::vector<std::wstring> registry;

    static ProcessState Take(bool shared);
    // One line per difference between this state (before) and `after`.
    std::vector<std::string> Differences(const ProcessState& after) const;
    // Puts the in-process parts back (settings record, current directory);
    // with `shared`, the clipboard too.
    void Restore() const;
};

// The registry values under the keys the program and the tests write, one
// "<key>\<name> = <type>:<data>" line each, and the number of subkeys of the
// class registrations and of the services. Keys without values do not count.
std::vector<std::wstring> WatchedRegistry();

// The settings record's keys whose values differ, by name.
std::vector<std::string> SettingsDifferences(const CSettings& before, const CSettings& after);

} // namespace test
