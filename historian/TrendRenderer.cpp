#include "historian/TrendRenderer.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/Exception.h"
#include "common/Handle.h"

namespace CL {

namespace {

constexpr double kFarPixels = 1e7;   // farther off the plot is drawn as this far (floats keep whole pixels)

float Pixel(double v)
{
    return static_cast<float>(std::clamp(v, -kFarPixels, kFarPixels));
}

Gdiplus::Color SystemColor(int index)
{
    const COLORREF c = ::GetSysColor(index);
    return Gdiplus::Color(255, GetRValue(c), GetGValue(c), GetBValue(c));
}

COLORREF ColorRef(const Gdiplus::Color& c)
{
    return RGB(c.GetR(), c.GetG(), c.GetB());
}

// A pixel position for GDI, off-plot positions kept far but finite.
POINT DevicePoint(double x, double y)
{
    return POINT{static_cast<LONG>(std::lround(std::clamp(x, -kFarPixels, kFarPixels))),
                 static_cast<LONG>(std::lround(std::clamp(y, -kFarPixels, kFarPixels)))};
}

size_t LineCount(const std::wstring& text)
{
    return text.empty() ? 0 : 1 + static_cast<size_t>(std::count(text.begin(), text.end(), L'\n'));
}

} // namespace

struct CTrendRenderer::Metrics {
    float lineHeight = 13.0f;
    float charWidth = 6.0f;
};

// --- Layout ------------------------------------------------------------------

double CTrendRenderer::Layout::XOfTime(double time) const
{
    return plot.X + (time - from) / (to - from) * plot.Width;
}

double CTrendRenderer::Layout::TimeOfX(double x) const
{
    return from + (x - plot.X) / plot.Width * (to - from);
}

double CTrendRenderer::Layout::YOfValue(double value) const
{
    // Halves keep the differences finite for the largest numbers.
    const double span = values.high / 2 - values.low / 2;
    return plot.Y + (values.high / 2 - value / 2) / span * plot.Height;
}

// --- CTrendRenderer ----------------------------------------------------------

CTrendRenderer::CTrendRenderer(HFONT font)
{
    EnsureGdiplus();
    const HDC screen = ::GetDC(nullptr);
    m_font = std::make_unique<Gdiplus::Font>(
        screen, font ? font : static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT)));
    ::ReleaseDC(nullptr, screen);
    if (m_font->GetLastStatus() != Gdiplus::Ok)
        m_font = std::make_unique<Gdiplus::Font>(L"Tahoma", 8.0f);
    if (m_font->GetLastStatus() != Gdiplus::Ok)
        throw CException(E_FAIL, L"Gdiplus::Font (hdc, hfont)");
}

CTrendRenderer::~CTrendRenderer() = default;

CTrendRenderer::Metrics CTrendRenderer::Measure(Gdiplus::Graphics& g) const
{
    Metrics m;
    Gdiplus::RectF box;
    g.MeasureString(L"0000000000", 10, m_font.get(), Gdiplus::PointF(0, 0), &box);
    m.charWidth = std::max(box.Width / 10.0f, 1.0f);
    m.lineHeight = std::max(m_font->GetHeight(&g), 1.0f);
    return m;
}

CTrendRenderer::Layout CTrendRenderer::Arrange(Gdiplus::Graphics& g, const Gdiplus::Rect& bounds,
                                               const CTrendSeries& series, const Frame& frame) const
{
    Layout layout;
    layout.from = frame.from;
    layout.to = frame.to > frame.from ? frame.to : frame.from + 1.0 / 86400;
    if (series.Empty())
        return layout;
    const Metrics m = Measure(g);
    const float top = bounds.Y + Margin() + m.lineHeight * (1 + LineCount(series.NotesText())) + Margin();
    const float bottom = bounds.GetBottom() - (2 * m.lineHeight + Margin() + m_dpi.Scale(3));
    const float height = std::max(bottom - top, 1.0f);

    double low = 0.0, high = 1.0;
    if (series.ValueRange(layout.from, layout.to, low, high) && high > low) {
        // A little room above and below, so that the extremes are not drawn
        // on the frame; none below zero for values that are never negative.
        const double pad = (high / 2 - low / 2) / 25;
        low = low >= 0.0 ? std::max(low - pad, 0.0) : low - pad;
        high += pad;
    }
    layout.values = NiceValueAxis(low, high, std::max(2, static_cast<int>(height / (m.lineHeight * 2.5f))));
    float labelWidth = 0.0f;
    for (double tick : layout.values.ticks) {
        const std::wstring text = ValueTickText(tick, layout.values);
        Gdiplus::RectF box;
        g.MeasureString(text.c_str(), static_cast<INT>(text.size()), m_font.get(), Gdiplus::PointF(0, 0), &box);
        labelWidth = std::max(labelWidth, box.Width);
    }
    const int left = static_cast<int>(std::ceil(bounds.X + Margin() + labelWidth + Margin()));
    const int right = static_cast<int>(bounds.GetRight() - m.charWidth * 7);
    layout.plot = Gdiplus::Rect(left, static_cast<int>(top), std::max(right - left, 1), static_cast<int>(height));
    layout.valid = true;
    return layout;
}

CTrendRenderer::Layout CTrendRenderer::Draw(Gdiplus::Graphics& g, const Gdiplus::Rect& bounds,
                                            const CTrendSeries& series, const Frame& frame) const
{
    g.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    g.SetTextRenderingHint(Gdiplus::TextRenderingHintAntiAliasGridFit);
    Gdiplus::SolidBrush background(SystemColor(COLOR_WINDOW));
    g.FillRectangle(&background, bounds);

    const Metrics m = Measure(g);
    const Layout layout = Arrange(g, bounds, series, frame);
    DrawTexts(g, bounds, series, frame, m);
    if (layout.valid) {
        DrawAxes(g, layout, m);
        DrawSeries(g, layout, series, frame.everyPoint);
        DrawOverlay(g, layout, series, frame);
    }
    if (frame.focused) {
        Gdiplus::Pen focus(SystemColor(COLOR_WINDOWTEXT), 1.0f);
        focus.SetDashStyle(Gdiplus::DashStyleDot);
        g.SetSmoothingMode(Gdiplus::SmoothingModeNone);
        g.DrawRectangle(&focus, bounds.X + 1, bounds.Y + 1, bounds.Width - 3, bounds.Height - 3);
    }
    return layout;
}

void CTrendRenderer::DrawText(Gdiplus::Graphics& g, const std::wstring& lines, float x, float y, int align,
                              const Gdiplus::Color& color) const
{
    // GDI+ breaks lines at LF and would draw the CR of a CR LF as a box.
    std::wstring text = lines;
    text.erase(std::remove(text.begin(), text.end(), L'\r'), text.end());
    if (text.empty())
        return;
    Gdiplus::RectF box;
    g.MeasureString(text.c_str(), static_cast<INT>(text.size()), m_font.get(), Gdiplus::PointF(0, 0), &box);
    if (align == 1)
        x -= box.Width / 2;
    else if (align == 2)
        x -= box.Width;
    Gdiplus::SolidBrush brush(color);
    g.DrawString(text.c_str(), static_cast<INT>(text.size()), m_font.get(), Gdiplus::PointF(x, y), &brush);
}

void CTrendRenderer::DrawTexts(Gdiplus::Graphics& g, const Gdiplus::Rect& bounds, const CTrendSeries& series,
                               const Frame& frame, const Metrics& m) const
{
    const Gdiplus::Color text = SystemColor(COLOR_WINDOWTEXT);
    DrawText(g, frame.title, bounds.X + Margin(), bounds.Y + Margin(), 0, text);
    const std::wstring notes = series.NotesText();
    if (!notes.empty())
        DrawText(g, notes, bounds.X + Margin(), bounds.Y + Margin() + m.lineHeight, 0, Gdiplus::Color(255, 160, 0, 0));
    if (!series.Empty() || frame.message.empty())
        return;
    Gdiplus::StringFormat format;
    format.SetAlignment(Gdiplus::StringAlignmentCenter);
    format.SetLineAlignment(Gdiplus::StringAlignmentCenter);
    const float top = bounds.Y + Margin() + m.lineHeight * (1 + LineCount(notes));
    const Gdiplus::RectF area(bounds.X + 2.0f * Margin(), top, bounds.Width - 4.0f * Margin(),
                              std::max(bounds.GetBottom() - top - Margin(), 1.0f));
    Gdiplus::SolidBrush brush(SystemColor(COLOR_GRAYTEXT));
    g.DrawString(frame.message.c_str(), static_cast<INT>(frame.message.size()), m_font.get(), area, &format, &brush);
}

void CTrendRenderer::DrawAxes(Gdiplus::Graphics& g, const Layout& layout, const Metrics& m) const
{
    const Gdiplus::Rect& plot = layout.plot;
    const Gdiplus::Color text = SystemColor(COLOR_WINDOWTEXT);
    Gdiplus::Pen grid(Gdiplus::Color(255, 225, 225, 225), 1.0f);
    Gdiplus::Pen frame(Gdiplus::Color(255, 150, 150, 150), 1.0f);
    g.SetSmoothingMode(Gdiplus::SmoothingModeNone);

    for (double tick : layout.values.ticks) {
        const float y = std::round(Pixel(layout.YOfValue(tick)));
        if (y < plot.Y - 0.5f || y > plot.GetBottom() + 0.5f)
            continue;
        g.DrawLine(&grid, static_cast<float>(plot.X), y, static_cast<float>(plot.GetRight()), y);
        DrawText(g, ValueTickText(tick, layout.values), plot.X - static_cast<float>(Margin()), y - m.lineHeight / 2, 2,
                 text);
    }
    const TimeAxis times = ChooseTimeAxis(layout.from, layout.to, plot.Width, m.charWidth);
    for (size_t i = 0; i < times.ticks.size(); ++i) {
        const float x = std::round(Pixel(layout.XOfTime(times.ticks[i])));
        g.DrawLine(&grid, x, static_cast<float>(plot.Y), x, static_cast<float>(plot.GetBottom()));
        g.DrawLine(&frame, x, static_cast<float>(plot.GetBottom()), x, plot.GetBottom() + 3.0f);
        const float y = plot.GetBottom() + 4.0f;
        DrawText(g, TimeTickText(times.ticks[i], times.unit), x, y, 1, text);
        DrawText(g, TimeTickContext(times, i), x, y + m.lineHeight, 1, text);
    }
    g.DrawRectangle(&frame, plot);
}

void CTrendRenderer::DrawSeries(Gdiplus::Graphics& g, const Layout& layout, const CTrendSeries& series,
                                bool everyPoint) const
{
    const Gdiplus::Rect& plot = layout.plot;
    // x = plot.X + column: each pixel column's whole coordinate.
    series.Reduce(layout.from, layout.to, plot.X - 0.5, plot.Width, everyPoint, m_path);

    // The line and the markers go through GDI: one call for all polylines
    // and one for all markers, as fast for thousands of points as for ten.
    std::vector<POINT> points;
    std::vector<DWORD> counts;
    std::vector<POINT> dots;
    points.reserve(m_path.x.size());
    // Few points: each one is marked so that the samples can be told apart.
    const bool dotEach = m_path.visiblePoints * 6 <= static_cast<size_t>(plot.Width);
    for (size_t k = 0; k < m_path.PolylineCount(); ++k) {
        const auto [begin, end] = m_path.Polyline(k);
        const size_t first = points.size();
        for (size_t i = begin; i < end; ++i)
            points.push_back(DevicePoint(m_path.x[i], layout.YOfValue(m_path.value[i])));
        if (end - begin > 1)
            counts.push_back(static_cast<DWORD>(end - begin));
        else
            points.resize(first);
        if (end - begin == 1 || dotEach)
            for (size_t i = begin; i < end; ++i)
                dots.push_back(DevicePoint(m_path.x[i], layout.YOfValue(m_path.value[i])));
    }
    std::vector<POINT> crosses;
    std::vector<DWORD> crossCounts;
    for (const CTrendPath::Marker& marker : m_path.markers) {
        const POINT low = DevicePoint(marker.x, layout.YOfValue(marker.low));
        const POINT high = DevicePoint(marker.x, layout.YOfValue(marker.high));
        // A cross two pixels thick of one-pixel lines (cosmetic pens are the
        // fast ones), at the smallest and, when it differs, the largest value.
        const LONG arm = m_dpi.Scale(4), thickness = m_dpi.Scale(2);
        for (const POINT& p : {low, high}) {
            for (LONG dx = 0; dx < thickness; ++dx) {
                crosses.insert(crosses.end(), {{p.x - arm + dx, p.y - arm}, {p.x + arm + 1 + dx, p.y + arm + 1},
                                               {p.x - arm + dx, p.y + arm}, {p.x + arm + 1 + dx, p.y - arm - 1}});
                crossCounts.insert(crossCounts.end(), {2, 2});
            }
            if (low.y == high.y)
                break;
        }
        if (low.y != high.y) {
            crosses.insert(crosses.end(), {low, high});
            crossCounts.push_back(2);
        }
    }

    const HDC dc = g.GetHDC();
    const int saved = ::SaveDC(dc);
    ::IntersectClipRect(dc, plot.X, plot.Y, plot.GetRight(), plot.GetBottom());
    // The line is one device pixel per 96 dpi in whole pixels: 1 up to
    // 191 dpi, so that the per-column reduction draws the same pixels.
    const int lineWidth = std::max(1, m_dpi.Value() / CDpi::kDefault);
    const UniqueGdiObject linePen(::CreatePen(PS_SOLID, lineWidth, ColorRef(LineColor())));
    const UniqueGdiObject lineBrush(::CreateSolidBrush(ColorRef(LineColor())));
    const UniqueGdiObject badPen(::CreatePen(PS_SOLID, lineWidth, ColorRef(BadColor())));
    ::SelectObject(dc, linePen.get());
    if (!counts.empty())
        ::PolyPolyline(dc, points.data(), counts.data(), static_cast<DWORD>(counts.size()));
    ::SelectObject(dc, lineBrush.get());
    const int radius = m_dpi.Scale(2);
    for (const POINT& p : dots)
        ::Ellipse(dc, p.x - radius, p.y - radius, p.x + radius + 1, p.y + radius + 1);
    ::SelectObject(dc, badPen.get());
    if (!crossCounts.empty())
        ::PolyPolyline(dc, crosses.data(), crossCounts.data(), static_cast<DWORD>(crossCounts.size()));
    ::RestoreDC(dc, saved);
    g.ReleaseHDC(dc);
}

void CTrendRenderer::DrawOverlay(Gdiplus::Graphics& g, const Layout& layout, const CTrendSeries& series,
                                 const Frame& frame) const
{
    const Gdiplus::Rect& plot = layout.plot;
    g.SetClip(plot);
    if (frame.selecting) {
        const double a = layout.XOfTime(std::min(frame.selectFrom, frame.selectTo));
        const double b = layout.XOfTime(std::max(frame.selectFrom, frame.selectTo));
        const Gdiplus::Color highlight = SystemColor(COLOR_HIGHLIGHT);
        Gdiplus::SolidBrush fill(Gdiplus::Color(60, highlight.GetR(), highlight.GetG(), highlight.GetB()));
        Gdiplus::Pen edge(highlight, 1.0f);
        const Gdiplus::RectF area(Pixel(a), static_cast<float>(plot.Y), Pixel(b - a), static_cast<float>(plot.Height));
        g.FillRectangle(&fill, area);
        g.DrawRectangle(&edge, area);
    }
    if (frame.hover < series.Size()) {
        const size_t i = frame.hover;
        const float x = Pixel(layout.XOfTime(series.Time(i)));
        Gdiplus::Pen cross(Gdiplus::Color(255, 128, 128, 128), 1.0f);
        cross.SetDashStyle(Gdiplus::DashStyleDash);
        g.DrawLine(&cross, x, static_cast<float>(plot.Y), x, static_cast<float>(plot.GetBottom()));
        if (series.KindOf(i) != CTrendSeries::Kind::NotFinite) {
            const float y = Pixel(layout.YOfValue(series.Value(i)));
            const float scale = static_cast<float>(m_dpi.Value()) / CDpi::kDefault;
            Gdiplus::Pen ring(Gdiplus::Color(255, 230, 120, 0), 2.0f * scale);
            g.DrawEllipse(&ring, x - 4.5f * scale, y - 4.5f * scale, 9.0f * scale, 9.0f * scale);
        }
    }
    g.ResetClip();
}

} // namespace CL
