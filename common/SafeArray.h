#pragma once
// CL::UniqueSafeArray: an owning SAFEARRAY pointer (SafeArrayDestroy in the
// destructor). Move-only, like the other handle wrappers.
#include <windows.h>
#include <oleauto.h>

#include "common/Handle.h"

namespace CL {

struct SafeArrayTraits {
    using Type = SAFEARRAY*;
    static Type Invalid() { return nullptr; }
    static void Close(Type psa) { ::SafeArrayDestroy(psa); }
};

using UniqueSafeArray = UniqueHandle<SafeArrayTraits>;

} // namespace CL
