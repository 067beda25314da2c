#pragma once
// The axes of a chart: rounded tick values of a value axis and calendar
// ticks of a time axis, with their labels. Pure arithmetic, no drawing.
//
// Times are "linear days": days since 30.12.1899 00:00 counted straight
// through (a negative time is before that day, with a negative fraction),
// the same scale as the automation date for every date after 1899.
#include <cstdint>
#include <string>
#include <vector>

namespace CL {

// --- value axis ------------------------------------------------------------

struct ValueAxis {
    double low = 0.0;              // the axis runs from low to high
    double high = 1.0;
    double step = 0.5;             // distance between two ticks: 1, 2, 2.5 or 5 times a power of ten
    std::vector<double> ticks;     // low, low + step, ..., high
    bool scientific = false;       // labels in exponent form (huge or tiny numbers)
    int digits = 0;                // decimals (fixed form) or mantissa decimals (exponent form)
};

// A rounded axis that holds [minimum, maximum] with at most about maxTicks
// intervals. A single value (minimum == maximum) gets a range around it;
// infinite or NaN bounds give the axis 0 to 1; huge bounds stay finite.
ValueAxis NiceValueAxis(double minimum, double maximum, int maxTicks);

// A tick value's label: as many decimals as the step needs, "0" rather
// than "-0", exponent form for huge or tiny values.
std::wstring ValueTickText(double value, const ValueAxis& axis);

// --- time axis -------------------------------------------------------------

enum class TimeUnit { Millisecond, Second, Minute, Hour, Day, Month, Year };

struct TimeAxis {
    TimeUnit unit = TimeUnit::Second;
    int64_t step = 1;             // in units
    std::vector<double> ticks;    // linear days within [from, to], ascending
};

// Calendar ticks within [from, to] (linear days, from < to) on a plot of
// widthPixels, spaced so that labels of charWidth pixels per character do
// not overlap: multiples of 1, 2, 5, 10, ... milliseconds, 1, 2, 5, 10, 15,
// 30 seconds or minutes, 1, 2, 3, 6, 12 hours, 1 or 2 days, weeks from
// Monday, 1, 2, 3 or 6 months, 1, 2, 5, 10, ... years.
TimeAxis ChooseTimeAxis(double from, double to, double widthPixels, double charWidth);

// The label of a tick: "HH:mm:ss.fff" (milliseconds), "HH:mm:ss"
// (seconds), "HH:mm" (minutes, hours), "dd.MM." (days), "MM.yyyy"
// (months), "yyyy" (years).
std::wstring TimeTickText(double time, TimeUnit unit);
// The line under a tick's label that says where it is in the calendar:
// the date "dd.MM.yyyy" under the first tick of a time-of-day axis and
// under every tick whose date differs from the previous tick's, the year
// under the first tick of a day axis and at every change of year; empty
// elsewhere.
std::wstring TimeTickContext(const TimeAxis& axis, size_t index);
// The longest label of a unit, in characters.
int TimeTickChars(TimeUnit unit);

// --- calendar of linear days ------------------------------------------------

struct CalendarTime {
    int year = 1899;
    unsigned month = 12, day = 30, hour = 0, minute = 0, second = 0, millisecond = 0;
};
// Fields of a linear-day time, to the nearest millisecond.
CalendarTime ToCalendar(double time);
// The linear-day time of calendar fields (the day may run past the month).
double FromCalendar(int year, unsigned month, unsigned day, unsigned hour = 0, unsigned minute = 0,
                    unsigned second = 0, unsigned millisecond = 0);
// "dd.MM.yyyy - HH:mm:ss", the pickers' format.
std::wstring CalendarText(double time);

inline constexpr double kMillisecondsPerDay = 86400000.0;

} // namespace CL
