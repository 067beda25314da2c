#pragma once
// CAccessibleName: what a screen reader speaks for a control. The system
// guesses a control's name (the text of the static before it, or for a
// combo box its current text, or nothing for a list); a window tells it
// here instead. The control answers WM_GETOBJECT with the system's object
// for it, its name and description replaced (CAnnotatedAccessible): the way
// that works on every Windows and in Wine, whose IAccPropServices cannot
// annotate a window.
#include <windows.h>

#include <string>

namespace CL {

class CAccessibleName {
public:
    // The control is named by this text.
    static void Set(HWND control, const std::wstring& name);
    // The control is named by the label's text as drawn (without the
    // mnemonic's '&'), read when a screen reader asks; by whenEmpty while
    // the label has no text.
    static void SetLabel(HWND control, HWND label, const std::wstring& whenEmpty = std::wstring());
    // The control's description (spoken after its name and role).
    static void SetDescription(HWND control, const std::wstring& description);

    // Names every edit, combo box, list, tree and date picker of the window
    // after the control before it in the tab order when that is a label or
    // the check box or radio button that enables it. Controls named already
    // keep their name.
    static void SetFromLabels(HWND window);

    // The text a static or button draws: '&' before a mnemonic left out,
    // "&&" drawn as one '&'.
    static std::wstring DrawnText(const std::wstring& text);
};

} // namespace CL
