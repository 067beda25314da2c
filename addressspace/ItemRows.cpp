#include "addressspace/ItemRows.h"

#include <algorithm>
#include <cwchar>

#include "common/Exception.h"
#include "common/Util_Variant.h"

std::vector<CL::ReportColumn> CItemRows::Columns()
{
    return {
        {L"Name", 140},
        {L"Data type", 100},
        {L"Current Value", 130},
        {L"Access", 55},
        {L"Scan Rate", 70, LVCFMT_RIGHT},
        {L"Archive", 55, LVCFMT_CENTER},
    };
}

std::array<std::wstring, CItemRows::kColumnCount> CItemRows::Cells(const COPCItem& item)
{
    std::array<std::wstring, kColumnCount> cells;
    cells[kName] = item.Name();
    cells[kDataType] = CL::VarTypeToString(item.CanonicalDataType());
    try {
        cells[kCurrentValue] = CL::VariantToString(item.Value(), CL::kLocaleSystemDefault, CL::kArraySeparator);
    } catch (const CL::CException&) {
        // A value that has no text (empty, or of an odd type) shows nothing.
    }
    if (cells[kCurrentValue].size() > kMaxValueText)
        cells[kCurrentValue].resize(kMaxValueText);
    cells[kAccess] = std::wstring(item.Readable() ? L"R" : L"") + (item.Writable() ? L"W" : L"");
    cells[kScanRate] = std::to_wstring(item.ScanRate());
    cells[kArchive] = item.Archive() ? L"X" : L"";
    return cells;
}

void CItemRows::Assign(const std::vector<ItemPtr>& items)
{
    m_rows.clear();
    m_rows.reserve(items.size());
    for (const ItemPtr& item : items)
        m_rows.push_back(Row{item, Cells(*item)});
}

void CItemRows::Append(const ItemPtr& item)
{
    m_rows.push_back(Row{item, Cells(*item)});
}

void CItemRows::Refresh(size_t row)
{
    Row& entry = m_rows.at(row);
    entry.cells = Cells(*entry.item);
}

void CItemRows::Remove(std::vector<size_t> rows)
{
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        if (*it < m_rows.size())
            m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(*it));
}

void CItemRows::Clear()
{
    m_rows.clear();
}

std::wstring CItemRows::CellText(size_t row, int column) const
{
    if (row >= m_rows.size() || column < 0 || column >= kColumnCount)
        return std::wstring();
    return m_rows[row].cells[static_cast<size_t>(column)];
}

bool CItemRows::ComparesByText(int column) const
{
    return column != kName && column != kScanRate;
}

bool CItemRows::Less(size_t a, size_t b, int column) const
{
    if (column == kScanRate)
        return m_rows.at(a).item->ScanRate() < m_rows.at(b).item->ScanRate();
    if (column == kName)
        return _wcsicmp(m_rows.at(a).cells[kName].c_str(), m_rows.at(b).cells[kName].c_str()) < 0;
    return CL::IReportRows::Less(a, b, column);
}
