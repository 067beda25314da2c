// Local time of the historian windows: the conversions between UTC and local
// time through the file-time functions, the display text and its parser.
// The same tests run once more in another time zone (MORVANE_TZ).
#include <gtest/gtest.h>

#include <cmath>

#include "common/Exception.h"
#include "common/LocalTime.h"
#include "common/Util_Variant.h"
#include "support/ZoneOffset.h"

namespace {

constexpr double kMs = 1.0 / 86400000.0;

DATE Date(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second, WORD ms = 0)
{
    SYSTEMTIME st{};
    st.wYear = year;
    st.wMonth = month;
    st.wDay = day;
    st.wHour = hour;
    st.wMinute = minute;
    st.wSecond = second;
    st.wMilliseconds = ms;
    return CL::SystemTimeToDate(st);
}

FILETIME FileTime(DATE date)
{
    const SYSTEMTIME st = CL::DateToSystemTime(date);
    FILETIME ft;
    ::SystemTimeToFileTime(&st, &ft);
    return ft;
}

} // namespace

TEST(LocalTime, RunsInTheZoneTheRunAskedFor)
{
    const std::wstring zone = test::RequestedZone();
    if (zone.empty() || zone == L"UTC")
        EXPECT_EQ(test::LocalOffsetMinutesNow(), 0);
    else
        EXPECT_NE(test::LocalOffsetMinutesNow(), 0) << "the Wine session did not take the zone";
}

TEST(LocalTime, UtcToLocalAddsTheOffsetInForceNow)
{
    const DATE utc = Date(2024, 2, 1, 12, 0, 0, 250);
    EXPECT_EQ(CL::DateToString(CL::UtcToLocalDate(utc)), CL::DateToString(utc + test::LocalOffsetDays()));
}

TEST(LocalTime, DatesInTheOtherDaylightSeasonUseTheOffsetOfNowToo)
{
    // Winter and summer dates shift by the same amount: the bias of now.
    const DATE winter = Date(2024, 1, 15, 12, 0, 0);
    const DATE summer = Date(2024, 7, 1, 12, 0, 0);
    EXPECT_EQ(CL::DateToString(CL::UtcToLocalDate(winter)), CL::DateToString(winter + test::LocalOffsetDays()));
    EXPECT_EQ(CL::DateToString(CL::UtcToLocalDate(summer)), CL::DateToString(summer + test::LocalOffsetDays()));
}

TEST(LocalTime, LocalToUtcUndoesUtcToLocalWithMilliseconds)
{
    const DATE utc = Date(2023, 3, 15, 23, 59, 59, 999);
    const DATE local = CL::UtcToLocalDate(utc);
    EXPECT_EQ(CL::DateToString(CL::LocalToUtcDate(local)), L"15:03:2023 - 23:59:59:999");
    EXPECT_NEAR(CL::LocalToUtcDate(local), utc, 0.5 * kMs);
}

TEST(LocalTime, NowIsTheSystemTimeWithItsMilliseconds)
{
    SYSTEMTIME before;
    ::GetSystemTime(&before);
    const DATE now = CL::NowUtcDate();
    SYSTEMTIME after;
    ::GetSystemTime(&after);
    EXPECT_GE(now, CL::SystemTimeToDate(before) - 0.5 * kMs);
    EXPECT_LE(now, CL::SystemTimeToDate(after) + 0.5 * kMs);
    EXPECT_NEAR(CL::NowLocalDate(), CL::NowUtcDate() + test::LocalOffsetDays(), 2000 * kMs);
}

TEST(LocalTime, ListTextOfAFileTimeIsLocal)
{
    const DATE utc = Date(2023, 3, 5, 7, 8, 9, 45);
    EXPECT_EQ(CL::LocalTimeText(FileTime(utc)), CL::DateToString(utc + test::LocalOffsetDays()));
}

TEST(LocalTime, ExportTextOfAFileTimeIsUtcWithoutDash)
{
    EXPECT_EQ(CL::UtcExportText(FileTime(Date(2023, 3, 5, 7, 8, 9, 45))), L"05:03:2023 07:08:09:045");
}

TEST(ParseTimeText, ReadsTheDisplayTextBackWithMilliseconds)
{
    const DATE date = CL::ParseTimeText(L"07:03:2024 - 14:05:09:250");
    EXPECT_EQ(CL::DateToString(date), L"07:03:2024 - 14:05:09:250");
    EXPECT_NEAR(date, Date(2024, 3, 7, 14, 5, 9, 250), 0.01 * kMs);
}

TEST(ParseTimeText, RoundTripsEveryDisplayedMillisecond)
{
    for (WORD ms : {0, 1, 499, 500, 998, 999}) {
        const std::wstring text = CL::DateToString(Date(2031, 12, 31, 23, 59, 59, ms));
        EXPECT_EQ(CL::DateToString(CL::ParseTimeText(text)), text);
    }
}

TEST(ParseTimeText, SkipsOneCharacterBetweenNumbersAndThreeAfterTheYear)
{
    // Any separator characters are skipped, as long as there is the right count.
    EXPECT_EQ(CL::DateToString(CL::ParseTimeText(L"01.02.2024 x 13.45.30.007")), L"01:02:2024 - 13:45:30:007");
}

TEST(ParseTimeText, RefusesTextsOfAnotherShape)
{
    EXPECT_THROW(CL::ParseTimeText(L""), CL::CException);
    EXPECT_THROW(CL::ParseTimeText(L"07:03:2024 14:05:09:250"), CL::CException);
    EXPECT_THROW(CL::ParseTimeText(L"07:03:2024 - 14:05:09"), CL::CException);
    EXPECT_THROW(CL::ParseTimeText(L"32:01:2024 - 00:00:00:000"), CL::CException);
    EXPECT_THROW(CL::ParseTimeText(L"aa:01:2024 - 00:00:00:000"), CL::CException);
}
