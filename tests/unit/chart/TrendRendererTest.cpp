// The trend chart's drawing, checked on the pixels of a memory bitmap: the
// line passes where a known value must be, a bad value leaves its gap and
// its marker, a NaN leaves a gap without one, and the per-column reduction
// draws exactly the pixels that drawing every point draws.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include "common/ui/Gdiplus.h"
#include "historian/TrendRenderer.h"

namespace {

constexpr double kSecond = 1.0 / 86400;
constexpr WORD kGood = 192;
constexpr WORD kBad = 0x40;

// A 32-bit top-down DIB section in a memory DC, as the window paints into,
// with a GDI+ surface on it and its pixels readable.
class Canvas {
public:
    Canvas(int width, int height) : m_width(width), m_height(height), m_dc(::CreateCompatibleDC(nullptr))
    {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        m_bitmap = ::CreateDIBSection(m_dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        m_bits = static_cast<const DWORD*>(bits);
        m_previous = ::SelectObject(m_dc, m_bitmap);
        const RECT all = {0, 0, width, height};
        ::FillRect(m_dc, &all, static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
        m_graphics = std::make_unique<Gdiplus::Graphics>(m_dc);
    }
    ~Canvas()
    {
        m_graphics.reset();
        ::SelectObject(m_dc, m_previous);
        ::DeleteObject(m_bitmap);
        ::DeleteDC(m_dc);
    }
    Gdiplus::Graphics& Graphics() { return *m_graphics; }
    Gdiplus::Color Pixel(int x, int y)
    {
        m_graphics->Flush(Gdiplus::FlushIntentionSync);
        ::GdiFlush();
        const DWORD bgr = m_bits[static_cast<size_t>(y) * m_width + x];
        return Gdiplus::Color(255, (bgr >> 16) & 0xFF, (bgr >> 8) & 0xFF, bgr & 0xFF);
    }
    int Width() const { return m_width; }
    int Height() const { return m_height; }

private:
    int m_width, m_height;
    HDC m_dc;
    HBITMAP m_bitmap = nullptr;
    HGDIOBJ m_previous = nullptr;
    const DWORD* m_bits = nullptr;
    std::unique_ptr<Gdiplus::Graphics> m_graphics;
};

// Mostly the line's blue (anti-aliased edges included).
bool IsLine(const Gdiplus::Color& c)
{
    return c.GetB() > c.GetR() + 60 && c.GetB() > 120;
}

bool IsBad(const Gdiplus::Color& c)
{
    return c.GetR() > c.GetG() + 80 && c.GetR() > c.GetB() + 80;
}

// Whether a pixel of the given kind lies within `reach` pixels of (x, y).
template <typename Test>
bool Near(Canvas& canvas, double x, double y, int reach, Test test)
{
    const int cx = static_cast<int>(std::lround(x)), cy = static_cast<int>(std::lround(y));
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
            const int px = cx + dx, py = cy + dy;
            if (px >= 0 && py >= 0 && px < canvas.Width() && py < canvas.Height() && test(canvas.Pixel(px, py)))
                return true;
        }
    return false;
}

class TrendRendererTest : public testing::Test {
protected:
    void SetUp() override { CL::EnsureGdiplus(); }

    CL::CTrendRenderer::Layout Draw(Canvas& canvas, const CL::CTrendSeries& series, double from, double to)
    {
        CL::CTrendRenderer::Frame frame;
        frame.from = from;
        frame.to = to;
        frame.title = L"Plant.Tank1.Level";
        return m_renderer->Draw(canvas.Graphics(), Gdiplus::Rect(0, 0, canvas.Width(), canvas.Height()), series,
                                frame);
    }

    std::unique_ptr<CL::CTrendRenderer> m_renderer = std::make_unique<CL::CTrendRenderer>();
};

// Values 0..10 at seconds 0..10, a triangle: up to 10 at second 5, down again.
CL::CTrendSeries Triangle(WORD qualityAt5 = kGood, double valueAt5 = 10.0)
{
    std::vector<CL::CTrendSeries::Point> points;
    for (int i = 0; i <= 10; ++i)
        points.push_back({i * kSecond, i == 5 ? valueAt5 : 10.0 - std::abs(i - 5) * 2.0,
                          static_cast<WORD>(i == 5 ? qualityAt5 : kGood)});
    CL::CTrendSeries series;
    series.AssignPoints(points);
    return series;
}

} // namespace

TEST_F(TrendRendererTest, TheLinePassesThroughTheKnownValues)
{
    Canvas canvas(640, 360);
    const CL::CTrendSeries series = Triangle();
    const auto layout = Draw(canvas, series, -0.5 * kSecond, 10.5 * kSecond);
    ASSERT_TRUE(layout.valid);
    EXPECT_LE(layout.values.low, 0.0);
    EXPECT_GE(layout.values.high, 10.0);
    for (int i = 0; i <= 10; ++i) {
        const double value = 10.0 - std::abs(i - 5) * 2.0;
        EXPECT_TRUE(Near(canvas, layout.XOfTime(i * kSecond), layout.YOfValue(value), 1, IsLine)) << "second " << i;
    }
    // Halfway between seconds 2 and 3 the line is at 5 (between 4 and 6) ...
    EXPECT_TRUE(Near(canvas, layout.XOfTime(2.5 * kSecond), layout.YOfValue(5.0), 1, IsLine));
    // ... and nowhere near the top of the plot there.
    EXPECT_FALSE(Near(canvas, layout.XOfTime(2.5 * kSecond), layout.YOfValue(9.0), 3, IsLine));
    // No bad values: no red.
    for (int x = layout.plot.X; x < layout.plot.GetRight(); x += 3)
        for (int y = layout.plot.Y; y < layout.plot.GetBottom(); y += 3)
            ASSERT_FALSE(IsBad(canvas.Pixel(x, y))) << x << "," << y;
}

TEST_F(TrendRendererTest, ABadValueLeavesAGapAndAMarker)
{
    Canvas canvas(640, 360);
    const CL::CTrendSeries series = Triangle(kBad);
    const auto layout = Draw(canvas, series, -0.5 * kSecond, 10.5 * kSecond);
    ASSERT_TRUE(layout.valid);
    const double x5 = layout.XOfTime(5 * kSecond);
    // The marker sits on the bad value.
    EXPECT_TRUE(Near(canvas, x5, layout.YOfValue(10.0), 2, IsBad));
    // The line stops at seconds 4 and 6: nothing between them on the way up
    // or down, where the line would run if the value were good.
    for (double t : {4.4, 4.6, 5.4, 5.6}) {
        const double y = layout.YOfValue(10.0 - std::abs(t - 5) * 2.0);
        EXPECT_FALSE(Near(canvas, layout.XOfTime(t * kSecond), y, 2, IsLine)) << "second " << t;
    }
    EXPECT_TRUE(Near(canvas, layout.XOfTime(3.5 * kSecond), layout.YOfValue(7.0), 1, IsLine));
    EXPECT_TRUE(Near(canvas, layout.XOfTime(6.5 * kSecond), layout.YOfValue(7.0), 1, IsLine));
}

TEST_F(TrendRendererTest, ANaNLeavesAGapWithoutAMarker)
{
    Canvas canvas(640, 360);
    const CL::CTrendSeries series = Triangle(kGood, std::numeric_limits<double>::quiet_NaN());
    const auto layout = Draw(canvas, series, -0.5 * kSecond, 10.5 * kSecond);
    ASSERT_TRUE(layout.valid);
    for (double t : {4.5, 5.0, 5.5}) {
        const double x = layout.XOfTime(t * kSecond);
        for (int y = layout.plot.Y + 1; y < layout.plot.GetBottom() - 1; ++y) {
            const Gdiplus::Color c = canvas.Pixel(static_cast<int>(std::lround(x)), y);
            EXPECT_FALSE(IsLine(c)) << "second " << t << ", y " << y;
            EXPECT_FALSE(IsBad(c)) << "second " << t << ", y " << y;
        }
    }
}

TEST_F(TrendRendererTest, TheReductionDrawsTheSamePixelsAsEveryPoint)
{
    // A noisy walk of 200,000 values, with a few bad ones and a spike, on a
    // plot of 500 columns: 400 values per column.
    std::mt19937 random(7);
    std::normal_distribution<double> step(0.0, 1.0);
    std::vector<CL::CTrendSeries::Point> points;
    double value = 0.0;
    for (int i = 0; i < 200000; ++i) {
        value += step(random);
        const bool bad = i % 50000 == 25000;
        points.push_back({i * 0.01 * kSecond, i == 120000 ? value + 400 : value, bad ? kBad : kGood});
    }
    CL::CTrendSeries series;
    series.AssignPoints(points);

    for (auto [from, to] : {std::pair{0.0, 2000 * kSecond}, {333 * kSecond, 777 * kSecond}}) {
        Canvas reduced(620, 320), every(620, 320);
        CL::CTrendRenderer::Layout layout;
        layout.valid = true;
        layout.plot = Gdiplus::Rect(60, 10, 500, 280);
        layout.from = from;
        layout.to = to;
        double low = 0, high = 0;
        ASSERT_TRUE(series.ValueRange(from, to, low, high));
        layout.values = CL::NiceValueAxis(low, high, 5);
        m_renderer->DrawSeries(reduced.Graphics(), layout, series, false);
        m_renderer->DrawSeries(every.Graphics(), layout, series, true);
        int differing = 0, drawn = 0;
        for (int y = 0; y < 320; ++y)
            for (int x = 0; x < 620; ++x) {
                const Gdiplus::Color a = reduced.Pixel(x, y), b = every.Pixel(x, y);
                if (a.GetValue() != b.GetValue())
                    ++differing;
                if (IsLine(a))
                    ++drawn;
            }
        EXPECT_EQ(differing, 0) << "range " << from << " .. " << to;
        EXPECT_GT(drawn, 500);   // the comparison is of a real drawing
    }
}

TEST_F(TrendRendererTest, ASeriesWithoutPointsDrawsItsMessageAndNoPlot)
{
    Canvas canvas(400, 200);
    CL::CTrendSeries series;
    CL::CTrendRenderer::Frame frame;
    frame.message = L"The values retrieved are not numbers";
    const auto layout =
        m_renderer->Draw(canvas.Graphics(), Gdiplus::Rect(0, 0, 400, 200), series, frame);
    EXPECT_FALSE(layout.valid);
    // Some text in the middle band.
    int dark = 0;
    for (int y = 80; y < 120; ++y)
        for (int x = 0; x < 400; ++x)
            if (canvas.Pixel(x, y).GetR() < 200)
                ++dark;
    EXPECT_GT(dark, 20);
}

TEST_F(TrendRendererTest, HugeNegativeAndPositiveValuesAreDrawnWhereTheyBelong)
{
    Canvas canvas(640, 360);
    std::vector<CL::CTrendSeries::Point> points;
    for (int i = 0; i <= 10; ++i)
        points.push_back({i * kSecond, (i - 5) * 1.5e307, kGood});   // -7.5e307 .. 7.5e307
    CL::CTrendSeries series;
    series.AssignPoints(points);
    const auto layout = Draw(canvas, series, -0.5 * kSecond, 10.5 * kSecond);
    ASSERT_TRUE(layout.valid);
    EXPECT_TRUE(std::isfinite(layout.values.low) && std::isfinite(layout.values.high));
    for (int i : {0, 3, 5, 8, 10}) {
        const double y = layout.YOfValue((i - 5) * 1.5e307);
        EXPECT_GE(y, layout.plot.Y - 1);
        EXPECT_LE(y, layout.plot.GetBottom() + 1);
        EXPECT_TRUE(Near(canvas, layout.XOfTime(i * kSecond), y, 1, IsLine)) << i;
    }
}

TEST_F(TrendRendererTest, AConstantValueIsAFlatLineInsideThePlot)
{
    Canvas canvas(640, 360);
    std::vector<CL::CTrendSeries::Point> points;
    for (int i = 0; i <= 10; ++i)
        points.push_back({i * kSecond, -42.0, kGood});
    CL::CTrendSeries series;
    series.AssignPoints(points);
    const auto layout = Draw(canvas, series, -0.5 * kSecond, 10.5 * kSecond);
    ASSERT_TRUE(layout.valid);
    const double y = layout.YOfValue(-42.0);
    EXPECT_GT(y, layout.plot.Y + 10);
    EXPECT_LT(y, layout.plot.GetBottom() - 10);
    for (double t = 0.5; t < 10; t += 1.0)
        EXPECT_TRUE(Near(canvas, layout.XOfTime(t * kSecond), y, 1, IsLine)) << t;
}

TEST_F(TrendRendererTest, ASingleValueIsADotInTheMiddle)
{
    Canvas canvas(400, 240);
    CL::CTrendSeries series;
    series.AssignPoints({{100.0, 7.0, kGood}});
    const auto layout = Draw(canvas, series, 100.0 - 60.0 / 86400, 100.0 + 60.0 / 86400);
    ASSERT_TRUE(layout.valid);
    const double x = layout.XOfTime(100.0), y = layout.YOfValue(7.0);
    EXPECT_NEAR(x, layout.plot.X + layout.plot.Width / 2.0, 1.0);
    EXPECT_NEAR(y, layout.plot.Y + layout.plot.Height / 2.0, layout.plot.Height / 4.0);
    EXPECT_TRUE(Near(canvas, x, y, 1, IsLine));
}

// At twice the DPI the bad value's cross is twice as wide and high: its red
// pixels reach about twice as far from the value's point.
TEST_F(TrendRendererTest, TheBadValuesCrossGrowsWithTheDpi)
{
    const auto reach = [this](int dpi) {
        m_renderer->SetDpi(dpi);
        Canvas canvas(640, 360);
        const auto layout = Draw(canvas, Triangle(kBad), -0.5 * kSecond, 10.5 * kSecond);
        const int cx = static_cast<int>(std::lround(layout.XOfTime(5 * kSecond)));
        const int cy = static_cast<int>(std::lround(layout.YOfValue(10.0)));
        int farthest = 0;
        for (int dy = -20; dy <= 20; ++dy)
            for (int dx = -20; dx <= 20; ++dx)
                if (IsBad(canvas.Pixel(cx + dx, cy + dy)))
                    farthest = std::max(farthest, std::max(std::abs(dx), std::abs(dy)));
        return farthest;
    };
    const int at96 = reach(96);
    const int at192 = reach(192);
    EXPECT_GE(at96, 4);
    EXPECT_GE(at192, 2 * at96 - 1) << at96 << " pixels at 96 dpi, " << at192 << " at 192 dpi";
    EXPECT_LE(at192, 2 * at96 + 2) << at96 << " pixels at 96 dpi, " << at192 << " at 192 dpi";
}
