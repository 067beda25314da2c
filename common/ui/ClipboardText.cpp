#include "common/ui/ClipboardText.h"

#include "common/Csv.h"
#include "common/ui/Clipboard.h"
#include "common/ui/ReportList.h"

namespace CL {

void SetClipboardText(HWND owner, const std::wstring& text)
{
    CClipboard(owner).PutText(text);
}

std::wstring GetClipboardText(HWND owner)
{
    return CClipboard(owner).Text().value_or(std::wstring());
}

std::wstring ReportRowsText(const CReportList& list, const std::vector<size_t>& sourceRows)
{
    std::vector<std::wstring> cells(static_cast<size_t>(list.ColumnCount()));
    for (int column = 0; column < list.ColumnCount(); ++column)
        cells[static_cast<size_t>(column)] = list.ColumnTitle(column);
    std::wstring text = DelimitedRecord(cells, L'\t');
    for (size_t row : sourceRows) {
        for (int column = 0; column < list.ColumnCount(); ++column)
            cells[static_cast<size_t>(column)] = list.Rows()->CellText(row, column);
        text += DelimitedRecord(cells, L'\t');
    }
    return text;
}

} // namespace CL
