#include "common/historian/DbFieldValue.h"

#include <string>

#include "common/Text.h"
#include "common/historian/DbError.h"

namespace CL {

namespace {

enum class Kind { Keep, Null, Integer, Real };

Kind KindOf(const VARIANT& value)
{
    switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return Kind::Null;
    case VT_I1:
    case VT_I2:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_BOOL:
        return Kind::Integer;
    case VT_DECIMAL:
        return value.decVal.scale == 0 ? Kind::Integer : Kind::Real;
    case VT_R4:
    case VT_CY:
    case VT_DATE:
        return Kind::Real;
    default:
        return Kind::Keep;
    }
}

void ChangeType(CVariant& value, VARTYPE vt, std::wstring_view fieldName)
{
    const HRESULT hr = ::VariantChangeTypeEx(&value, &value, LOCALE_INVARIANT, 0, vt);
    if (FAILED(hr)) {
        const std::wstring name(fieldName);
        ThrowDbError(hr,
                     Format(vt == VT_I4 ? L"The value of field '%ls' does not fit a 32-bit integer."
                                        : L"The value of field '%ls' cannot be read as a number.",
                            name.c_str()),
                     L"VariantChangeTypeEx");
    }
}

} // namespace

void NormalizeFieldValue(CVariant& value, std::wstring_view fieldName)
{
    switch (KindOf(value)) {
    case Kind::Null:
        value.Clear();
        value.vt = VT_NULL;
        break;
    case Kind::Integer:
        ChangeType(value, VT_I4, fieldName);
        break;
    case Kind::Real:
        ChangeType(value, VT_R8, fieldName);
        break;
    case Kind::Keep:
        break;
    }
}

} // namespace CL
