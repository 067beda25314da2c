// The editor's column click as a handler of the window: its trace line at
// every click, and the sort it runs (the click rule itself is the report
// list's, tested with the list).
#include <gtest/gtest.h>

#include "EditorFixture.h"
#include "support/LogCapture.h"

namespace {

using EditorColumnClick = test::EditorFixture;
using Names = std::vector<std::wstring>;

void ClickHeader(HWND list, int column)
{
    const HWND header = ListView_GetHeader(list);
    RECT rect = {};
    Header_GetItemRect(header, column, &rect);
    const LPARAM at = MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    ::SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(header, WM_LBUTTONUP, 0, at);
}

} // namespace

TEST_F(EditorColumnClick, EachClickWritesTheTraceLineAndSorts)
{
    SelectBranch(L"Plant/Line1");
    test::LogCapture log(3);
    ClickHeader(List(), 0);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(log.Count("[3] CMainFrame::OnColumnClick [MainFrm, "), 1u) << log.Dump();
    ClickHeader(List(), 0);
    EXPECT_EQ(Column(0), (Names{L"Speed", L"Label", L"Count"}));
    EXPECT_EQ(log.Count("[3] CMainFrame::OnColumnClick [MainFrm, "), 2u) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CMainFrame::OnColumnClick [MainFrm, ", "]"));
}
