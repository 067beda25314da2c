#pragma once
// CItemRows: the rows of the editor's item list, one per item of the branch
// shown, with the texts of the six columns kept beside each item so that
// drawing and sorting tens of thousands of rows does not convert values
// again and again.
#include <array>
#include <string>
#include <vector>

#include "addressspace/OPCItem.h"
#include "common/SmartPtr.h"
#include "common/ui/ReportList.h"

class CItemRows : public CL::IReportRows {
public:
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    enum Column { kName, kDataType, kCurrentValue, kAccess, kScanRate, kArchive, kColumnCount };
    static constexpr size_t kMaxValueText = 2048;

    // The column titles and widths of the list.
    static std::vector<CL::ReportColumn> Columns();
    // The six texts of an item's row.
    static std::array<std::wstring, kColumnCount> Cells(const COPCItem& item);

    void Assign(const std::vector<ItemPtr>& items);
    void Append(const ItemPtr& item);
    // The item's texts are taken again.
    void Refresh(size_t row);
    // Removes the rows (indices before the removal).
    void Remove(std::vector<size_t> rows);
    void Clear();

    const ItemPtr& ItemAt(size_t row) const { return m_rows.at(row).item; }

    size_t RowCount() const override { return m_rows.size(); }
    std::wstring CellText(size_t row, int column) const override;
    // Names sort without regard to letter case (as the model orders them),
    // the scan rate as a number, the other columns by their texts.
    bool ComparesByText(int column) const override;
    bool Less(size_t a, size_t b, int column) const override;

private:
    struct Row {
        ItemPtr item;
        std::array<std::wstring, kColumnCount> cells;
    };
    std::vector<Row> m_rows;
};
