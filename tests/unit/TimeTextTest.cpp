// Time texts and the split of an OLE automation date into calendar fields.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ValueTestHelpers.h"
#include "common/Util_Variant.h"

using namespace ValueTest;

namespace {

SYSTEMTIME Fields(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second, WORD ms)
{
    SYSTEMTIME st{};
    st.wYear = year;
    st.wMonth = month;
    st.wDay = day;
    st.wHour = hour;
    st.wMinute = minute;
    st.wSecond = second;
    st.wMilliseconds = ms;
    return st;
}

} // namespace

TEST(DateToString, ShowsDayMonthYearThenTimeWithMilliseconds)
{
    const DATE date = CL::SystemTimeToDate(Fields(2024, 3, 7, 14, 5, 9, 250));
    EXPECT_EQ(CL::DateToString(date), L"07:03:2024 - 14:05:09:250");
}

TEST(DateToExportString, HasNoDashBetweenDateAndTime)
{
    const DATE date = CL::SystemTimeToDate(Fields(2024, 3, 7, 14, 5, 9, 250));
    EXPECT_EQ(CL::DateToExportString(date), L"07:03:2024 14:05:09:250");
}

TEST(DateToString, ZeroIsTheThirtiethOfDecember1899)
{
    EXPECT_EQ(CL::DateToString(0.0), L"30:12:1899 - 00:00:00:000");
    EXPECT_EQ(CL::DateToString(2.5), L"01:01:1900 - 12:00:00:000");
}

TEST(DateToString, DatesBefore1899KeepThePositiveTimeOfDay)
{
    EXPECT_EQ(CL::DateToString(-1.25), L"29:12:1899 - 06:00:00:000");
    EXPECT_EQ(CL::DateToString(-0.5), L"30:12:1899 - 12:00:00:000");
}

TEST(DateToString, MillisecondsAreRoundedToTheNearest)
{
    const double ms = 1.0 / 86400000.0;
    EXPECT_EQ(CL::DateToString(45000.0 + 1.4 * ms), L"15:03:2023 - 00:00:00:001");
    EXPECT_EQ(CL::DateToString(45000.0 + 1.6 * ms), L"15:03:2023 - 00:00:00:002");
}

TEST(DateToString, RoundingUpAtMidnightMovesToTheNextDay)
{
    const double almostMidnight = 45000.0 + (86400000.0 - 0.3) / 86400000.0;
    EXPECT_EQ(CL::DateToString(almostMidnight), L"16:03:2023 - 00:00:00:000");
}

TEST(DateToString, DateOutsideTheAutomationRangeIsRefused)
{
    for (double d : {-657435.0, 2958466.0, std::numeric_limits<double>::quiet_NaN(),
                     std::numeric_limits<double>::infinity()}) {
        const CL::CException e = CaughtException([&] { CL::DateToString(d); });
        EXPECT_EQ(Hex(e.Error()), 0x80070057u) << d;
    }
}

TEST(DateToString, RangeEndsAreShown)
{
    EXPECT_EQ(CL::DateToString(-657434.0), L"01:01:0100 - 00:00:00:000");
    EXPECT_EQ(CL::DateToString(2958465.0 + 86399999.0 / 86400000.0), L"31:12:9999 - 23:59:59:999");
}

TEST(DateToSystemTime, AgreesWithThePlatformToTheSecond)
{
    // VariantTimeToSystemTime rounds to whole seconds; compare on times
    // that have none.
    for (double d = -650000.0; d < 2950000.0; d += 12345.678901) {
        const double whole = std::round(d * 86400.0) / 86400.0;
        SYSTEMTIME platform{};
        ASSERT_TRUE(::VariantTimeToSystemTime(whole, &platform)) << whole;
        const SYSTEMTIME ours = CL::DateToSystemTime(whole);
        EXPECT_EQ(ours.wYear, platform.wYear) << whole;
        EXPECT_EQ(ours.wMonth, platform.wMonth) << whole;
        EXPECT_EQ(ours.wDay, platform.wDay) << whole;
        EXPECT_EQ(ours.wDayOfWeek, platform.wDayOfWeek) << whole;
        EXPECT_EQ(ours.wHour, platform.wHour) << whole;
        EXPECT_EQ(ours.wMinute, platform.wMinute) << whole;
        EXPECT_EQ(ours.wSecond, platform.wSecond) << whole;
    }
}

TEST(SystemTimeToDate, RoundTripsEveryMillisecondField)
{
    for (WORD ms = 0; ms < 1000; ms += 7) {
        const SYSTEMTIME in = Fields(1987, 2, 28, 23, 59, 58, ms);
        const SYSTEMTIME out = CL::DateToSystemTime(CL::SystemTimeToDate(in));
        EXPECT_EQ(out.wMilliseconds, ms);
        EXPECT_EQ(out.wSecond, 58);
        EXPECT_EQ(out.wDay, 28);
    }
}

TEST(SystemTimeToDate, RefusesFieldsThatAreNoDate)
{
    const SYSTEMTIME bad[] = {Fields(2023, 2, 29, 0, 0, 0, 0), Fields(2024, 13, 1, 0, 0, 0, 0),
                              Fields(99, 1, 1, 0, 0, 0, 0), Fields(2024, 1, 1, 24, 0, 0, 0),
                              Fields(2024, 1, 1, 0, 0, 0, 1000)};
    for (const SYSTEMTIME& st : bad) {
        const CL::CException e = CaughtException([&] { CL::SystemTimeToDate(st); });
        EXPECT_EQ(Hex(e.Error()), 0x80070057u);
    }
    EXPECT_NO_THROW(CL::SystemTimeToDate(Fields(2024, 2, 29, 0, 0, 0, 0)));
}

TEST(DateTimePickerFormat, IsDayMonthYearDashTime)
{
    EXPECT_STREQ(CL::kDateTimePickerFormat, L"dd.MM.yyyy - HH:mm:ss");
}
