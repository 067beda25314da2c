#pragma once
// CTrendSeries: the values of a read turned into points of a trend chart,
// in time order: the time stamp as local time (linear days, see
// common/ui/ChartAxes.h), the value as a number and whether it may be drawn
// as a good value. Numbers are the integer types, VT_R4, VT_R8, VT_CY,
// VT_DECIMAL, VT_BOOL (0 or 1) and VT_DATE (its number); strings, arrays and
// empty values are not points and only counted. A NaN or an infinity is a
// point that is never drawn (it breaks the line) and is counted apart.
//
// Reduce() turns the points within a time range into what a plot of a given
// width in pixels draws: per pixel column the first, the smallest, the
// largest and the last value in time order, at the column's middle, so
// that the polyline covers the same pixels as one through every point.
#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/historian/HistorianValues.h"

namespace CL {

// What a plot draws of a series within a time range.
struct CTrendPath {
    // The polyline points (x in pixels, value in the series' units); a new
    // polyline begins at each index in starts.
    std::vector<double> x;
    std::vector<double> value;
    std::vector<size_t> starts;
    // Values of bad quality: per pixel column the smallest and largest.
    struct Marker {
        double x, low, high;
    };
    std::vector<Marker> markers;
    size_t visiblePoints = 0;   // points within the range (any kind)

    void Clear();
    size_t PolylineCount() const { return starts.size(); }
    // The index range [begin, end) of polyline k.
    std::pair<size_t, size_t> Polyline(size_t k) const;
};

class CTrendSeries {
public:
    enum class Kind : uint8_t { Good, Bad, NotFinite };
    static constexpr size_t npos = static_cast<size_t>(-1);

    // A point given directly (tests, benchmarks): time in local linear days.
    struct Point {
        double time;
        double value;
        WORD quality;
    };

    // True for a good quality: both top bits of the low byte set.
    static bool IsGood(WORD quality) { return (quality & 0xC0) == 0xC0; }
    // The number a value is drawn as; false for a value that is not drawn
    // (string, array, empty, other types).
    static bool NumericValue(const VARIANT& value, double& number);

    // Replaces the points with those of a read. The time stamps (UTC) are
    // shown in local time the way the list shows them: shifted by the
    // zone's bias of now.
    void Assign(std::shared_ptr<const CHistorianValues> values);
    void AssignPoints(const std::vector<Point>& points);
    void Clear();

    size_t Size() const { return m_time.size(); }
    bool Empty() const { return m_time.empty(); }
    double Time(size_t i) const { return m_time[i]; }
    double Value(size_t i) const { return m_value[i]; }
    Kind KindOf(size_t i) const { return m_kind[i]; }
    WORD Quality(size_t i) const { return m_quality[i]; }
    // Values delivered, values not drawn because they are no numbers, and
    // numbers that are NaN or infinite.
    size_t DeliveredCount() const { return m_delivered; }
    size_t NotPlottedCount() const { return m_notPlotted; }
    size_t NotFiniteCount() const { return m_notFinite; }
    size_t BadCount() const { return m_bad; }

    // The points with from <= time <= to: [first, last).
    std::pair<size_t, size_t> Visible(double from, double to) const;
    // The smallest and largest finite value within [from, to]; when no
    // point lies there, of the points on either side. False when there is
    // none.
    bool ValueRange(double from, double to, double& low, double& high) const;
    // The point nearest in time; npos when there is none.
    size_t Nearest(double time) const;

    // The description of one point: its time as the list shows it, its
    // value and type, its quality.
    std::wstring PointText(size_t i) const;
    // The counts of values not drawn, one line each; empty when all are.
    std::wstring NotDrawnText() const;
    // What the chart says of values of bad quality; empty when there are none.
    std::wstring BadText() const;
    // The notes the chart draws under its title: BadText, then NotDrawnText,
    // one line each.
    std::wstring NotesText() const;

    // What a plot of width pixels starting at x = left draws of the range
    // [from, to]. The points just outside the range are included so that
    // the line runs to the plot's edges. With everyPoint every point is
    // kept (at its column's middle all the same): the reference the
    // reduction must draw alike.
    void Reduce(double from, double to, double left, int width, bool everyPoint, CTrendPath& path) const;

private:
    void Append(double time, double value, WORD quality, uint32_t source);
    void SortByTime();

    std::vector<double> m_time;
    std::vector<double> m_value;
    std::vector<Kind> m_kind;
    std::vector<WORD> m_quality;
    std::vector<uint32_t> m_source;   // index into m_values
    std::shared_ptr<const CHistorianValues> m_values;
    size_t m_delivered = 0;
    size_t m_notPlotted = 0;
    size_t m_notFinite = 0;
    size_t m_bad = 0;
};

} // namespace CL
