// What a screen reader would speak for every control of every window, read
// through the accessibility interface (AccessibleObjectFromWindow and the
// IAccessible the system makes for the control): every control that takes
// input, and the program's own controls (the splitter, the chart's drag bar,
// the chart), has a name; the chart's name says what it shows; buttons are
// named by their text, edits and pickers by their label.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <oleacc.h>

#include <string>

#include "WindowCatalog.h"
#include "WindowGeometry.h"
#include "common/Bstr.h"
#include "common/ComPtr.h"
#include "common/Text.h"

namespace {

using test::ControlInfo;

// The name the accessibility interface gives the control, or nullopt-like
// "<no object>" when the system has no accessible object for it.
struct AccessibleText {
    bool hasObject = false;
    HRESULT result = S_OK;
    std::wstring name;
    std::wstring role;
};

AccessibleText Read(HWND control)
{
    AccessibleText read;
    CL::ComPtr<IAccessible> accessible;
    // __uuidof: the IID_IAccessible of MinGW's oleacc import library is not
    // the interface's ID when linked statically.
    read.result = ::AccessibleObjectFromWindow(control, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                               reinterpret_cast<void**>(accessible.ReleaseAndGetAddressOf()));
    if (FAILED(read.result) || !accessible)
        return read;
    read.hasObject = true;
    VARIANT self;
    ::VariantInit(&self);
    self.vt = VT_I4;
    self.lVal = CHILDID_SELF;
    BSTR name = nullptr;
    if (SUCCEEDED(accessible->get_accName(self, &name)) && name) {
        read.name = name;
        ::SysFreeString(name);
    }
    VARIANT role;
    ::VariantInit(&role);
    if (SUCCEEDED(accessible->get_accRole(self, &role)) && role.vt == VT_I4) {
        wchar_t text[128] = {};
        ::GetRoleTextW(static_cast<DWORD>(role.lVal), text, 128);
        read.role = text;
    }
    ::VariantClear(&role);
    return read;
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
    for (const ControlInfo& c : test::VisibleControls(Window())) {
        if (!IsOwnControl(c))
            continue;
        const AccessibleText read = Read(c.hwnd);
        ASSERT_TRUE(read.hasObject) << CL::Narrow(c.className) << " 0x" << std::hex << read.result;
        EXPECT_FALSE(read.name.empty()) << CL::Narrow(c.className) << " has no accessible name";
        if (c.className == L"MorvaneTrendChart") {
            EXPECT_EQ(read.name.rfind(L"Chart", 0), 0u) << CL::Narrow(read.name);
        }
    }
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

// An edit or a date picker is named by the label right before it (the
// system's rule, on Windows and in Wine): every one that has a label there
// is spoken with the label's text.
TEST_P(AccessibleNames, EditsAndPickersAreNamedByTheLabelBeforeThem)
{
    const std::vector<ControlInfo> controls = test::VisibleControls(Window());
    for (size_t i = 1; i < controls.size(); ++i) {
        const ControlInfo& c = controls[i];
        const ControlInfo& before = controls[i - 1];
        if (!test::IsClass(c, L"Edit") && !test::IsClass(c, DATETIMEPICK_CLASSW))
            continue;
        if (before.parent != c.parent || !test::IsClass(before, L"Static") || before.text.empty())
            continue;
        EXPECT_EQ(Read(c.hwnd).name, test::DrawnText(before.text)) << CL::Narrow(c.className) << " #" << c.id;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWindow, AccessibleNames, testing::ValuesIn(test::EveryWindow()), test::EntryName);
