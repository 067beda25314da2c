#include "ZoneOffset.h"

#include <vector>

namespace test {

long LocalOffsetMinutesNow()
{
    TIME_ZONE_INFORMATION zone = {};
    const DWORD which = ::GetTimeZoneInformation(&zone);
    long bias = zone.Bias;
    if (which == TIME_ZONE_ID_DAYLIGHT)
        bias += zone.DaylightBias;
    else if (which == TIME_ZONE_ID_STANDARD)
        bias += zone.StandardBias;
    return -bias;
}

double LocalOffsetDays()
{
    return LocalOffsetMinutesNow() / 1440.0;
}

std::wstring RequestedZone()
{
    const DWORD size = ::GetEnvironmentVariableW(L"MORVANE_TZ", nullptr, 0);
    if (size == 0)
        return std::wstring();
    std::vector<wchar_t> value(size, L'\0');
    ::GetEnvironmentVariableW(L"MORVANE_TZ", value.data(), size);
    return value.data();
}

} // namespace test
