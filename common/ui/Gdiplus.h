#pragma once
// GDI+ for the program's drawings. The GDI+ headers use unqualified min and
// max, which the NOMINMAX build does not define: they see std::min and
// std::max instead.
#include <windows.h>
// WIN32_LEAN_AND_MEAN leaves out the COM and property headers GDI+ needs.
#include <objidl.h>

#include <algorithm>

namespace Gdiplus {
using std::max;
using std::min;
} // namespace Gdiplus

#include <gdiplus.h>

namespace CL {

// Starts GDI+ once for the process (the first call) and shuts it down when
// the process ends. Throws CException when GDI+ cannot start.
void EnsureGdiplus();

} // namespace CL
