#pragma once
// The one set of field value types that both connection backends deliver:
// text VT_BSTR, floating-point VT_R8, integers VT_I4, binary VT_ARRAY | VT_UI1,
// NULL VT_NULL. Drivers report more types than that (PostgreSQL's sum() is a
// 64-bit integer, ADO may hand out VT_I2, VT_DECIMAL or VT_R4); they are
// converted here, so the code above the backends sees one type per kind.
#include <windows.h>

#include <string_view>

#include "common/Variant.h"

namespace CL {

// Converts value in place. An integer that does not fit 32 bits raises a
// database error (DISP_E_OVERFLOW) naming the field.
void NormalizeFieldValue(CVariant& value, std::wstring_view fieldName);

} // namespace CL
