#include "common/ui/DialogAnchors.h"

#include "common/ui/Dpi.h"

namespace CL {

void CDialogAnchors::Add(int controlId, unsigned anchors)
{
    m_controls.push_back(Control{controlId, anchors, RECT{}});
}

void CDialogAnchors::Capture(HWND dialog)
{
    m_dialog = dialog;
    RECT client = {};
    ::GetClientRect(dialog, &client);
    m_client = SIZE{client.right, client.bottom};
    RECT window = {};
    ::GetWindowRect(dialog, &window);
    m_window = SIZE{window.right - window.left, window.bottom - window.top};
    m_dpi = CDpi::Of(dialog).Value();
    for (Control& control : m_controls) {
        const HWND child = ::GetDlgItem(dialog, control.id);
        ::GetWindowRect(child, &control.rect);
        ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.rect), 2);
    }
}

void CDialogAnchors::OnSize(int width, int height)
{
    if (!m_dialog || width <= 0 || height <= 0)
        return;
    FollowDpi();
    const int dx = width - m_client.cx;
    const int dy = height - m_client.cy;
    HDWP positions = ::BeginDeferWindowPos(static_cast<int>(m_controls.size()));
    for (const Control& control : m_controls) {
        RECT r = control.rect;
        if (control.anchors & kRight) {
            r.right += dx;
            if (!(control.anchors & kLeft))
                r.left += dx;
        }
        if (control.anchors & kBottom) {
            r.bottom += dy;
            if (!(control.anchors & kTop))
                r.top += dy;
        }
        const HWND child = ::GetDlgItem(m_dialog, control.id);
        if (positions)
            positions = ::DeferWindowPos(positions, child, nullptr, r.left, r.top, r.right - r.left,
                                         r.bottom - r.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (positions)
        ::EndDeferWindowPos(positions);
    ::InvalidateRect(m_dialog, nullptr, TRUE);
}

void CDialogAnchors::FollowDpi()
{
    const int dpi = CDpi::Of(m_dialog).Value();
    if (dpi == m_dpi || m_dpi == 0)
        return;
    const auto scale = [&](LONG& length) { length = ::MulDiv(length, dpi, m_dpi); };
    for (LONG* length : {&m_client.cx, &m_client.cy, &m_window.cx, &m_window.cy})
        scale(*length);
    for (Control& control : m_controls)
        for (LONG* edge : {&control.rect.left, &control.rect.top, &control.rect.right, &control.rect.bottom})
            scale(*edge);
    m_dpi = dpi;
}

void CDialogAnchors::OnGetMinMaxInfo(MINMAXINFO* info) const
{
    if (m_window.cx > 0) {
        info->ptMinTrackSize.x = m_window.cx;
        info->ptMinTrackSize.y = m_window.cy;
    }
}

bool CDialogAnchors::OnMessage(UINT message, LPARAM lParam)
{
    if (message == WM_SIZE) {
        OnSize(LOWORD(lParam), HIWORD(lParam));
        return true;
    }
    if (message == WM_GETMINMAXINFO) {
        OnGetMinMaxInfo(reinterpret_cast<MINMAXINFO*>(lParam));
        return true;
    }
    return false;
}

} // namespace CL
