// The trend series: which values become points and how (types, local time,
// quality, NaN and infinities), the counts of values not drawn, the visible
// range and the nearest point, and the per-column reduction.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "common/LocalTime.h"
#include "common/SafeArray.h"
#include "common/Util_Variant.h"
#include "historian/TrendSeries.h"
#include "support/ZoneOffset.h"

namespace {

using Kind = CL::CTrendSeries::Kind;
constexpr double kSecond = 1.0 / 86400;
constexpr WORD kGood = 192;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

FILETIME FileTime(DATE utc)
{
    const SYSTEMTIME st = CL::DateToSystemTime(utc);
    FILETIME ft;
    ::SystemTimeToFileTime(&st, &ft);
    return ft;
}

CL::CVariant Typed(VARTYPE vt, double number)
{
    CL::CVariant r8 = CL::CVariant::R8(number);
    CL::CVariant v;
    EXPECT_EQ(::VariantChangeType(&v, &r8, 0, vt), S_OK) << vt;
    return v;
}

struct Values {
    std::shared_ptr<CL::CHistorianValues> read = std::make_shared<CL::CHistorianValues>();
    void Add(CL::CVariant value, DATE utc, WORD quality = kGood)
    {
        read->values.push_back(std::move(value));
        read->times.push_back(FileTime(utc));
        read->qualities.push_back(quality);
    }
};

CL::CTrendSeries Points(const std::vector<CL::CTrendSeries::Point>& points)
{
    CL::CTrendSeries series;
    series.AssignPoints(points);
    return series;
}

// Points i = 0..n-1 at time i seconds with the given values, all good.
CL::CTrendSeries Ramp(const std::vector<double>& values)
{
    std::vector<CL::CTrendSeries::Point> points;
    for (size_t i = 0; i < values.size(); ++i)
        points.push_back({i * kSecond, values[i], kGood});
    return Points(points);
}

} // namespace

TEST(TrendSeries, NumericTypesAreDrawnAsTheirNumbers)
{
    Values v;
    const DATE t = 45000.5;
    v.Add(Typed(VT_I1, -5), t);
    v.Add(Typed(VT_UI1, 200), t + kSecond);
    v.Add(Typed(VT_I2, -300), t + 2 * kSecond);
    v.Add(Typed(VT_UI2, 60000), t + 3 * kSecond);
    v.Add(Typed(VT_I4, -70000), t + 4 * kSecond);
    v.Add(Typed(VT_UI4, 4000000000.0), t + 5 * kSecond);
    v.Add(Typed(VT_I8, -5e12), t + 6 * kSecond);
    v.Add(Typed(VT_UI8, 9e15), t + 7 * kSecond);
    v.Add(Typed(VT_R4, 1.5), t + 8 * kSecond);
    v.Add(CL::CVariant::R8(2.25), t + 9 * kSecond);
    v.Add(Typed(VT_CY, 12.3456), t + 10 * kSecond);
    v.Add(Typed(VT_BOOL, 1), t + 11 * kSecond);
    v.Add(Typed(VT_BOOL, 0), t + 12 * kSecond);
    v.Add(Typed(VT_DATE, 45123.75), t + 13 * kSecond);
    v.Add(Typed(VT_INT, -12), t + 14 * kSecond);
    v.Add(Typed(VT_UINT, 12), t + 15 * kSecond);
    CL::CTrendSeries series;
    series.Assign(v.read);
    const std::vector<double> expected = {-5, 200, -300, 60000, -70000, 4000000000.0, -5e12, 9e15,
                                          1.5, 2.25, 12.3456, 1, 0, 45123.75, -12, 12};
    ASSERT_EQ(series.Size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_DOUBLE_EQ(series.Value(i), expected[i]) << i;
        EXPECT_EQ(series.KindOf(i), Kind::Good);
    }
    EXPECT_EQ(series.NotPlottedCount(), 0u);
    EXPECT_EQ(series.NotDrawnText(), L"");
}

TEST(TrendSeries, StringsArraysAndEmptyValuesAreCountedNotDrawn)
{
    Values v;
    v.Add(CL::CVariant(L"12.5"), 45000.0);
    v.Add(CL::CVariant::R8(1.0), 45000.0 + kSecond);
    v.Add(CL::StringToVariant(L"1\r\n2", VT_ARRAY | VT_R8, CL::kLocaleInvariant, CL::kArraySeparator),
          45000.0 + 2 * kSecond);
    v.Add(CL::CVariant(), 45000.0 + 3 * kSecond);
    CL::CTrendSeries series;
    series.Assign(v.read);
    EXPECT_EQ(series.DeliveredCount(), 4u);
    EXPECT_EQ(series.Size(), 1u);
    EXPECT_EQ(series.NotPlottedCount(), 3u);
    EXPECT_EQ(series.NotDrawnText(), L"3 value(s) not numbers (text, arrays or empty): not drawn");
}

TEST(TrendSeries, NaNAndInfinitiesAreNeverDrawnAndAreCounted)
{
    CL::CTrendSeries series = Ramp({1.0, kNaN, 2.0, kInf, -kInf, 3.0});
    ASSERT_EQ(series.Size(), 6u);
    EXPECT_EQ(series.KindOf(1), Kind::NotFinite);
    EXPECT_EQ(series.KindOf(3), Kind::NotFinite);
    EXPECT_EQ(series.KindOf(4), Kind::NotFinite);
    EXPECT_EQ(series.NotFiniteCount(), 3u);
    EXPECT_EQ(series.NotDrawnText(), L"3 value(s) not a finite number (NaN or infinite): not drawn");
    double low = 0, high = 0;
    ASSERT_TRUE(series.ValueRange(0, 10 * kSecond, low, high));
    EXPECT_EQ(low, 1.0);
    EXPECT_EQ(high, 3.0);
    // They break the line: four polylines (1), (2), (3).
    CL::CTrendPath path;
    series.Reduce(-kSecond, 6 * kSecond, 0, 700, false, path);
    EXPECT_EQ(path.PolylineCount(), 3u);
    EXPECT_EQ(path.x.size(), 3u);
    EXPECT_TRUE(path.markers.empty());
}

TEST(TrendSeries, BadQualityIsAGapWithAMarker)
{
    std::vector<CL::CTrendSeries::Point> points;
    for (int i = 0; i < 5; ++i)
        points.push_back({i * kSecond, 10.0 + i, static_cast<WORD>(i == 2 ? 0x40 : 0xC0)});
    const CL::CTrendSeries series = Points(points);
    EXPECT_EQ(series.KindOf(2), Kind::Bad);
    EXPECT_EQ(series.BadCount(), 1u);
    EXPECT_EQ(series.BadText(), L"1 value(s) NOT GOOD: red crosses, not joined by the line");
    CL::CTrendPath path;
    series.Reduce(-kSecond, 5 * kSecond, 0, 600, false, path);
    ASSERT_EQ(path.PolylineCount(), 2u);
    EXPECT_EQ(path.Polyline(0), (std::pair<size_t, size_t>{0, 2}));
    EXPECT_EQ(path.Polyline(1), (std::pair<size_t, size_t>{2, 4}));
    ASSERT_EQ(path.markers.size(), 1u);
    EXPECT_EQ(path.markers[0].low, 12.0);
    EXPECT_DOUBLE_EQ(path.markers[0].x, 300.5);   // the column of second 2 of 6 in 600 pixels
}

TEST(TrendSeries, QualityIsGoodWhenBothTopBitsOfTheLowByteAreSet)
{
    EXPECT_TRUE(CL::CTrendSeries::IsGood(0xC0));
    EXPECT_TRUE(CL::CTrendSeries::IsGood(0xD8));
    EXPECT_FALSE(CL::CTrendSeries::IsGood(0x40));
    EXPECT_FALSE(CL::CTrendSeries::IsGood(0x00));
    EXPECT_FALSE(CL::CTrendSeries::IsGood(0x80));
}

TEST(TrendSeries, TimesAreLocalAsTheListShowsThem)
{
    Values v;
    const DATE utc = 45000.0 + 10.5 / 24;
    v.Add(CL::CVariant::R8(1.0), utc);
    CL::CTrendSeries series;
    series.Assign(v.read);
    ASSERT_EQ(series.Size(), 1u);
    EXPECT_NEAR(series.Time(0), utc + test::LocalOffsetDays(), 1e-9);
    // The hover text carries the list's own time text.
    EXPECT_NE(series.PointText(0).find(CL::LocalTimeText(v.read->times[0])), std::wstring::npos);
    EXPECT_NE(series.PointText(0).find(L"Value: 1 (VT_R8)"), std::wstring::npos);
    EXPECT_NE(series.PointText(0).find(L"Quality: GOOD (192)"), std::wstring::npos);
}

TEST(TrendSeries, PointsAreOrderedByTime)
{
    Values v;
    v.Add(CL::CVariant::R8(3.0), 45000.0 + 3 * kSecond);
    v.Add(CL::CVariant::R8(1.0), 45000.0 + 1 * kSecond);
    v.Add(CL::CVariant::R8(2.0), 45000.0 + 2 * kSecond, 0x40);
    CL::CTrendSeries series;
    series.Assign(v.read);
    ASSERT_EQ(series.Size(), 3u);
    EXPECT_EQ(series.Value(0), 1.0);
    EXPECT_EQ(series.Value(1), 2.0);
    EXPECT_EQ(series.KindOf(1), Kind::Bad);
    EXPECT_NE(series.PointText(1).find(L"Quality: NOT GOOD (64)"), std::wstring::npos);
    EXPECT_EQ(series.Value(2), 3.0);
}

TEST(TrendSeries, VisibleRangeAndNearestPointByTime)
{
    const CL::CTrendSeries series = Ramp({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(series.Visible(2 * kSecond, 5 * kSecond), (std::pair<size_t, size_t>{2, 6}));
    EXPECT_EQ(series.Visible(2.5 * kSecond, 2.7 * kSecond), (std::pair<size_t, size_t>{3, 3}));
    EXPECT_EQ(series.Visible(-5 * kSecond, -kSecond), (std::pair<size_t, size_t>{0, 0}));
    EXPECT_EQ(series.Nearest(2.4 * kSecond), 2u);
    EXPECT_EQ(series.Nearest(2.6 * kSecond), 3u);
    EXPECT_EQ(series.Nearest(-100.0), 0u);
    EXPECT_EQ(series.Nearest(100.0), 9u);
    EXPECT_EQ(CL::CTrendSeries().Nearest(0.0), CL::CTrendSeries::npos);
    // Between two points the value range is that of the two neighbours.
    double low = 0, high = 0;
    ASSERT_TRUE(series.ValueRange(2.5 * kSecond, 2.7 * kSecond, low, high));
    EXPECT_EQ(low, 2.0);
    EXPECT_EQ(high, 3.0);
}

TEST(TrendSeries, ASingleValueIsOnePolylineOfOnePoint)
{
    const CL::CTrendSeries series = Ramp({42.0});
    CL::CTrendPath path;
    series.Reduce(-kSecond, kSecond, 0, 100, false, path);
    ASSERT_EQ(path.PolylineCount(), 1u);
    EXPECT_EQ(path.x.size(), 1u);
    EXPECT_DOUBLE_EQ(path.x[0], 50.5);
}

TEST(TrendSeries, ReductionKeepsFirstMinMaxLastOfEachColumnInTimeOrder)
{
    // Ten points in one column, then one in the next.
    std::vector<CL::CTrendSeries::Point> points;
    const std::vector<double> values = {5, 7, 1, 9, 3, 8, 2, 6, 4, 5};
    for (size_t i = 0; i < values.size(); ++i)
        points.push_back({i * 0.01 * kSecond, values[i], kGood});
    points.push_back({10 * kSecond, 0.0, kGood});
    const CL::CTrendSeries series = Points(points);
    CL::CTrendPath path;
    series.Reduce(0, 10 * kSecond, 0, 10, false, path);
    // first 5, min 1 (index 2), max 9 (index 3), last 5; then the next column
    EXPECT_EQ(path.value, (std::vector<double>{5, 1, 9, 5, 0}));
    EXPECT_EQ(path.x, (std::vector<double>{0.5, 0.5, 0.5, 0.5, 9.5}));
    CL::CTrendPath every;
    series.Reduce(0, 10 * kSecond, 0, 10, true, every);
    EXPECT_EQ(every.x.size(), 11u);
}

TEST(TrendSeries, NeighboursOutsideTheRangeAreKeptWhereTheyAre)
{
    const CL::CTrendSeries series = Ramp({0, 1, 2, 3, 4, 5, 6});
    CL::CTrendPath path;
    series.Reduce(2.5 * kSecond, 4.5 * kSecond, 100, 200, false, path);
    EXPECT_EQ(path.visiblePoints, 2u);
    ASSERT_EQ(path.x.size(), 4u);
    EXPECT_NEAR(path.x[0], 100 - 0.5 * 100, 1e-6);    // point 2, half a second before
    EXPECT_DOUBLE_EQ(path.x[1], 100 + 50 + 0.5);      // point 3
    EXPECT_DOUBLE_EQ(path.x[2], 100 + 150 + 0.5);     // point 4
    EXPECT_NEAR(path.x[3], 100 + 250, 1e-6);          // point 5, half a second after
}

TEST(TrendSeries, AMillionValuesReduceToAtMostFourPerColumn)
{
    std::vector<CL::CTrendSeries::Point> points;
    points.reserve(1000000);
    for (int i = 0; i < 1000000; ++i)
        points.push_back({i * kSecond, std::sin(i * 0.001) * 100 + (i % 7), kGood});
    const CL::CTrendSeries series = Points(points);
    CL::CTrendPath path;
    series.Reduce(0, 999999 * kSecond, 0, 1000, false, path);
    EXPECT_EQ(path.visiblePoints, 1000000u);
    EXPECT_LE(path.x.size(), 4000u);
    EXPECT_GE(path.x.size(), 2000u);
    EXPECT_EQ(path.PolylineCount(), 1u);
}
