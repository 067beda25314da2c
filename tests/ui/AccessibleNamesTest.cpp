// What a screen reader would speak for every control of every window, read
// through the accessibility interface (AccessibleObjectFromWindow and the
// IAccessible the system makes for the control): every control that takes
// input, and the program's own controls (the splitter, the chart's drag bar,
// the chart), has a name; the chart's name says what it shows and its
// description repeats its notes; buttons are named by their text; edits,
// pickers, combo boxes and lists by their label (or the check box that
// enables them), and every one of them has a name.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <oleacc.h>

#include <algorithm>
#include <memory>
#include <string>

#include "AccessibleRead.h"
#include "WindowCatalog.h"
#include "WindowGeometry.h"
#include "common/Text.h"

namespace {

using test::ControlInfo;

using test::AccessibleText;

AccessibleText Read(HWND control)
{
    return test::ReadAccessible(control);
}

bool IsOwnControl(const ControlInfo& c)
{
    return c.className.rfind(L"Morvane", 0) == 0;
}

bool TakesInput(const ControlInfo& c)
{
    if (!::IsWindowEnabled(c.hwnd))
        return false;
    return !(test::IsClass(c, L"Static") || test::IsGroupBox(c) || test::IsClass(c, STATUSCLASSNAMEW));
}

class AccessibleNames : public testing::TestWithParam<test::WindowEntry> {
protected:
    void SetUp() override
    {
        m_opened = GetParam().open();
        ASSERT_TRUE(m_opened && m_opened->Hwnd()) << "could not open " << GetParam().name;
        ::ShowWindow(m_opened->Hwnd(), SW_SHOWNOACTIVATE);
    }
    HWND Window() const { return m_opened->Hwnd(); }

    // Windows and their accessible objects live in a single-threaded
    // apartment (Wine's proxies answer E_NOINTERFACE in a multithreaded one).
    struct Apartment {
        HRESULT hr = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        ~Apartment()
        {
            if (SUCCEEDED(hr))
                ::CoUninitialize();
        }
    } m_com;
    std::unique_ptr<test::OpenedWindow> m_opened;
};

} // namespace

TEST_P(AccessibleNames, TheProgramsOwnControlsAreNamed)
{
    int own = 0;
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!IsOwnControl(c))
            continue;
        ++own;
        const AccessibleText read = Read(c.hwnd);
        ASSERT_TRUE(read.hasObject) << CL::Narrow(c.className) << " 0x" << std::hex << read.result;
        EXPECT_FALSE(read.name.empty()) << CL::Narrow(c.className) << " has no accessible name";
        if (c.className == L"MorvaneTrendChart") {
            EXPECT_EQ(read.name.rfind(L"Chart", 0), 0u) << CL::Narrow(read.name);
        }
    }
    EXPECT_EQ(own, GetParam().ownControls) << "the program's own controls in the window";
}

TEST_P(AccessibleNames, EveryControlThatTakesInputHasAnObjectAndButtonsTheirText)
{
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!TakesInput(c))
            continue;
        const AccessibleText read = Read(c.hwnd);
        EXPECT_TRUE(read.hasObject) << CL::Narrow(c.className) << " #" << c.id << " 0x" << std::hex << read.result;
        if (test::IsClass(c, L"Button") && !c.text.empty()) {
            // The button's text is its name (Wine keeps a mnemonic's '&').
            const std::wstring drawn = test::DrawnText(c.text);
            const std::wstring firstWord = drawn.substr(0, drawn.find(L' '));
            EXPECT_NE(read.name.find(firstWord), std::wstring::npos)
                << CL::Narrow(c.className) << " #" << c.id << ": \"" << CL::Narrow(read.name) << "\"";
        }
    }
}

// The controls a screen reader names by a label: edits, date pickers, combo
// boxes, lists and trees.
bool IsLabelled(const ControlInfo& c)
{
    for (const wchar_t* name : {L"Edit", DATETIMEPICK_CLASSW, WC_COMBOBOXW, WC_LISTVIEWW, WC_TREEVIEWW, WC_LISTBOXW})
        if (test::IsClass(c, name))
            return true;
    return false;
}

// A static with text, or the check box or radio button that enables the
// control after it.
bool IsLabel(const ControlInfo& c)
{
    if (c.text.empty())
        return false;
    if (test::IsClass(c, L"Static"))
        return true;
    if (!test::IsClass(c, L"Button"))
        return false;
    const LONG type = c.style & BS_TYPEMASK;
    return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_3STATE || type == BS_AUTO3STATE ||
           type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}

// An edit, picker, combo box or list is named by the label right before it
// in the tab order: a static's text, or the text of the check box or radio
// button that enables it (a combo box is not named by its current choice,
// an edit after a check box not by some static further up).
TEST_P(AccessibleNames, EditsPickersCombosAndListsAreNamedByTheLabelBeforeThem)
{
    const std::vector<ControlInfo> controls = test::VisibleControls(Window());
    for (size_t i = 1; i < controls.size(); ++i) {
        const ControlInfo& c = controls[i];
        const ControlInfo& before = controls[i - 1];
        if (!IsLabelled(c) || before.parent != c.parent || !IsLabel(before))
            continue;
        EXPECT_EQ(Read(c.hwnd).name, test::DrawnText(before.text))
            << CL::Narrow(c.className) << " #" << c.id << " after \"" << CL::Narrow(before.text) << "\"";
    }
}

// Every edit, picker, combo box, list and tree has a name, also those
// without a label before them (the lists of the frames and dialogs).
TEST_P(AccessibleNames, EveryEditPickerComboAndListHasAName)
{
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!IsLabelled(c))
            continue;
        const AccessibleText read = Read(c.hwnd);
        ASSERT_TRUE(read.hasObject) << CL::Narrow(c.className) << " #" << c.id;
        EXPECT_FALSE(read.name.empty()) << CL::Narrow(c.className) << " #" << c.id << " has no accessible name";
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWindow, AccessibleNames, testing::ValuesIn(test::EveryWindow()), test::EntryName);

// The chart is described by the notes it draws under its title (here the
// one value of bad quality among the catalog's 60), so that a screen reader
// speaks what the red crosses say.
TEST(AccessibleNamesChart, IsDescribedByTheNotesItDraws)
{
    const auto& windows = test::EveryWindow();
    const auto entry = std::find_if(windows.begin(), windows.end(),
                                    [](const test::WindowEntry& e) { return e.name == std::string("HistoricalData"); });
    ASSERT_NE(entry, windows.end());
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        const std::unique_ptr<test::OpenedWindow> opened = entry->open();
        ASSERT_TRUE(opened && opened->Hwnd());
        ::ShowWindow(opened->Hwnd(), SW_SHOWNOACTIVATE);
        int charts = 0;
        for (const ControlInfo& c : test::VisibleControls(opened->Hwnd())) {
            if (c.className != L"MorvaneTrendChart")
                continue;
            ++charts;
            const AccessibleText read = Read(c.hwnd);
            ASSERT_TRUE(read.hasObject);
            EXPECT_EQ(read.name.rfind(L"Chart of ", 0), 0u) << CL::Narrow(read.name);
            EXPECT_EQ(read.description, L"1 value(s) NOT GOOD: red crosses, not joined by the line");
        }
        EXPECT_EQ(charts, 1);
    }
    if (SUCCEEDED(com))
        ::CoUninitialize();
}
