#include "common/ui/ContextMenuKeys.h"
#include "common/ui/ReportList.h"

#include <algorithm>
#include <cwchar>
#include <numeric>

namespace CL {

namespace {

// Code-unit order of two texts: "B" before "a", "10" before "9".
bool TextLess(const std::wstring& a, const std::wstring& b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](wchar_t x, wchar_t y) {
                                            return static_cast<unsigned short>(x) <
                                                   static_cast<unsigned short>(y);
                                        });
}

constexpr int kArrowSize = 9;
// More selected rows than this are dropped by emptying the list (Reset).
constexpr UINT kManySelected = 64;   // pixels at 96 dpi, square

// A small filled triangle on the button face, in the shadow colour, as the
// header draws it beside the column title; drawn at the list's DPI.
UniqueGdiObject MakeArrow(bool up, const CDpi& dpi)
{
    const int size = dpi.Scale(kArrowSize);
    HDC screen = ::GetDC(nullptr);
    HDC dc = ::CreateCompatibleDC(screen);
    UniqueGdiObject bitmap(::CreateCompatibleBitmap(screen, size, size));
    ::ReleaseDC(nullptr, screen);
    if (!dc || !bitmap)
        return bitmap;
    const HGDIOBJ oldBitmap = ::SelectObject(dc, bitmap.get());
    const RECT all = {0, 0, size, size};
    ::FillRect(dc, &all, ::GetSysColorBrush(COLOR_BTNFACE));
    const HGDIOBJ oldPen = ::SelectObject(dc, ::GetStockObject(DC_PEN));
    const HGDIOBJ oldBrush = ::SelectObject(dc, ::GetStockObject(DC_BRUSH));
    ::SetDCPenColor(dc, ::GetSysColor(COLOR_BTNSHADOW));
    ::SetDCBrushColor(dc, ::GetSysColor(COLOR_BTNSHADOW));
    const auto at = [&](int x, int y) { return POINT{dpi.Scale(x), dpi.Scale(y)}; };
    const POINT upward[] = {at(4, 2), at(8, 6), at(0, 6)};
    const POINT downward[] = {at(0, 2), at(8, 2), at(4, 6)};
    ::Polygon(dc, up ? upward : downward, 3);
    ::SelectObject(dc, oldBrush);
    ::SelectObject(dc, oldPen);
    ::SelectObject(dc, oldBitmap);
    ::DeleteDC(dc);
    return bitmap;
}

// The width of a header title in the header's font.
int TitleWidth(HWND header, const wchar_t* title)
{
    const HDC dc = ::GetDC(header);
    HGDIOBJ font = reinterpret_cast<HGDIOBJ>(::SendMessageW(header, WM_GETFONT, 0, 0));
    const HGDIOBJ old = ::SelectObject(dc, font ? font : ::GetStockObject(DEFAULT_GUI_FONT));
    RECT r = {};
    ::DrawTextW(dc, title, -1, &r, DT_CALCRECT | DT_SINGLELINE | DT_NOPREFIX);
    ::SelectObject(dc, old);
    ::ReleaseDC(header, dc);
    return r.right - r.left;
}

} // namespace

bool IReportRows::Less(size_t a, size_t b, int column) const
{
    return TextLess(CellText(a, column), CellText(b, column));
}

CReportList::~CReportList() = default;

HWND CReportList::Create(HWND parent, UINT id, DWORD extraStyle)
{
    const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA |
                        LVS_SHOWSELALWAYS | extraStyle;
    HWND list = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"", style, 0, 0, 0, 0, parent,
                                  reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)),
                                  ::GetModuleHandleW(nullptr), nullptr);
    if (list)
        Attach(list);
    return list;
}

void CReportList::Attach(HWND list)
{
    m_hwnd = list;
    // Label tips show a cell's whole text when the column is too narrow.
    ListView_SetExtendedListViewStyleEx(m_hwnd, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP,
                                        LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    RebuildArrows();
    EnableContextMenuKeys(m_hwnd);
}

int CReportList::MinimumColumnWidth(const wchar_t* title) const
{
    // The header draws the title and the arrow, each with its bitmap margin
    // on both sides.
    const HWND header = ListView_GetHeader(m_hwnd);
    if (!header)
        return 0;
    const int margin = static_cast<int>(::SendMessageW(header, HDM_GETBITMAPMARGIN, 0, 0));
    return TitleWidth(header, title) + CDpi::Of(m_hwnd).Scale(kArrowSize) + 4 * margin;
}

void CReportList::OnDpiChanged()
{
    const CDpi dpi = CDpi::Of(m_hwnd);
    if (dpi.Value() == m_dpi)
        return;
    for (int column = 0; column < ColumnCount(); ++column)
        ListView_SetColumnWidth(m_hwnd, column, ::MulDiv(ListView_GetColumnWidth(m_hwnd, column), dpi.Value(), m_dpi));
    RebuildArrows();
}

void CReportList::SetColumns(const std::vector<ReportColumn>& columns)
{
    const CDpi dpi = CDpi::Of(m_hwnd);
    while (ListView_DeleteColumn(m_hwnd, 0)) {
    }
    int index = 0;
    for (const ReportColumn& column : columns) {
        LVCOLUMNW lvc = {};
        lvc.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
        lvc.fmt = column.format;
        lvc.cx = std::max(dpi.Scale(column.width), MinimumColumnWidth(column.title));
        lvc.pszText = const_cast<wchar_t*>(column.title);
        lvc.iSubItem = index;
        ListView_InsertColumn(m_hwnd, index, &lvc);
        ++index;
    }
    m_columnCount = columns.size();
    m_titles.clear();
    for (const ReportColumn& column : columns)
        m_titles.emplace_back(column.title);
    ShowArrow();
}

void CReportList::SetRows(const IReportRows* rows)
{
    m_rows = rows;
    Reset(false);
}

void CReportList::Reset(bool keepSort)
{
    const size_t count = m_rows ? m_rows->RowCount() : 0;
    m_order.resize(count);
    std::iota(m_order.begin(), m_order.end(), size_t{0});
    if (keepSort && m_sortColumn != kNoSort)
        SortOrder();
    // With many rows selected, no rows first: the list drops its selection at
    // once. Deselecting thousands of selected rows one by one costs a
    // notification each (Wine's list view sends two per row): after a paste of
    // 10,000 rows that took seconds. Otherwise not: going through no rows
    // hides and shows the scroll bar, a frame change that costs Wine 10-15 ms,
    // most of a keystroke's time in a filter.
    if (ListView_GetSelectedCount(m_hwnd) > kManySelected)
        ListView_SetItemCountEx(m_hwnd, 0, 0);
    ClearSelection();
    SyncCount(false);
}

void CReportList::AppendRow(size_t sourceRow)
{
    m_order.push_back(sourceRow);
    SyncCount(true);
}

void CReportList::UpdateRow(size_t sourceRow)
{
    const int index = DisplayIndexOf(sourceRow);
    if (index >= 0)
        ListView_RedrawItems(m_hwnd, index, index);
}

void CReportList::RemoveRows(std::vector<size_t> sourceRows)
{
    std::sort(sourceRows.begin(), sourceRows.end());
    sourceRows.erase(std::unique(sourceRows.begin(), sourceRows.end()), sourceRows.end());
    std::vector<size_t> kept;
    kept.reserve(m_order.size());
    for (size_t row : m_order) {
        const auto at = std::lower_bound(sourceRows.begin(), sourceRows.end(), row);
        if (at != sourceRows.end() && *at == row)
            continue;
        kept.push_back(row - static_cast<size_t>(at - sourceRows.begin()));
    }
    m_order.swap(kept);
    ClearSelection();
    SyncCount(true);
}

void CReportList::SortBy(int column, bool ascending)
{
    m_sortColumn = column;
    m_ascending = ascending;
    // An owner-data list keeps its selection by line: carry the selected and
    // focused rows over to the lines they land on.
    const std::vector<size_t> selected = SelectedRows();
    const long long focused = FocusedRow();
    SortOrder();
    ClearSelection();
    for (size_t row : selected) {
        const int index = DisplayIndexOf(row);
        if (index >= 0)
            ListView_SetItemState(m_hwnd, index, LVIS_SELECTED, LVIS_SELECTED);
    }
    if (focused >= 0) {
        const int index = DisplayIndexOf(static_cast<size_t>(focused));
        if (index >= 0)
            ListView_SetItemState(m_hwnd, index, LVIS_FOCUSED, LVIS_FOCUSED);
    }
    ShowArrow();
    ::InvalidateRect(m_hwnd, nullptr, FALSE);
}

void CReportList::SetSortIndicator(int column, bool ascending)
{
    m_sortColumn = column;
    m_ascending = ascending;
    ShowArrow();
}

void CReportList::OnColumnClick(int column)
{
    const bool ascending = column == m_sortColumn ? !m_ascending : true;
    SortBy(column, ascending);
    if (onSorted)
        onSorted(m_sortColumn, m_ascending);
}

int CReportList::DisplayIndexOf(size_t sourceRow) const
{
    const auto at = std::find(m_order.begin(), m_order.end(), sourceRow);
    return at == m_order.end() ? -1 : static_cast<int>(at - m_order.begin());
}

std::vector<size_t> CReportList::SelectedRows() const
{
    std::vector<size_t> rows;
    int index = -1;
    while ((index = ListView_GetNextItem(m_hwnd, index, LVNI_SELECTED)) >= 0) {
        if (static_cast<size_t>(index) < m_order.size())
            rows.push_back(m_order[index]);
    }
    return rows;
}

long long CReportList::FocusedRow() const
{
    const int index = ListView_GetNextItem(m_hwnd, -1, LVNI_FOCUSED);
    if (index < 0 || static_cast<size_t>(index) >= m_order.size())
        return -1;
    return static_cast<long long>(m_order[index]);
}

void CReportList::Select(size_t sourceRow, bool focus)
{
    ClearSelection();
    const int index = DisplayIndexOf(sourceRow);
    if (index < 0)
        return;
    const UINT state = LVIS_SELECTED | (focus ? LVIS_FOCUSED : 0);
    ListView_SetItemState(m_hwnd, index, state, state);
    ListView_EnsureVisible(m_hwnd, index, FALSE);
}

void CReportList::SelectAll()
{
    // -1: every item of the (virtual) list at once.
    ListView_SetItemState(m_hwnd, -1, LVIS_SELECTED, LVIS_SELECTED);
}

bool CReportList::OnNotify(const NMHDR* header, LRESULT* result)
{
    if (!header || header->hwndFrom != m_hwnd || !m_hwnd)
        return false;
    switch (header->code) {
    case LVN_GETDISPINFOW: {
        auto* info = reinterpret_cast<NMLVDISPINFOW*>(const_cast<NMHDR*>(header));
        LVITEMW& item = info->item;
        if ((item.mask & LVIF_TEXT) && item.pszText && item.cchTextMax > 0) {
            item.pszText[0] = L'\0';
            if (m_rows && item.iItem >= 0 && static_cast<size_t>(item.iItem) < m_order.size()) {
                m_textBuffer = m_rows->CellText(m_order[item.iItem], item.iSubItem);
                ::lstrcpynW(item.pszText, m_textBuffer.c_str(), item.cchTextMax);
            }
        }
        *result = 0;
        return true;
    }
    case LVN_COLUMNCLICK:
        OnColumnClick(reinterpret_cast<const NMLISTVIEW*>(header)->iSubItem);
        *result = 0;
        return true;
    case LVN_ODFINDITEMW: {
        // Typing in the list jumps to the next line whose first column
        // starts with the typed letters, as in an ordinary list.
        const auto* find = reinterpret_cast<const NMLVFINDITEMW*>(header);
        *result = (find->lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) && find->lvfi.psz
                      ? static_cast<LRESULT>(FindPrefix(find->lvfi.psz, find->iStart))
                      : -1;
        return true;
    }
    default:
        return false;
    }
}

void CReportList::OnSysColorChange()
{
    RebuildArrows();
}

void CReportList::RebuildArrows()
{
    // The header keeps using the old bitmaps until the new ones are set, so
    // they are released only after ShowArrow.
    UniqueGdiObject oldUp = std::move(m_bmSortUp);
    UniqueGdiObject oldDown = std::move(m_bmSortDown);
    const CDpi dpi = CDpi::Of(m_hwnd);
    m_dpi = dpi.Value();
    m_bmSortUp = MakeArrow(true, dpi);
    m_bmSortDown = MakeArrow(false, dpi);
    ShowArrow();
}

void CReportList::ShowArrow()
{
    if (!m_hwnd)
        return;
    HWND header = ListView_GetHeader(m_hwnd);
    const int count = header ? Header_GetItemCount(header) : 0;
    for (int column = 0; column < count; ++column) {
        HDITEMW item = {};
        item.mask = HDI_FORMAT;
        Header_GetItem(header, column, &item);
        item.fmt &= ~(HDF_BITMAP | HDF_BITMAP_ON_RIGHT | HDF_SORTUP | HDF_SORTDOWN);
        item.mask = HDI_FORMAT | HDI_BITMAP;
        item.hbm = nullptr;
        if (column == m_sortColumn) {
            item.fmt |= HDF_BITMAP | HDF_BITMAP_ON_RIGHT;
            item.hbm = m_ascending ? SortUpBitmap() : SortDownBitmap();
        }
        Header_SetItem(header, column, &item);
    }
}

void CReportList::SortOrder()
{
    if (!m_rows || m_sortColumn == kNoSort)
        return;
    const int column = m_sortColumn;
    const bool ascending = m_ascending;
    if (m_rows->ComparesByText(column)) {
        // Each text is made once; the sort then only compares strings.
        std::vector<std::wstring> keys(m_rows->RowCount());
        for (size_t row : m_order)
            keys[row] = m_rows->CellText(row, column);
        std::stable_sort(m_order.begin(), m_order.end(), [&](size_t a, size_t b) {
            return ascending ? TextLess(keys[a], keys[b]) : TextLess(keys[b], keys[a]);
        });
    } else {
        std::stable_sort(m_order.begin(), m_order.end(), [&](size_t a, size_t b) {
            return ascending ? m_rows->Less(a, b, column) : m_rows->Less(b, a, column);
        });
    }
}

void CReportList::SyncCount(bool keepScroll)
{
    // An unchanged count is left alone: setting it updates the scroll bars,
    // which costs Wine about 25 ms even when nothing about them changes.
    if (ListView_GetItemCount(m_hwnd) != static_cast<int>(m_order.size()))
        ListView_SetItemCountEx(m_hwnd, static_cast<int>(m_order.size()), keepScroll ? LVSICF_NOSCROLL : 0);
    ::InvalidateRect(m_hwnd, nullptr, FALSE);
}

void CReportList::ClearSelection()
{
    ListView_SetItemState(m_hwnd, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
}

long long CReportList::FindPrefix(const wchar_t* prefix, int start) const
{
    if (!m_rows || m_order.empty())
        return -1;
    const size_t length = std::wcslen(prefix);
    const size_t count = m_order.size();
    const size_t first = start >= 0 ? static_cast<size_t>(start) % count : 0;
    for (size_t step = 0; step < count; ++step) {
        const size_t index = (first + step) % count;
        const std::wstring text = m_rows->CellText(m_order[index], 0);
        if (text.size() >= length && ::CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, text.c_str(),
                                                      static_cast<int>(length), prefix,
                                                      static_cast<int>(length)) == CSTR_EQUAL)
            return static_cast<long long>(index);
    }
    return -1;
}

} // namespace CL
