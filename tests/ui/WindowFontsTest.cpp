// The fonts of every window and dialog follow a change of DPI: after
// WM_DPICHANGED to another DPI every control inside the window (tree, lists,
// status bar, toolbar, the chart, dialog controls) draws with a font made
// for the new DPI, and after the change back with one of its first height.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "WindowCatalog.h"
#include "common/Text.h"
#include "common/ui/Dpi.h"

namespace {

struct ControlFont {
    HWND hwnd;
    std::wstring name;
    long height;   // |lfHeight| of the font it draws with
};

long HeightOf(HWND control)
{
    auto font = reinterpret_cast<HGDIOBJ>(::SendMessageW(control, WM_GETFONT, 0, 0));
    if (!font)
        font = ::GetStockObject(DEFAULT_GUI_FONT);
    LOGFONTW logFont = {};
    if (::GetObjectW(font, sizeof logFont, &logFont) != sizeof logFont)
        return 0;
    return std::labs(logFont.lfHeight);
}

std::wstring NameOf(HWND control)
{
    wchar_t className[64] = {};
    ::GetClassNameW(control, className, 64);
    return std::wstring(className) + L" #" + std::to_wstring(::GetDlgCtrlID(control));
}

BOOL CALLBACK Collect(HWND child, LPARAM list)
{
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(child);
    return TRUE;
}

// Every control inside the window, with the height of its font now.
std::vector<ControlFont> Fonts(HWND window)
{
    std::vector<HWND> controls;
    ::EnumChildWindows(window, Collect, reinterpret_cast<LPARAM>(&controls));
    std::vector<ControlFont> fonts;
    // Controls without a font draw no text of their own (a splitter, an
    // icon): those with one are checked. A dialog inside the window (the
    // explorer's filter bar) is checked by its controls: its own font is
    // the one its template made them with, and Wine's dialogs do not take
    // another (DefDlgProc ignores WM_SETFONT).
    for (HWND control : controls) {
        wchar_t className[16] = {};
        ::GetClassNameW(control, className, 16);
        if (::SendMessageW(control, WM_GETFONT, 0, 0) && std::wstring(className) != L"#32770")
            fonts.push_back({control, NameOf(control), HeightOf(control)});
    }
    return fonts;
}

void SendDpiChanged(HWND window, int dpi)
{
    RECT rect = {};
    ::GetWindowRect(window, &rect);
    ::SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&rect));
}

class WindowFonts : public testing::TestWithParam<test::WindowEntry> {
protected:
    void SetUp() override
    {
        m_opened = GetParam().open();
        ASSERT_TRUE(m_opened && m_opened->Hwnd()) << "could not open " << GetParam().name;
        ::ShowWindow(Window(), SW_SHOWNOACTIVATE);
        ::UpdateWindow(Window());
    }
    HWND Window() const { return m_opened->Hwnd(); }

    std::unique_ptr<test::OpenedWindow> m_opened;
};

} // namespace

TEST_P(WindowFonts, EveryControlsFontIsMadeAnewForTheNewDpi)
{
    const int dpi = CL::CDpi::Of(Window()).Value();
    const std::vector<ControlFont> before = Fonts(Window());
    ASSERT_FALSE(before.empty());
    for (int other : {96, 120, 144, 192}) {
        if (other == dpi)
            continue;
        SendDpiChanged(Window(), other);
        for (const ControlFont& control : before) {
            const long expected = ::MulDiv(control.height, other, dpi);
            const long height = HeightOf(control.hwnd);
            EXPECT_NEAR(height, expected, 1) << CL::Narrow(control.name) << " at " << other << " dpi (from " << dpi
                                             << " dpi, height " << control.height << ")";
        }
        SendDpiChanged(Window(), dpi);
        for (const ControlFont& control : before)
            EXPECT_EQ(HeightOf(control.hwnd), control.height)
                << CL::Narrow(control.name) << " back at " << dpi << " dpi after " << other << " dpi";
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWindow, WindowFonts, testing::ValuesIn(test::EveryWindow()), test::EntryName);
