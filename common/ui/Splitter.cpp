#include "common/ui/Splitter.h"

#include <windowsx.h>

#include <algorithm>

#include "common/ui/Dpi.h"

namespace CL {

HWND CSplitter::Create(HWND parent, UINT id, int position)
{
    m_position = position;
    // The text is the bar's name for screen readers.
    return CreateEx(parent, kName, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT, nullptr,
                    reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)));
}

void CSplitter::PrepareClass(WNDCLASSEXW& wc) const
{
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    wc.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_SIZEWE));
}

void CSplitter::SetPanes(HWND left, HWND right)
{
    m_left = left;
    m_right = right;
    LayoutPanes();
}

bool CSplitter::SetPosition(int position)
{
    position = Clamp(position);
    if (position == m_position)
        return true;
    if (onSplitterMove && !onSplitterMove(position))
        return false;
    m_position = position;
    LayoutPanes();
    return true;
}

int CSplitter::BarWidth() const
{
    return CDpi::Of(Hwnd()).Scale(kBarWidth);
}

int CSplitter::Clamp(int position) const
{
    RECT client = {};
    ::GetClientRect(Hwnd(), &client);
    return std::max(0, std::min(position, static_cast<int>(client.right) - BarWidth()));
}

void CSplitter::LayoutPanes()
{
    if (!IsWindow())
        return;
    RECT client = {};
    ::GetClientRect(Hwnd(), &client);
    // The bar stays inside the window when it shrinks.
    const int barWidth = BarWidth();
    const int bar = std::max(0, std::min(m_position, static_cast<int>(client.right) - barWidth));
    if (m_left)
        ::MoveWindow(m_left, 0, 0, bar, client.bottom, TRUE);
    if (m_right)
        ::MoveWindow(m_right, bar + barWidth, 0, std::max(0, static_cast<int>(client.right) - bar - barWidth),
                     client.bottom, TRUE);
}

bool CSplitter::OnBar(int x) const
{
    return x >= m_position && x < m_position + BarWidth();
}

void CSplitter::OnLButtonDown(int x)
{
    if (!OnBar(x))
        return;
    m_dragging = true;
    m_grabOffset = x - m_position;
    ::SetCapture(Hwnd());
}

void CSplitter::OnMouseMove(int x)
{
    if (m_dragging)
        SetPosition(x - m_grabOffset);
}

void CSplitter::OnLButtonUp()
{
    if (!m_dragging)
        return;
    m_dragging = false;
    ::ReleaseCapture();
}

LRESULT CSplitter::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_SIZE:
        LayoutPanes();
        return 0;
    case WM_LBUTTONDOWN:
        OnLButtonDown(GET_X_LPARAM(lParam));
        return 0;
    case WM_MOUSEMOVE:
        OnMouseMove(GET_X_LPARAM(lParam));
        return 0;
    case WM_LBUTTONUP:
        OnLButtonUp();
        return 0;
    case WM_CAPTURECHANGED:
        m_dragging = false;
        return 0;
    // The panes' notifications belong to the owner.
    case WM_NOTIFY:
    case WM_COMMAND:
    case WM_CONTEXTMENU:
        return ::SendMessageW(::GetParent(Hwnd()), message, wParam, lParam);
    default:
        return DefaultProc(message, wParam, lParam);
    }
}

} // namespace CL
