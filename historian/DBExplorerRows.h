#pragma once
// CDBExplorerRows: the rows of the database explorer, one per archived item:
// "Item ID", "Earliest value time", "Latest value time" (local time texts)
// and "Value count". Sorting compares the times parsed back from their
// texts, the counts as unsigned numbers (9 before 10) and the item IDs as
// unsigned 16-bit code units ("B" before "a").
//
// A filter (CItemFilter) narrows the rows shown: row indices given to and
// taken from the list count the rows that pass it, in the summary's order.
#include <windows.h>

#include <string>
#include <vector>

#include "common/historian/HistorianValues.h"
#include "common/ui/ReportList.h"

namespace CL {

class CDBExplorerRows : public IReportRows {
public:
    enum Column { kItemId = 0, kEarliest = 1, kLatest = 2, kCount = 3, kColumnCount = 4 };

    // Replaces the rows with one per summary entry, in the order given; the
    // times are converted from UTC to local time. Throws CException for a
    // time that has no text.
    void Assign(const std::vector<CHistorianSummaryEntry>& summary);
    void Clear();

    // Keeps only the rows whose item ID passes the filter text (empty: all).
    void SetFilter(const std::wstring& text);
    const std::wstring& FilterText() const { return m_filterText; }
    // Every archived item, filtered out or not.
    size_t TotalCount() const { return m_rows.size(); }

    const std::wstring& ItemId(size_t row) const { return Shown(row).itemId; }
    // The row's times parsed back from its texts (local time).
    DATE Earliest(size_t row) const { return Shown(row).earliestKey; }
    DATE Latest(size_t row) const { return Shown(row).latestKey; }
    unsigned long long ValueCount(size_t row) const { return Shown(row).countKey; }
    // The value count of an item among all rows (filtered out or not); 0
    // when the item has no row.
    unsigned long long ValueCountOf(const std::wstring& itemId) const;
    // The values of all rows.
    unsigned long long TotalValueCount() const;

    size_t RowCount() const override { return m_shown.size(); }
    std::wstring CellText(size_t row, int column) const override;
    // Less gives every column's rule (parsed times, numbers, code units).
    bool ComparesByText(int /*column*/) const override { return false; }
    bool Less(size_t a, size_t b, int column) const override;

    // The text of a count read as an unsigned decimal number (digits from
    // the start; none gives 0).
    static unsigned long long ParseCount(const std::wstring& text);

private:
    struct Row {
        std::wstring itemId;
        std::wstring foldedId;   // upper case, for the filter
        std::wstring earliest;
        std::wstring latest;
        std::wstring count;
        DATE earliestKey;
        DATE latestKey;
        unsigned long long countKey;
    };
    const Row& Shown(size_t row) const { return m_rows[m_shown.at(row)]; }
    void ApplyFilter();

    std::vector<Row> m_rows;
    std::vector<size_t> m_shown;   // indices into m_rows of the rows that pass
    std::wstring m_filterText;
};

} // namespace CL
