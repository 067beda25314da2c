#pragma once
// Local time in the historian windows. Stored times are UTC; the explorer,
// the historical data window and the time period dialog show local time.
// The conversions go through the system's file-time functions, which apply
// the bias in force now (as the windows have always done), not the bias of
// the converted date.
//
// The display text is "%02u:%02u:%04u - %02u:%02u:%02u:%03u" (day, month,
// year, hour, minute, second, millisecond); the explorer parses it back
// where it needs a time from a row.
#include <windows.h>
#include <oleauto.h>

#include <string>
#include <string_view>

namespace CL {

// UTC OLE date to local OLE date: calendar fields, SystemTimeToFileTime,
// FileTimeToLocalFileTime, FileTimeToSystemTime, back to an OLE date
// (milliseconds kept). Throws CException when a step fails.
DATE UtcToLocalDate(DATE utc);
// Local OLE date to UTC OLE date: the same sequence with
// LocalFileTimeToFileTime.
DATE LocalToUtcDate(DATE local);

// The current time, UTC: GetSystemTime, SystemTimeToVariantTime, the
// milliseconds (which that conversion drops) added.
DATE NowUtcDate();
// The current time, local.
DATE NowLocalDate();

// The display text of a UTC file time shown in local time.
std::wstring LocalTimeText(const FILETIME& utc);
// The display text of a file time already in local time.
std::wstring LocalFileTimeText(const FILETIME& local);
// The export text of a UTC file time: "%02u:%02u:%04u %02u:%02u:%02u:%03u",
// in UTC.
std::wstring UtcExportText(const FILETIME& utc);
// A UTC file time in ISO 8601 with milliseconds: "2025-03-14T08:00:50.000Z".
std::wstring UtcIsoText(const FILETIME& utc);

// Parses a display text back into an OLE date: unsigned decimal numbers in
// the order day, month, year, hour, minute, second, millisecond, with one
// separator character between two numbers and three (" - ") between year
// and hour. The date is built with SystemTimeToVariantTime and the
// milliseconds are added as milliseconds / 86400000. Throws
// CException(E_INVALIDARG) for a text of another shape or fields that make
// no date.
DATE ParseTimeText(std::wstring_view text);

// One second as an OLE date difference.
inline constexpr double kOneSecond = 1.0 / 86400.0;
// One hour as an OLE date difference.
inline constexpr double kOneHour = 1.0 / 24.0;

} // namespace CL
