#pragma once
// CControlHook: what the program adds in front of a control's own window
// procedure (the context-menu keys, the accessible name). Every addition of
// one control goes through one window procedure that finds the control's
// handlers in a table of this process.
//
// Not comctl32's SetWindowSubclass: it keeps its chain in a window property
// and reads it on every message, and under Wine each property read is a
// round trip to the window server (about 50 us, measured). A list view of
// 10,000 rows that got two such subclasses answered its per-row messages
// 70 times slower, which made the editor's bulk commands 10 to 40 times
// slower. The table here is read without leaving the process.
#include <windows.h>

#include <memory>

namespace CL {

// One addition to a control's behaviour.
class IControlHandler {
public:
    virtual ~IControlHandler() = default;
    // A message before the control sees it: true when the handler answered
    // it (its answer in *result) and the control must not see it.
    // WM_NCDESTROY comes here too, but always goes on to the control.
    virtual bool OnMessage(HWND control, UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) = 0;
};

class CControlHook {
public:
    // Puts the handler of this kind in front of the control (replacing one of
    // the same kind); it stays until the control is destroyed. False when
    // the control is not a window of this process.
    static bool Set(HWND control, UINT_PTR kind, std::shared_ptr<IControlHandler> handler);
    // The control's handler of this kind, or null.
    static std::shared_ptr<IControlHandler> Find(HWND control, UINT_PTR kind);
    // How many controls have handlers now (for tests).
    static size_t HookedCount();
};

} // namespace CL
