#pragma once
// CDpi: the one place where sizes given in pixels at 96 dpi become pixels
// at a window's DPI. Windows ask it for column widths, bar widths, image
// sizes, pen widths and font heights instead of computing them.
//
// The DPI is the window's own (GetDpiForWindow, which follows the monitor
// the window is on for a per-monitor aware program) where the system has
// it, and the screen's (LOGPIXELSY) on Windows before 10 version 1607.
// A window re-asks after WM_DPICHANGED, which it handles like a resize:
// OnDpiChanged moves it to the rectangle the system suggests, and the
// WM_SIZE that follows lays it out again at the new DPI.
#include <windows.h>

namespace CL {

class CDpi {
public:
    static constexpr int kDefault = 96;

    explicit CDpi(int dpi) : m_dpi(dpi > 0 ? dpi : kDefault) {}
    // The DPI of the window, or of the screen for a null window.
    static CDpi Of(HWND window);

    int Value() const { return m_dpi; }
    // A length in pixels at 96 dpi, at this DPI (rounded; 1 stays at least 1).
    int Scale(int pixels96) const;
    // A length at this DPI, in pixels at 96 dpi.
    int Unscale(int pixels) const;
    // A system metric (SM_CXSMICON, SM_CXVSCROLL, ...) at this DPI.
    int Metric(int index) const;
    // A font of the given height in points at this DPI (the lfHeight that
    // CreateFontIndirect wants).
    int FontHeight(int points) const;

    // WM_DPICHANGED: moves the window to the suggested rectangle (lParam);
    // its WM_SIZE then lays it out again.
    static void OnDpiChanged(HWND window, LPARAM suggested);

private:
    int m_dpi;
};

} // namespace CL
