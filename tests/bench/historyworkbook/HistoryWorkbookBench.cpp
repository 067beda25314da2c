// The history's workbook export beside its CSV export: 1,000,000 values of
// one item (doubles, a text every hundredth value, qualities good and bad,
// a millisecond apart) written through the exporter as CSV and as a
// workbook, each the best of two runs; prints the seconds, the file sizes
// and the ratio of the workbook to the CSV (target 1.5). The values are
// built in memory: the database read, the same for both, is measured by the
// plant-scale benchmark (histscale), which times "Save data..." whole.
#include <windows.h>
#include <objbase.h>

#include <algorithm>
#include <cstdio>

#include "bench/BenchTiming.h"
#include "common/Exception.h"
#include "historian/HistoryExporter.h"
#include "support/TestSupport.h"

namespace {

CL::CHistorianValues Values(size_t count)
{
    CL::CHistorianValues values;
    values.values.reserve(count);
    values.times.reserve(count);
    values.qualities.reserve(count);
    FILETIME time = {0x2A3B4C00, 0x01DB8D2E};   // March 2025
    for (size_t i = 0; i < count; ++i) {
        if (i % 100 == 99)
            values.values.push_back(CL::CVariant(std::wstring(L"Sensor fault")));
        else
            values.values.push_back(CL::CVariant::R8(20.0 + static_cast<double>(i % 1000) / 7.0));
        ULARGE_INTEGER t = {{time.dwLowDateTime, time.dwHighDateTime}};
        t.QuadPart += 10000ull * i;
        values.times.push_back({t.LowPart, t.HighPart});
        values.qualities.push_back(i % 50 == 0 ? WORD(0) : WORD(192));
    }
    return values;
}

double Export(const CL::CHistorianValues& values, const std::wstring& path, CL::ExportFormat format)
{
    double best = 1e9;
    for (int run = 0; run < 2; ++run) {
        const double start = Bench::Seconds();
        CL::CHistoryExporter exporter(path, format);
        exporter.Add(L"Plant.Line1.Temperature", values);
        exporter.Commit();
        best = std::min(best, Bench::SecondsSince(start));
    }
    return best;
}

long long Size(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    ::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return static_cast<long long>(data.nFileSizeLow) + (static_cast<long long>(data.nFileSizeHigh) << 32);
}

} // namespace

int main()
{
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    int status = 0;
    try {
        test::TempDir folder;
        const CL::CHistorianValues values = Values(1000000);
        const std::wstring csv = folder.File(L"values.csv");
        const std::wstring workbook = folder.File(L"values.xlsx");
        const double csvSeconds = Export(values, csv, CL::ExportFormat::Csv);
        const double workbookSeconds = Export(values, workbook, CL::ExportFormat::Workbook);
        std::printf("history_csv_seconds %.3f (%lld bytes)\n", csvSeconds, Size(csv));
        std::printf("history_workbook_seconds %.3f (%lld bytes)\n", workbookSeconds, Size(workbook));
        std::printf("history_workbook_to_csv_ratio %.2f (target <= 1.5) %s\n", workbookSeconds / csvSeconds,
                    workbookSeconds <= 1.5 * csvSeconds ? "ok" : "OVER");
    } catch (const CL::CException& e) {
        std::fprintf(stderr, "%ls\n", e.Text().c_str());
        status = 1;
    }
    ::CoUninitialize();
    return status;
}
