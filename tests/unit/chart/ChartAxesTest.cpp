// The axes of the trend chart: rounded value ticks for every kind of range
// (constant, negative, huge, tiny, not finite) and calendar time ticks from
// milliseconds to decades, with their labels.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "common/Util_Variant.h"
#include "common/ui/ChartAxes.h"

namespace {

using CL::TimeUnit;

// The step is 1, 2, 2.5 or 5 times a power of ten.
bool IsNiceStep(double step)
{
    const double mantissa = step / std::pow(10.0, std::floor(std::log10(step)));
    for (double nice : {1.0, 2.0, 2.5, 5.0, 10.0})
        if (std::fabs(mantissa - nice) < 1e-9)
            return true;
    return false;
}

// What every value axis must be: it holds the range, its ticks are
// ascending multiples of the step inside it, and no two labels are alike.
void ExpectSoundAxis(double minimum, double maximum, int maxTicks)
{
    SCOPED_TRACE(testing::Message() << "range " << minimum << " .. " << maximum << ", " << maxTicks << " ticks");
    const CL::ValueAxis axis = CL::NiceValueAxis(minimum, maximum, maxTicks);
    EXPECT_TRUE(std::isfinite(axis.low));
    EXPECT_TRUE(std::isfinite(axis.high));
    EXPECT_LT(axis.low, axis.high);
    EXPECT_LE(axis.low, minimum);
    EXPECT_GE(axis.high, maximum);
    EXPECT_TRUE(IsNiceStep(axis.step)) << axis.step;
    ASSERT_GE(axis.ticks.size(), 2u);
    EXPECT_LE(axis.ticks.size(), static_cast<size_t>(2 * maxTicks + 2));
    std::set<std::wstring> labels;
    for (size_t i = 0; i < axis.ticks.size(); ++i) {
        EXPECT_TRUE(std::isfinite(axis.ticks[i]));
        EXPECT_GE(axis.ticks[i], axis.low);
        EXPECT_LE(axis.ticks[i], axis.high);
        if (i > 0) {
            EXPECT_GT(axis.ticks[i], axis.ticks[i - 1]);
        }
        const std::wstring label = CL::ValueTickText(axis.ticks[i], axis);
        EXPECT_TRUE(labels.insert(label).second) << "label repeated: " << testing::PrintToString(label);
        EXPECT_NE(label, L"-0");
    }
}

std::vector<std::wstring> Labels(const CL::ValueAxis& axis)
{
    std::vector<std::wstring> labels;
    for (double tick : axis.ticks)
        labels.push_back(CL::ValueTickText(tick, axis));
    return labels;
}

double Day(int year, unsigned month, unsigned day, unsigned hour = 0, unsigned minute = 0, unsigned second = 0,
           unsigned ms = 0)
{
    return CL::FromCalendar(year, month, day, hour, minute, second, ms);
}

std::vector<std::wstring> TickTexts(const CL::TimeAxis& axis)
{
    std::vector<std::wstring> texts;
    for (double tick : axis.ticks)
        texts.push_back(CL::TimeTickText(tick, axis.unit));
    return texts;
}

constexpr double kWidth = 800.0;   // pixels of the plot
constexpr double kChar = 6.0;      // pixels per character

// Labels of neighbouring ticks never overlap: ticks lie at least a label's
// width apart.
void ExpectSpacedTicks(const CL::TimeAxis& axis, double from, double to)
{
    ASSERT_GE(axis.ticks.size(), 2u);
    const double pixelsPerDay = kWidth / (to - from);
    for (size_t i = 0; i < axis.ticks.size(); ++i) {
        EXPECT_GE(axis.ticks[i], from - 1e-9);
        EXPECT_LE(axis.ticks[i], to + 1e-9);
        if (i > 0) {
            EXPECT_GE((axis.ticks[i] - axis.ticks[i - 1]) * pixelsPerDay,
                      (CL::TimeTickChars(axis.unit) + 1) * kChar);
        }
    }
}

} // namespace

// --- value axis -----------------------------------------------------------------

TEST(ChartValueAxis, RoundsTheRangeOutToNiceTicks)
{
    const CL::ValueAxis axis = CL::NiceValueAxis(0.3, 9.7, 5);
    EXPECT_DOUBLE_EQ(axis.step, 2.0);
    EXPECT_DOUBLE_EQ(axis.low, 0.0);
    EXPECT_DOUBLE_EQ(axis.high, 10.0);
    EXPECT_EQ(Labels(axis), (std::vector<std::wstring>{L"0", L"2", L"4", L"6", L"8", L"10"}));
}

TEST(ChartValueAxis, LabelsShowTheDecimalsTheStepNeeds)
{
    const CL::ValueAxis quarter = CL::NiceValueAxis(0.0, 1.0, 4);
    EXPECT_DOUBLE_EQ(quarter.step, 0.25);
    EXPECT_EQ(Labels(quarter), (std::vector<std::wstring>{L"0.00", L"0.25", L"0.50", L"0.75", L"1.00"}));
    const CL::ValueAxis twoAndAHalf = CL::NiceValueAxis(0.0, 10.0, 4);
    EXPECT_DOUBLE_EQ(twoAndAHalf.step, 2.5);
    EXPECT_EQ(Labels(twoAndAHalf).front(), L"0.0");
    EXPECT_EQ(Labels(twoAndAHalf).back(), L"10.0");
}

TEST(ChartValueAxis, ConstantValueGetsARangeAroundIt)
{
    for (double value : {5.0, -3.25, 1e6, 0.001}) {
        const CL::ValueAxis axis = CL::NiceValueAxis(value, value, 5);
        EXPECT_LT(axis.low, value);
        EXPECT_GT(axis.high, value);
        ExpectSoundAxis(value, value, 5);
    }
}

TEST(ChartValueAxis, ConstantZeroRunsFromMinusOneToOne)
{
    const CL::ValueAxis axis = CL::NiceValueAxis(0.0, 0.0, 4);
    EXPECT_DOUBLE_EQ(axis.low, -1.0);
    EXPECT_DOUBLE_EQ(axis.high, 1.0);
    EXPECT_EQ(Labels(axis), (std::vector<std::wstring>{L"-1.0", L"-0.5", L"0.0", L"0.5", L"1.0"}));
}

TEST(ChartValueAxis, NegativeValuesGetNegativeTicksAndNoMinusZero)
{
    const CL::ValueAxis axis = CL::NiceValueAxis(-1234.5, -17.2, 6);
    EXPECT_LE(axis.low, -1234.5);
    EXPECT_GE(axis.high, -17.2);
    EXPECT_EQ(Labels(axis).front(), L"-1250");
    EXPECT_EQ(Labels(axis).back(), L"0");
    ExpectSoundAxis(-1234.5, -17.2, 6);
    ExpectSoundAxis(-0.3, 0.7, 5);
    // A tick computed a hair off zero still reads "0.0".
    EXPECT_EQ(CL::ValueTickText(-1e-17, CL::NiceValueAxis(-1.0, 1.0, 4)), L"0.0");
}

TEST(ChartValueAxis, HugeValuesStayFiniteAndReadInExponentForm)
{
    ExpectSoundAxis(-1e300, 1e300, 5);
    ExpectSoundAxis(-DBL_MAX, DBL_MAX, 5);
    ExpectSoundAxis(DBL_MAX, DBL_MAX, 5);
    ExpectSoundAxis(1e15, 1e15 + 4096, 5);
    const CL::ValueAxis axis = CL::NiceValueAxis(0.0, 3e12, 3);
    EXPECT_TRUE(axis.scientific);
    EXPECT_EQ(Labels(axis), (std::vector<std::wstring>{L"0", L"1E+12", L"2E+12", L"3E+12"}));
}

TEST(ChartValueAxis, TinyDifferencesGetEnoughDigits)
{
    ExpectSoundAxis(1.0, 1.0 + 1e-9, 5);
    ExpectSoundAxis(1e-12, 5e-12, 4);
    const CL::ValueAxis axis = CL::NiceValueAxis(1e-7, 4e-7, 3);
    EXPECT_EQ(Labels(axis), (std::vector<std::wstring>{L"1E-07", L"2E-07", L"3E-07", L"4E-07"}));
}

TEST(ChartValueAxis, NaNAndInfiniteBoundsGiveZeroToOne)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (auto [low, high] : {std::pair{nan, 1.0}, {0.0, inf}, {-inf, inf}, {nan, nan}}) {
        const CL::ValueAxis axis = CL::NiceValueAxis(low, high, 5);
        EXPECT_DOUBLE_EQ(axis.low, 0.0);
        EXPECT_DOUBLE_EQ(axis.high, 1.0);
    }
}

TEST(ChartValueAxis, ReversedBoundsAreTakenInOrder)
{
    const CL::ValueAxis axis = CL::NiceValueAxis(9.7, 0.3, 5);
    EXPECT_DOUBLE_EQ(axis.low, 0.0);
    EXPECT_DOUBLE_EQ(axis.high, 10.0);
}

TEST(ChartValueAxis, AnyRangeGivesASoundAxis)
{
    std::mt19937_64 random(20231115);
    std::uniform_real_distribution<double> exponent(-12.0, 15.0);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> ticks(2, 12);
    for (int i = 0; i < 2000; ++i) {
        const double a = unit(random) * std::pow(10.0, exponent(random));
        const double b = a + std::fabs(unit(random)) * std::pow(10.0, exponent(random));
        ExpectSoundAxis(a, b, ticks(random));
        if (HasFailure())
            break;
    }
}

// --- time axis --------------------------------------------------------------------

TEST(ChartTimeAxis, CalendarMatchesTheAutomationDate)
{
    for (auto [y, mo, d, h, mi, s, ms] : {std::tuple{2023, 3, 15, 10, 0, 0, 0},
                                           {1999, 12, 31, 23, 59, 59, 999},
                                           {2024, 2, 29, 12, 30, 0, 250},
                                           {1900, 1, 1, 0, 0, 0, 0}}) {
        SYSTEMTIME st{};
        st.wYear = static_cast<WORD>(y);
        st.wMonth = static_cast<WORD>(mo);
        st.wDay = static_cast<WORD>(d);
        st.wHour = static_cast<WORD>(h);
        st.wMinute = static_cast<WORD>(mi);
        st.wSecond = static_cast<WORD>(s);
        st.wMilliseconds = static_cast<WORD>(ms);
        const double time = Day(y, mo, d, h, mi, s, ms);
        EXPECT_NEAR(time, CL::SystemTimeToDate(st), 1e-9);
        const CL::CalendarTime back = CL::ToCalendar(time);
        EXPECT_EQ(back.year, y);
        EXPECT_EQ(back.month, static_cast<unsigned>(mo));
        EXPECT_EQ(back.day, static_cast<unsigned>(d));
        EXPECT_EQ(back.hour, static_cast<unsigned>(h));
        EXPECT_EQ(back.minute, static_cast<unsigned>(mi));
        EXPECT_EQ(back.second, static_cast<unsigned>(s));
        EXPECT_EQ(back.millisecond, static_cast<unsigned>(ms));
    }
    EXPECT_EQ(CL::CalendarText(Day(2023, 3, 15, 9, 5, 7)), L"15.03.2023 - 09:05:07");
}

TEST(ChartTimeAxis, OneSecondIsTickedInMilliseconds)
{
    const double from = Day(2023, 3, 15, 10, 0, 0);
    const double to = from + 1.0 / 86400;
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Millisecond);
    EXPECT_EQ(axis.step, 200);
    EXPECT_EQ(TickTexts(axis), (std::vector<std::wstring>{L"10:00:00.000", L"10:00:00.200", L"10:00:00.400",
                                                           L"10:00:00.600", L"10:00:00.800", L"10:00:01.000"}));
    ExpectSpacedTicks(axis, from, to);
    EXPECT_EQ(CL::TimeTickContext(axis, 0), L"15.03.2023");
    EXPECT_EQ(CL::TimeTickContext(axis, 1), L"");
}

TEST(ChartTimeAxis, OneMinuteIsTickedInSeconds)
{
    const double from = Day(2023, 3, 15, 10, 0, 0, 300);
    const double to = from + 1.0 / 1440;
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Second);
    EXPECT_EQ(axis.step, 10);
    EXPECT_EQ(TickTexts(axis).front(), L"10:00:10");
    EXPECT_EQ(TickTexts(axis).back(), L"10:01:00");
    ExpectSpacedTicks(axis, from, to);
}

TEST(ChartTimeAxis, HoursAcrossMidnightShowTheNewDateUnderItsTick)
{
    const double from = Day(2023, 3, 15, 20, 0, 0);
    const double to = Day(2023, 3, 16, 4, 0, 0);
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Hour);
    EXPECT_EQ(axis.step, 1);
    EXPECT_EQ(TickTexts(axis).front(), L"20:00");
    EXPECT_EQ(TickTexts(axis).back(), L"04:00");
    ExpectSpacedTicks(axis, from, to);
    for (size_t i = 0; i < axis.ticks.size(); ++i) {
        const std::wstring text = CL::TimeTickText(axis.ticks[i], axis.unit);
        const std::wstring context = CL::TimeTickContext(axis, i);
        if (i == 0)
            EXPECT_EQ(context, L"15.03.2023");
        else if (text == L"00:00")
            EXPECT_EQ(context, L"16.03.2023");
        else
            EXPECT_EQ(context, L"") << testing::PrintToString(text);
    }
}

TEST(ChartTimeAxis, AWeekIsTickedInDaysWithTheYearUnderTheFirst)
{
    const double from = Day(2023, 12, 28, 13, 0, 0);
    const double to = from + 7;
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Day);
    EXPECT_EQ(axis.step, 1);
    EXPECT_EQ(TickTexts(axis),
              (std::vector<std::wstring>{L"29.12.", L"30.12.", L"31.12.", L"01.01.", L"02.01.", L"03.01.", L"04.01."}));
    EXPECT_EQ(CL::TimeTickContext(axis, 0), L"2023");
    for (size_t i = 1; i < axis.ticks.size(); ++i)
        EXPECT_EQ(CL::TimeTickContext(axis, i), i == 3 ? L"2024" : L"");
    ExpectSpacedTicks(axis, from, to);
}

TEST(ChartTimeAxis, ThreeMonthsAreTickedInWeeksFromMonday)
{
    const double from = Day(2023, 1, 10);
    const double to = Day(2023, 4, 10);
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Day);
    EXPECT_EQ(axis.step, 7);
    ExpectSpacedTicks(axis, from, to);
    for (double tick : axis.ticks) {
        const SYSTEMTIME st = CL::DateToSystemTime(tick);
        EXPECT_EQ(st.wDayOfWeek, 1) << testing::PrintToString(CL::CalendarText(tick));   // Monday
    }
    EXPECT_EQ(TickTexts(axis).front(), L"16.01.");
}

TEST(ChartTimeAxis, AYearIsTickedOnTheFirstOfMonthsAcrossALeapDay)
{
    const double from = Day(2023, 11, 20);
    const double to = Day(2024, 11, 20);
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Month);
    EXPECT_EQ(axis.step, 1);
    EXPECT_EQ(TickTexts(axis).front(), L"12.2023");
    EXPECT_EQ(TickTexts(axis).back(), L"11.2024");
    EXPECT_EQ(axis.ticks.size(), 12u);
    EXPECT_DOUBLE_EQ(axis.ticks[3], Day(2024, 3, 1));
    EXPECT_DOUBLE_EQ(axis.ticks[3] - axis.ticks[2], 29.0);   // February 2024
    ExpectSpacedTicks(axis, from, to);
}

TEST(ChartTimeAxis, TenYearsAreTickedInYears)
{
    const double from = Day(2014, 6, 1);
    const double to = Day(2024, 6, 1);
    const CL::TimeAxis axis = CL::ChooseTimeAxis(from, to, kWidth, kChar);
    EXPECT_EQ(axis.unit, TimeUnit::Year);
    EXPECT_EQ(axis.step, 1);
    EXPECT_EQ(TickTexts(axis),
              (std::vector<std::wstring>{L"2015", L"2016", L"2017", L"2018", L"2019", L"2020", L"2021", L"2022",
                                         L"2023", L"2024"}));
    ExpectSpacedTicks(axis, from, to);
    const CL::TimeAxis narrow = CL::ChooseTimeAxis(from, to, 120, kChar);
    EXPECT_EQ(narrow.step, 5);
    EXPECT_EQ(TickTexts(narrow), (std::vector<std::wstring>{L"2015", L"2020"}));
}

TEST(ChartTimeAxis, EveryZoomFromASecondToTenYearsHasReadableTicks)
{
    const double from = Day(2020, 2, 27, 23, 59, 58, 123);
    for (double span = 1.0 / 86400; span <= 3700; span *= 1.7) {
        SCOPED_TRACE(testing::Message() << "span " << span << " days");
        for (double width : {200.0, 800.0, 1900.0}) {
            const CL::TimeAxis axis = CL::ChooseTimeAxis(from, from + span, width, kChar);
            ASSERT_GE(axis.ticks.size(), 1u);
            EXPECT_LE(axis.ticks.size(), static_cast<size_t>(width / kChar));
            std::set<std::wstring> seen;
            for (size_t i = 0; i < axis.ticks.size(); ++i)
                EXPECT_TRUE(seen.insert(CL::TimeTickText(axis.ticks[i], axis.unit) + L"|" +
                                        CL::CalendarText(axis.ticks[i]))
                                .second);
        }
    }
}
