#include "common/ui/ContextMenuKeys.h"

#include <memory>

#include "common/ui/ControlHook.h"

namespace CL {

namespace {

constexpr UINT_PTR kHookKind = 0x4B4D4E55;   // 'KMNU'

void AskForMenu(HWND control)
{
    ::SendMessageW(control, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(control), static_cast<LPARAM>(-1));
}

class MenuKeys final : public IControlHandler {
public:
    bool OnMessage(HWND control, UINT message, WPARAM wParam, LPARAM, LRESULT* result) override
    {
        *result = 0;
        switch (message) {
        case WM_KEYDOWN:
            // The context-menu key asks on its release, as Windows does; its
            // press and release go no further, so the request comes once.
            return wParam == VK_APPS;
        case WM_KEYUP:
            if (wParam != VK_APPS)
                return false;
            AskForMenu(control);
            return true;
        case WM_SYSKEYDOWN:
            if (wParam != VK_F10 || ::GetKeyState(VK_SHIFT) >= 0)
                return false;
            AskForMenu(control);
            return true;
        default:
            return false;
        }
    }
};

BOOL CALLBACK EnableChild(HWND child, LPARAM)
{
    EnableContextMenuKeys(child);
    return TRUE;
}

} // namespace

void EnableContextMenuKeys(HWND control)
{
    // A control enabled twice keeps one handler, so it asks once.
    if (!CControlHook::Find(control, kHookKind))
        CControlHook::Set(control, kHookKind, std::make_shared<MenuKeys>());
}

void EnableContextMenuKeysOfChildren(HWND window)
{
    ::EnumChildWindows(window, EnableChild, 0);
}

} // namespace CL
