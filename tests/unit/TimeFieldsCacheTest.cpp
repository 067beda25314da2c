// The cached calendar fields of file times in a row against
// FileTimeToSystemTime: same day, the next day, going back, odd ticks.
#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

#include "common/TimeFieldsCache.h"

namespace {

FILETIME FromTicks(ULONGLONG ticks)
{
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void ExpectSameFields(const SYSTEMTIME& expected, const SYSTEMTIME& actual, ULONGLONG ticks)
{
    SCOPED_TRACE(ticks);
    EXPECT_EQ(expected.wYear, actual.wYear);
    EXPECT_EQ(expected.wMonth, actual.wMonth);
    EXPECT_EQ(expected.wDay, actual.wDay);
    EXPECT_EQ(expected.wHour, actual.wHour);
    EXPECT_EQ(expected.wMinute, actual.wMinute);
    EXPECT_EQ(expected.wSecond, actual.wSecond);
    EXPECT_EQ(expected.wMilliseconds, actual.wMilliseconds);
}

} // namespace

TEST(TimeFieldsCache, GivesTheFieldsOfFileTimeToSystemTimeAcrossDaysAndBackwards)
{
    // 31 December 2024 23:59:58.999 9999 UTC, then steps of 0.3337 s over
    // midnight and the new year, then a jump back and one far ahead.
    SYSTEMTIME start = {2024, 12, 2, 31, 23, 59, 58, 999};
    FILETIME startTime;
    ASSERT_TRUE(::SystemTimeToFileTime(&start, &startTime));
    const ULONGLONG base = ((static_cast<ULONGLONG>(startTime.dwHighDateTime) << 32) | startTime.dwLowDateTime) + 9999;
    std::vector<ULONGLONG> ticks;
    for (ULONGLONG i = 0; i < 20; ++i)
        ticks.push_back(base + i * 3337000);
    ticks.push_back(base - 864000000000ULL * 40 + 12345);
    ticks.push_back(base + 864000000000ULL * 400 + 7);
    ticks.push_back(base + 864000000000ULL * 400 + 864000000000ULL - 1);
    CL::CTimeFieldsCache cache;
    for (const ULONGLONG t : ticks) {
        const FILETIME time = FromTicks(t);
        SYSTEMTIME expected;
        ASSERT_TRUE(::FileTimeToSystemTime(&time, &expected));
        ExpectSameFields(expected, cache.Fields(time), t);
    }
}
