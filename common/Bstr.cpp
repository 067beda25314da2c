#include "common/Bstr.h"

#include <new>

namespace CL {

CBstr::CBstr(std::wstring_view text)
    : m_bstr(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))
{
    if (!m_bstr)
        throw std::bad_alloc();
}

CBstr::CBstr(const CBstr& other)
{
    if (other.m_bstr) {
        m_bstr = ::SysAllocStringLen(other.m_bstr, other.Length());
        if (!m_bstr)
            throw std::bad_alloc();
    }
}

} // namespace CL
