#pragma once
// Shift+F10 and the context-menu key ask a control for its menu (a
// WM_CONTEXTMENU without a pointer position, lParam -1), whatever the
// control does with keys itself: some common controls never hand these
// keys to DefWindowProc (a tree view takes Shift+F10, and under Wine no
// control turns the context-menu key into the request).
#include <windows.h>

namespace CL {

// The keys of this control; the hook goes when the control is destroyed.
void EnableContextMenuKeys(HWND control);
// The keys of every control inside the window (a dialog's controls).
void EnableContextMenuKeysOfChildren(HWND window);

} // namespace CL
