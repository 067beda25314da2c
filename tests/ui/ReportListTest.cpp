// The sortable virtual report list of the window layer, on a real window:
// texts reach the control from the row source, header clicks sort by code
// units (or by the source's own comparison), the sorted column's header
// shows the arrow, selection follows the rows, and rows come and go.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "common/Window.h"
#include "common/ui/ReportList.h"

namespace {

// Rows of two columns: a name and a number (the number sorts numerically
// when the test asks for it).
class Rows : public CL::IReportRows {
public:
    std::vector<std::pair<std::wstring, int>> rows;
    bool numericSecondColumn = false;

    size_t RowCount() const override { return rows.size(); }
    std::wstring CellText(size_t row, int column) const override
    {
        return column == 0 ? rows[row].first : std::to_wstring(rows[row].second);
    }
    bool ComparesByText(int column) const override { return !(numericSecondColumn && column == 1); }
    bool Less(size_t a, size_t b, int column) const override
    {
        if (column == 1 && numericSecondColumn)
            return rows[a].second < rows[b].second;
        return IReportRows::Less(a, b, column);
    }
};

// A top-level window holding one report list, forwarding its notifications.
class Host : public CL::CWindow {
public:
    CL::CReportList list;
    Host()
    {
        CreateEx(nullptr, L"Report list test", WS_OVERLAPPEDWINDOW | WS_VISIBLE);
        list.Create(Hwnd(), 100);
        ::MoveWindow(list, 0, 0, 400, 300, TRUE);
        list.SetColumns({{L"Name", 150}, {L"Number", 100}});
    }

protected:
    const wchar_t* ClassName() const override { return L"ReportListTestHost"; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_NOTIFY) {
            LRESULT result = 0;
            if (list.OnNotify(reinterpret_cast<NMHDR*>(lParam), &result))
                return result;
        }
        if (message == WM_SYSCOLORCHANGE)
            list.OnSysColorChange();
        return DefaultProc(message, wParam, lParam);
    }
};

std::wstring ItemText(HWND list, int item, int column)
{
    wchar_t buffer[256] = {};
    LVITEMW lvi = {};
    lvi.iSubItem = column;
    lvi.pszText = buffer;
    lvi.cchTextMax = 256;
    ::SendMessageW(list, LVM_GETITEMTEXTW, item, reinterpret_cast<LPARAM>(&lvi));
    return buffer;
}

std::vector<std::wstring> Column(HWND list, int column)
{
    std::vector<std::wstring> texts;
    const int count = ListView_GetItemCount(list);
    for (int i = 0; i < count; ++i)
        texts.push_back(ItemText(list, i, column));
    return texts;
}

HBITMAP HeaderBitmap(HWND list, int column, bool* bitmapFlag = nullptr)
{
    HDITEMW item = {};
    item.mask = HDI_BITMAP | HDI_FORMAT;
    Header_GetItem(ListView_GetHeader(list), column, &item);
    if (bitmapFlag)
        *bitmapFlag = (item.fmt & HDF_BITMAP) != 0;
    return item.hbm;
}

// A real click on the header of the column, as the mouse makes it.
void ClickHeader(HWND list, int column)
{
    HWND header = ListView_GetHeader(list);
    RECT rc = {};
    ::SendMessageW(header, HDM_GETITEMRECT, column, reinterpret_cast<LPARAM>(&rc));
    const LPARAM at = MAKELPARAM((rc.left + rc.right) / 2, (rc.top + rc.bottom) / 2);
    ::SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(header, WM_LBUTTONUP, 0, at);
}

class ReportListTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        rows.rows = {{L"beta", 9}, {L"Alpha", 10}, {L"alpha", 2}, {L"Beta", 100}};
        host.list.SetRows(&rows);
    }
    Rows rows;
    Host host;
};

} // namespace

TEST_F(ReportListTest, ShowsTheSourceTextsInSourceOrder)
{
    ASSERT_TRUE(host.IsWindow());
    EXPECT_EQ(ListView_GetItemCount(host.list), 4);
    EXPECT_EQ(Column(host.list, 0), (std::vector<std::wstring>{L"beta", L"Alpha", L"alpha", L"Beta"}));
    EXPECT_EQ(Column(host.list, 1), (std::vector<std::wstring>{L"9", L"10", L"2", L"100"}));
    EXPECT_EQ(HeaderBitmap(host.list, 0), nullptr);
}

TEST_F(ReportListTest, HeaderClickSortsAscendingByCodeUnitsSoUpperCaseComesFirst)
{
    ClickHeader(host.list, 0);
    EXPECT_EQ(Column(host.list, 0), (std::vector<std::wstring>{L"Alpha", L"Beta", L"alpha", L"beta"}));
    EXPECT_EQ(host.list.SortColumn(), 0);
    EXPECT_TRUE(host.list.SortAscending());
}

TEST_F(ReportListTest, SecondClickOnTheSameHeaderReversesAndAnotherHeaderStartsAscending)
{
    ClickHeader(host.list, 0);
    ClickHeader(host.list, 0);
    EXPECT_EQ(Column(host.list, 0), (std::vector<std::wstring>{L"beta", L"alpha", L"Beta", L"Alpha"}));
    EXPECT_FALSE(host.list.SortAscending());
    ClickHeader(host.list, 1);
    EXPECT_EQ(host.list.SortColumn(), 1);
    EXPECT_TRUE(host.list.SortAscending());
    // Text order: "10" before "100" before "2" before "9".
    EXPECT_EQ(Column(host.list, 1), (std::vector<std::wstring>{L"10", L"100", L"2", L"9"}));
}

TEST_F(ReportListTest, ColumnWithItsOwnComparisonSortsByIt)
{
    rows.numericSecondColumn = true;
    ClickHeader(host.list, 1);
    EXPECT_EQ(Column(host.list, 1), (std::vector<std::wstring>{L"2", L"9", L"10", L"100"}));
    ClickHeader(host.list, 1);
    EXPECT_EQ(Column(host.list, 1), (std::vector<std::wstring>{L"100", L"10", L"9", L"2"}));
}

TEST_F(ReportListTest, OnlyTheSortedColumnShowsTheArrowOfItsDirection)
{
    ClickHeader(host.list, 1);
    bool flag = false;
    EXPECT_EQ(HeaderBitmap(host.list, 1, &flag), host.list.SortUpBitmap());
    EXPECT_TRUE(flag);
    EXPECT_EQ(HeaderBitmap(host.list, 0, &flag), nullptr);
    EXPECT_FALSE(flag);
    ClickHeader(host.list, 1);
    EXPECT_EQ(HeaderBitmap(host.list, 1), host.list.SortDownBitmap());
    EXPECT_NE(host.list.SortUpBitmap(), host.list.SortDownBitmap());
}

TEST_F(ReportListTest, SystemColourChangeRebuildsTheArrowsAndTheHeaderShowsTheNewOnes)
{
    host.list.SortBy(0, false);
    const HBITMAP oldDown = host.list.SortDownBitmap();
    ::SendMessageW(host, WM_SYSCOLORCHANGE, 0, 0);
    ASSERT_NE(host.list.SortDownBitmap(), nullptr);
    EXPECT_NE(host.list.SortDownBitmap(), oldDown);
    EXPECT_EQ(HeaderBitmap(host.list, 0), host.list.SortDownBitmap());
}

TEST_F(ReportListTest, SelectionAndFocusFollowTheRowsThroughASort)
{
    host.list.Select(3);   // "Beta"
    ListView_SetItemState(host.list, 1, LVIS_SELECTED, LVIS_SELECTED);   // "Alpha"
    host.list.SortBy(0, true);
    EXPECT_EQ(host.list.SelectedRows(), (std::vector<size_t>{1, 3}));
    EXPECT_EQ(host.list.FocusedRow(), 3);
    EXPECT_EQ(ListView_GetNextItem(host.list, -1, LVNI_FOCUSED), 1);   // "Beta" is second now
}

TEST_F(ReportListTest, AppendedRowGoesToTheBottomEvenWhenSorted)
{
    host.list.SortBy(0, true);
    rows.rows.push_back({L"Aardvark", 1});
    host.list.AppendRow(4);
    const std::vector<std::wstring> names = Column(host.list, 0);
    ASSERT_EQ(names.size(), 5u);
    EXPECT_EQ(names.back(), L"Aardvark");
}

TEST_F(ReportListTest, UpdatedRowKeepsItsLineAndShowsItsNewText)
{
    host.list.SortBy(0, true);
    rows.rows[0].first = L"AAA";   // "beta", last line
    host.list.UpdateRow(0);
    EXPECT_EQ(ItemText(host.list, 3, 0), L"AAA");
}

TEST_F(ReportListTest, RemovedRowsLeaveTheOthersInTheirOrder)
{
    host.list.SortBy(0, true);   // Alpha(1) Beta(3) alpha(2) beta(0)
    rows.rows.erase(rows.rows.begin() + 1);
    rows.rows.erase(rows.rows.begin() + 2);   // was index 3
    host.list.RemoveRows({3, 1});
    EXPECT_EQ(Column(host.list, 0), (std::vector<std::wstring>{L"alpha", L"beta"}));
    EXPECT_EQ(host.list.SourceRowAt(0), 1u);
    EXPECT_EQ(host.list.SourceRowAt(1), 0u);
}

TEST_F(ReportListTest, ResetShowsSourceOrderOrKeepsTheSortWhenAsked)
{
    host.list.SortBy(0, true);
    host.list.Reset(false);
    EXPECT_EQ(ItemText(host.list, 0, 0), L"beta");
    EXPECT_EQ(HeaderBitmap(host.list, 0), host.list.SortUpBitmap());
    host.list.Reset(true);
    EXPECT_EQ(ItemText(host.list, 0, 0), L"Alpha");
}

TEST_F(ReportListTest, FindingTypedLettersJumpsToTheFirstMatchingLine)
{
    host.list.SortBy(0, true);
    LVFINDINFOW find = {};
    find.flags = LVFI_STRING | LVFI_PARTIAL;
    find.psz = L"be";
    EXPECT_EQ(::SendMessageW(host.list, LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&find)), 1);
    find.psz = L"zz";
    EXPECT_EQ(::SendMessageW(host.list, LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&find)), -1);
}

TEST_F(ReportListTest, EmptySourceGivesAnEmptyListAndNoFocusedRow)
{
    Rows none;
    host.list.SetRows(&none);
    EXPECT_EQ(ListView_GetItemCount(host.list), 0);
    EXPECT_EQ(host.list.FocusedRow(), -1);
    EXPECT_TRUE(host.list.SelectedRows().empty());
    host.list.OnColumnClick(0);
    EXPECT_EQ(host.list.DisplayCount(), 0u);
}
