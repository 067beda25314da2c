// The editor's column click as a handler of the window: its trace line at
// every click, and the sort it runs (the click rule itself is the report
// list's, tested with the list).
#include <gtest/gtest.h>

#include "EditorFixture.h"
#include "support/LogCapture.h"

namespace {

using EditorColumnClick = test::EditorFixture;
using Names = std::vector<std::wstring>;

} // namespace

// The rows are listed by name at first, so the first click goes to another
// column: each click must change the order the list shows.
TEST_F(EditorColumnClick, EachClickWritesTheTraceLineAndSorts)
{
    SelectBranch(L"Plant/Line1");
    ASSERT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    test::LogCapture log(3);
    test::ClickHeader(List(), 1);   // the data type: VT_BSTR, VT_I4, VT_R8
    EXPECT_EQ(Column(0), (Names{L"Label", L"Count", L"Speed"}));
    EXPECT_EQ(log.Count("[3] CMainFrame::OnColumnClick [MainFrm, "), 1u) << log.Dump();
    test::ClickHeader(List(), 0);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(log.Count("[3] CMainFrame::OnColumnClick [MainFrm, "), 2u) << log.Dump();
    test::ClickHeader(List(), 0);
    EXPECT_EQ(Column(0), (Names{L"Speed", L"Label", L"Count"}));
    EXPECT_EQ(log.Count("[3] CMainFrame::OnColumnClick [MainFrm, "), 3u) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CMainFrame::OnColumnClick [MainFrm, ", "]"));
}
