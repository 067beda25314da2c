#pragma once
// CL::CBstr: an owning BSTR (SysFreeString in the destructor).
#include <windows.h>
#include <oleauto.h>

#include <string>
#include <string_view>
#include <utility>

namespace CL {

class CBstr {
public:
    CBstr() noexcept = default;
    explicit CBstr(std::wstring_view text);
    CBstr(const CBstr& other);
    CBstr(CBstr&& other) noexcept : m_bstr(std::exchange(other.m_bstr, nullptr)) {}
    CBstr& operator=(CBstr other) noexcept
    {
        std::swap(m_bstr, other.m_bstr);
        return *this;
    }
    ~CBstr() { ::SysFreeString(m_bstr); }

    static CBstr Attach(BSTR b) noexcept
    {
        CBstr r;
        r.m_bstr = b;
        return r;
    }
    BSTR Get() const noexcept { return m_bstr; }
    BSTR* ReleaseAndGetAddressOf() noexcept
    {
        ::SysFreeString(std::exchange(m_bstr, nullptr));
        return &m_bstr;
    }
    BSTR Detach() noexcept { return std::exchange(m_bstr, nullptr); }
    UINT Length() const noexcept { return ::SysStringLen(m_bstr); }
    std::wstring Str() const { return m_bstr ? std::wstring(m_bstr, Length()) : std::wstring(); }

private:
    BSTR m_bstr = nullptr;
};

} // namespace CL
