#pragma once
// CChangeRecorder: keeps the versions of the address spaces that the
// control panel gives the server and records each Save in the change
// journal. It listens to the exchange with the server:
//   - a load from the server notes the server's address space as loaded
//     (its bytes, and the exchange file's last-write time);
//   - before the first Save of that editing, that loaded address space is
//     kept as a version; an exchange file that changed since (another
//     control panel, a script, the server started with another file) is
//     kept as a version too, as the server's address space this Save
//     replaces;
//   - after each Save the address space written is kept as a version, the
//     retention rule runs, and one journal entry names the counts of what
//     changed, the conflicts overridden and the version files.
// Keeping a version or writing the journal never stops a Save: a failure is
// logged and shown as a warning.
#include <windows.h>

#include <string>

#include "addressspace/AddressSpaceCompare.h"
#include "addressspace/AddressSpaceVersions.h"
#include "addressspace/ExchangeObserver.h"
#include "addressspace/VersionRetention.h"

namespace CL {
class CChangeJournal;
}

class CChangeRecorder final : public IExchangeObserver {
public:
    CChangeRecorder(const std::wstring& exchangeFile, CL::CChangeJournal& journal,
                    CVersionRetention retention = CVersionRetention());

    void Loaded(const std::wstring& exchangeFile) override;
    void Saving(const std::wstring& exchangeFile, const CAddressSpaceDocument& document) override;
    void Saved(const std::wstring& exchangeFile, const CAddressSpaceDocument& document) override;

    // The editor took a kept version back (Restore in the change history):
    // the next Save's entry says so, and the restore is journalled now.
    void NoteRestored(const std::wstring& versionFile);

    const CAddressSpaceVersions& Versions() const { return m_versions; }
    const CVersionRetention& Retention() const { return m_retention; }
    // The version that holds what the server has now as far as this editor
    // knows (the last one kept), or empty.
    const std::wstring& KnownVersion() const { return m_knownVersion; }

private:
    // Keeps the bytes unless the newest version holds the same; returns the
    // version's path (empty when keeping failed: logged and shown).
    std::wstring KeepVersion(const std::string& bytes);
    // What the Save does to the server's address space as far as known:
    // the counts against it, and (when it was changed elsewhere since the
    // load) the server's changes and the conflicts the Save overrides.
    void CompareBeforeSave(const std::wstring& exchangeFile, const CAddressSpaceDocument& document);
    std::wstring SaveDetails(const std::wstring& exchangeFile, size_t removedVersions) const;
    static ULONGLONG LastWriteTime(const std::wstring& path);

    CAddressSpaceVersions m_versions;
    CL::CChangeJournal& m_journal;
    CVersionRetention m_retention;
    std::string m_loadedBytes;          // the server's address space as loaded, until it is kept
    std::wstring m_knownVersion;        // the version of what the server has, as far as known
    std::wstring m_elsewhereVersion;    // the exchange file changed elsewhere, kept at this Save
    std::wstring m_restoredFrom;        // the version last restored into the editor
    ULONGLONG m_knownWriteTime = 0;     // the exchange file's time after the last load or Save
    CompareSummary m_saveCounts;        // the Save against the server's address space before it
    size_t m_serverChanges = 0;         // changes made elsewhere since the load
    std::vector<std::wstring> m_conflicts;   // paths changed on both sides
    bool m_compared = false;
};
