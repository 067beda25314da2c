#include "WindowGeometry.h"

#include <commctrl.h>

#include <cwctype>

#include "common/ui/Dpi.h"
#include "support/TestSupport.h"

namespace test {

namespace {

std::wstring ClassOf(HWND hwnd)
{
    wchar_t name[128] = {};
    ::GetClassNameW(hwnd, name, 128);
    return name;
}

// Controls whose child windows are their own inner parts (a list's header,
// a combo box's edit and list, a picker's up-down, the edit of a tree's
// rename in place): the user sees one control. Every other window's
// children are controls of their own: the program's containers (the
// editor's splitter, a child dialog such as the explorer's filter bar) and
// what the program puts into a common control (the Cancel button in a
// status bar).
bool HasOnlyInnerParts(const std::wstring& className)
{
    for (const wchar_t* leaf : {WC_LISTVIEWW, WC_TREEVIEWW, WC_HEADERW, WC_COMBOBOXW, WC_COMBOBOXEXW, DATETIMEPICK_CLASSW,
                                MONTHCAL_CLASSW, WC_EDITW, WC_LISTBOXW, UPDOWN_CLASSW, WC_IPADDRESSW, TRACKBAR_CLASSW,
                                L"RichEdit20W", L"RICHEDIT50W"})
        if (::lstrcmpiW(className.c_str(), leaf) == 0)
            return true;
    return false;
}

void Collect(HWND parent, std::vector<ControlInfo>& controls)
{
    for (HWND child = ::GetWindow(parent, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (!::IsWindowVisible(child))
            continue;
        ControlInfo c;
        c.hwnd = child;
        c.parent = parent;
        c.id = ::GetDlgCtrlID(child);
        c.className = ClassOf(child);
        c.style = static_cast<LONG>(::GetWindowLongPtrW(child, GWL_STYLE));
        c.text = WindowText(child);
        ::GetWindowRect(child, &c.rect);
        ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&c.rect), 2);
        controls.push_back(c);
        if (!HasOnlyInnerParts(c.className))
            Collect(child, controls);
    }
}

int Width(const RECT& r)
{
    return r.right - r.left;
}

int Height(const RECT& r)
{
    return r.bottom - r.top;
}

} // namespace

std::vector<ControlInfo> VisibleControls(HWND window)
{
    std::vector<ControlInfo> controls;
    Collect(window, controls);
    return controls;
}

bool IsClass(const ControlInfo& c, const wchar_t* className)
{
    return ::lstrcmpiW(c.className.c_str(), className) == 0;
}

LONG ButtonType(const ControlInfo& c)
{
    return c.style & BS_TYPEMASK;
}

bool IsGroupBox(const ControlInfo& c)
{
    return IsClass(c, L"Button") && ButtonType(c) == BS_GROUPBOX;
}

HWND UpDownBuddy(const ControlInfo& c)
{
    if (!IsClass(c, UPDOWN_CLASSW))
        return nullptr;
    return reinterpret_cast<HWND>(::SendMessageW(c.hwnd, UDM_GETBUDDY, 0, 0));
}

std::wstring DrawnText(const std::wstring& text)
{
    std::wstring drawn;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&' && i + 1 < text.size())
            ++i;
        drawn += text[i];
    }
    return drawn;
}

wchar_t MnemonicOf(const std::wstring& text)
{
    for (size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == L'&') {
            if (text[i + 1] == L'&') {
                ++i;
                continue;
            }
            return static_cast<wchar_t>(std::towlower(text[i + 1]));
        }
    }
    return 0;
}

SIZE TextExtent(HWND control, const std::wstring& text, int wrapWidth)
{
    const HDC dc = ::GetDC(control);
    HGDIOBJ font = reinterpret_cast<HGDIOBJ>(::SendMessageW(control, WM_GETFONT, 0, 0));
    const HGDIOBJ old = ::SelectObject(dc, font ? font : ::GetStockObject(SYSTEM_FONT));
    RECT r = {0, 0, wrapWidth, 0};
    const UINT format = DT_CALCRECT | DT_NOPREFIX | (wrapWidth > 0 ? DT_WORDBREAK : DT_SINGLELINE);
    ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &r, format);
    ::SelectObject(dc, old);
    ::ReleaseDC(control, dc);
    return SIZE{r.right - r.left, r.bottom - r.top};
}

std::wstring TextDoesNotFit(const ControlInfo& c)
{
    if (c.text.empty())
        return L"";
    const CL::CDpi dpi = CL::CDpi::Of(c.hwnd);
    const std::wstring text = DrawnText(c.text);
    const bool isButton = IsClass(c, L"Button");
    int room = Width(c.rect);
    bool wraps = false;
    if (IsClass(c, L"Static")) {
        const LONG type = c.style & SS_TYPEMASK;
        if (type != SS_LEFT && type != SS_RIGHT && type != SS_CENTER && type != SS_LEFTNOWORDWRAP)
            return L"";   // icons, frames, bitmaps
        if (c.style & SS_ELLIPSISMASK)
            return L"";   // shortened on purpose, the whole text elsewhere
        wraps = type != SS_LEFTNOWORDWRAP;
    } else if (isButton) {
        switch (ButtonType(c)) {
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_3STATE:
        case BS_AUTO3STATE:
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            // The box or circle and the gap after it.
            room -= dpi.Metric(SM_CXMENUCHECK) + dpi.Scale(4);
            break;
        case BS_GROUPBOX:
            room -= dpi.Scale(16);   // the frame's corners beside the title
            break;
        default:
            room -= 2 * dpi.Metric(SM_CXEDGE) + dpi.Scale(4);   // the 3D border and the focus rectangle
            break;
        }
        wraps = (c.style & BS_MULTILINE) != 0;
    } else {
        return L"";
    }
    if (wraps) {
        const SIZE wrapped = TextExtent(c.hwnd, text, room);
        const SIZE oneLine = TextExtent(c.hwnd, text);
        // A word wider than the control is cut, however tall it is.
        if (wrapped.cx > room)
            return L"a word is wider than the control";
        const int height = isButton && !IsGroupBox(c) ? Height(c.rect) - 2 * dpi.Metric(SM_CYEDGE) : Height(c.rect);
        if (wrapped.cy > height && oneLine.cx > room)
            return L"wrapped text is " + std::to_wstring(wrapped.cy) + L" pixels high in " + std::to_wstring(height);
        return L"";
    }
    const SIZE extent = TextExtent(c.hwnd, text);
    if (extent.cx > room)
        return L"text is " + std::to_wstring(extent.cx) + L" pixels wide in " + std::to_wstring(room);
    return L"";
}

SIZE WorkAreaFor(int dpi)
{
    // 1366 x 768 at 120 dpi and 1920 x 1080 at 144 dpi, each with a taskbar
    // 40 pixels at 96 dpi high at the bottom (50 and 60 pixels); at 96 dpi
    // a 1024 x 768 screen, at 192 dpi a 2560 x 1440 screen.
    if (dpi <= 96)
        return SIZE{1024, 768 - 40};
    if (dpi <= 120)
        return SIZE{1366, 768 - 50};
    if (dpi <= 144)
        return SIZE{1920, 1080 - 60};
    return SIZE{2560, 1440 - 80};
}

} // namespace test
