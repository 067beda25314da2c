#pragma once
// CLocalTimeTexts: the display texts of many UTC file times in local time,
// as LocalTimeText writes them. FileTimeToLocalFileTime applies the offset
// in force now to every date, so the offset is taken from the first
// conversion and added to the rest directly: a list of a million values
// then does not ask for the time zone a million times.
#include <windows.h>

#include <string>

namespace CL {

class CLocalTimeTexts {
public:
    std::wstring Text(const FILETIME& utc);
    // The local file time of a UTC one, by the same offset.
    FILETIME Local(const FILETIME& utc);

private:
    bool m_known = false;
    LONGLONG m_offset = 0;   // 100 ns units, local minus UTC
};

} // namespace CL
