// Decoding speed of stored item value runs, against a plain memcpy of the
// same bytes, measured in one run:
//   10,000,000 VT_R8 records, 1,000,000 VT_BSTR records of 16 characters,
//   100,000 arrays of 100 VT_I4.
// Each figure is the best of a few passes (the machine is shared).
#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench/BenchTiming.h"
#include "common/Util_Variant.h"
#include "common/historian/var_length_container.h"

namespace {

using Bench::Seconds;

constexpr int kPasses = 3;

CL::var_length_container BuildRun(const VARIANT& value, uint32_t count)
{
    CL::var_length_container cache;
    cache.Reserve(static_cast<uint32_t>(CL::var_length_container::RecordSize(value) * count));
    for (uint32_t i = 0; i < count; ++i)
        cache.Append(45000.0 + i * 1e-5, 192, value);
    return cache;
}

// Walks every record; returns a checksum so that nothing is optimised away.
double DecodeAll(const CL::var_length_container& cache, uint32_t& records)
{
    CL::CDecodedRecord record;
    double sum = 0.0;
    records = 0;
    for (auto cursor = cache.Records(); !cursor.AtEnd(); ++records) {
        cursor.Next(record);
        sum += record.time + record.quality;
    }
    return sum;
}

void Measure(const char* name, const CL::var_length_container& cache, uint32_t expected)
{
    const double megabytes = cache.UsedSize() / 1e6;
    std::vector<BYTE> copy(cache.UsedSize());
    double bestDecode = 1e30;
    double bestCopy = 1e30;
    double checksum = 0.0;
    uint32_t records = 0;
    for (int pass = 0; pass < kPasses; ++pass) {
        double start = Seconds();
        checksum += DecodeAll(cache, records);
        bestDecode = std::min(bestDecode, Seconds() - start);
        start = Seconds();
        std::memcpy(copy.data(), cache.Data(), cache.UsedSize());
        bestCopy = std::min(bestCopy, Seconds() - start);
        checksum += copy[pass * 7 % copy.size()];
    }
    if (records != expected)
        std::printf("  ERROR: %u records decoded, %u expected\n", records, expected);
    std::printf("%-34s %10u records %8.1f MB | decode %7.3f s %12.0f rec/s %8.1f MB/s | memcpy %7.4f s %8.1f MB/s"
                " | decode/memcpy time %6.1fx  (checksum %.0f)\n",
                name, records, megabytes, bestDecode, records / bestDecode, megabytes / bestDecode, bestCopy,
                megabytes / bestCopy, bestDecode / bestCopy, checksum);
}

void MeasureWrite(const char* name, const VARIANT& value, uint32_t count)
{
    double best = 1e30;
    for (int pass = 0; pass < kPasses; ++pass) {
        const double start = Seconds();
        CL::var_length_container cache = BuildRun(value, count);
        best = std::min(best, Seconds() - start);
    }
    std::printf("%-34s %10u records | append %7.3f s %12.0f rec/s\n", name, count, best, count / best);
}

} // namespace

int main()
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::printf("bench_values: best of %d passes, one thread\n", kPasses);

    CL::CVariant r8;
    r8.vt = VT_R8;
    r8.dblVal = 1.25;
    CL::CVariant text(L"abcdefghijklmnop");   // 16 characters
    CL::CVariant ints;
    ints.vt = VT_ARRAY | VT_I4;
    ints.parray = ::SafeArrayCreateVector(VT_I4, 0, 100);
    for (LONG i = 0; i < 100; ++i) {
        LONG value = i * 1000;
        ::SafeArrayPutElement(ints.parray, &i, &value);
    }

    {
        const CL::var_length_container run = BuildRun(r8, 10000000);
        Measure("VT_R8 scalars", run, 10000000);
    }
    {
        const CL::var_length_container run = BuildRun(text, 1000000);
        Measure("VT_BSTR of 16 characters", run, 1000000);
    }
    {
        const CL::var_length_container run = BuildRun(ints, 100000);
        Measure("VT_ARRAY | VT_I4 of 100 elements", run, 100000);
    }
    MeasureWrite("write VT_R8 scalars", r8, 10000000);
    MeasureWrite("write VT_BSTR of 16 characters", text, 1000000);
    MeasureWrite("write VT_ARRAY | VT_I4 of 100", ints, 100000);
    return 0;
}
