#pragma once
// The simulated process values that the simulator archives: plausible,
// varying values of an item's canonical data type, numbered by sample so that
// consecutive runs of an item continue where the previous one ended.
//
//   floating types (VT_R4, VT_R8, VT_CY)  a sine wave, 50 + 40 sin(0.4 n)
//   integer types                          a ramp 0, 1, ..., 99, 0, ...
//   VT_BOOL                                toggles: false, true, false, ...
//   VT_BSTR                                a counter, "Sample <n>"
//   VT_DATE                                the value's own time stamp
//   arrays of these                        3 elements, samples n, n+1, n+2
#include <windows.h>
#include <oleauto.h>

#include "common/Variant.h"

namespace sim {

// Number of elements of a simulated array value.
inline constexpr ULONG kSimulatedArrayLength = 3;

// Sample n of an item of canonical type vt, taken at time (OLE date, UTC).
// Throws CException(DISP_E_BADVARTYPE) for a type that the historian cannot
// store (VT_EMPTY, VT_VARIANT, ...).
CL::CVariant SimulatedValue(VARTYPE vt, unsigned sample, DATE time);

// The quality of sample n: 192 (good), except every tenth sample (n % 10
// == 7), which is 64 (uncertain), so that readers see non-good values too.
WORD SimulatedQuality(unsigned sample);

} // namespace sim
