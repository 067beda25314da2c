#include "historian/DBExplorerRows.h"

#include "common/LocalTime.h"
#include "historian/ItemFilter.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

namespace CL {

unsigned long long CDBExplorerRows::ParseCount(const std::wstring& text)
{
    unsigned long long value = 0;
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9')
            break;
        value = value * 10 + static_cast<unsigned>(c - L'0');
    }
    return value;
}

void CDBExplorerRows::Assign(const std::vector<CHistorianSummaryEntry>& summary)
{
    m_rows.clear();
    m_rows.reserve(summary.size());
    for (const CHistorianSummaryEntry& entry : summary) {
        Row row;
        row.itemId = entry.itemId;
        row.foldedId = CItemFilter::FoldCase(entry.itemId);
        row.earliest = DateToString(UtcToLocalDate(entry.timeFrom));
        row.latest = DateToString(UtcToLocalDate(entry.timeTo));
        row.count = Format(L"%ld", entry.valueCount);
        // The keys are what the texts say, so that the order follows what
        // the list shows.
        row.earliestKey = ParseTimeText(row.earliest);
        row.latestKey = ParseTimeText(row.latest);
        row.countKey = ParseCount(row.count);
        m_rows.push_back(std::move(row));
    }
    ApplyFilter();
}

void CDBExplorerRows::Clear()
{
    m_rows.clear();
    m_shown.clear();
}

void CDBExplorerRows::SetFilter(const std::wstring& text)
{
    m_filterText = text;
    ApplyFilter();
}

void CDBExplorerRows::ApplyFilter()
{
    const CItemFilter filter(m_filterText);
    m_shown.clear();
    m_shown.reserve(m_rows.size());
    for (size_t i = 0; i < m_rows.size(); ++i)
        if (filter.Matches(m_rows[i].foldedId))
            m_shown.push_back(i);
}

std::wstring CDBExplorerRows::CellText(size_t row, int column) const
{
    const Row& r = Shown(row);
    switch (column) {
    case kItemId:
        return r.itemId;
    case kEarliest:
        return r.earliest;
    case kLatest:
        return r.latest;
    default:
        return r.count;
    }
}

bool CDBExplorerRows::Less(size_t a, size_t b, int column) const
{
    const Row& x = m_rows[m_shown[a]];
    const Row& y = m_rows[m_shown[b]];
    switch (column) {
    case kItemId:
        return x.itemId.compare(y.itemId) < 0;   // unsigned 16-bit code units
    case kEarliest:
        return x.earliestKey < y.earliestKey;
    case kLatest:
        return x.latestKey < y.latestKey;
    default:
        return x.countKey < y.countKey;
    }
}

unsigned long long CDBExplorerRows::TotalValueCount() const
{
    unsigned long long total = 0;
    for (const Row& row : m_rows)
        total += row.countKey;
    return total;
}

unsigned long long CDBExplorerRows::ValueCountOf(const std::wstring& itemId) const
{
    for (const Row& row : m_rows)
        if (row.itemId == itemId)
            return row.countKey;
    return 0;
}

} // namespace CL
