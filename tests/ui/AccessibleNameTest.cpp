// The window layer's accessible names on their own: a control named by a
// text, by a label read when asked (its text as drawn, a fallback while it
// is empty), given a description, and the dialog rule that names each
// edit, combo box and list after the label or check box before it.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>
#include <oleacc.h>

#include <string>

#include "AccessibleRead.h"
#include "common/ComPtr.h"
#include "common/ui/AccessibleName.h"

namespace {

test::AccessibleText Read(HWND control)
{
    return test::ReadAccessible(control);
}

class AccessibleNamesAnnotation : public testing::Test {
protected:
    void SetUp() override
    {
        m_com = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        m_window = ::CreateWindowExW(0, WC_DIALOG, L"Names", WS_OVERLAPPEDWINDOW, 0, 0, 400, 300, nullptr, nullptr,
                                     nullptr, nullptr);
        ASSERT_TRUE(m_window);
    }
    void TearDown() override
    {
        ::DestroyWindow(m_window);
        if (SUCCEEDED(m_com))
            ::CoUninitialize();
    }
    HWND Child(const wchar_t* className, const wchar_t* text, DWORD style = 0)
    {
        return ::CreateWindowExW(0, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 100, 20, m_window, nullptr,
                                 nullptr, nullptr);
    }

    HRESULT m_com = E_FAIL;
    HWND m_window = nullptr;
};

} // namespace

TEST_F(AccessibleNamesAnnotation, AControlNamedByATextIsSpokenWithItAndKeepsItsRole)
{
    const HWND plain = Child(WC_LISTVIEWW, L"", LVS_REPORT);
    const HWND list = Child(WC_LISTVIEWW, L"", LVS_REPORT);
    CL::CAccessibleName::Set(list, L"Items");
    const test::AccessibleText spoken = Read(list);
    EXPECT_EQ(spoken.name, L"Items");
    // The role is the system's (a list on Windows; Wine answers "client").
    EXPECT_EQ(spoken.role, Read(plain).role);
    EXPECT_NE(spoken.role, 0);
}

TEST_F(AccessibleNamesAnnotation, ALabelsTextIsReadWhenAskedAndTheFallbackWhileItIsEmpty)
{
    const HWND label = Child(L"Static", L"");
    const HWND list = Child(WC_LISTVIEWW, L"", LVS_REPORT);
    CL::CAccessibleName::SetLabel(list, label, L"Matches");
    EXPECT_EQ(Read(list).name, L"Matches");
    ::SetWindowTextW(label, L"3 match(es):");
    EXPECT_EQ(Read(list).name, L"3 match(es):");
}

TEST_F(AccessibleNamesAnnotation, ALabelIsSpokenWithoutItsMnemonicUnlessItDrawsNoPrefix)
{
    const HWND label = Child(L"Static", L"Save && &Load:");
    const HWND edit = Child(L"Edit", L"");
    CL::CAccessibleName::SetLabel(edit, label);
    EXPECT_EQ(Read(edit).name, L"Save & Load:");
    ::SetWindowLongW(label, GWL_STYLE, ::GetWindowLongW(label, GWL_STYLE) | SS_NOPREFIX);
    EXPECT_EQ(Read(edit).name, L"Save && &Load:");
}

TEST_F(AccessibleNamesAnnotation, ADescriptionIsSpokenAndChangesWithTheControl)
{
    const HWND edit = Child(L"Edit", L"");
    CL::CAccessibleName::SetDescription(edit, L"2 value(s) NOT GOOD");
    EXPECT_EQ(Read(edit).description, L"2 value(s) NOT GOOD");
    CL::CAccessibleName::SetDescription(edit, L"No values");
    EXPECT_EQ(Read(edit).description, L"No values");
}

TEST_F(AccessibleNamesAnnotation, EachEditComboAndListIsNamedAfterTheLabelOrCheckBoxBeforeIt)
{
    Child(L"Static", L"&Logging level:");
    const HWND combo = Child(WC_COMBOBOXW, L"", CBS_DROPDOWNLIST);
    ::SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"Errors"));
    ::SendMessageW(combo, CB_SETCURSEL, 0, 0);
    Child(L"Button", L"OPC DA Se&rver CLSID:", BS_AUTOCHECKBOX);
    const HWND afterCheckBox = Child(L"Edit", L"");
    Child(L"Button", L"Ne&w", BS_PUSHBUTTON);
    const HWND afterButton = Child(L"Edit", L"");
    Child(L"Static", L"Named already:");
    const HWND named = Child(L"Edit", L"");
    CL::CAccessibleName::Set(named, L"Own name");

    CL::CAccessibleName::SetFromLabels(m_window);

    EXPECT_EQ(Read(combo).name, L"Logging level:");
    EXPECT_EQ(Read(afterCheckBox).name, L"OPC DA Server CLSID:");
    EXPECT_NE(Read(afterButton).name, L"New");
    EXPECT_EQ(Read(named).name, L"Own name");
}

// A screen reader keeps the object it got after the window closes: the
// object then answers that it is gone and reads nothing of the window.
TEST_F(AccessibleNamesAnnotation, AnObjectKeptAfterItsControlIsDestroyedAnswersThatItIsGone)
{
    const HWND label = Child(L"Static", L"&Matches:");
    const HWND list = Child(WC_LISTVIEWW, L"", LVS_REPORT);
    CL::CAccessibleName::SetLabel(list, label);
    CL::CAccessibleName::SetDescription(list, L"What was found");
    CL::ComPtr<IAccessible> kept;
    ASSERT_HRESULT_SUCCEEDED(::AccessibleObjectFromWindow(list, static_cast<DWORD>(OBJID_CLIENT),
                                                          __uuidof(IAccessible),
                                                          reinterpret_cast<void**>(kept.ReleaseAndGetAddressOf())));
    ASSERT_TRUE(kept);
    VARIANT self;
    ::VariantInit(&self);
    self.vt = VT_I4;
    self.lVal = CHILDID_SELF;
    BSTR name = nullptr;
    ASSERT_EQ(kept->get_accName(self, &name), S_OK);
    EXPECT_STREQ(name, L"Matches:");
    ::SysFreeString(name);

    ::DestroyWindow(list);
    ::DestroyWindow(label);
    const auto gone = [](HRESULT result) { return result == RPC_E_DISCONNECTED || result == E_FAIL; };
    name = nullptr;
    EXPECT_PRED1(gone, kept->get_accName(self, &name));
    EXPECT_EQ(name, nullptr);
    BSTR description = nullptr;
    EXPECT_PRED1(gone, kept->get_accDescription(self, &description));
    EXPECT_EQ(description, nullptr);
    VARIANT role;
    ::VariantInit(&role);
    EXPECT_PRED1(gone, kept->get_accRole(self, &role));
    long count = 0;
    EXPECT_PRED1(gone, kept->get_accChildCount(&count));
}
