#include "common/ui/FrameBars.h"

#include <algorithm>

#include "common/ui/Dpi.h"

namespace CL {

namespace {

std::wstring LoadResourceString(int id)
{
    // LoadStringW with a zero length hands out the resource's own text,
    // which is not terminated; its length comes back as the result.
    const wchar_t* text = nullptr;
    const int length = ::LoadStringW(::GetModuleHandleW(nullptr), static_cast<UINT>(id),
                                     reinterpret_cast<LPWSTR>(&text), 0);
    return length > 0 && text ? std::wstring(text, static_cast<size_t>(length)) : std::wstring();
}

int BarHeight(HWND bar)
{
    RECT rc = {};
    ::GetWindowRect(bar, &rc);
    return rc.bottom - rc.top;
}

} // namespace

void CFrameBars::Create(HWND frame, const std::vector<ToolButton>& buttons, UINT toolbarId, UINT statusId)
{
    m_frame = frame;
    const HINSTANCE instance = ::GetModuleHandleW(nullptr);
    m_toolbar = ::CreateWindowExW(0, TOOLBARCLASSNAMEW, nullptr,
                                  WS_CHILD | WS_VISIBLE | TBSTYLE_FLAT | TBSTYLE_TOOLTIPS | CCS_TOP,
                                  0, 0, 0, 0, frame, reinterpret_cast<HMENU>(static_cast<UINT_PTR>(toolbarId)),
                                  instance, nullptr);
    ::SendMessageW(m_toolbar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    const int stdOffset = 0;
    const int viewOffset = SetImages();

    std::vector<TBBUTTON> tb;
    tb.reserve(buttons.size());
    for (const ToolButton& button : buttons) {
        TBBUTTON b = {};
        if (button.command == 0) {
            b.fsStyle = BTNS_SEP;
        } else {
            b.iBitmap = button.image >= kViewImage ? viewOffset + (button.image - kViewImage)
                                                   : stdOffset + button.image;
            b.idCommand = button.command;
            b.fsState = TBSTATE_ENABLED;
            b.fsStyle = BTNS_BUTTON;
        }
        tb.push_back(b);
    }
    ::SendMessageW(m_toolbar, TB_ADDBUTTONSW, tb.size(), reinterpret_cast<LPARAM>(tb.data()));
    ::SendMessageW(m_toolbar, TB_AUTOSIZE, 0, 0);

    m_status = ::CreateWindowExW(0, STATUSCLASSNAMEW, m_idle.c_str(), WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP,
                                 0, 0, 0, 0, frame, reinterpret_cast<HMENU>(static_cast<UINT_PTR>(statusId)),
                                 instance, nullptr);
}

int CFrameBars::SetImages()
{
    const CDpi dpi = CDpi::Of(m_frame);
    int viewOffset = 0;
    m_images = CToolbarImages::Make(dpi.Scale(16), &viewOffset);
    m_imageDpi = dpi.Value();
    ::SendMessageW(m_toolbar, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(m_images.get()));
    return viewOffset;
}

void CFrameBars::OnDpiChanged()
{
    if (!m_toolbar || CDpi::Of(m_frame).Value() == m_imageDpi)
        return;
    // The toolbar lets go of the old list before it is destroyed.
    UniqueImageList old = std::move(m_images);
    SetImages();
    ::SendMessageW(m_toolbar, TB_AUTOSIZE, 0, 0);
}

bool CFrameBars::ToolbarVisible() const
{
    return m_toolbar && (::GetWindowLongW(m_toolbar, GWL_STYLE) & WS_VISIBLE);
}

bool CFrameBars::StatusBarVisible() const
{
    return m_status && (::GetWindowLongW(m_status, GWL_STYLE) & WS_VISIBLE);
}

void CFrameBars::ShowToolbar(bool show)
{
    ::ShowWindow(m_toolbar, show ? SW_SHOWNOACTIVATE : SW_HIDE);
}

void CFrameBars::ShowStatusBar(bool show)
{
    ::ShowWindow(m_status, show ? SW_SHOWNOACTIVATE : SW_HIDE);
}

RECT CFrameBars::Layout()
{
    RECT rc = {};
    ::GetClientRect(m_frame, &rc);
    if (ToolbarVisible()) {
        ::SendMessageW(m_toolbar, TB_AUTOSIZE, 0, 0);
        rc.top += BarHeight(m_toolbar);
    }
    if (StatusBarVisible()) {
        ::SendMessageW(m_status, WM_SIZE, 0, 0);
        SetParts();
        rc.bottom -= BarHeight(m_status);
    }
    if (rc.bottom < rc.top)
        rc.bottom = rc.top;
    return rc;
}

void CFrameBars::SetStatusText(const std::wstring& text)
{
    if (m_status)
        ::SendMessageW(m_status, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void CFrameBars::SetIdleText(const std::wstring& text)
{
    m_idle = text;
    SetStatusText(m_idle);
}

void CFrameBars::SetPanes(std::vector<int> widths96)
{
    m_paneWidths = std::move(widths96);
    SetParts();
}

void CFrameBars::SetParts()
{
    if (!m_status || m_paneWidths.empty())
        return;
    RECT client = {};
    ::GetClientRect(m_status, &client);
    const CDpi dpi = CDpi::Of(m_status);
    // Each part is given by its right edge; the last one reaches the end.
    std::vector<int> edges(m_paneWidths.size() + 1, -1);
    int right = client.right;
    for (size_t pane = m_paneWidths.size(); pane > 0; --pane) {
        right -= dpi.Scale(m_paneWidths[pane - 1]);
        edges[pane - 1] = std::max(0, right);
    }
    ::SendMessageW(m_status, SB_SETPARTS, edges.size(), reinterpret_cast<LPARAM>(edges.data()));
}

void CFrameBars::SetPaneText(int pane, const std::wstring& text)
{
    if (m_status)
        ::SendMessageW(m_status, SB_SETTEXTW, static_cast<WPARAM>(pane), reinterpret_cast<LPARAM>(text.c_str()));
}

bool CFrameBars::OnNotify(const NMHDR* header, LRESULT* result)
{
    if (!header)
        return false;
    if (header->code == TTN_GETDISPINFOW) {
        // The toolbar's tooltips ask with the button's command id.
        auto* info = reinterpret_cast<NMTTDISPINFOW*>(const_cast<NMHDR*>(header));
        if (info->uFlags & TTF_IDISHWND)
            return false;
        m_tipBuffer = Tooltip(static_cast<int>(header->idFrom));
        info->lpszText = m_tipBuffer.data();
        info->hinst = nullptr;
        *result = 0;
        return true;
    }
    if (header->hwndFrom == m_toolbar && header->code == TBN_HOTITEMCHANGE) {
        const auto* hot = reinterpret_cast<const NMTBHOTITEM*>(header);
        SetStatusText((hot->dwFlags & HICF_LEAVING) ? m_idle : Prompt(hot->idNew));
        *result = 0;
        return true;
    }
    return false;
}

void CFrameBars::OnMenuSelect(WPARAM wParam, LPARAM lParam)
{
    const UINT flags = HIWORD(wParam);
    if (flags == 0xFFFF && lParam == 0) {   // the menu closed
        SetStatusText(m_idle);
        return;
    }
    if (flags & (MF_POPUP | MF_SEPARATOR)) {
        SetStatusText(std::wstring());
        return;
    }
    SetStatusText(Prompt(LOWORD(wParam)));
}

std::wstring CFrameBars::Prompt(int command)
{
    const std::wstring text = LoadResourceString(command);
    return text.substr(0, text.find(L'\n'));
}

std::wstring CFrameBars::Tooltip(int command)
{
    const std::wstring text = LoadResourceString(command);
    const size_t newline = text.find(L'\n');
    return newline == std::wstring::npos ? std::wstring() : text.substr(newline + 1);
}

} // namespace CL
