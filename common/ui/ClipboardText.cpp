#include "common/ui/ClipboardText.h"

#include <cstring>

#include "common/Csv.h"
#include "common/Exception.h"
#include "common/ui/Clipboard.h"
#include "common/ui/ReportList.h"

namespace CL {

namespace {

// Global memory for the clipboard, freed unless the clipboard took it.
class CGlobalText {
public:
    explicit CGlobalText(const std::wstring& text)
        : m_memory(::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t)))
    {
        if (!m_memory)
            ThrowLastError(L"GlobalAlloc (GMEM_MOVEABLE)");
        void* data = ::GlobalLock(m_memory);
        std::memcpy(data, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
        ::GlobalUnlock(m_memory);
    }
    ~CGlobalText()
    {
        if (m_memory)
            ::GlobalFree(m_memory);
    }
    CGlobalText(const CGlobalText&) = delete;
    CGlobalText& operator=(const CGlobalText&) = delete;
    HGLOBAL Get() const { return m_memory; }
    void Release() { m_memory = nullptr; }

private:
    HGLOBAL m_memory;
};

} // namespace

void SetClipboardText(HWND owner, const std::wstring& text)
{
    CGlobalText memory(text);
    CClipboard clipboard(owner);
    if (!::EmptyClipboard())
        ThrowLastError(L"EmptyClipboard ()");
    if (!::SetClipboardData(CF_UNICODETEXT, memory.Get()))
        ThrowLastError(L"SetClipboardData (CF_UNICODETEXT, hMem)");
    memory.Release();   // the clipboard owns it now
}

std::wstring GetClipboardText(HWND owner)
{
    CClipboard clipboard(owner);
    const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
    if (!data)
        return {};
    const auto* text = static_cast<const wchar_t*>(::GlobalLock(data));
    std::wstring copy = text ? text : L"";
    ::GlobalUnlock(data);
    return copy;
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
