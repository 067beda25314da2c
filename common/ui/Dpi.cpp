#include "common/ui/Dpi.h"

namespace CL {

namespace {

// Both functions exist from Windows 10 version 1607 on; older systems use
// the screen's DPI and its metrics, which are the same for every window.
using GetDpiForWindowFn = UINT(WINAPI*)(HWND);
using GetSystemMetricsForDpiFn = int(WINAPI*)(int, UINT);

FARPROC User32Function(const char* name)
{
    return ::GetProcAddress(::GetModuleHandleW(L"user32.dll"), name);
}

int ScreenDpi()
{
    const HDC screen = ::GetDC(nullptr);
    const int dpi = screen ? ::GetDeviceCaps(screen, LOGPIXELSY) : CDpi::kDefault;
    if (screen)
        ::ReleaseDC(nullptr, screen);
    return dpi;
}

} // namespace

CDpi CDpi::Of(HWND window)
{
    static const auto forWindow = reinterpret_cast<GetDpiForWindowFn>(User32Function("GetDpiForWindow"));
    if (window && forWindow) {
        const UINT dpi = forWindow(window);
        if (dpi != 0)
            return CDpi(static_cast<int>(dpi));
    }
    return CDpi(ScreenDpi());
}

int CDpi::Scale(int pixels96) const
{
    if (pixels96 == 0)
        return 0;
    const int scaled = ::MulDiv(pixels96, m_dpi, kDefault);
    return scaled == 0 ? (pixels96 > 0 ? 1 : -1) : scaled;
}

int CDpi::Unscale(int pixels) const
{
    return ::MulDiv(pixels, kDefault, m_dpi);
}

int CDpi::Metric(int index) const
{
    static const auto forDpi =
        reinterpret_cast<GetSystemMetricsForDpiFn>(User32Function("GetSystemMetricsForDpi"));
    if (forDpi)
        return forDpi(index, static_cast<UINT>(m_dpi));
    return ::GetSystemMetrics(index);
}

int CDpi::FontHeight(int points) const
{
    return -::MulDiv(points, m_dpi, 72);
}

void CDpi::OnDpiChanged(HWND window, LPARAM suggested)
{
    const RECT* r = reinterpret_cast<const RECT*>(suggested);
    if (!r)
        return;
    ::SetWindowPos(window, nullptr, r->left, r->top, r->right - r->left, r->bottom - r->top,
                   SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace CL
