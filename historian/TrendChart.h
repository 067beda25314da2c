#pragma once
// CTrendChart: the trend chart of the historical data window, a child
// window that draws the values of the last read over time (CTrendRenderer)
// and lets the user look closer:
//   - drag with the left button across the chart: zoom into that time range
//     (Esc during the drag cancels it);
//   - mouse wheel: zoom in or out around the pointer;
//   - drag with the right button, or the Left/Right keys: pan;
//   - double-click, Home or "Show all": the whole range again;
//   - Up/+ and Down/- zoom in and out around the middle;
//   - hover: the nearest value with its time and quality in a tooltip;
//   - right-click (or the context menu key): "Show all", "Copy" (the picture
//     to the clipboard, also Ctrl+C) and "Save as PNG...".
// Painting goes through a memory bitmap and the background is never erased
// apart, so that resizing does not flicker.
#include <windows.h>

#include <memory>
#include <string>

#include "common/Window.h"
#include "common/historian/HistorianValues.h"
#include "historian/TrendRenderer.h"
#include "historian/TrendSeries.h"

namespace CL {

class CTrendChart : public CWindow {
public:
    CTrendChart();
    ~CTrendChart() override;

    // Creates the chart as a child of parent (a tab stop), in the parent's
    // font. Throws CException on failure.
    HWND Create(HWND parent, UINT id);

    // Before a read: no values, and the prompt to read them.
    void Clear(const std::wstring& itemId);
    // The values of a read: drawn whole.
    void SetValues(std::shared_ptr<const CHistorianValues> values, const std::wstring& itemId);

    const CTrendSeries& Series() const { return m_series; }
    double From() const { return m_from; }
    double To() const { return m_to; }
    double WholeFrom() const { return m_wholeFrom; }
    double WholeTo() const { return m_wholeTo; }
    // The text drawn when there is nothing to plot.
    const std::wstring& Message() const { return m_message; }

    // The view: clamped to the whole range and at least kMinSpan long.
    void ShowAll();
    void ZoomTo(double from, double to);
    // Zooms by factor (< 1: in) keeping the time at keep where it is.
    void ZoomAround(double keep, double factor);
    // Moves the view by a fraction of its length (> 0: later).
    void Pan(double fraction);

    // The hovered point and the tooltip's text; npos/empty when none.
    size_t HoverPoint() const { return m_hover; }
    std::wstring HoverText() const;
    HWND Tooltip() const { return m_tooltip; }

    // The layout the chart is drawn with at its present size and view.
    CTrendRenderer::Layout CurrentLayout();

    // The chart as a picture of the window's size, without focus, hover or
    // selection: to the clipboard (as a bitmap) or into a PNG file.
    void CopyToClipboard();
    void SaveAsPng(const std::wstring& path);

    static constexpr double kMinSpan = 10.0 / 86400000.0;   // 10 ms

protected:
    const wchar_t* ClassName() const override { return L"MorvaneTrendChart"; }
    void PrepareClass(WNDCLASSEXW& wc) const override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnPaint();
    void OnPrintClient(HDC dc);
    void OnSize();
    void MakeRenderer();
    // WM_DPICHANGED_AFTERPARENT (Windows 10 1703 and later).
    static constexpr UINT kDpiChangedAfterParent = 0x02E3;
    void OnLButtonDown(POINT at);
    void OnLButtonUp(POINT at);
    void OnLButtonDblClk();
    void OnRButtonDown(POINT at);
    void OnRButtonUp(POINT at);
    void OnMouseMove(POINT at);
    void OnMouseLeave();
    void OnMouseWheel(short delta, POINT screen);
    void OnKeyDown(UINT key);
    void OnContextMenu(POINT screen);
    void OnCaptureChanged();
    void OnShowAll();
    void OnCopy();
    void OnSavePng();

    void Paint(HDC target, const RECT& client);
    CTrendRenderer::Frame MakeFrame(bool forPicture) const;
    void SetView(double from, double to);
    void SetHover(size_t point, POINT at);
    void UpdateTooltip(POINT at);
    void Invalidate();
    void UpdateCaption();
    std::wstring AskPngFile() const;
    SIZE PictureSize() const;

    std::unique_ptr<CTrendRenderer> m_renderer;
    HFONT m_font = nullptr;   // the texts' font (WM_SETFONT); the parent's until one is set
    CTrendSeries m_series;
    std::wstring m_itemId;
    std::wstring m_message;
    double m_wholeFrom = 0.0, m_wholeTo = 1.0;
    double m_from = 0.0, m_to = 1.0;

    CTrendRenderer::Layout m_layout;
    bool m_layoutValid = false;

    enum class Drag { None, Select, Pan };
    Drag m_drag = Drag::None;
    POINT m_dragStart = {};
    double m_selectFrom = 0.0, m_selectTo = 0.0;
    double m_panFrom = 0.0, m_panTo = 0.0;
    bool m_dragMoved = false;

    size_t m_hover = CTrendSeries::npos;
    bool m_tracking = false;
    HWND m_tooltip = nullptr;
    std::wstring m_tipText;
};

} // namespace CL
