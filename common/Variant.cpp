#include "common/Variant.h"

#include "common/Exception.h"

namespace CL {

CVariant::CVariant(std::wstring_view text)
{
    ::VariantInit(this);
    bstrVal = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!bstrVal)
        throw CException(E_OUTOFMEMORY, L"SysAllocStringLen");
    vt = VT_BSTR;
}

CVariant::CVariant(const CVariant& other) : CVariant(static_cast<const VARIANT&>(other)) {}

CVariant::CVariant(const VARIANT& other)
{
    ::VariantInit(this);
    const HRESULT hr = ::VariantCopy(this, const_cast<VARIANT*>(&other));
    if (FAILED(hr))
        throw CException(hr, L"::VariantCopy");
}

CVariant::CVariant(CVariant&& other) noexcept
{
    *static_cast<VARIANT*>(this) = other.Detach();
}

CVariant& CVariant::operator=(const CVariant& other)
{
    if (this != &other) {
        const HRESULT hr = ::VariantCopy(this, const_cast<CVariant*>(&other));
        if (FAILED(hr))
            throw CException(hr, L"::VariantCopy");
    }
    return *this;
}

CVariant& CVariant::operator=(CVariant&& other) noexcept
{
    if (this != &other) {
        ::VariantClear(this);
        *static_cast<VARIANT*>(this) = other.Detach();
    }
    return *this;
}

VARIANT CVariant::Detach() noexcept
{
    VARIANT v = *static_cast<VARIANT*>(this);
    ::VariantInit(this);
    return v;
}

} // namespace CL
