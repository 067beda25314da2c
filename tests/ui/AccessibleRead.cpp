#include "AccessibleRead.h"

#include <oleacc.h>

#include "common/ComPtr.h"

namespace test {

namespace {

std::wstring Take(BSTR text)
{
    std::wstring taken = text ? text : L"";
    ::SysFreeString(text);
    return taken;
}

} // namespace

AccessibleText ReadAccessible(HWND window)
{
    AccessibleText read;
    CL::ComPtr<IAccessible> accessible;
    // __uuidof: the IID_IAccessible of MinGW's oleacc import library is not
    // the interface's ID when linked statically.
    read.result = ::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                               reinterpret_cast<void**>(accessible.ReleaseAndGetAddressOf()));
    if (FAILED(read.result) || !accessible)
        return read;
    read.hasObject = true;
    VARIANT self;
    ::VariantInit(&self);
    self.vt = VT_I4;
    self.lVal = CHILDID_SELF;
    BSTR text = nullptr;
    if (SUCCEEDED(accessible->get_accName(self, &text)))
        read.name = Take(text);
    text = nullptr;
    if (SUCCEEDED(accessible->get_accDescription(self, &text)))
        read.description = Take(text);
    VARIANT role;
    ::VariantInit(&role);
    if (SUCCEEDED(accessible->get_accRole(self, &role)) && role.vt == VT_I4) {
        read.role = role.lVal;
        wchar_t roleText[128] = {};
        ::GetRoleTextW(static_cast<DWORD>(role.lVal), roleText, 128);
        read.roleText = roleText;
    }
    ::VariantClear(&role);
    return read;
}

} // namespace test
