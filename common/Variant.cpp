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

namespace {

// A variant of type vt whose value field `set` fills.
template <class Set>
CVariant Scalar(VARTYPE vt, Set set) noexcept
{
    CVariant v;
    v.vt = vt;
    set(v);
    return v;
}

} // namespace

// clang-format off
CVariant CVariant::Bool(bool value) noexcept { return Scalar(VT_BOOL, [=](VARIANT& v) { v.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE; }); }
CVariant CVariant::I4(LONG value) noexcept { return Scalar(VT_I4, [=](VARIANT& v) { v.lVal = value; }); }
CVariant CVariant::I8(LONGLONG value) noexcept { return Scalar(VT_I8, [=](VARIANT& v) { v.llVal = value; }); }
CVariant CVariant::UI2(USHORT value) noexcept { return Scalar(VT_UI2, [=](VARIANT& v) { v.uiVal = value; }); }
CVariant CVariant::UI4(ULONG value) noexcept { return Scalar(VT_UI4, [=](VARIANT& v) { v.ulVal = value; }); }
CVariant CVariant::R4(float value) noexcept { return Scalar(VT_R4, [=](VARIANT& v) { v.fltVal = value; }); }
CVariant CVariant::R8(double value) noexcept { return Scalar(VT_R8, [=](VARIANT& v) { v.dblVal = value; }); }
// clang-format on

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
