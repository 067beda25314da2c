#include "historian/TrendSeries.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "common/Exception.h"
#include "common/LocalTime.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/ui/ChartAxes.h"
#include "historian/HistDataRows.h"

namespace CL {

namespace {

constexpr int64_t kFileTimeOf1899 = 94353120000000000;   // 30.12.1899 00:00 in 100 ns since 1601
constexpr double kFileTimePerDay = 864000000000.0;

int64_t FileTimeValue(const FILETIME& ft)
{
    return static_cast<int64_t>((static_cast<uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime);
}

// The zone's bias of now in 100 ns units (local minus UTC): the system
// applies it to every date alike, so one conversion gives it for all.
int64_t LocalBias(const FILETIME& sample)
{
    FILETIME local;
    if (!::FileTimeToLocalFileTime(&sample, &local))
        ThrowLastError(L"FileTimeToLocalFileTime (&ft, &ftLocal)");
    return FileTimeValue(local) - FileTimeValue(sample);
}

// One pixel column's share of a polyline: the indices of its first,
// smallest, largest and last point.
struct Column {
    int64_t column = 0;
    size_t first = 0, low = 0, high = 0, last = 0;
    bool open = false;
};

// Builds the path point by point; a polyline ends at a gap.
class CPathBuilder {
public:
    CPathBuilder(const std::vector<double>& values, CTrendPath& path) : m_values(values), m_path(path) {}

    void Add(double x, size_t i)
    {
        if (m_newLine) {
            m_path.starts.push_back(m_path.x.size());
            m_newLine = false;
        }
        m_path.x.push_back(x);
        m_path.value.push_back(m_values[i]);
    }
    void Gap() { m_newLine = true; }

    // Adds a column's points in time order, each once.
    void AddColumn(double x, const Column& c)
    {
        size_t order[4] = {c.first, std::min(c.low, c.high), std::max(c.low, c.high), c.last};
        size_t previous = CTrendSeries::npos;
        for (size_t i : order)
            if (i != previous) {
                Add(x, i);
                previous = i;
            }
    }

private:
    const std::vector<double>& m_values;
    CTrendPath& m_path;
    bool m_newLine = true;
};

} // namespace

// --- CTrendPath --------------------------------------------------------------

void CTrendPath::Clear()
{
    x.clear();
    value.clear();
    starts.clear();
    markers.clear();
    visiblePoints = 0;
}

std::pair<size_t, size_t> CTrendPath::Polyline(size_t k) const
{
    return {starts[k], k + 1 < starts.size() ? starts[k + 1] : x.size()};
}

// --- CTrendSeries ------------------------------------------------------------

bool CTrendSeries::NumericValue(const VARIANT& v, double& number)
{
    switch (v.vt) {
    case VT_I1: number = v.cVal; return true;
    case VT_UI1: number = v.bVal; return true;
    case VT_I2: number = v.iVal; return true;
    case VT_UI2: number = v.uiVal; return true;
    case VT_I4: number = v.lVal; return true;
    case VT_UI4: number = v.ulVal; return true;
    case VT_INT: number = v.intVal; return true;
    case VT_UINT: number = v.uintVal; return true;
    case VT_I8: number = static_cast<double>(v.llVal); return true;
    case VT_UI8: number = static_cast<double>(v.ullVal); return true;
    case VT_R4: number = v.fltVal; return true;
    case VT_R8: number = v.dblVal; return true;
    case VT_CY: number = static_cast<double>(v.cyVal.int64) / 10000.0; return true;
    case VT_BOOL: number = v.boolVal != VARIANT_FALSE ? 1.0 : 0.0; return true;
    case VT_DATE: number = v.date; return true;
    case VT_DECIMAL: {
        DECIMAL copy = v.decVal;   // the function takes a pointer to non-const
        return SUCCEEDED(::VarR8FromDec(&copy, &number));
    }
    default: return false;
    }
}

void CTrendSeries::Clear()
{
    m_time.clear();
    m_value.clear();
    m_kind.clear();
    m_quality.clear();
    m_source.clear();
    m_values.reset();
    m_delivered = m_notPlotted = m_notFinite = m_bad = 0;
}

void CTrendSeries::Append(double time, double value, WORD quality, uint32_t source)
{
    Kind kind = Kind::Good;
    if (!std::isfinite(value)) {
        kind = Kind::NotFinite;
        ++m_notFinite;
    } else if (!IsGood(quality)) {
        kind = Kind::Bad;
        ++m_bad;
    }
    m_time.push_back(time);
    m_value.push_back(value);
    m_kind.push_back(kind);
    m_quality.push_back(quality);
    m_source.push_back(source);
}

void CTrendSeries::Assign(std::shared_ptr<const CHistorianValues> values)
{
    Clear();
    if (!values)
        return;
    m_values = std::move(values);
    const CHistorianValues& v = *m_values;
    m_delivered = v.Size();
    if (v.Size() == 0)
        return;
    const int64_t bias = LocalBias(v.times.front());
    m_time.reserve(v.Size());
    m_value.reserve(v.Size());
    m_kind.reserve(v.Size());
    m_quality.reserve(v.Size());
    m_source.reserve(v.Size());
    for (size_t i = 0; i < v.Size(); ++i) {
        double number = 0.0;
        if (!NumericValue(v.values[i], number)) {
            ++m_notPlotted;
            continue;
        }
        const double time = static_cast<double>(FileTimeValue(v.times[i]) + bias - kFileTimeOf1899) / kFileTimePerDay;
        Append(time, number, v.qualities[i], static_cast<uint32_t>(i));
    }
    SortByTime();
}

void CTrendSeries::AssignPoints(const std::vector<Point>& points)
{
    Clear();
    m_delivered = points.size();
    for (const Point& p : points)
        Append(p.time, p.value, p.quality, static_cast<uint32_t>(m_time.size()));
    SortByTime();
}

void CTrendSeries::SortByTime()
{
    if (std::is_sorted(m_time.begin(), m_time.end()))
        return;
    // Runs of several rows may overlap: order the points by time, equal
    // times in delivered order.
    std::vector<uint32_t> order(m_time.size());
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), [this](uint32_t a, uint32_t b) { return m_time[a] < m_time[b]; });
    auto permute = [&order](auto& list) {
        std::remove_reference_t<decltype(list)> sorted;
        sorted.reserve(list.size());
        for (uint32_t i : order)
            sorted.push_back(list[i]);
        list.swap(sorted);
    };
    permute(m_time);
    permute(m_value);
    permute(m_kind);
    permute(m_quality);
    permute(m_source);
}

std::pair<size_t, size_t> CTrendSeries::Visible(double from, double to) const
{
    const auto first = std::lower_bound(m_time.begin(), m_time.end(), from);
    const auto last = std::upper_bound(first, m_time.end(), to);
    return {static_cast<size_t>(first - m_time.begin()), static_cast<size_t>(last - m_time.begin())};
}

bool CTrendSeries::ValueRange(double from, double to, double& low, double& high) const
{
    auto [first, last] = Visible(from, to);
    if (first == last) {
        first = first > 0 ? first - 1 : first;
        last = last < Size() ? last + 1 : last;
    }
    bool any = false;
    double lo = 0.0, hi = 0.0;
    for (size_t i = first; i < last; ++i) {
        if (m_kind[i] == Kind::NotFinite)
            continue;
        const double v = m_value[i];
        if (!any) {
            lo = hi = v;
            any = true;
        } else if (v < lo) {
            lo = v;
        } else if (v > hi) {
            hi = v;
        }
    }
    if (any) {
        low = lo;
        high = hi;
    }
    return any;
}

size_t CTrendSeries::Nearest(double time) const
{
    if (m_time.empty())
        return npos;
    const size_t after = static_cast<size_t>(std::lower_bound(m_time.begin(), m_time.end(), time) - m_time.begin());
    if (after == 0)
        return 0;
    if (after == m_time.size())
        return after - 1;
    return time - m_time[after - 1] <= m_time[after] - time ? after - 1 : after;
}

std::wstring CTrendSeries::PointText(size_t i) const
{
    const WORD quality = m_quality[i];
    std::wstring time, value, type;
    if (m_values) {
        const size_t source = m_source[i];
        time = LocalTimeText(m_values->times[source]);
        value = VariantToString(m_values->values[source], kLocaleSystemDefault, kArraySeparator);
        type = VarTypeToString(m_values->values[source].vt);
    } else {
        time = CalendarText(m_time[i]);
        value = Format(L"%.15g", m_value[i]);
        type = VarTypeToString(VT_R8);
    }
    std::wstring text = time + L"\r\nValue: " + value + L" (" + type + L")\r\nQuality: " +
                        CHistDataRows::QualityText(quality) + Format(L" (%u)", static_cast<unsigned>(quality));
    if (m_kind[i] == Kind::NotFinite)
        text += L"\r\nNot a finite number: not drawn";
    else if (m_kind[i] == Kind::Bad)
        text += L"\r\nNot drawn as a good value";
    return text;
}

std::wstring CTrendSeries::NotDrawnText() const
{
    std::wstring text;
    if (m_notFinite > 0)
        text += Format(L"%zu value(s) not a finite number (NaN or infinite): not drawn", m_notFinite);
    if (m_notPlotted > 0) {
        if (!text.empty())
            text += L"\r\n";
        text += Format(L"%zu value(s) not numbers (text, arrays or empty): not drawn", m_notPlotted);
    }
    return text;
}

std::wstring CTrendSeries::BadText() const
{
    if (m_bad == 0)
        return std::wstring();
    return Format(L"%zu value(s) NOT GOOD: red crosses, not joined by the line", m_bad);
}

std::wstring CTrendSeries::NotesText() const
{
    std::wstring notes = BadText();
    const std::wstring notDrawn = NotDrawnText();
    if (!notes.empty() && !notDrawn.empty())
        notes += L"\r\n";
    return notes + notDrawn;
}

void CTrendSeries::Reduce(double from, double to, double left, int width, bool everyPoint, CTrendPath& path) const
{
    path.Clear();
    if (m_time.empty() || width <= 0 || !(to > from))
        return;
    const auto [first, last] = Visible(from, to);
    path.visiblePoints = last - first;
    const size_t begin = first > 0 ? first - 1 : 0;
    const size_t end = last < Size() ? last + 1 : last;
    const double scale = width / (to - from);
    const int64_t lastColumn = width - 1;

    CPathBuilder builder(m_value, path);
    Column c;
    auto flush = [&] {
        if (c.open)
            builder.AddColumn(left + static_cast<double>(c.column) + 0.5, c);
        c.open = false;
    };
    CTrendPath::Marker marker{0, 0, 0};
    int64_t markerColumn = -1;
    auto flushMarker = [&] {
        if (markerColumn >= 0)
            path.markers.push_back(marker);
        markerColumn = -1;
    };

    for (size_t i = begin; i < end; ++i) {
        const double t = m_time[i];
        const bool inside = i >= first && i < last;
        if (m_kind[i] != Kind::Good) {
            flush();
            builder.Gap();
            if (m_kind[i] == Kind::Bad && inside) {
                const int64_t col = std::min<int64_t>(static_cast<int64_t>((t - from) * scale), lastColumn);
                const double v = m_value[i];
                if (col != markerColumn || everyPoint) {
                    flushMarker();
                    markerColumn = col;
                    marker = {left + static_cast<double>(col) + 0.5, v, v};
                } else {
                    marker.low = std::min(marker.low, v);
                    marker.high = std::max(marker.high, v);
                }
            }
            continue;
        }
        if (!inside) {
            // The neighbour outside the range: where it really is.
            flush();
            builder.Add(left + (t - from) * scale, i);
            continue;
        }
        const int64_t col = std::min<int64_t>(static_cast<int64_t>((t - from) * scale), lastColumn);
        if (everyPoint) {
            builder.Add(left + static_cast<double>(col) + 0.5, i);
            continue;
        }
        if (c.open && c.column == col) {
            if (m_value[i] < m_value[c.low])
                c.low = i;
            else if (m_value[i] > m_value[c.high])
                c.high = i;
            c.last = i;
            continue;
        }
        flush();
        c = Column{col, i, i, i, i, true};
    }
    flush();
    flushMarker();
}

} // namespace CL
