#pragma once
// Timing for the benchmark programs, on the performance counter.
#include <windows.h>

namespace Bench {

// Seconds since an arbitrary origin; the difference of two readings times
// the stretch between them.
inline double Seconds()
{
    static const LARGE_INTEGER frequency = [] {
        LARGE_INTEGER f;
        ::QueryPerformanceFrequency(&f);
        return f;
    }();
    LARGE_INTEGER now;
    ::QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// Seconds since an earlier reading of Seconds().
inline double SecondsSince(double start)
{
    return Seconds() - start;
}

} // namespace Bench
