#pragma once
// CTimeFieldsCache: the calendar fields of many file times in a row, as
// FileTimeToSystemTime gives them. Archived values come in time order, so
// most lie on the day of the one before: the date is converted once per day
// and the time of day is taken from the ticks directly. An export of a
// million values then writes its time texts without a million conversions.
#include <windows.h>

namespace CL {

class CTimeFieldsCache {
public:
    // The fields of the time (milliseconds cut, as FileTimeToSystemTime).
    const SYSTEMTIME& Fields(const FILETIME& time);

private:
    bool m_known = false;
    ULONGLONG m_day = 0;   // whole days since 1601 of the cached date
    SYSTEMTIME m_fields = {};
};

} // namespace CL
