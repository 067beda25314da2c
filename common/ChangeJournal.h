#pragma once
// CChangeJournal: the one append-only record of every change the control
// panel makes to the server or its data (address space saves, settings
// changes, retention options, historian deletions, service starts and stops,
// restores). It is a CSV file beside the server (RFC 4180, UTF-8 with a byte
// order mark, so that spreadsheets and PowerShell's Import-Csv read it), one
// record per change: the UTC time, the Windows account (DOMAIN\name), the
// computer, the program, what was done, the details, and the file the change
// wrote or used (an address space version, a settings backup) with the one
// before it. Every entry also goes to the Application event log (through an
// IEventLogSink).
//
// Only ever appended to: each entry is one write at the end of the file made
// while the writer holds an exclusive lock on a byte range far beyond any
// data, so that two control panels writing at the same moment (another
// user's session, a second machine on a share) lose no entry and do not
// interleave, and readers are never blocked. A journal that cannot be
// written never stops the change it records: the failure is one error line
// in the diagnostic log and a warning for the user.
#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/EventLogSink.h"

namespace CL {

struct CJournalEntry {
    std::wstring time;           // UTC, "YYYY-MM-DD hh:mm:ss"
    std::wstring account;        // DOMAIN\name
    std::wstring computer;
    std::wstring program;        // executable name and version
    std::wstring action;         // one of the kJournal... texts
    std::wstring details;
    std::wstring file;           // the version or backup the change wrote or used
    std::wstring previousFile;   // the version the change replaced, where there is one
};

// The texts of the "Action" column.
inline constexpr wchar_t kJournalAddressSpaceSaved[] = L"Address space saved";
inline constexpr wchar_t kJournalAddressSpaceRestored[] = L"Address space restored";
inline constexpr wchar_t kJournalSettingsChanged[] = L"Settings changed";
inline constexpr wchar_t kJournalSettingsRestored[] = L"Settings restored";
inline constexpr wchar_t kJournalRetentionChanged[] = L"Retention changed";
inline constexpr wchar_t kJournalValuesDeleted[] = L"Historian values deleted";
inline constexpr wchar_t kJournalServiceStarted[] = L"Service started";
inline constexpr wchar_t kJournalServiceStopped[] = L"Service stopped";

class CChangeJournal {
public:
    static constexpr wchar_t kFileName[] = L"ChangeJournal.csv";
    using WarningPresenter = std::function<void(const std::wstring& text)>;

    CChangeJournal(std::wstring path, std::shared_ptr<IEventLogSink> eventLog);

    // The process-wide journal: kFileName in the running executable's
    // folder, the Application event log under the product's name, warnings
    // in a message box.
    static CChangeJournal& Instance();

    const std::wstring& Path() const { return m_path; }
    void SetPath(std::wstring path) { m_path = std::move(path); }
    void SetEventLog(std::shared_ptr<IEventLogSink> eventLog) { m_eventLog = std::move(eventLog); }
    // Null: a message box with the warning icon, owned by the active window.
    void SetWarningPresenter(WarningPresenter presenter) { m_warn = std::move(presenter); }
    // Shows a warning about the record of a change (a journal or a version
    // that could not be written) the way the journal shows its own.
    void PresentWarning(const std::wstring& text) const noexcept;

    // Records one change made now by this account, computer and program.
    // Never throws; false when the file could not be written (logged at
    // level 0 and shown to the user as a warning).
    bool Record(std::wstring_view action, std::wstring_view details, std::wstring_view file = {},
                std::wstring_view previousFile = {}) noexcept;
    bool Append(const CJournalEntry& entry) noexcept;

    // Every well-formed entry of the file in the order written; none when
    // the file does not exist. Throws CException when it cannot be read.
    std::vector<CJournalEntry> ReadAll() const;

    // The entry filled with the current time and the caller's identity.
    static CJournalEntry NewEntry(std::wstring_view action, std::wstring_view details, std::wstring_view file = {},
                                  std::wstring_view previousFile = {});
    static std::vector<std::wstring> ColumnTitles();
    // The one text the event log gets for an entry.
    static std::wstring EventText(const CJournalEntry& entry);
    // The record (CR LF ended) for an entry.
    static std::wstring RecordText(const CJournalEntry& entry);

    // DOMAIN\name of the process's account (the token's user).
    static std::wstring CurrentAccount();
    static std::wstring ComputerName();
    static std::wstring ProgramName();
    // "YYYY-MM-DD hh:mm:ss" of a UTC time.
    static std::wstring TimeText(const SYSTEMTIME& utc);

private:
    // Writes the bytes at the end of the file under the writers' lock
    // (with the byte order mark and the header first when the file is new).
    void AppendBytes(const std::string& record) const;
    void Warn(const std::wstring& failure) noexcept;

    std::wstring m_path;
    std::shared_ptr<IEventLogSink> m_eventLog;
    WarningPresenter m_warn;
};

} // namespace CL
