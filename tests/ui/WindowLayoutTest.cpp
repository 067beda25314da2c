// The layout of every window and dialog at the DPI the test program runs
// at: every text fits its control, every column header shows its title and
// sort arrow, no control overlaps another or leaves its parent, every
// window fits the work area of the screen named for the DPI, toolbar images
// are made at the DPI's size and lists show several rows. make test runs
// these at 96, 120, 144 and 192 dpi (scripts/test-every-dpi.sh).
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include <cstdlib>
#include <string>

#include "HistWinFixture.h"
#include "WindowCatalog.h"
#include "WindowGeometry.h"
#include "common/Text.h"
#include "common/ui/Dpi.h"

namespace {

using test::ControlInfo;

class WindowLayout : public testing::TestWithParam<test::WindowEntry> {
protected:
    void SetUp() override
    {
        m_opened = GetParam().open();
        ASSERT_TRUE(m_opened && m_opened->Hwnd()) << "could not open " << GetParam().name;
        ::ShowWindow(Window(), SW_SHOWNOACTIVATE);
        ::UpdateWindow(Window());
    }
    HWND Window() const { return m_opened->Hwnd(); }
    CL::CDpi Dpi() const { return CL::CDpi::Of(Window()); }

    std::unique_ptr<test::OpenedWindow> m_opened;
};

std::string Describe(const ControlInfo& c)
{
    return CL::Narrow(c.className) + " #" + std::to_string(c.id) + " \"" + CL::Narrow(c.text) + "\"";
}

bool Overlap(const RECT& a, const RECT& b)
{
    RECT both = {};
    return ::IntersectRect(&both, &a, &b) != FALSE;
}

bool Contains(const RECT& outer, const RECT& inner)
{
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

HWND HeaderOf(HWND list)
{
    return reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
}

// The height of one line of a list, from its first row or its font.
int RowHeight(HWND list)
{
    RECT row = {LVIR_BOUNDS, 0, 0, 0};
    if (::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) > 0 &&
        ::SendMessageW(list, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row)))
        return row.bottom - row.top;
    return test::TextExtent(list, L"Ag").cy + 2;
}

} // namespace

TEST(WindowLayoutDpi, RunsAtTheDpiTheRunAskedFor)
{
    const char* asked = std::getenv("MORVANE_EXPECT_DPI");
    const int expected = asked ? std::atoi(asked) : CL::CDpi::kDefault;
    if (!asked && CL::CDpi::Of(nullptr).Value() != CL::CDpi::kDefault)
        GTEST_SKIP() << "run at " << CL::CDpi::Of(nullptr).Value() << " dpi without MORVANE_EXPECT_DPI";
    EXPECT_EQ(CL::CDpi::Of(nullptr).Value(), expected);
    EXPECT_EQ(CL::CDpi::Of(::GetDesktopWindow()).Value(), expected);
}

TEST_P(WindowLayout, EveryTextFitsItsControl)
{
    const std::vector<ControlInfo> controls = test::VisibleControls(Window());
    EXPECT_GE(controls.size(), 2u) << "the window shows too few controls to be checked";
    for (const ControlInfo& c : controls) {
        const std::wstring why = test::TextDoesNotFit(c);
        EXPECT_TRUE(why.empty()) << Describe(c) << ": " << CL::Narrow(why) << " at " << Dpi().Value() << " dpi";
    }
}

TEST_P(WindowLayout, EveryColumnHeaderShowsItsTitleAndSortArrow)
{
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!test::IsClass(c, WC_LISTVIEWW))
            continue;
        const HWND header = HeaderOf(c.hwnd);
        ASSERT_NE(header, nullptr);
        // The header draws the title and the arrow each with its bitmap
        // margin on both sides; the arrow is 9 pixels at 96 dpi.
        const int margin = static_cast<int>(::SendMessageW(header, HDM_GETBITMAPMARGIN, 0, 0));
        const int arrow = CL::CDpi::Of(c.hwnd).Scale(9);
        const int count = static_cast<int>(::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
        for (int column = 0; column < count; ++column) {
            RECT item = {};
            ::SendMessageW(header, HDM_GETITEMRECT, column, reinterpret_cast<LPARAM>(&item));
            const std::wstring title = histwin_test::HeaderText(c.hwnd, column);
            const int needed = test::TextExtent(header, title).cx + arrow + 4 * margin;
            EXPECT_GE(item.right - item.left, needed)
                << Describe(c) << " column \"" << CL::Narrow(title) << "\" at " << Dpi().Value() << " dpi";
        }
    }
}

TEST_P(WindowLayout, NoControlOverlapsAnotherOrLeavesItsParent)
{
    const std::vector<ControlInfo> controls = test::VisibleControls(Window());
    for (size_t i = 0; i < controls.size(); ++i) {
        const ControlInfo& a = controls[i];
        RECT parent = {};
        ::GetClientRect(a.parent, &parent);
        EXPECT_TRUE(Contains(parent, a.rect)) << Describe(a) << " leaves its parent at " << Dpi().Value() << " dpi";
        for (size_t j = i + 1; j < controls.size(); ++j) {
            const ControlInfo& b = controls[j];
            if (b.parent != a.parent || !Overlap(a.rect, b.rect))
                continue;
            if (test::UpDownBuddy(a) == b.hwnd || test::UpDownBuddy(b) == a.hwnd)
                continue;
            // A group box frames whole controls: inside it, or not touching it.
            if (test::IsGroupBox(a) || test::IsGroupBox(b)) {
                const ControlInfo& group = test::IsGroupBox(a) ? a : b;
                const ControlInfo& other = test::IsGroupBox(a) ? b : a;
                EXPECT_TRUE(Contains(group.rect, other.rect) || (test::IsGroupBox(other) && Contains(other.rect, group.rect)))
                    << Describe(other) << " crosses the frame of " << Describe(group) << " at " << Dpi().Value() << " dpi";
                continue;
            }
            ADD_FAILURE() << Describe(a) << " overlaps " << Describe(b) << " at " << Dpi().Value() << " dpi";
        }
    }
}

TEST_P(WindowLayout, FitsTheWorkAreaOfItsScreen)
{
    RECT r = {};
    ::GetWindowRect(Window(), &r);
    const SIZE work = test::WorkAreaFor(Dpi().Value());
    EXPECT_LE(r.right - r.left, work.cx) << "at " << Dpi().Value() << " dpi";
    EXPECT_LE(r.bottom - r.top, work.cy) << "at " << Dpi().Value() << " dpi";
}

TEST_P(WindowLayout, ToolbarImagesAreMadeAtTheDpisSize)
{
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!test::IsClass(c, TOOLBARCLASSNAMEW))
            continue;
        const auto images = reinterpret_cast<HIMAGELIST>(::SendMessageW(c.hwnd, TB_GETIMAGELIST, 0, 0));
        ASSERT_NE(images, nullptr) << Describe(c);
        int cx = 0, cy = 0;
        ASSERT_TRUE(::ImageList_GetIconSize(images, &cx, &cy));
        EXPECT_EQ(cx, Dpi().Scale(16));
        EXPECT_EQ(cy, Dpi().Scale(16));
        EXPECT_GT(::ImageList_GetImageCount(images), 0);
    }
}

TEST_P(WindowLayout, EveryListShowsSeveralRows)
{
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!test::IsClass(c, WC_LISTVIEWW))
            continue;
        RECT client = {}, header = {};
        ::GetClientRect(c.hwnd, &client);
        ::GetWindowRect(HeaderOf(c.hwnd), &header);
        const int rows = (client.bottom - (header.bottom - header.top)) / RowHeight(c.hwnd);
        EXPECT_GE(rows, 4) << Describe(c) << " at " << Dpi().Value() << " dpi";
    }
}

// WM_DPICHANGED as Windows sends it when the window moves to a monitor of
// another scale: the window takes the suggested rectangle and lays itself
// out in it as after a resize (this system has one DPI for every monitor, so
// the DPI stays; the rectangle is moved, and a resizable window grown).
TEST_P(WindowLayout, DpiChangeTakesTheSuggestedRectangleAndLaysTheWindowOut)
{
    RECT before = {};
    ::GetWindowRect(Window(), &before);
    const bool resizable = (::GetWindowLongW(Window(), GWL_STYLE) & WS_THICKFRAME) != 0;
    const int grow = resizable ? Dpi().Scale(60) : 0;
    RECT suggested = {before.left + 40, before.top + 30, before.right + 40 + grow, before.bottom + 30 + grow};
    const int dpi = Dpi().Value();
    ::SendMessageW(Window(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
    RECT after = {};
    ::GetWindowRect(Window(), &after);
    EXPECT_EQ(after.left, suggested.left);
    EXPECT_EQ(after.top, suggested.top);
    EXPECT_EQ(after.right, suggested.right);
    EXPECT_EQ(after.bottom, suggested.bottom);
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        RECT parent = {};
        ::GetClientRect(c.parent, &parent);
        EXPECT_TRUE(Contains(parent, c.rect)) << Describe(c) << " leaves its parent after WM_DPICHANGED";
        if (resizable && test::IsClass(c, WC_LISTVIEWW)) {
            // The list follows the grown window, as after a resize.
            EXPECT_GE(c.rect.right, parent.right * 3 / 4) << Describe(c) << " did not follow the window";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWindow, WindowLayout, testing::ValuesIn(test::EveryWindow()), test::EntryName);
