#pragma once
// CTrendRenderer: draws a trend series within a time range onto a GDI+
// surface: the item's name, the counts of values marked as bad and of
// values not drawn, a value axis with rounded ticks, a time axis in
// calendar ticks with the date under them, the values as a line (gaps
// where a value is of bad quality or not a finite number; bad values marked
// with a red cross), and the user's selection, hovered point and focus.
// Text and overlays go through GDI+; the line and the markers through GDI
// on the same surface (one call each, whatever the number of points).
// Used by the chart window, for its copies and PNG files, by the tests and
// by the benchmark.
#include <windows.h>

#include <memory>
#include <string>

#include "common/ui/ChartAxes.h"
#include "common/ui/Dpi.h"
#include "common/ui/Gdiplus.h"
#include "historian/TrendSeries.h"

namespace CL {

class CTrendRenderer {
public:
    // What is drawn besides the series.
    struct Frame {
        double from = 0.0;          // the time range shown (local linear days)
        double to = 1.0;
        std::wstring title;         // top left: the item ID
        std::wstring message;       // in the middle when the series has no points
        bool everyPoint = false;    // draw every point instead of the per-column reduction
        bool focused = false;       // a focus rectangle
        bool selecting = false;     // a time range being selected
        double selectFrom = 0.0, selectTo = 0.0;
        size_t hover = CTrendSeries::npos;   // a point to show as hovered
    };

    // Where the plot is and how it maps times and values to pixels.
    struct Layout {
        bool valid = false;         // false: no plot (the series has no points)
        Gdiplus::Rect plot;         // whole pixels
        double from = 0.0, to = 1.0;
        ValueAxis values;
        double XOfTime(double time) const;
        double TimeOfX(double x) const;
        double YOfValue(double value) const;
    };

    // The text font is made from a GDI font (the dialog's); NULL: the
    // default GUI font.
    explicit CTrendRenderer(HFONT font = nullptr);
    ~CTrendRenderer();
    CTrendRenderer(const CTrendRenderer&) = delete;
    CTrendRenderer& operator=(const CTrendRenderer&) = delete;

    // The layout a Draw() with the same arguments uses, without drawing.
    Layout Arrange(Gdiplus::Graphics& g, const Gdiplus::Rect& bounds, const CTrendSeries& series,
                   const Frame& frame) const;
    // Draws everything into bounds; returns the layout used.
    Layout Draw(Gdiplus::Graphics& g, const Gdiplus::Rect& bounds, const CTrendSeries& series,
                const Frame& frame) const;
    // Draws only the series' line and markers (no axes, no text) into the
    // plot of a layout: what the pixel tests compare. The surface must be
    // one GDI can draw on too (a window's or a memory bitmap's DC).
    void DrawSeries(Gdiplus::Graphics& g, const Layout& layout, const CTrendSeries& series, bool everyPoint) const;

    // The DPI of the surface (96 unless set): margins, markers and the line
    // width follow it; the font is the one given, already made for it.
    void SetDpi(int dpi) { m_dpi = CDpi(dpi); }
    // Colours, for the tests to look for.
    static Gdiplus::Color LineColor() { return Gdiplus::Color(255, 0, 84, 166); }
    static Gdiplus::Color BadColor() { return Gdiplus::Color(255, 214, 0, 0); }

private:
    struct Metrics;
    Metrics Measure(Gdiplus::Graphics& g) const;
    void DrawAxes(Gdiplus::Graphics& g, const Layout& layout, const Metrics& m) const;
    void DrawTexts(Gdiplus::Graphics& g, const Gdiplus::Rect& bounds, const CTrendSeries& series,
                   const Frame& frame, const Metrics& m) const;
    void DrawOverlay(Gdiplus::Graphics& g, const Layout& layout, const CTrendSeries& series, const Frame& frame) const;
    void DrawText(Gdiplus::Graphics& g, const std::wstring& lines, float x, float y, int align,
                  const Gdiplus::Color& color) const;

    int Margin() const { return m_dpi.Scale(6); }   // 6 pixels at 96 dpi

    std::unique_ptr<Gdiplus::Font> m_font;
    CDpi m_dpi{CDpi::kDefault};
    mutable CTrendPath m_path;   // reused between drawings
};

} // namespace CL
