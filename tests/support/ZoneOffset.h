#pragma once
// The local time zone as the tests see it, worked out from the zone record
// (not through the file-time conversions the product uses), so that tests
// run with another TZ can state what local time must be.
#include <windows.h>

#include <string>

namespace test {

// Minutes to add to UTC to get local time now (the bias in force now,
// daylight saving included): +60 in Berlin in winter, +120 in summer.
long LocalOffsetMinutesNow();
// The offset as an OLE date difference.
double LocalOffsetDays();
// The zone the run was asked for (MORVANE_TZ), empty when none.
std::wstring RequestedZone();

} // namespace test
