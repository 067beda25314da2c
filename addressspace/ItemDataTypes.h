#pragma once
// The data types an item may have, in the order the item dialog offers them:
// signed integers from the platform-sized one upwards, then unsigned,
// floating, currency, date, boolean, string; then the same as arrays.
#include <windows.h>
#include <oleauto.h>

#include <array>

namespace CL {

inline constexpr std::array<VARTYPE, 32> kItemDataTypes = {
    VT_INT, VT_I1, VT_I2, VT_I4, VT_I8, VT_UINT, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_R4, VT_R8,
    VT_CY, VT_DATE, VT_BOOL, VT_BSTR,
    VT_ARRAY | VT_INT, VT_ARRAY | VT_I1, VT_ARRAY | VT_I2, VT_ARRAY | VT_I4, VT_ARRAY | VT_I8,
    VT_ARRAY | VT_UINT, VT_ARRAY | VT_UI1, VT_ARRAY | VT_UI2, VT_ARRAY | VT_UI4, VT_ARRAY | VT_UI8,
    VT_ARRAY | VT_R4, VT_ARRAY | VT_R8, VT_ARRAY | VT_CY, VT_ARRAY | VT_DATE, VT_ARRAY | VT_BOOL,
    VT_ARRAY | VT_BSTR};

} // namespace CL
