#include "MenuCapture.h"

#include <gtest/gtest.h>

namespace test {

namespace {
thread_local TrackedMenuCapture* t_capture = nullptr;
constexpr UINT kGetMenuHandle = 0x01E1;   // MN_GETHMENU
}

std::vector<MenuEntry> ReadMenu(HMENU menu)
{
    std::vector<MenuEntry> entries;
    const int count = ::GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
        wchar_t text[256] = {};
        MENUITEMINFOW info = {};
        info.cbSize = sizeof info;
        info.fMask = MIIM_FTYPE | MIIM_ID | MIIM_SUBMENU | MIIM_STRING;
        info.dwTypeData = text;
        info.cch = 256;
        if (!::GetMenuItemInfoW(menu, i, TRUE, &info)) {
            ADD_FAILURE() << "GetMenuItemInfoW failed at " << i;
            continue;
        }
        MenuEntry entry;
        entry.text = (info.fType & MFT_SEPARATOR) ? L"-" : text;
        entry.id = info.hSubMenu ? 0 : info.wID;
        if (info.hSubMenu)
            entry.submenu = ReadMenu(info.hSubMenu);
        entries.push_back(entry);
    }
    return entries;
}

std::vector<std::wstring> MenuTexts(const std::vector<MenuEntry>& entries)
{
    std::vector<std::wstring> texts;
    for (const MenuEntry& entry : entries)
        texts.push_back(entry.text);
    return texts;
}

TrackedMenuCapture::TrackedMenuCapture(UINT timeoutMs)
{
    t_capture = this;
    m_hook = ::SetWindowsHookExW(WH_CALLWNDPROC, &TrackedMenuCapture::HookProc, nullptr, ::GetCurrentThreadId());
    EXPECT_NE(m_hook, nullptr) << "SetWindowsHookExW failed, error " << ::GetLastError();
    m_timer = ::SetTimer(nullptr, 0, timeoutMs, &TrackedMenuCapture::TimeoutProc);
}

TrackedMenuCapture::~TrackedMenuCapture()
{
    if (m_timer)
        ::KillTimer(nullptr, m_timer);
    if (m_hook)
        ::UnhookWindowsHookEx(m_hook);
    t_capture = nullptr;
}

LRESULT CALLBACK TrackedMenuCapture::HookProc(int code, WPARAM wParam, LPARAM lParam)
{
    if (code == HC_ACTION && t_capture)
        t_capture->OnMessage(*reinterpret_cast<const CWPSTRUCT*>(lParam));
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

void CALLBACK TrackedMenuCapture::TimeoutProc(HWND, UINT, UINT_PTR, DWORD)
{
    ADD_FAILURE() << "the tracked menu was not captured in time";
    ::EndMenu();
}

// The owner hears WM_INITMENUPOPUP before the popup shows and WM_ENTERIDLE
// once the menu is up and waiting for input: then the menu window's own
// menu is read and the menu dismissed.
void TrackedMenuCapture::OnMessage(const CWPSTRUCT& message)
{
    if (m_captured)
        return;
    if (message.message == WM_INITMENUPOPUP && !m_initialised && HIWORD(message.lParam) == 0)
        m_initialised = reinterpret_cast<HMENU>(message.wParam);
    if (message.message == WM_ENTERIDLE && message.wParam == MSGF_MENU) {
        HMENU shown = reinterpret_cast<HMENU>(
            ::SendMessageW(reinterpret_cast<HWND>(message.lParam), kGetMenuHandle, 0, 0));
        if (!shown)
            shown = m_initialised;
        if (shown) {
            m_entries = ReadMenu(shown);
            m_captured = true;
            ::EndMenu();
        }
    }
}

} // namespace test
