// The frame window's toolbar and status bar of the window layer: buttons in
// order, tooltips and prompts from the string table, the menu's prompts in
// the status bar, and the layout with either bar hidden.
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <string>

#include "common/Window.h"
#include "common/ui/FrameBars.h"

namespace {

constexpr int kOpen = 60001;
constexpr int kSave = 60002;
constexpr int kPromptOnly = 60003;

class Frame : public CL::CWindow {
public:
    CL::CFrameBars bars;
    Frame()
    {
        const RECT rc = {0, 0, 500, 400};
        CreateEx(nullptr, L"Frame bars test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, &rc);
        bars.Create(Hwnd(), {{kOpen, STD_FILEOPEN}, {0, 0}, {kSave, STD_FILESAVE},
                             {kPromptOnly, CL::CFrameBars::kViewImage + VIEW_DETAILS}});
    }

protected:
    const wchar_t* ClassName() const override { return L"FrameBarsTestFrame"; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_NOTIFY) {
            LRESULT result = 0;
            if (bars.OnNotify(reinterpret_cast<NMHDR*>(lParam), &result))
                return result;
        }
        if (message == WM_MENUSELECT)
            bars.OnMenuSelect(wParam, lParam);
        return DefaultProc(message, wParam, lParam);
    }
};

std::wstring StatusText(HWND status)
{
    wchar_t buffer[256] = {};
    ::SendMessageW(status, SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(buffer));
    return buffer;
}

int ButtonCommand(HWND toolbar, int index)
{
    TBBUTTON button = {};
    ::SendMessageW(toolbar, TB_GETBUTTON, index, reinterpret_cast<LPARAM>(&button));
    return (button.fsStyle & BTNS_SEP) ? 0 : button.idCommand;
}

} // namespace

TEST(FrameBars, PromptAndTooltipAreTheTwoHalvesOfTheCommandsString)
{
    EXPECT_EQ(CL::CFrameBars::Prompt(kOpen), L"Open a configuration file");
    EXPECT_EQ(CL::CFrameBars::Tooltip(kOpen), L"Open");
    EXPECT_EQ(CL::CFrameBars::Prompt(kPromptOnly), L"A prompt without a tooltip");
    EXPECT_EQ(CL::CFrameBars::Tooltip(kPromptOnly), L"");
    EXPECT_EQ(CL::CFrameBars::Prompt(60999), L"");
}

TEST(FrameBars, ToolbarHoldsTheButtonsInOrderWithTheSeparator)
{
    Frame frame;
    HWND toolbar = frame.bars.Toolbar();
    ASSERT_NE(toolbar, nullptr);
    ASSERT_EQ(::SendMessageW(toolbar, TB_BUTTONCOUNT, 0, 0), 4);
    EXPECT_EQ(ButtonCommand(toolbar, 0), kOpen);
    EXPECT_EQ(ButtonCommand(toolbar, 1), 0);
    EXPECT_EQ(ButtonCommand(toolbar, 2), kSave);
    EXPECT_EQ(ButtonCommand(toolbar, 3), kPromptOnly);
}

TEST(FrameBars, ToolbarTooltipComesFromTheStringTable)
{
    Frame frame;
    HWND tips = reinterpret_cast<HWND>(::SendMessageW(frame.bars.Toolbar(), TB_GETTOOLTIPS, 0, 0));
    ASSERT_NE(tips, nullptr);
    wchar_t buffer[256] = {};
    TTTOOLINFOW info = {};
    info.cbSize = sizeof info;
    info.hwnd = frame.bars.Toolbar();
    info.uId = kSave;
    info.lpszText = buffer;
    ::SendMessageW(tips, TTM_GETTEXTW, 256, reinterpret_cast<LPARAM>(&info));
    EXPECT_STREQ(buffer, L"Save");
}

TEST(FrameBars, MenuEntryShowsItsPromptAndClosingTheMenuShowsReady)
{
    Frame frame;
    HMENU menu = ::CreatePopupMenu();
    ::AppendMenuW(menu, MF_STRING, kOpen, L"&Open...");
    ::SendMessageW(frame, WM_MENUSELECT, MAKEWPARAM(kOpen, MF_STRING), reinterpret_cast<LPARAM>(menu));
    EXPECT_EQ(StatusText(frame.bars.StatusBar()), L"Open a configuration file");
    ::SendMessageW(frame, WM_MENUSELECT, MAKEWPARAM(0, 0xFFFF), 0);
    EXPECT_EQ(StatusText(frame.bars.StatusBar()), L"Ready");
    ::DestroyMenu(menu);
}

TEST(FrameBars, PointingAtAButtonShowsItsPromptAndLeavingShowsReady)
{
    Frame frame;
    HWND toolbar = frame.bars.Toolbar();
    NMTBHOTITEM hot = {};
    hot.hdr.hwndFrom = toolbar;
    hot.hdr.idFrom = static_cast<UINT_PTR>(::GetDlgCtrlID(toolbar));
    hot.hdr.code = TBN_HOTITEMCHANGE;
    hot.idNew = kSave;
    hot.dwFlags = HICF_MOUSE | HICF_ENTERING;
    ::SendMessageW(frame, WM_NOTIFY, hot.hdr.idFrom, reinterpret_cast<LPARAM>(&hot));
    EXPECT_EQ(StatusText(frame.bars.StatusBar()), L"Save the configuration");
    hot.dwFlags = HICF_MOUSE | HICF_LEAVING;
    ::SendMessageW(frame, WM_NOTIFY, hot.hdr.idFrom, reinterpret_cast<LPARAM>(&hot));
    EXPECT_EQ(StatusText(frame.bars.StatusBar()), L"Ready");
}

TEST(FrameBars, LayoutLeavesTheAreaBetweenTheVisibleBars)
{
    Frame frame;
    RECT client = {};
    ::GetClientRect(frame, &client);
    const RECT both = frame.bars.Layout();
    EXPECT_GT(both.top, client.top);
    EXPECT_LT(both.bottom, client.bottom);

    frame.bars.ShowToolbar(false);
    EXPECT_FALSE(frame.bars.ToolbarVisible());
    const RECT noToolbar = frame.bars.Layout();
    EXPECT_EQ(noToolbar.top, client.top);
    EXPECT_EQ(noToolbar.bottom, both.bottom);

    frame.bars.ShowStatusBar(false);
    const RECT none = frame.bars.Layout();
    EXPECT_EQ(none.bottom, client.bottom);

    frame.bars.ShowToolbar(true);
    frame.bars.ShowStatusBar(true);
    EXPECT_TRUE(frame.bars.ToolbarVisible());
    EXPECT_TRUE(frame.bars.StatusBarVisible());
    EXPECT_EQ(frame.bars.Layout().top, both.top);
}
