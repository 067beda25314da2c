#include "common/ui/ChartAxes.h"

#include <algorithm>
#include <cfloat>
#include <cstdarg>
#include <cmath>
#include <cwchar>
#include <iterator>

namespace CL {

namespace {

// --- value axis ------------------------------------------------------------

// The smallest number of decimals that writes step exactly (0.25: 2).
int DecimalsOf(double step)
{
    double scaled = step;
    for (int digits = 0; digits < 15; ++digits, scaled *= 10.0)
        if (std::fabs(scaled - std::round(scaled)) <= 1e-6 * scaled)
            return digits;
    return 15;
}

// The digits after the leading one that step's mantissa needs (2.5: 1).
int MantissaDecimalsOf(double step)
{
    const double mantissa = step / std::pow(10.0, std::floor(std::log10(step)));
    return DecimalsOf(mantissa);
}

// A nice step (1, 2, 2.5, 5 times a power of ten) of at least `least`.
double NiceStep(double least)
{
    if (!(least > 0.0))
        return 1.0;
    // Negative powers by division: 1 / 1e7 is the double nearest 1e-7.
    const double exponent = std::floor(std::log10(least));
    const double power = exponent < 0 ? 1.0 / std::pow(10.0, -exponent) : std::pow(10.0, exponent);
    for (double factor : {1.0, 2.0, 2.5, 5.0, 10.0, 20.0}) {
        const double step = factor * power;
        if (step >= least * (1.0 - 1e-12))
            return std::isfinite(step) ? step : DBL_MAX;
    }
    return DBL_MAX;
}

// The largest multiple of step not above value; a quotient that division
// leaves a hair below a whole number (4e-7 / 1e-7) counts as that number.
double RoundDown(double value, double step)
{
    const double k = std::floor(value / step);
    return (k + 1) * step <= value ? (k + 1) * step : k * step;
}

double Clamp(double v)
{
    return std::clamp(v, -DBL_MAX, DBL_MAX);
}

// --- calendar ----------------------------------------------------------------

// Days since 1970-01-01 of a proleptic Gregorian date (Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int& year, unsigned& month, unsigned& day)
{
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    day = static_cast<unsigned>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<unsigned>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yoe + era * 400 + (month <= 2));
}

constexpr int64_t kEpochDays = -25569;   // 30.12.1899 counted from 1.1.1970
constexpr int64_t kMsPerDay = 86400000;
constexpr double kLimitDays = 3.0e6;     // about 8000 years either way

int64_t FloorDiv(int64_t a, int64_t b)
{
    const int64_t q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

int64_t CeilDiv(int64_t a, int64_t b)
{
    return -FloorDiv(-a, b);
}

int64_t ToMs(double time)
{
    return static_cast<int64_t>(std::llround(std::clamp(time, -kLimitDays, kLimitDays) * kMillisecondsPerDay));
}

double FromMs(int64_t ms)
{
    return static_cast<double>(ms) / kMillisecondsPerDay;
}

// --- time axis ----------------------------------------------------------------

struct TimeStep {
    TimeUnit unit;
    int64_t step;
    double days;   // its length (months and years: the average)
};

const TimeStep kTimeSteps[] = {
    {TimeUnit::Millisecond, 1, 1.0 / kMsPerDay},    {TimeUnit::Millisecond, 2, 2.0 / kMsPerDay},
    {TimeUnit::Millisecond, 5, 5.0 / kMsPerDay},    {TimeUnit::Millisecond, 10, 10.0 / kMsPerDay},
    {TimeUnit::Millisecond, 20, 20.0 / kMsPerDay},  {TimeUnit::Millisecond, 50, 50.0 / kMsPerDay},
    {TimeUnit::Millisecond, 100, 100.0 / kMsPerDay}, {TimeUnit::Millisecond, 200, 200.0 / kMsPerDay},
    {TimeUnit::Millisecond, 500, 500.0 / kMsPerDay}, {TimeUnit::Second, 1, 1.0 / 86400},
    {TimeUnit::Second, 2, 2.0 / 86400},              {TimeUnit::Second, 5, 5.0 / 86400},
    {TimeUnit::Second, 10, 10.0 / 86400},            {TimeUnit::Second, 15, 15.0 / 86400},
    {TimeUnit::Second, 30, 30.0 / 86400},            {TimeUnit::Minute, 1, 1.0 / 1440},
    {TimeUnit::Minute, 2, 2.0 / 1440},               {TimeUnit::Minute, 5, 5.0 / 1440},
    {TimeUnit::Minute, 10, 10.0 / 1440},             {TimeUnit::Minute, 15, 15.0 / 1440},
    {TimeUnit::Minute, 30, 30.0 / 1440},             {TimeUnit::Hour, 1, 1.0 / 24},
    {TimeUnit::Hour, 2, 2.0 / 24},                   {TimeUnit::Hour, 3, 3.0 / 24},
    {TimeUnit::Hour, 6, 6.0 / 24},                   {TimeUnit::Hour, 12, 12.0 / 24},
    {TimeUnit::Day, 1, 1.0},                         {TimeUnit::Day, 2, 2.0},
    {TimeUnit::Day, 7, 7.0},                         {TimeUnit::Day, 14, 14.0},
    {TimeUnit::Month, 1, 30.436875},                 {TimeUnit::Month, 2, 2 * 30.436875},
    {TimeUnit::Month, 3, 3 * 30.436875},             {TimeUnit::Month, 6, 6 * 30.436875},
};

constexpr double kDaysPerYear = 365.2425;

int64_t UnitMs(TimeUnit unit)
{
    switch (unit) {
    case TimeUnit::Millisecond: return 1;
    case TimeUnit::Second: return 1000;
    case TimeUnit::Minute: return 60000;
    case TimeUnit::Hour: return 3600000;
    default: return kMsPerDay;
    }
}

// Ticks of a unit of fixed length, at multiples of the step counted from
// 30.12.1899 00:00 (weeks: from a Monday, 1.1.1900).
void FixedTicks(TimeAxis& axis, int64_t fromMs, int64_t toMs)
{
    const int64_t stepMs = axis.step * UnitMs(axis.unit);
    const int64_t origin = (axis.unit == TimeUnit::Day && axis.step % 7 == 0) ? 2 * kMsPerDay : 0;
    for (int64_t k = CeilDiv(fromMs - origin, stepMs); origin + k * stepMs <= toMs; ++k)
        axis.ticks.push_back(FromMs(origin + k * stepMs));
}

// Ticks on the first day of every step-th month (or January of every
// step-th year), counted from year 0.
void CalendarTicks(TimeAxis& axis, double from, double to)
{
    const int64_t months = axis.unit == TimeUnit::Year ? 12 * axis.step : axis.step;
    const CalendarTime start = ToCalendar(from);
    int64_t index = CeilDiv(int64_t{start.year} * 12 + start.month - 1, months) * months;
    for (;; index += months) {
        const double tick = FromCalendar(static_cast<int>(FloorDiv(index, 12)),
                                         static_cast<unsigned>(index - FloorDiv(index, 12) * 12 + 1), 1);
        if (tick > to)
            break;
        if (tick >= from)
            axis.ticks.push_back(tick);
    }
}

std::wstring Printed(const wchar_t* format, ...)
{
    wchar_t buffer[96];
    va_list args;
    va_start(args, format);
    const int n = std::vswprintf(buffer, std::size(buffer), format, args);
    va_end(args);
    return n < 0 ? std::wstring() : std::wstring(buffer, static_cast<size_t>(n));
}

std::wstring DateText(const CalendarTime& c)
{
    return Printed(L"%02u.%02u.%04d", c.day, c.month, c.year);
}

} // namespace

// --- value axis ------------------------------------------------------------

ValueAxis NiceValueAxis(double minimum, double maximum, int maxTicks)
{
    maxTicks = std::max(maxTicks, 1);
    if (!std::isfinite(minimum) || !std::isfinite(maximum)) {
        minimum = 0.0;
        maximum = 1.0;
    }
    if (minimum > maximum)
        std::swap(minimum, maximum);
    const double magnitude = std::max(std::fabs(minimum), std::fabs(maximum));
    if (maximum / 2 - minimum / 2 <= magnitude * 1e-12) {
        // One value (or values closer than the numbers can tell): a range
        // around it.
        const double pad = magnitude > 0.0 ? magnitude / 10 : 1.0;
        minimum = Clamp(minimum - pad);
        maximum = Clamp(maximum + pad);
    }
    ValueAxis axis;
    // Halves keep the span finite for the largest numbers.
    axis.step = NiceStep((maximum / 2 - minimum / 2) / maxTicks * 2);
    axis.low = Clamp(RoundDown(minimum, axis.step));
    axis.high = Clamp(-RoundDown(-maximum, axis.step));
    const double first = std::ceil(axis.low / axis.step);
    const double last = std::floor(axis.high / axis.step);
    for (double k = first; k <= last && axis.ticks.size() < 1000; k += 1.0)
        axis.ticks.push_back(k * axis.step);

    const double largest = std::max(std::fabs(axis.low), std::fabs(axis.high));
    axis.scientific = largest >= 1e9 || axis.step < 1e-6;
    if (axis.scientific)
        axis.digits = std::clamp(static_cast<int>(std::floor(std::log10(largest)) - std::floor(std::log10(axis.step))) +
                                     MantissaDecimalsOf(axis.step),
                                 0, 15);
    else
        axis.digits = DecimalsOf(axis.step);
    return axis;
}

std::wstring ValueTickText(double value, const ValueAxis& axis)
{
    if (std::fabs(value) < axis.step * 1e-6)
        value = 0.0;   // no "-0"
    if (!axis.scientific || value == 0.0)
        return Printed(L"%.*f", axis.scientific ? 0 : axis.digits, value);
    int exponent = static_cast<int>(std::floor(std::log10(std::fabs(value))));
    double mantissa = value / std::pow(10.0, exponent);
    const double scale = std::pow(10.0, axis.digits);
    if (std::fabs(std::round(mantissa * scale) / scale) >= 10.0) {
        mantissa /= 10.0;
        ++exponent;
    }
    return Printed(L"%.*fE%+03d", axis.digits, mantissa, exponent);
}

// --- time axis -------------------------------------------------------------

int TimeTickChars(TimeUnit unit)
{
    switch (unit) {
    case TimeUnit::Millisecond: return 12;   // 23:59:59.999
    case TimeUnit::Second: return 10;        // 23:59:59 and the date below: dd.MM.yyyy
    case TimeUnit::Minute:
    case TimeUnit::Hour: return 10;
    case TimeUnit::Day: return 6;            // 31.12.
    case TimeUnit::Month: return 7;          // 12.2023
    case TimeUnit::Year: return 4;
    }
    return 12;
}

TimeAxis ChooseTimeAxis(double from, double to, double widthPixels, double charWidth)
{
    from = std::clamp(from, -kLimitDays, kLimitDays);
    to = std::clamp(to, -kLimitDays, kLimitDays);
    if (!(to > from))
        to = from + 1.0 / 86400;
    const double pixelsPerDay = std::max(widthPixels, 1.0) / (to - from);
    auto fits = [&](TimeUnit unit, double days) {
        return days * pixelsPerDay >= (TimeTickChars(unit) + 3) * charWidth;
    };
    TimeAxis axis;
    axis.unit = TimeUnit::Year;
    axis.step = 0;
    for (const TimeStep& s : kTimeSteps)
        if (fits(s.unit, s.days)) {
            axis.unit = s.unit;
            axis.step = s.step;
            break;
        }
    if (axis.step == 0) {
        // Years: 1, 2, 5, 10, 20, 50, ...
        axis.unit = TimeUnit::Year;
        for (int64_t power = 1;; power *= 10) {
            const int64_t factors[] = {1, 2, 5};
            for (int64_t factor : factors)
                if (axis.step == 0 && fits(TimeUnit::Year, factor * power * kDaysPerYear))
                    axis.step = factor * power;
            if (axis.step != 0 || power > 1000000)
                break;
        }
        if (axis.step == 0)
            axis.step = 10000000;
    }
    if (axis.unit == TimeUnit::Month || axis.unit == TimeUnit::Year)
        CalendarTicks(axis, from, to);
    else
        FixedTicks(axis, ToMs(from), ToMs(to));
    return axis;
}

std::wstring TimeTickText(double time, TimeUnit unit)
{
    const CalendarTime c = ToCalendar(time);
    switch (unit) {
    case TimeUnit::Millisecond:
        return Printed(L"%02u:%02u:%02u.%03u", c.hour, c.minute, c.second, c.millisecond);
    case TimeUnit::Second:
        return Printed(L"%02u:%02u:%02u", c.hour, c.minute, c.second);
    case TimeUnit::Minute:
    case TimeUnit::Hour:
        return Printed(L"%02u:%02u", c.hour, c.minute);
    case TimeUnit::Day:
        return Printed(L"%02u.%02u.", c.day, c.month);
    case TimeUnit::Month:
        return Printed(L"%02u.%04d", c.month, c.year);
    case TimeUnit::Year:
        return Printed(L"%04d", c.year);
    }
    return std::wstring();
}

std::wstring TimeTickContext(const TimeAxis& axis, size_t index)
{
    if (index >= axis.ticks.size() || axis.unit == TimeUnit::Month || axis.unit == TimeUnit::Year)
        return std::wstring();
    const CalendarTime here = ToCalendar(axis.ticks[index]);
    if (axis.unit == TimeUnit::Day) {
        if (index == 0 || ToCalendar(axis.ticks[index - 1]).year != here.year)
            return Printed(L"%04d", here.year);
        return std::wstring();
    }
    if (index > 0) {
        const CalendarTime before = ToCalendar(axis.ticks[index - 1]);
        if (before.year == here.year && before.month == here.month && before.day == here.day)
            return std::wstring();
    }
    return DateText(here);
}

// --- calendar ------------------------------------------------------------------

CalendarTime ToCalendar(double time)
{
    const int64_t ms = ToMs(time);
    const int64_t day = FloorDiv(ms, kMsPerDay);
    int64_t rest = ms - day * kMsPerDay;
    CalendarTime c;
    CivilFromDays(day + kEpochDays, c.year, c.month, c.day);
    c.hour = static_cast<unsigned>(rest / 3600000);
    rest %= 3600000;
    c.minute = static_cast<unsigned>(rest / 60000);
    rest %= 60000;
    c.second = static_cast<unsigned>(rest / 1000);
    c.millisecond = static_cast<unsigned>(rest % 1000);
    return c;
}

double FromCalendar(int year, unsigned month, unsigned day, unsigned hour, unsigned minute, unsigned second,
                    unsigned millisecond)
{
    const int64_t days = DaysFromCivil(year, month, 1) - kEpochDays + (static_cast<int64_t>(day) - 1);
    const int64_t ms = days * kMsPerDay + int64_t{hour} * 3600000 + int64_t{minute} * 60000 + int64_t{second} * 1000 +
                       millisecond;
    return FromMs(ms);
}

std::wstring CalendarText(double time)
{
    const CalendarTime c = ToCalendar(time);
    return DateText(c) + Printed(L" - %02u:%02u:%02u", c.hour, c.minute, c.second);
}

} // namespace CL
