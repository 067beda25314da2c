// Redraw time of the historical data window's trend chart for 10,000,
// 100,000 and 1,000,000 values: the whole picture (axes, labels, line,
// markers) drawn into a memory bitmap of 1000 x 400 pixels and copied to a
// second one, as the window's paint does. Each figure is the median of
// several redraws, for the whole range and for a tenth of it; the baseline,
// measured in the same run, draws every point instead of the per-column
// reduction (the same picture).
#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "bench/BenchTiming.h"
#include "common/ui/Gdiplus.h"
#include "historian/TrendRenderer.h"
#include "historian/TrendSeries.h"

namespace {

using Bench::Seconds;

constexpr int kWidth = 1000;
constexpr int kHeight = 400;
constexpr int kRedraws = 15;
constexpr double kTarget = 0.050;

// A noisy walk, one value a second, every 997th of bad quality.
CL::CTrendSeries MakeSeries(int count, bool withBad = true)
{
    std::mt19937 random(1);
    std::normal_distribution<double> step(0.0, 1.0);
    std::vector<CL::CTrendSeries::Point> points;
    points.reserve(count);
    double value = 100.0;
    for (int i = 0; i < count; ++i) {
        value += step(random);
        points.push_back({45000.0 + i / 86400.0, value, static_cast<WORD>(withBad && i % 997 == 500 ? 0x40 : 0xC0)});
    }
    CL::CTrendSeries series;
    series.AssignPoints(points);
    return series;
}

// One redraw as the window paints: into a memory bitmap, then copied.
double Redraw(const CL::CTrendRenderer& renderer, const CL::CTrendSeries& series, double from, double to,
              bool everyPoint, HDC memory, HDC target)
{
    const double start = Seconds();
    {
        Gdiplus::Graphics g(memory);
        CL::CTrendRenderer::Frame frame;
        frame.from = from;
        frame.to = to;
        frame.title = L"Bench.Item";
        frame.everyPoint = everyPoint;
        renderer.Draw(g, Gdiplus::Rect(0, 0, kWidth, kHeight), series, frame);
    }
    ::BitBlt(target, 0, 0, kWidth, kHeight, memory, 0, 0, SRCCOPY);
    return Seconds() - start;
}

double Median(const CL::CTrendRenderer& renderer, const CL::CTrendSeries& series, double from, double to,
              bool everyPoint, int passes, HDC memory, HDC target)
{
    std::vector<double> times;
    for (int i = 0; i < passes; ++i)
        times.push_back(Redraw(renderer, series, from, to, everyPoint, memory, target));
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// A memory DC with a bitmap like the screen's.
struct Surface {
    HDC dc;
    HBITMAP bitmap;
    HGDIOBJ previous;
    explicit Surface(HDC screen)
        : dc(::CreateCompatibleDC(screen)), bitmap(::CreateCompatibleBitmap(screen, kWidth, kHeight)),
          previous(::SelectObject(dc, bitmap))
    {
    }
    ~Surface()
    {
        ::SelectObject(dc, previous);
        ::DeleteObject(bitmap);
        ::DeleteDC(dc);
    }
};

} // namespace

int main()
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    CL::EnsureGdiplus();
    const HDC screen = ::GetDC(nullptr);
    int failures = 0;
    {
        Surface memory(screen), target(screen);
        const CL::CTrendRenderer renderer;
        std::printf("bench_chart: trend chart redraw, %d x %d pixels, median of %d redraws (target: at most %.0f ms each)\n",
                    kWidth, kHeight, kRedraws, kTarget * 1000);
        for (int count : {10000, 100000, 1000000}) {
            const CL::CTrendSeries series = MakeSeries(count);
            const CL::CTrendSeries allGood = MakeSeries(count, false);
            const double first = series.Time(0), last = series.Time(series.Size() - 1);
            const double tenth = (last - first) / 10;
            const double whole = Median(renderer, series, first, last, false, kRedraws, memory.dc, target.dc);
            const double zoomed =
                Median(renderer, series, first + 4 * tenth, first + 5 * tenth, false, kRedraws, memory.dc, target.dc);
            const double good = Median(renderer, allGood, first, last, false, kRedraws, memory.dc, target.dc);
            CL::CTrendPath path;
            const double start = Seconds();
            series.Reduce(first, last, 0, kWidth, false, path);
            const double reduce = Seconds() - start;
            // The baseline is slow for many values: fewer passes.
            const double every =
                Median(renderer, series, first, last, true, count >= 1000000 ? 1 : 3, memory.dc, target.dc);
            const bool ok = whole <= kTarget && zoomed <= kTarget && good <= kTarget;
            failures += ok ? 0 : 1;
            std::printf("%9d values | redraw: whole range %6.1f ms, a tenth %6.1f ms, no bad values %6.1f ms | "
                        "reduction alone %5.1f ms (%zu points, %zu markers) | every point drawn %7.1f ms = %5.1fx | %s\n",
                        count, whole * 1000, zoomed * 1000, good * 1000, reduce * 1000, path.x.size(),
                        path.markers.size(), every * 1000, every / whole, ok ? "ok" : "TOO SLOW");
        }
    }
    ::ReleaseDC(nullptr, screen);
    return failures == 0 ? 0 : 1;
}
