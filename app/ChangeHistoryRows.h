#pragma once
// CChangeHistoryRows: the change journal's entries as the change history
// lists them, newest first, narrowed by the explorer's filter rule (the
// text anywhere in the time, action, account, computer, details or file of
// an entry; with '*' or '?' a pattern one of them must match whole; letter
// case ignored).
#include <string>
#include <vector>

#include "common/ChangeJournal.h"
#include "common/ui/ReportList.h"

namespace CL {

class CChangeHistoryRows : public IReportRows {
public:
    enum Column { kTime = 0, kAction = 1, kAccount = 2, kComputer = 3, kDetails = 4, kColumnCount = 5 };

    // Replaces the entries (given in the journal's order, oldest first).
    void Assign(std::vector<CJournalEntry> entries);
    void SetFilter(const std::wstring& text);
    size_t TotalCount() const { return m_entries.size(); }

    // The entry of a shown row (row 0 is the newest that passes the filter).
    const CJournalEntry& Entry(size_t row) const { return m_entries[m_shown.at(row)]; }
    // The version the entry's address space replaced, found among the
    // older entries when the entry does not name it: its previous file, or
    // else the file of the nearest older address space entry.
    std::wstring PreviousVersion(size_t row) const;

    size_t RowCount() const override { return m_shown.size(); }
    std::wstring CellText(size_t row, int column) const override;

    // Whether the entry is about the address space, or about the settings.
    static bool IsAddressSpaceEntry(const CJournalEntry& entry);
    static bool IsSettingsEntry(const CJournalEntry& entry);
    // The text of the details box: the header line, the details one part
    // per line, the files.
    static std::wstring DetailText(const CJournalEntry& entry);

private:
    void ApplyFilter();

    std::vector<CJournalEntry> m_entries;   // oldest first
    std::vector<std::wstring> m_folded;     // per entry: its searchable fields, folded, joined by '\n'
    std::vector<size_t> m_shown;            // newest first
    std::wstring m_filterText;
};

} // namespace CL
