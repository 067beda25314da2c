// The trend chart of the historical data window over a real database: what
// "Show data" draws, zooming by dragging and by the wheel, panning, the
// whole range again, the hover text, the right-click menu, the picture on
// the clipboard and in a PNG file, the words shown for values that are not
// numbers, and the chart's place beside the list. The chart is driven with
// the mouse and key messages a user's actions send it.
#include "HistWinFixture.h"

#include <cmath>
#include <limits>

#include "AccessibleRead.h"
#include "common/ui/Gdiplus.h"
#include "historian/dlgHistData.h"
#include "res/resource.h"
#include "support/FileDialogAnswer.h"
#include "support/LogCapture.h"
#include "support/MenuCapture.h"

using namespace histwin_test;

namespace {

constexpr double kBase = 45000.0 + 10 * kHour;   // 15.03.2023 10:00 UTC

// The dialog, modeless on this thread, its bounds cleared so that "Show
// data" reads every value of the item.
class ChartWindow {
public:
    ChartWindow(CL::CHistorian& historian, const std::wstring& itemId) : m_dialog(historian)
    {
        m_dialog.m_itemId = itemId;
        m_dialog.m_useFrom = BST_UNCHECKED;
        m_dialog.m_useTo = BST_UNCHECKED;
        m_dialog.m_maxCount = 0;
    }
    bool Open()
    {
        m_hwnd = m_dialog.Create(nullptr, IDD_HISTDATA);
        if (m_hwnd)
            ::ShowWindow(m_hwnd, SW_SHOWNA);
        return m_hwnd != nullptr;
    }
    void ShowData() const { ::SendMessageW(::GetDlgItem(m_hwnd, IDC_HISTDATA_BTN_REFRESH), BM_CLICK, 0, 0); }
    HWND Hwnd() const { return m_hwnd; }
    HWND List() const { return ::GetDlgItem(m_hwnd, IDC_HISTDATA_LIST); }
    CL::CTrendChart& Chart() { return m_dialog.Chart(); }
    CdlgHistData& Dialog() { return m_dialog; }

private:
    CdlgHistData m_dialog;
    HWND m_hwnd = nullptr;
};

// The chart's picture as it paints itself (WM_PRINTCLIENT into a DIB).
class Picture {
public:
    explicit Picture(HWND chart)
    {
        RECT client;
        ::GetClientRect(chart, &client);
        m_width = client.right;
        m_height = client.bottom;
        const HDC dc = ::CreateCompatibleDC(nullptr);
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = m_width;
        info.bmiHeader.biHeight = -m_height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        const HBITMAP bitmap = ::CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        const HGDIOBJ previous = ::SelectObject(dc, bitmap);
        ::SendMessageW(chart, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
        ::GdiFlush();
        const DWORD* p = static_cast<const DWORD*>(bits);
        m_pixels.assign(p, p + static_cast<size_t>(m_width) * m_height);
        ::SelectObject(dc, previous);
        ::DeleteObject(bitmap);
        ::DeleteDC(dc);
    }
    int Width() const { return m_width; }
    int Height() const { return m_height; }
    COLORREF At(int x, int y) const
    {
        const DWORD bgr = m_pixels[static_cast<size_t>(y) * m_width + x];
        return RGB((bgr >> 16) & 0xFF, (bgr >> 8) & 0xFF, bgr & 0xFF);
    }
    // Whether a pixel of the given kind lies within reach of (x, y).
    template <typename Test>
    bool Near(double x, double y, int reach, Test test) const
    {
        for (int dy = -reach; dy <= reach; ++dy)
            for (int dx = -reach; dx <= reach; ++dx) {
                const int px = static_cast<int>(std::lround(x)) + dx, py = static_cast<int>(std::lround(y)) + dy;
                if (px >= 0 && py >= 0 && px < m_width && py < m_height && test(At(px, py)))
                    return true;
            }
        return false;
    }
    template <typename Test>
    int Count(Test test) const
    {
        int n = 0;
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x)
                n += test(At(x, y)) ? 1 : 0;
        return n;
    }

private:
    int m_width = 0, m_height = 0;
    std::vector<DWORD> m_pixels;
};

bool IsLine(COLORREF c)
{
    return c == RGB(0, 84, 166);
}

bool IsBad(COLORREF c)
{
    return c == RGB(214, 0, 0);
}

LPARAM At(double x, double y)
{
    return MAKELPARAM(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
}

// The local (linear-day) time of value i, as the chart holds it.
double LocalTime(int i)
{
    return kBase + i * kSecond + test::LocalOffsetDays();
}

std::wstring TooltipText(HWND tooltip, HWND owner)
{
    std::vector<wchar_t> text(2048, L'\0');
    TTTOOLINFOW tool = {};
    tool.cbSize = sizeof tool;
    tool.hwnd = owner;
    tool.uId = 1;
    tool.lpszText = text.data();
    ::SendMessageW(tooltip, TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool));
    return text.data();
}

RECT ChildRect(HWND dialog, HWND child)
{
    RECT r;
    ::GetWindowRect(child, &r);
    ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&r), 2);
    return r;
}

class TrendChartTest : public HistorianWindowTest {
protected:
    // Values i * i / 10 at second i, i = 0..count-1; the given ones bad or
    // not a number.
    void WriteSquares(const std::wstring& itemId, int count, int badAt = -1, int nanAt = -1)
    {
        std::vector<CL::CHistoricValue> values;
        for (int i = 0; i < count; ++i) {
            const double v = i == nanAt ? std::numeric_limits<double>::quiet_NaN() : i * i / 10.0;
            values.push_back({kBase + i * kSecond, static_cast<WORD>(i == badAt ? 0x40 : 0xC0), CL::CVariant::R8(v)});
        }
        WriteValues(itemId, values);
    }
};

double Square(int i)
{
    return i * i / 10.0;
}

} // namespace

TEST_P(TrendChartTest, ShowDataDrawsTheValuesOldestOnTheLeft)
{
    WriteSquares(L"Plant.Tank1.Level", 60);
    ChartWindow window(m_historian, L"Plant.Tank1.Level");
    ASSERT_TRUE(window.Open());
    CL::CTrendChart& chart = window.Chart();
    EXPECT_EQ(chart.Message(), L"Press \"Show data\" to draw the values of the time period.");
    EXPECT_EQ(test::WindowText(chart), L"Chart: Press \"Show data\" to draw the values of the time period.");
    window.ShowData();
    ASSERT_EQ(chart.Series().Size(), 60u);
    EXPECT_EQ(test::WindowText(chart), L"Chart of 'Plant.Tank1.Level': 60 value(s) drawn, 0 NOT GOOD");
    EXPECT_NEAR(chart.Series().Time(0), LocalTime(0), 1e-8);
    EXPECT_LT(chart.WholeFrom(), LocalTime(0));
    EXPECT_GT(chart.WholeTo(), LocalTime(59));
    EXPECT_EQ(chart.From(), chart.WholeFrom());
    EXPECT_EQ(chart.To(), chart.WholeTo());

    const auto layout = chart.CurrentLayout();
    ASSERT_TRUE(layout.valid);
    EXPECT_LT(layout.XOfTime(LocalTime(0)), layout.XOfTime(LocalTime(59)));
    const Picture picture(chart);
    for (int i : {0, 10, 25, 40, 59})
        EXPECT_TRUE(picture.Near(layout.XOfTime(LocalTime(i)), layout.YOfValue(Square(i)), 1, IsLine)) << i;
    // Where the line is not: at the first value's time, near the top.
    EXPECT_FALSE(picture.Near(layout.XOfTime(LocalTime(0)), layout.YOfValue(Square(59)), 3, IsLine));
}

TEST_P(TrendChartTest, DraggingAcrossTheChartZoomsIntoThatRangeAndHomeShowsAll)
{
    WriteSquares(L"t", 60);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    const double x10 = layout.XOfTime(LocalTime(10)), x30 = layout.XOfTime(LocalTime(30));
    const double y = layout.plot.Y + layout.plot.Height / 2.0;
    const double pixel = (chart.To() - chart.From()) / layout.plot.Width;
    ::SendMessageW(chart, WM_LBUTTONDOWN, MK_LBUTTON, At(x10, y));
    ::SendMessageW(chart, WM_MOUSEMOVE, MK_LBUTTON, At((x10 + x30) / 2, y));
    ::SendMessageW(chart, WM_MOUSEMOVE, MK_LBUTTON, At(x30, y));
    ::SendMessageW(chart, WM_LBUTTONUP, 0, At(x30, y));
    EXPECT_NEAR(chart.From(), LocalTime(10), pixel);
    EXPECT_NEAR(chart.To(), LocalTime(30), pixel);
    // The picture shows the zoomed range: value 20 sits in the middle.
    const auto zoomed = chart.CurrentLayout();
    EXPECT_NEAR(zoomed.XOfTime(LocalTime(20)), zoomed.plot.X + zoomed.plot.Width / 2.0, 2.0);
    EXPECT_TRUE(Picture(chart).Near(zoomed.XOfTime(LocalTime(20)), zoomed.YOfValue(Square(20)), 1, IsLine));

    ::SendMessageW(chart, WM_KEYDOWN, VK_HOME, 0);
    EXPECT_EQ(chart.From(), chart.WholeFrom());
    EXPECT_EQ(chart.To(), chart.WholeTo());
}

TEST_P(TrendChartTest, EscapeDuringADragCancelsIt)
{
    WriteSquares(L"t", 60);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    const double y = layout.plot.Y + 20;
    ::SendMessageW(chart, WM_LBUTTONDOWN, MK_LBUTTON, At(layout.XOfTime(LocalTime(10)), y));
    ::SendMessageW(chart, WM_MOUSEMOVE, MK_LBUTTON, At(layout.XOfTime(LocalTime(30)), y));
    EXPECT_EQ(::SendMessageW(chart, WM_GETDLGCODE, VK_ESCAPE, 0) & DLGC_WANTALLKEYS, DLGC_WANTALLKEYS);
    ::SendMessageW(chart, WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_NE(::GetCapture(), chart.Hwnd());
    ::SendMessageW(chart, WM_LBUTTONUP, 0, At(layout.XOfTime(LocalTime(30)), y));
    EXPECT_EQ(chart.From(), chart.WholeFrom());
    EXPECT_EQ(chart.To(), chart.WholeTo());
    EXPECT_TRUE(::IsWindow(window.Hwnd()));
    EXPECT_EQ(::SendMessageW(chart, WM_GETDLGCODE, 0, 0) & DLGC_WANTALLKEYS, 0);
}

TEST_P(TrendChartTest, AClickWithoutDraggingDoesNotZoom)
{
    WriteSquares(L"t", 10);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    const LPARAM at = At(layout.XOfTime(LocalTime(5)), layout.plot.Y + 10);
    ::SendMessageW(chart, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(chart, WM_LBUTTONUP, 0, at);
    EXPECT_EQ(chart.From(), chart.WholeFrom());
    EXPECT_EQ(chart.To(), chart.WholeTo());
    EXPECT_EQ(::GetFocus(), chart.Hwnd());
}

TEST_P(TrendChartTest, TheWheelZoomsAroundThePointerAndDoubleClickShowsAll)
{
    WriteSquares(L"t", 60);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    POINT screen = {static_cast<LONG>(std::lround(layout.XOfTime(LocalTime(15)))), layout.plot.Y + 20};
    const double under = layout.TimeOfX(screen.x);
    ::ClientToScreen(chart, &screen);
    const double span = chart.To() - chart.From();
    const double share = (under - chart.From()) / span;

    ::SendMessageW(chart, WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), MAKELPARAM(screen.x, screen.y));
    EXPECT_NEAR(chart.To() - chart.From(), span * 0.8, 1e-10);
    EXPECT_NEAR((under - chart.From()) / (chart.To() - chart.From()), share, 1e-6);
    ::SendMessageW(chart, WM_MOUSEWHEEL, MAKEWPARAM(0, 3 * WHEEL_DELTA), MAKELPARAM(screen.x, screen.y));
    EXPECT_NEAR(chart.To() - chart.From(), span * std::pow(0.8, 4), 1e-10);
    EXPECT_NEAR((under - chart.From()) / (chart.To() - chart.From()), share, 1e-6);

    // Zooming out stops at the whole range.
    ::SendMessageW(chart, WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-20 * WHEEL_DELTA)),
                   MAKELPARAM(screen.x, screen.y));
    EXPECT_DOUBLE_EQ(chart.From(), chart.WholeFrom());
    EXPECT_DOUBLE_EQ(chart.To(), chart.WholeTo());

    ::SendMessageW(chart, WM_MOUSEWHEEL, MAKEWPARAM(0, 2 * WHEEL_DELTA), MAKELPARAM(screen.x, screen.y));
    ASSERT_LT(chart.To() - chart.From(), span);
    ::SendMessageW(chart, WM_LBUTTONDBLCLK, MK_LBUTTON, At(layout.plot.X + 5, layout.plot.Y + 5));
    EXPECT_EQ(chart.From(), chart.WholeFrom());
    EXPECT_EQ(chart.To(), chart.WholeTo());
}

TEST_P(TrendChartTest, ZoomStopsAtTenMilliseconds)
{
    WriteSquares(L"t", 3);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    POINT screen = {layout.plot.X + layout.plot.Width / 2, layout.plot.Y + 20};
    ::ClientToScreen(chart, &screen);
    ::SendMessageW(chart, WM_MOUSEWHEEL, MAKEWPARAM(0, 200 * WHEEL_DELTA), MAKELPARAM(screen.x, screen.y));
    EXPECT_NEAR(chart.To() - chart.From(), CL::CTrendChart::kMinSpan, 1e-10);
    EXPECT_TRUE(chart.CurrentLayout().valid);
}

TEST_P(TrendChartTest, RightDragAndArrowKeysPan)
{
    WriteSquares(L"t", 60);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    chart.ZoomTo(LocalTime(10), LocalTime(30));
    const auto layout = chart.CurrentLayout();
    const double perPixel = (chart.To() - chart.From()) / layout.plot.Width;
    const double from = chart.From();
    const int y = layout.plot.Y + 30;
    // Dragging the picture to the left shows later times.
    const int x = layout.plot.X + 300;
    ::SendMessageW(chart, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(x, y));
    ::SendMessageW(chart, WM_MOUSEMOVE, MK_RBUTTON, MAKELPARAM(x - 50, y));
    ::SendMessageW(chart, WM_MOUSEMOVE, MK_RBUTTON, MAKELPARAM(x - 100, y));
    ::SendMessageW(chart, WM_RBUTTONUP, 0, MAKELPARAM(x - 100, y));
    EXPECT_NEAR(chart.From(), from + 100 * perPixel, 1e-9);
    EXPECT_NEAR(chart.To() - chart.From(), LocalTime(30) - LocalTime(10), 1e-9);

    const double before = chart.From();
    ::SendMessageW(chart, WM_KEYDOWN, VK_LEFT, 0);
    EXPECT_NEAR(chart.From(), before - 0.1 * (chart.To() - chart.From()), 1e-9);
    ::SendMessageW(chart, WM_KEYDOWN, VK_RIGHT, 0);
    EXPECT_NEAR(chart.From(), before, 1e-9);
    // Panning stops at the ends of the whole range.
    for (int i = 0; i < 30; ++i)
        ::SendMessageW(chart, WM_KEYDOWN, VK_RIGHT, 0);
    EXPECT_DOUBLE_EQ(chart.To(), chart.WholeTo());
    const double span = chart.To() - chart.From();
    ::SendMessageW(chart, WM_KEYDOWN, VK_UP, 0);
    EXPECT_NEAR(chart.To() - chart.From(), span / 2, 1e-9);
    ::SendMessageW(chart, WM_KEYDOWN, VK_DOWN, 0);
    EXPECT_NEAR(chart.To() - chart.From(), span, 1e-9);
    EXPECT_EQ(::SendMessageW(chart, WM_GETDLGCODE, 0, 0) & DLGC_WANTARROWS, DLGC_WANTARROWS);
}

TEST_P(TrendChartTest, HoverShowsTheNearestValueWithTimeQualityAndTheUndrawnCounts)
{
    WriteSquares(L"t", 60, 25, 40);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    const double pixelsPerSecond = layout.plot.Width / ((chart.To() - chart.From()) / kSecond);
    ASSERT_GT(pixelsPerSecond, 4.0);
    // A little right of value 25: still nearest to it.
    ::SendMessageW(chart, WM_MOUSEMOVE, 0, At(layout.XOfTime(LocalTime(25)) + 1, layout.plot.Y + 40));
    ASSERT_NE(chart.HoverPoint(), CL::CTrendSeries::npos);
    const std::wstring text = chart.HoverText();
    EXPECT_NE(text.find(LocalText(kBase + 25 * kSecond)), std::wstring::npos) << testing::PrintToString(text);
    EXPECT_NE(text.find(L"Value: 62.5 (VT_R8)"), std::wstring::npos) << testing::PrintToString(text);
    EXPECT_NE(text.find(L"Quality: NOT GOOD (64)"), std::wstring::npos);
    EXPECT_NE(text.find(L"1 value(s) not a finite number (NaN or infinite): not drawn"), std::wstring::npos);
    EXPECT_EQ(TooltipText(chart.Tooltip(), chart), text);

    ::SendMessageW(chart, WM_MOUSEMOVE, 0, At(layout.XOfTime(LocalTime(3)), layout.plot.Y + 40));
    EXPECT_NE(chart.HoverText().find(L"Quality: GOOD (192)"), std::wstring::npos);
    EXPECT_NE(chart.HoverText().find(LocalText(kBase + 3 * kSecond)), std::wstring::npos);
    ::SendMessageW(chart, WM_MOUSELEAVE, 0, 0);
    EXPECT_EQ(chart.HoverPoint(), CL::CTrendSeries::npos);
    EXPECT_EQ(chart.HoverText(), L"");
}

TEST_P(TrendChartTest, ABadValueShowsAsAGapWithAMarker)
{
    WriteSquares(L"t", 60, 25);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    const auto layout = chart.CurrentLayout();
    const Picture picture(chart);
    EXPECT_TRUE(picture.Near(layout.XOfTime(LocalTime(25)), layout.YOfValue(Square(25)), 2, IsBad));
    // No line between values 24 and 26.
    const double x = layout.XOfTime(LocalTime(25));
    for (int y = layout.plot.Y + 1; y < layout.plot.GetBottom() - 1; ++y)
        EXPECT_FALSE(IsLine(picture.At(static_cast<int>(std::lround(x)) - 2, y))) << y;
    EXPECT_TRUE(picture.Near(layout.XOfTime(LocalTime(20)), layout.YOfValue(Square(20)), 1, IsLine));
}

TEST_P(TrendChartTest, RightClickOffersShowAllCopyAndSaveAsPng)
{
    WriteSquares(L"t", 10);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    test::TrackedMenuCapture capture;
    ::SendMessageW(chart, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(100, 60));
    ::SendMessageW(chart, WM_RBUTTONUP, 0, MAKELPARAM(100, 60));
    ASSERT_TRUE(capture.Captured());
    EXPECT_EQ(test::MenuTexts(capture.Entries()),
              (std::vector<std::wstring>{L"&Show all\tHome", L"&Copy\tCtrl+C", L"Save as &PNG..."}));
    EXPECT_EQ(capture.Entries()[0].id, static_cast<UINT>(ID_TREND_SHOW_ALL));
    EXPECT_EQ(capture.Entries()[2].id, static_cast<UINT>(ID_TREND_SAVE_PNG));
}

TEST_P(TrendChartTest, TheMenuKeyOpensTheSameMenu)
{
    WriteSquares(L"t", 10);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    test::TrackedMenuCapture capture;
    // What the menu key and Shift+F10 send: no position.
    ::SendMessageW(window.Chart(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window.Chart().Hwnd()),
                   MAKELPARAM(-1, -1));
    ASSERT_TRUE(capture.Captured());
    EXPECT_EQ(test::MenuTexts(capture.Entries()).size(), 3u);
}

TEST_P(TrendChartTest, ShowDataAnewRedrawsTheChartWhole)
{
    WriteSquares(L"t", 60);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    chart.ZoomTo(LocalTime(10), LocalTime(20));
    ::SetDlgItemInt(window.Hwnd(), IDC_HISTDATA_MAX_COUNT, 10, FALSE);
    window.ShowData();
    ASSERT_EQ(chart.Series().Size(), 10u);
    EXPECT_EQ(chart.From(), chart.WholeFrom());
    EXPECT_EQ(chart.To(), chart.WholeTo());
    EXPECT_LT(chart.WholeTo(), LocalTime(10));
    const auto layout = chart.CurrentLayout();
    EXPECT_TRUE(Picture(chart).Near(layout.XOfTime(LocalTime(9)), layout.YOfValue(Square(9)), 1, IsLine));
}

TEST_P(TrendChartTest, CopyPutsThePictureOnTheClipboard)
{
    WriteSquares(L"t", 30);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    ASSERT_TRUE(::OpenClipboard(nullptr));
    ::EmptyClipboard();
    ::CloseClipboard();
    ::SendMessageW(chart, WM_COMMAND, ID_TREND_COPY, 0);
    ASSERT_TRUE(::IsClipboardFormatAvailable(CF_BITMAP));
    ASSERT_TRUE(::OpenClipboard(nullptr));
    const HBITMAP bitmap = static_cast<HBITMAP>(::GetClipboardData(CF_BITMAP));
    BITMAP info = {};
    ASSERT_TRUE(bitmap && ::GetObjectW(bitmap, sizeof info, &info));
    ::CloseClipboard();
    RECT client;
    ::GetClientRect(chart, &client);
    EXPECT_EQ(info.bmWidth, std::max<LONG>(client.right, 480));
    EXPECT_EQ(info.bmHeight, std::max<LONG>(client.bottom, 300));

    // Ctrl+C does the same.
    ASSERT_TRUE(::OpenClipboard(nullptr));
    ::EmptyClipboard();
    ::CloseClipboard();
    BYTE keys[256] = {};
    ASSERT_TRUE(::GetKeyboardState(keys));
    BYTE pressed[256];
    std::copy(std::begin(keys), std::end(keys), pressed);
    pressed[VK_CONTROL] = 0x80;
    ::SetKeyboardState(pressed);
    ::SendMessageW(chart, WM_KEYDOWN, 'C', 0);
    ::SetKeyboardState(keys);
    EXPECT_TRUE(::IsClipboardFormatAvailable(CF_BITMAP));
}

TEST_P(TrendChartTest, SaveAsPngWritesThePictureThroughTheSaveDialog)
{
    WriteSquares(L"Plant/Tank:1", 30);
    ChartWindow window(m_historian, L"Plant/Tank:1");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    test::TempDir folder;
    const std::wstring path = folder.File(L"chart.png");
    test::FileDialogAnswer answer(path);
    ::SendMessageW(chart, WM_COMMAND, ID_TREND_SAVE_PNG, 0);
    ASSERT_TRUE(answer.Answered());
    EXPECT_EQ(answer.Title(), L"Save As");
    const std::string bytes = test::ReadFileBytes(path);
    ASSERT_GT(bytes.size(), 8u);
    EXPECT_EQ(bytes.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    RECT client;
    ::GetClientRect(chart, &client);
    Gdiplus::Bitmap png(path.c_str());
    ASSERT_EQ(png.GetLastStatus(), Gdiplus::Ok);
    EXPECT_EQ(static_cast<LONG>(png.GetWidth()), std::max<LONG>(client.right, 480));
    EXPECT_EQ(static_cast<LONG>(png.GetHeight()), std::max<LONG>(client.bottom, 300));
    int line = 0;
    for (UINT y = 0; y < png.GetHeight(); y += 1)
        for (UINT x = 0; x < png.GetWidth(); x += 1) {
            Gdiplus::Color c;
            png.GetPixel(x, y, &c);
            line += IsLine(RGB(c.GetR(), c.GetG(), c.GetB())) ? 1 : 0;
        }
    EXPECT_GT(line, 100);
}

TEST_P(TrendChartTest, TextValuesAreNotDrawnAndTheChartSaysSo)
{
    WriteValues(L"t", {{kBase, 192, CL::CVariant(L"open")},
                       {kBase + kSecond, 192, CL::CVariant(L"closed")},
                       {kBase + 2 * kSecond, 192, CL::CVariant(L"open")}});
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    EXPECT_EQ(RowCount(window.List()), 3);
    EXPECT_TRUE(chart.Series().Empty());
    EXPECT_EQ(chart.Series().NotPlottedCount(), 3u);
    EXPECT_EQ(chart.Message(),
              L"The values retrieved are not numbers (text or arrays): they are listed, not drawn.");
    EXPECT_FALSE(chart.CurrentLayout().valid);
    const Picture picture(chart);
    EXPECT_EQ(picture.Count(IsLine), 0);
    // The words in the middle.
    int text = 0;
    for (int y = picture.Height() / 3; y < picture.Height() * 2 / 3; ++y)
        for (int x = 0; x < picture.Width(); ++x)
            text += GetRValue(picture.At(x, y)) < 200 ? 1 : 0;
    EXPECT_GT(text, 100);
}

TEST_P(TrendChartTest, NoValuesRetrievedIsSaidInWords)
{
    ChartWindow window(m_historian, L"nothing");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    EXPECT_EQ(window.Chart().Message(), L"No values were retrieved: there is nothing to draw.");
}

// A screen reader hears what the chart says in words: its message before
// values are drawn, then the notes under its title.
TEST_P(TrendChartTest, ScreenReadersHearTheMessageThenTheNotesAsTheChartsDescription)
{
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        WriteSquares(L"Plant.Tank1.Level", 30, 5, 9);
        ChartWindow window(m_historian, L"Plant.Tank1.Level");
        ASSERT_TRUE(window.Open());
        EXPECT_EQ(test::ReadAccessible(window.Chart()).description,
                  L"Press \"Show data\" to draw the values of the time period.");
        window.ShowData();
        EXPECT_EQ(test::ReadAccessible(window.Chart()).description,
                  L"1 value(s) NOT GOOD: red crosses, not joined by the line\r\n"
                  L"1 value(s) not a finite number (NaN or infinite): not drawn");
    }
    if (SUCCEEDED(com))
        ::CoUninitialize();
}

TEST_P(TrendChartTest, TheChartSitsBelowTheListAndTheCheckBoxHidesIt)
{
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    const HWND chart = window.Chart();
    EXPECT_EQ(::GetDlgItem(window.Hwnd(), IDC_HISTDATA_CHART), chart);
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_CHART_SHOW), L"C&hart");
    EXPECT_TRUE(Checked(window.Hwnd(), IDC_HISTDATA_CHART_SHOW));
    EXPECT_TRUE(::IsWindowVisible(chart));
    const RECT list = ChildRect(window.Hwnd(), window.List());
    const RECT below = ChildRect(window.Hwnd(), chart);
    EXPECT_GT(below.top, list.bottom);
    EXPECT_EQ(below.left, list.left);
    EXPECT_EQ(below.right, list.right);
    EXPECT_GT(below.bottom - below.top, list.bottom - list.top);
    // Next after the list in the tab order.
    EXPECT_EQ(::GetNextDlgTabItem(window.Hwnd(), window.List(), FALSE), chart);

    ::SendMessageW(::GetDlgItem(window.Hwnd(), IDC_HISTDATA_CHART_SHOW), BM_CLICK, 0, 0);
    EXPECT_FALSE(::IsWindowVisible(chart));
    const RECT whole = ChildRect(window.Hwnd(), window.List());
    EXPECT_EQ(whole.top, list.top);
    EXPECT_EQ(whole.bottom, below.bottom);
    ::SendMessageW(::GetDlgItem(window.Hwnd(), IDC_HISTDATA_CHART_SHOW), BM_CLICK, 0, 0);
    EXPECT_TRUE(::IsWindowVisible(chart));
    EXPECT_EQ(ChildRect(window.Hwnd(), window.List()).bottom, list.bottom);
}

TEST_P(TrendChartTest, TheBarBetweenListAndChartMovesTheirBorder)
{
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    const HWND chart = window.Chart();
    const HWND bar = ::GetDlgItem(window.Hwnd(), IDC_HISTDATA_CHART_BAR);
    ASSERT_TRUE(bar);
    const RECT list = ChildRect(window.Hwnd(), window.List());
    const RECT before = ChildRect(window.Hwnd(), chart);
    ::SendMessageW(bar, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 2));
    ::SendMessageW(bar, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(20, 2 + 40));
    ::SendMessageW(bar, WM_LBUTTONUP, 0, MAKELPARAM(20, 2 + 40));
    EXPECT_EQ(ChildRect(window.Hwnd(), window.List()).bottom, list.bottom + 40);
    EXPECT_EQ(ChildRect(window.Hwnd(), chart).top, before.top + 40);
    EXPECT_EQ(ChildRect(window.Hwnd(), chart).bottom, before.bottom);
    // Resizing the window keeps the chart's height; the list takes the rest.
    RECT frame;
    ::GetWindowRect(window.Hwnd(), &frame);
    const RECT chartBefore = ChildRect(window.Hwnd(), chart);
    ::SetWindowPos(window.Hwnd(), nullptr, 0, 0, frame.right - frame.left + 120, frame.bottom - frame.top + 80,
                   SWP_NOMOVE | SWP_NOZORDER);
    const RECT chartAfter = ChildRect(window.Hwnd(), chart);
    EXPECT_EQ(chartAfter.bottom - chartAfter.top, chartBefore.bottom - chartBefore.top);
    EXPECT_EQ(chartAfter.right - chartAfter.left, chartBefore.right - chartBefore.left + 120);
}

TEST_P(TrendChartTest, WritesItsTraceLines)
{
    WriteSquares(L"t", 10);
    test::LogCapture log(3);
    ChartWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowData();
    CL::CTrendChart& chart = window.Chart();
    ::SendMessageW(chart, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 50));
    ::SendMessageW(chart, WM_LBUTTONUP, 0, MAKELPARAM(100, 50));
    ::SendMessageW(chart, WM_KEYDOWN, VK_HOME, 0);
    ::SendMessageW(chart, WM_COMMAND, ID_TREND_SHOW_ALL, 0);
    ::SendMessageW(::GetDlgItem(window.Hwnd(), IDC_HISTDATA_CHART_SHOW), BM_CLICK, 0, 0);
    EXPECT_TRUE(log.ContainsLike(3, "CTrendChart::OnLButtonDown [TrendChart, ", "]")) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CTrendChart::OnLButtonUp [TrendChart, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CTrendChart::OnKeyDown [TrendChart, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CTrendChart::OnShowAll [TrendChart, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgHistData::OnBnClickedChkChart [dlgHistData, ", "]"));
}

INSTANTIATE_TEST_SUITE_P(Db, TrendChartTest, testing::Values(DbKind::Sqlite), KindName);
