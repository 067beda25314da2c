#include "common/ui/ContextMenuKeys.h"

#include <commctrl.h>

namespace CL {

namespace {

constexpr UINT_PTR kSubclassId = 0x4B4D4E55;   // 'KMNU'

void AskForMenu(HWND control)
{
    ::SendMessageW(control, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(control), static_cast<LPARAM>(-1));
}

LRESULT CALLBACK KeysProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR)
{
    switch (message) {
    case WM_KEYDOWN:
        // The context-menu key asks on its release, as Windows does; its
        // press and release go no further, so the request comes once.
        if (wParam == VK_APPS)
            return 0;
        break;
    case WM_KEYUP:
        if (wParam == VK_APPS) {
            AskForMenu(control);
            return 0;
        }
        break;
    case WM_SYSKEYDOWN:
        if (wParam == VK_F10 && ::GetKeyState(VK_SHIFT) < 0) {
            AskForMenu(control);
            return 0;
        }
        break;
    case WM_NCDESTROY:
        ::RemoveWindowSubclass(control, KeysProc, id);
        break;
    default:
        break;
    }
    return ::DefSubclassProc(control, message, wParam, lParam);
}

BOOL CALLBACK EnableChild(HWND child, LPARAM)
{
    EnableContextMenuKeys(child);
    return TRUE;
}

} // namespace

void EnableContextMenuKeys(HWND control)
{
    // Setting the same procedure and id again only replaces its data, so a
    // control enabled twice asks once.
    ::SetWindowSubclass(control, KeysProc, kSubclassId, 0);
}

void EnableContextMenuKeysOfChildren(HWND window)
{
    ::EnumChildWindows(window, EnableChild, 0);
}

} // namespace CL
