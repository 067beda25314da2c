#include "common/ui/SplitBar.h"

#include <windowsx.h>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/ui/Dpi.h"

namespace CL {

void CSplitBar::PrepareClass(WNDCLASSEXW& wc) const
{
    wc.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_SIZENS));
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
}

int CSplitBar::Height() const
{
    return CDpi::Of(Hwnd()).Scale(kHeight);
}

HWND CSplitBar::Create(HWND parent, UINT id)
{
    const RECT place = {0, 0, 10, CDpi::Of(parent).Scale(kHeight)};
    // The text is the bar's name for screen readers.
    if (!CreateEx(parent, kName, WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 0, &place,
                  reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id))))
        ThrowLastError(L"m_splitBar.Create (m_hWnd)");
    return Hwnd();
}

LRESULT CSplitBar::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_LBUTTONDOWN:
        OnLButtonDown(GET_Y_LPARAM(lParam));
        return 0;
    case WM_MOUSEMOVE:
        if (m_dragging)
            OnMouseMove(GET_Y_LPARAM(lParam));
        return 0;
    case WM_LBUTTONUP:
        if (::GetCapture() == Hwnd())
            ::ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        m_dragging = false;
        return 0;
    default:
        return DefaultProc(message, wParam, lParam);
    }
}

void CSplitBar::OnLButtonDown(int y)
{
    Log(3, "CSplitBar::OnLButtonDown" + MV_POS());
    RunReported([&] {
        m_dragging = true;
        m_grab = y;
        ::SetCapture(Hwnd());
    });
}

void CSplitBar::OnMouseMove(int y)
{
    RunReported([&] {
        // The pointer's place in the parent (the bar moves while dragged).
        POINT at = {0, y};
        ::MapWindowPoints(Hwnd(), ::GetParent(Hwnd()), &at, 1);
        if (onDrag)
            onDrag(at.y - m_grab);
    });
}

} // namespace CL
