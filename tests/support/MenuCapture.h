#pragma once
// Reading menus in UI tests.
//   ReadMenu(menu)      - the items of a menu (and of its submenus).
//   TrackedMenuCapture  - while it lives, the first popup menu that this
//                         thread tracks (TrackPopupMenu) is read as soon as
//                         it is up and idle, and then dismissed, so the call
//                         that showed it returns. A menu that is never
//                         recognised is dismissed after the time-out.
#include <windows.h>

#include <string>
#include <vector>

namespace test {

struct MenuEntry {
    std::wstring text;          // L"-" for a separator
    UINT id = 0;
    std::vector<MenuEntry> submenu;

    bool operator==(const MenuEntry&) const = default;
};

std::vector<MenuEntry> ReadMenu(HMENU menu);
// The entries' texts only, in order ("-" for separators).
std::vector<std::wstring> MenuTexts(const std::vector<MenuEntry>& entries);

class TrackedMenuCapture {
public:
    explicit TrackedMenuCapture(UINT timeoutMs = 10000);
    ~TrackedMenuCapture();
    TrackedMenuCapture(const TrackedMenuCapture&) = delete;
    TrackedMenuCapture& operator=(const TrackedMenuCapture&) = delete;

    bool Captured() const { return m_captured; }
    const std::vector<MenuEntry>& Entries() const { return m_entries; }

private:
    static LRESULT CALLBACK HookProc(int code, WPARAM wParam, LPARAM lParam);
    static void CALLBACK TimeoutProc(HWND, UINT, UINT_PTR, DWORD);
    void OnMessage(const CWPSTRUCT& message);

    HHOOK m_hook = nullptr;
    UINT_PTR m_timer = 0;
    HMENU m_initialised = nullptr;
    bool m_captured = false;
    std::vector<MenuEntry> m_entries;
};

} // namespace test
