// Every window and dialog driven by the keyboard alone, from opening to
// closing: Tab reaches every control that takes input and comes round to
// where it started, each label's mnemonic (Alt+letter) moves the focus to
// its control, the mnemonics of a window are unique, every menu that the
// right mouse button shows also opens by Shift+F10 and the context-menu key,
// each entry of a menu bar opens its menu by Alt and its letter, the
// mnemonics of every menu are unique, and Esc (dialogs) or Alt+F4 (frame
// windows) closes the window. Keys go to
// the focused control the way the message loop hands them over: the window's
// own translation (a frame's accelerators) first, then IsDialogMessage for a
// dialog, else dispatched.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "WindowCatalog.h"
#include "WindowGeometry.h"
#include "support/MenuCapture.h"
#include "common/Text.h"

namespace {

using test::ControlInfo;

bool IsDialog(HWND window)
{
    wchar_t name[16] = {};
    ::GetClassNameW(window, name, 16);
    return std::wstring(name) == L"#32770";
}

class KeyboardWalk : public testing::TestWithParam<test::WindowEntry> {
protected:
    void SetUp() override
    {
        m_opened = GetParam().open();
        ASSERT_TRUE(m_opened && m_opened->Hwnd()) << "could not open " << GetParam().name;
        ::ShowWindow(Window(), SW_SHOW);
        ::SetForegroundWindow(Window());
        ::SetActiveWindow(Window());
        Pump();
        if (!::IsChild(Window(), ::GetFocus())) {
            // The first tab stop, as the dialog manager and the frames choose it.
            const HWND first = IsDialog(Window()) ? ::GetNextDlgTabItem(Window(), nullptr, FALSE) : nullptr;
            ::SetFocus(first ? first : Window());
            Pump();
        }
    }

    HWND Window() const { return m_opened->Hwnd(); }

    // A key pressed and released on the focused window.
    void Press(UINT key, bool alt = false)
    {
        const HWND target = ::GetFocus() ? ::GetFocus() : Window();
        const LPARAM down = 1 | (alt ? (1 << 29) : 0);
        // The thread's key state as while the keys are held (accelerators
        // and the dialog manager read it).
        BYTE keys[256] = {}, held[256] = {};
        ::GetKeyboardState(keys);
        std::copy(std::begin(keys), std::end(keys), std::begin(held));
        held[key] = 0x80;
        if (alt)
            held[VK_MENU] = 0x80;
        ::SetKeyboardState(held);
        Deliver(MSG{target, static_cast<UINT>(alt ? WM_SYSKEYDOWN : WM_KEYDOWN), key, down, 0, {}});
        ::SetKeyboardState(keys);
        Deliver(MSG{target, static_cast<UINT>(alt ? WM_SYSKEYUP : WM_KEYUP), key,
                    static_cast<LPARAM>(down | (1u << 30) | (1u << 31)), 0, {}});
        Pump();
    }

    // A key pressed and released with other keys held all the while (Shift
    // stays down over the release of Shift+F10: a bare F10's release opens
    // the menu bar).
    void PressHeld(UINT key, UINT heldKey, UINT downMessage, UINT upMessage)
    {
        const HWND target = ::GetFocus() ? ::GetFocus() : Window();
        BYTE keys[256] = {}, held[256] = {};
        ::GetKeyboardState(keys);
        std::copy(std::begin(keys), std::end(keys), std::begin(held));
        held[key] = 0x80;
        held[heldKey] = 0x80;
        ::SetKeyboardState(held);
        Deliver(MSG{target, downMessage, key, 1, 0, {}});
        held[key] = 0;
        ::SetKeyboardState(held);
        Deliver(MSG{target, upMessage, key, static_cast<LPARAM>(1u | (1u << 30) | (1u << 31)), 0, {}});
        ::SetKeyboardState(keys);
        Pump();
    }

    // Alt and a letter: the mnemonic, as the keyboard sends it. The key
    // goes down with Alt held (WM_SYSKEYDOWN, which a frame's own
    // translation may take), its translation posts WM_SYSCHAR (which the
    // dialog manager or the menu bar takes), and the key comes up.
    void PressMnemonic(wchar_t letter)
    {
        const HWND target = ::GetFocus() ? ::GetFocus() : Window();
        const UINT key = static_cast<UINT>(::VkKeyScanW(letter) & 0xFF);
        const LPARAM down = 1 | (1 << 29);
        BYTE keys[256] = {}, held[256] = {};
        ::GetKeyboardState(keys);
        std::copy(std::begin(keys), std::end(keys), std::begin(held));
        held[key] = 0x80;
        held[VK_MENU] = 0x80;
        ::SetKeyboardState(held);
        Deliver(MSG{target, WM_SYSKEYDOWN, key, down, 0, {}});
        Pump();
        ::SetKeyboardState(keys);
        const HWND now = ::GetFocus() ? ::GetFocus() : Window();
        Deliver(MSG{now, WM_SYSKEYUP, key, static_cast<LPARAM>(down | (1u << 30) | (1u << 31)), 0, {}});
        Pump();
    }

    void Deliver(MSG msg)
    {
        if (m_opened->translate && ::IsWindow(Window()) && m_opened->translate(msg))
            return;
        if (IsDialog(Window()) && ::IsWindow(Window()) && ::IsDialogMessageW(Window(), &msg))
            return;
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }

    void Pump()
    {
        MSG msg;
        for (int i = 0; i < 200 && ::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE); ++i) {
            if (m_opened->translate && ::IsWindow(Window()) && m_opened->translate(msg))
                continue;
            if (IsDialog(Window()) && ::IsWindow(Window()) && ::IsDialogMessageW(Window(), &msg))
                continue;
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }

    // The window's control that has the focus (the focus may be inside a
    // control, e.g. a combo box's edit): the focused window or the first of
    // its parents that is one of the window's controls.
    HWND FocusedControl() const
    {
        const std::vector<ControlInfo> controls = test::VisibleControls(Window());
        for (HWND focus = ::GetFocus(); focus && focus != Window(); focus = ::GetParent(focus)) {
            for (const ControlInfo& c : controls)
                if (c.hwnd == focus)
                    return focus;
        }
        return ::GetFocus();
    }

    std::unique_ptr<test::OpenedWindow> m_opened;
};

bool IsStatusBar(HWND window)
{
    wchar_t name[64] = {};
    ::GetClassNameW(window, name, 64);
    return ::lstrcmpiW(name, STATUSCLASSNAMEW) == 0;
}

// Controls that take input: what Tab must reach (one radio button of a
// group is enough; group boxes and labels take none).
bool TakesInput(const ControlInfo& c)
{
    if (!::IsWindowEnabled(c.hwnd))
        return false;
    // A read-only field outside the tab order shows a value; it takes none.
    if (test::IsClass(c, L"Edit") && (c.style & ES_READONLY) && !(c.style & WS_TABSTOP))
        return false;
    // The Cancel button that long work shows in a status bar is worked by
    // the mouse: while the work runs, the keyboard's only key is Esc, which
    // cancels the same way (the progress text says so).
    if (test::IsClass(c, L"Button") && IsStatusBar(::GetParent(c.hwnd)))
        return false;
    // Containers take none themselves: their controls do (a child dialog,
    // such as the explorer's filter bar, is passed through by Tab).
    if (test::IsClass(c, L"Static") || test::IsGroupBox(c) || test::IsClass(c, STATUSCLASSNAMEW) ||
        test::IsClass(c, TOOLBARCLASSNAMEW) || test::IsClass(c, L"MorvaneSplitter") ||
        test::IsClass(c, L"MorvaneSplitBar") || IsDialog(c.hwnd))
        return false;
    // An up-down with a buddy is worked by the buddy's arrow keys.
    if (test::UpDownBuddy(c))
        return false;
    return true;
}

// The mnemonics of one menu level that more than one entry uses, each with
// the entries' texts ("'u': &Undo, D&uplicate...").
std::vector<std::string> SharedMnemonics(const std::vector<test::MenuEntry>& entries)
{
    std::map<wchar_t, std::vector<std::wstring>> byKey;
    for (const test::MenuEntry& entry : entries) {
        if (const wchar_t key = test::MnemonicOf(entry.text))
            byKey[key].push_back(entry.text);
    }
    std::vector<std::string> shared;
    for (const auto& [key, texts] : byKey) {
        if (texts.size() < 2)
            continue;
        std::string line = std::string("'") + static_cast<char>(key) + "':";
        for (const std::wstring& text : texts)
            line += " \"" + CL::Narrow(text) + "\"";
        shared.push_back(line);
    }
    return shared;
}

// Every level of a menu and its submenus: where mnemonics are shared.
void ExpectUniqueMnemonics(const std::vector<test::MenuEntry>& entries, const std::string& where)
{
    for (const std::string& shared : SharedMnemonics(entries))
        ADD_FAILURE() << where << " shares the mnemonic " << shared;
    for (const test::MenuEntry& entry : entries) {
        if (!entry.submenu.empty())
            ExpectUniqueMnemonics(entry.submenu, where + " > " + CL::Narrow(entry.text));
    }
}

BOOL CALLBACK CollectMenuResource(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR ids)
{
    if (IS_INTRESOURCE(name))
        reinterpret_cast<std::vector<WORD>*>(ids)->push_back(static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name)));
    return TRUE;
}

bool IsRadio(const ControlInfo& c)
{
    const LONG type = test::ButtonType(c);
    return test::IsClass(c, L"Button") && (type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON);
}

} // namespace

TEST_P(KeyboardWalk, TabReachesEveryControlAndComesRound)
{
    const std::vector<ControlInfo> controls = test::VisibleControls(Window());
    const HWND start = FocusedControl();
    ASSERT_NE(start, nullptr);
    std::vector<HWND> visited = {start};
    for (int i = 0; i < 100; ++i) {
        Press(VK_TAB);
        const HWND now = FocusedControl();
        if (now == start)
            break;
        ASSERT_TRUE(std::find(visited.begin(), visited.end(), now) == visited.end())
            << "Tab went round without coming back to the first control";
        visited.push_back(now);
    }
    EXPECT_EQ(FocusedControl(), start) << "Tab did not come round";
    const std::set<HWND> reached(visited.begin(), visited.end());
    std::set<HWND> radioParentsReached;
    for (const ControlInfo& c : controls) {
        if (!TakesInput(c))
            continue;
        if (IsRadio(c)) {
            // Tab reaches the group; the arrows move within it.
            bool groupReached = false;
            HWND first = c.hwnd;
            while (first && !(::GetWindowLongW(first, GWL_STYLE) & WS_GROUP))
                first = ::GetWindow(first, GW_HWNDPREV);
            for (HWND member = first; member; member = ::GetWindow(member, GW_HWNDNEXT)) {
                if (member != first && (::GetWindowLongW(member, GWL_STYLE) & WS_GROUP))
                    break;
                groupReached = groupReached || reached.count(member);
            }
            EXPECT_TRUE(groupReached) << "Tab does not reach the radio group of #" << c.id;
            continue;
        }
        EXPECT_TRUE(reached.count(c.hwnd)) << "Tab does not reach " << CL::Narrow(c.className) << " #" << c.id
                                           << " \"" << CL::Narrow(c.text) << "\"";
    }
}

TEST_P(KeyboardWalk, MnemonicsAreUniqueAndEachLabelsLeadsToItsControl)
{
    std::map<wchar_t, std::wstring> taken;
    const std::vector<ControlInfo> controls = test::VisibleControls(Window());
    for (size_t i = 0; i < controls.size(); ++i) {
        const ControlInfo& c = controls[i];
        if (!test::IsClass(c, L"Static") && !test::IsClass(c, L"Button"))
            continue;
        const wchar_t key = test::MnemonicOf(c.text);
        if (key == 0 || c.text == L"Ne&w")
            continue;   // the options' four "New" buttons share theirs, in screen order
        EXPECT_TRUE(taken.emplace(key, c.text).second)
            << "'" << static_cast<char>(key) << "' of " << CL::Narrow(c.text) << " also in " << CL::Narrow(taken[key]);
        // A label's mnemonic moves the focus to the control after it (in a
        // dialog through the dialog manager, in a frame through its own
        // translation of the key).
        if (test::IsClass(c, L"Static") && i + 1 < controls.size() &&
            ::IsWindowEnabled(controls[i + 1].hwnd)) {
            PressMnemonic(key);
            EXPECT_EQ(FocusedControl(), controls[i + 1].hwnd) << "Alt+" << static_cast<char>(key) << " of "
                                                              << CL::Narrow(c.text);
        }
    }
}

// Every control that shows a menu to the right mouse button shows the same
// menu to the keyboard: Shift+F10 and the context-menu key. (The mouse's
// request is sent as the system sends it after a right click: a
// WM_CONTEXTMENU with the pointer's screen position.)
TEST_P(KeyboardWalk, EveryContextMenuOpensFromTheKeyboardToo)
{
    int menus = 0;
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!::IsWindowEnabled(c.hwnd))
            continue;
        RECT r = {};
        ::GetWindowRect(c.hwnd, &r);
        std::vector<test::MenuEntry> byMouse;
        {
            test::TrackedMenuCapture capture(3000);
            ::SendMessageW(c.hwnd, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(c.hwnd),
                           MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2));
            Pump();
            if (!capture.Captured())
                continue;
            byMouse = capture.Entries();
        }
        // The program's menus; an edit box shows the system's own.
        if (!test::IsClass(c, L"Edit"))
            ++menus;
        const std::string what = CL::Narrow(c.className) + " #" + std::to_string(c.id);
        ExpectUniqueMnemonics(byMouse, "the menu of " + what);
        struct Key {
            const char* name;
            UINT key, held, down, up;
        };
        for (const Key& k : {Key{"Shift+F10", VK_F10, VK_SHIFT, WM_SYSKEYDOWN, WM_SYSKEYUP},
                             Key{"the context-menu key", VK_APPS, 0, WM_KEYDOWN, WM_KEYUP}}) {
            ::SetFocus(c.hwnd);
            Pump();
            test::TrackedMenuCapture capture(3000);
            PressHeld(k.key, k.held, k.down, k.up);
            EXPECT_TRUE(capture.Captured()) << k.name << " shows no menu on " << what;
            EXPECT_EQ(test::MenuTexts(capture.Entries()), test::MenuTexts(byMouse)) << k.name << " on " << what;
        }
    }
    EXPECT_EQ(menus, GetParam().contextMenus) << "controls besides edit boxes that show a menu to the right mouse button";
}

// The menu bar as the keyboard works it: Alt and the letter of an entry
// opens that entry's menu (the window's own WM_SYSCHAR, as the message loop
// hands it over), and no two entries of the bar or of one of its menus, as
// they show once opened, share a letter.
TEST_P(KeyboardWalk, EveryMenuOfTheMenuBarOpensByItsMnemonic)
{
    const HMENU bar = ::GetMenu(Window());
    if (!bar)
        GTEST_SKIP() << "no menu bar";
    const std::vector<test::MenuEntry> entries = test::ReadMenu(bar);
    ASSERT_FALSE(entries.empty());
    ExpectUniqueMnemonics(entries, "the menu bar");
    for (size_t i = 0; i < entries.size(); ++i) {
        const test::MenuEntry& entry = entries[i];
        const wchar_t key = test::MnemonicOf(entry.text);
        EXPECT_NE(key, 0) << "\"" << CL::Narrow(entry.text) << "\" of the menu bar has no mnemonic";
        if (key == 0)
            continue;
        ::SetFocus(Window());
        Pump();
        test::TrackedMenuCapture capture(3000);
        PressMnemonic(key);
        ASSERT_TRUE(capture.Captured()) << "Alt+" << static_cast<char>(key) << " opens no menu";
        EXPECT_EQ(test::MenuTexts(capture.Entries()), test::MenuTexts(test::ReadMenu(::GetSubMenu(bar, static_cast<int>(i)))))
            << "Alt+" << static_cast<char>(key) << " opens another menu than " << CL::Narrow(entry.text);
        ExpectUniqueMnemonics(capture.Entries(), "the menu " + CL::Narrow(entry.text));
    }
}

TEST_P(KeyboardWalk, ClosesByKeyboard)
{
    const HWND window = Window();
    if (IsDialog(window))
        Press(VK_ESCAPE);
    else
        Press(VK_F4, true);
    Pump();
    EXPECT_FALSE(::IsWindow(window) && ::IsWindowVisible(window)) << "still open";
}

// Every menu the program's resources hold (menu bars, right-click menus,
// the tray menu), at every level: no two entries share a mnemonic.
TEST(KeyboardMenus, EveryMenuOfTheProgramHasUniqueMnemonics)
{
    std::vector<WORD> ids;
    ::EnumResourceNamesW(::GetModuleHandleW(nullptr), RT_MENU, &CollectMenuResource, reinterpret_cast<LONG_PTR>(&ids));
    EXPECT_GE(ids.size(), 6u) << "the program's menus were not found";
    for (const WORD id : ids) {
        const HMENU menu = ::LoadMenuW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id));
        ASSERT_NE(menu, nullptr) << "menu " << id;
        ExpectUniqueMnemonics(test::ReadMenu(menu), "menu " + std::to_string(id));
        ::DestroyMenu(menu);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWindow, KeyboardWalk, testing::ValuesIn(test::EveryWindow()), test::EntryName);
