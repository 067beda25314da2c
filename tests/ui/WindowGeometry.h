#pragma once
// Geometry of a window's controls as the user sees them: which controls
// there are, the room each has for its text, and the text's size in the
// control's own font. Used by the layout tests at every DPI.
#include <windows.h>

#include <string>
#include <vector>

namespace test {

struct ControlInfo {
    HWND hwnd = nullptr;
    HWND parent = nullptr;
    int id = 0;
    std::wstring className;
    LONG style = 0;
    std::wstring text;
    RECT rect = {};   // in the parent's client coordinates
};

// The visible controls of a window: every descendant, parents before their
// children (the controls in the editor's splitter, in a child dialog such
// as the explorer's filter bar, a button the program puts into a status
// bar); not the inner parts of common controls (a list's header, a combo
// box's edit), which the user sees as one control.
std::vector<ControlInfo> VisibleControls(HWND window);

bool IsClass(const ControlInfo& c, const wchar_t* className);
LONG ButtonType(const ControlInfo& c);
bool IsGroupBox(const ControlInfo& c);
// An up-down control's buddy, or null: the pair is one control to the user
// (the up-down sits on the buddy's right border and is worked by the arrow
// keys of the buddy).
HWND UpDownBuddy(const ControlInfo& c);

// The text as drawn: "&&" is one ampersand, a single '&' marks the mnemonic.
std::wstring DrawnText(const std::wstring& text);
// The mnemonic letter (lower case), or 0.
wchar_t MnemonicOf(const std::wstring& text);

// The size of a text in the window's font; with a width, wrapped at words
// within it.
SIZE TextExtent(HWND control, const std::wstring& text, int wrapWidth = 0);

// Why a control's text does not fit it, or empty when it does.
std::wstring TextDoesNotFit(const ControlInfo& c);

// The screens a window must fit at a DPI: the work area (without a
// taskbar at the bottom) of the screen named for it.
SIZE WorkAreaFor(int dpi);

} // namespace test
