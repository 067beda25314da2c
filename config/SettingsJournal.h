#pragma once
// The change journal's entries for the server's settings: one entry per
// applied change naming every attribute that changed (old -> new) and the
// backup of the settings in force before it; a change of the historian's
// retention options gets an entry of its own in words. A change made by
// restoring a backup (the change history's "Restore...") says so.
#include <string>
#include <vector>

#include "config/Settings.h"

// "Name: 'old' -> 'new'" for every attribute that differs, in file order.
std::vector<std::wstring> SettingsDifferences(const CSettings& before, const CSettings& after);
// The historian's retention in words ("keep all values", "keep the last 1000
// values of each item", ...).
std::wstring DescribeHistorianRetention(const CSettings& settings);

// Records the change that made `after` the settings in force; the settings
// before it are read from the backup. Never throws (the journal warns).
void JournalSettingsChange(const std::wstring& backup, const CSettings& after) noexcept;

// While one lives, an applied settings change is recorded as the restore of
// this backup.
class CSettingsRestoreNote {
public:
    explicit CSettingsRestoreNote(std::wstring backup);
    ~CSettingsRestoreNote();
    CSettingsRestoreNote(const CSettingsRestoreNote&) = delete;
    CSettingsRestoreNote& operator=(const CSettingsRestoreNote&) = delete;
    // The backup being restored, or empty.
    static const std::wstring& Current();
};
