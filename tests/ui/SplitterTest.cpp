// The window layer's splitter on its own: two panes beside a bar, laid out
// on every resize and bar move; the owner may refuse a position; its panes'
// notifications reach the owner.
#include <gtest/gtest.h>
#include <windows.h>

#include "common/Window.h"
#include "common/ui/Splitter.h"

namespace {

// A plain top-level owner that records the notifications it gets.
class Owner : public CL::CWindow {
public:
    UINT lastCommand = 0;

protected:
    const wchar_t* ClassName() const override { return L"MorvaneSplitterTestOwner"; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_COMMAND)
            lastCommand = LOWORD(wParam);
        return DefaultProc(message, wParam, lParam);
    }
};

class Splitter : public testing::Test {
protected:
    void SetUp() override
    {
        const RECT rect = {0, 0, 600, 400};
        ASSERT_TRUE(owner.CreateEx(nullptr, L"Splitter test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, &rect));
        ASSERT_TRUE(splitter.Create(owner, 100, 150));
        ::MoveWindow(splitter, 0, 0, 500, 300, TRUE);
        left = ::CreateWindowExW(0, L"STATIC", L"left", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, splitter, nullptr, nullptr, nullptr);
        right = ::CreateWindowExW(0, L"BUTTON", L"right", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, splitter,
                                  reinterpret_cast<HMENU>(77), nullptr, nullptr);
        splitter.SetPanes(left, right);
    }
    RECT Place(HWND pane)
    {
        RECT rect = {};
        ::GetWindowRect(pane, &rect);
        ::MapWindowPoints(nullptr, splitter, reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    }

    Owner owner;
    CL::CSplitter splitter;
    HWND left = nullptr;
    HWND right = nullptr;
};

} // namespace

TEST_F(Splitter, PanesLieBesideTheBarAndFillTheHeight)
{
    const RECT l = Place(left), r = Place(right);
    EXPECT_EQ(l.left, 0);
    EXPECT_EQ(l.right, 150);
    EXPECT_EQ(r.left, 150 + splitter.BarWidth());   // 5 pixels at 96 dpi, scaled
    EXPECT_EQ(r.right, 500);
    EXPECT_EQ(l.bottom, 300);
    EXPECT_EQ(r.bottom, 300);
}

TEST_F(Splitter, ResizingKeepsTheLeftPaneAndGivesTheRestToTheRight)
{
    ::MoveWindow(splitter, 0, 0, 560, 320, TRUE);
    EXPECT_EQ(Place(left).right, 150);
    EXPECT_EQ(Place(right).right, 560);
    EXPECT_EQ(Place(right).bottom, 320);
}

TEST_F(Splitter, ShrinkingBelowTheBarKeepsTheBarInside)
{
    ::MoveWindow(splitter, 0, 0, 100, 300, TRUE);
    EXPECT_EQ(Place(left).right, 100 - splitter.BarWidth());
    EXPECT_EQ(Place(right).left, 100);
}

TEST_F(Splitter, TheOwnerMayRefuseAPosition)
{
    std::vector<int> asked;
    splitter.onSplitterMove = [&asked](int position) {
        asked.push_back(position);
        return position >= 100;
    };
    EXPECT_FALSE(splitter.SetPosition(40));
    EXPECT_EQ(splitter.Position(), 150);
    EXPECT_EQ(Place(left).right, 150);
    EXPECT_TRUE(splitter.SetPosition(220));
    EXPECT_EQ(Place(left).right, 220);
    EXPECT_EQ(asked, (std::vector<int>{40, 220}));
}

TEST_F(Splitter, DraggingTheBarMovesItWithTheMouse)
{
    ::SendMessageW(splitter, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(152, 20));
    ::SendMessageW(splitter, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(202, 20));
    ::SendMessageW(splitter, WM_LBUTTONUP, 0, MAKELPARAM(202, 20));
    EXPECT_EQ(splitter.Position(), 200);
    // A press beside the bar does not grab it.
    ::SendMessageW(splitter, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(400, 20));
    ::SendMessageW(splitter, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(300, 20));
    ::SendMessageW(splitter, WM_LBUTTONUP, 0, MAKELPARAM(300, 20));
    EXPECT_EQ(splitter.Position(), 200);
}

TEST_F(Splitter, APanesCommandReachesTheOwner)
{
    ::SendMessageW(right, BM_CLICK, 0, 0);
    EXPECT_EQ(owner.lastCommand, 77u);
}
