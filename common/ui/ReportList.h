#pragma once
// CReportList: a report-style list view that shows rows it does not own.
// The owner hands in a row source (row count, cell text, comparison); the
// control is a virtual list (LVS_OWNERDATA) over a display order of source
// row indices, so tens of thousands of rows fill and sort without copying
// their texts into the control. It also does the column-header click (sort
// by a column, a second click reverses) and the up/down arrow bitmaps in the
// header of the sorted column, rebuilt on a system colour change.
//
// The owner forwards the list's WM_NOTIFY to OnNotify and WM_SYSCOLORCHANGE
// to OnSysColorChange. Messages such as LVM_GETITEMTEXT sent to the control
// by tests or accessibility tools reach the source through LVN_GETDISPINFO.
#include <windows.h>

#include <commctrl.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "common/Handle.h"
#include "common/ui/Dpi.h"

namespace CL {

// What the list shows. Rows are identified by their index in the source.
class IReportRows {
public:
    virtual ~IReportRows() = default;
    virtual size_t RowCount() const = 0;
    virtual std::wstring CellText(size_t row, int column) const = 0;
    // Whether the column sorts by its cell texts compared as unsigned 16-bit
    // code units (the list then reads every text once and sorts by them).
    virtual bool ComparesByText(int /*column*/) const { return true; }
    // For a column that does not compare by text: true when row a's key is
    // strictly smaller than row b's. The default compares the cell texts.
    virtual bool Less(size_t a, size_t b, int column) const;
};

struct ReportColumn {
    const wchar_t* title;
    int width;                 // pixels at 96 dpi (never narrower than the title and arrow)
    int format = LVCFMT_LEFT;
};

class CReportList {
public:
    static constexpr int kNoSort = -1;

    CReportList() = default;
    CReportList(const CReportList&) = delete;
    CReportList& operator=(const CReportList&) = delete;
    ~CReportList();

    // Creates the control as a child (report view, owner data, always show
    // selection, client edge) with full-row selection, or takes over a list
    // control of a dialog template, which must have LVS_OWNERDATA.
    HWND Create(HWND parent, UINT id, DWORD extraStyle = 0);
    void Attach(HWND list);
    HWND Hwnd() const { return m_hwnd; }
    operator HWND() const { return m_hwnd; }

    void SetColumns(const std::vector<ReportColumn>& columns);
    int ColumnCount() const { return static_cast<int>(m_columnCount); }
    std::wstring ColumnTitle(int column) const { return m_titles.at(static_cast<size_t>(column)); }
    const IReportRows* Rows() const { return m_rows; }
    // The source stays owned by the caller and must outlive the control's
    // use of it (or be replaced with nullptr).
    void SetRows(const IReportRows* rows);

    // Shows every source row in source order (selection cleared). With
    // keepSort the current sort is applied again; otherwise the arrow stays
    // where it is and the rows stay unsorted until the next header click.
    void Reset(bool keepSort = false);
    // The source grew by one row at its end: it is appended at the bottom
    // (not sorted in).
    void AppendRow(size_t sourceRow);
    // The source row's texts changed: its line is redrawn where it is.
    void UpdateRow(size_t sourceRow);
    // The source dropped these rows (source indices before the removal);
    // rows above them in the source move down by the number removed.
    void RemoveRows(std::vector<size_t> sourceRows);

    // Sorts by the column in the given direction and moves the arrow there.
    void SortBy(int column, bool ascending);
    // Moves the arrow without sorting (kNoSort: no arrow anywhere).
    void SetSortIndicator(int column, bool ascending);
    int SortColumn() const { return m_sortColumn; }
    bool SortAscending() const { return m_ascending; }
    // The header click rule: the sort column again reverses the direction,
    // another column sorts ascending.
    void OnColumnClick(int column);

    size_t DisplayCount() const { return m_order.size(); }
    size_t SourceRowAt(size_t displayIndex) const { return m_order.at(displayIndex); }
    // -1 when the source row is not shown.
    int DisplayIndexOf(size_t sourceRow) const;
    // Source rows of the selected lines, top to bottom.
    std::vector<size_t> SelectedRows() const;
    // The focused line's source row, or -1 when no line has the focus.
    long long FocusedRow() const;
    void Select(size_t sourceRow, bool focus = true);
    // Selects every line shown.
    void SelectAll();

    // Handles LVN_GETDISPINFO, LVN_COLUMNCLICK and LVN_ODFINDITEM of this
    // control; returns true (result in *result) when the notification was
    // this control's and was handled.
    bool OnNotify(const NMHDR* header, LRESULT* result);
    void OnSysColorChange();
    // The list's window moved to a monitor of another DPI: the columns keep
    // their width in inches and the arrows are drawn again at the new size.
    void OnDpiChanged();
    // The narrowest column that shows this title and the sort arrow whole.
    int MinimumColumnWidth(const wchar_t* title) const;
    // The arrows the header shows now (for tests of the header).
    HBITMAP SortUpBitmap() const { return static_cast<HBITMAP>(m_bmSortUp.get()); }
    HBITMAP SortDownBitmap() const { return static_cast<HBITMAP>(m_bmSortDown.get()); }

    // Called after a header click sorted the list (column, ascending).
    std::function<void(int, bool)> onSorted;

private:
    void RebuildArrows();
    void ShowArrow();
    void SortOrder();
    void SyncCount(bool keepScroll);
    void ClearSelection();
    long long FindPrefix(const wchar_t* prefix, int start) const;

    HWND m_hwnd = nullptr;
    const IReportRows* m_rows = nullptr;
    std::vector<size_t> m_order;
    size_t m_columnCount = 0;
    std::vector<std::wstring> m_titles;
    int m_sortColumn = kNoSort;
    bool m_ascending = true;
    int m_dpi = CDpi::kDefault;   // the DPI the columns and arrows were made for
    UniqueGdiObject m_bmSortUp;
    UniqueGdiObject m_bmSortDown;
    std::wstring m_textBuffer;
};

} // namespace CL
