#include "common/DialogAnchors.h"

namespace CL {

void CDialogAnchors::Capture(HWND dialog)
{
    m_dialog = dialog;
    RECT client;
    ::GetClientRect(dialog, &client);
    m_client = {client.right, client.bottom};
    RECT window;
    ::GetWindowRect(dialog, &window);
    m_window = {window.right - window.left, window.bottom - window.top};
    m_entries.clear();
}

void CDialogAnchors::Anchor(int controlId, unsigned how)
{
    const HWND control = ::GetDlgItem(m_dialog, controlId);
    if (!control)
        return;
    RECT place;
    ::GetWindowRect(control, &place);
    ::MapWindowPoints(nullptr, m_dialog, reinterpret_cast<POINT*>(&place), 2);
    m_entries.push_back({control, place, how});
}

void CDialogAnchors::Arrange() const
{
    if (!m_dialog || m_entries.empty())
        return;
    RECT client;
    ::GetClientRect(m_dialog, &client);
    const int dx = client.right - m_client.cx;
    const int dy = client.bottom - m_client.cy;
    HDWP positions = ::BeginDeferWindowPos(static_cast<int>(m_entries.size()));
    for (const Entry& e : m_entries) {
        RECT r = e.place;
        if (e.how & kMoveX)
            ::OffsetRect(&r, dx, 0);
        if (e.how & kMoveY)
            ::OffsetRect(&r, 0, dy);
        if (e.how & kGrowX)
            r.right += dx;
        if (e.how & kGrowY)
            r.bottom += dy;
        if (positions)
            positions = ::DeferWindowPos(positions, e.control, nullptr, r.left, r.top, r.right - r.left,
                                         r.bottom - r.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (positions)
        ::EndDeferWindowPos(positions);
    ::InvalidateRect(m_dialog, nullptr, TRUE);
}

void CDialogAnchors::LimitSize(MINMAXINFO* info) const
{
    if (m_window.cx > 0) {
        info->ptMinTrackSize.x = m_window.cx;
        info->ptMinTrackSize.y = m_window.cy;
    }
}

} // namespace CL
