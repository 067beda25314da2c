// Saves and loads an address space of 100,000 items: 10 top branches, 10
// below each, 10 below those (1,000 leaf branches three levels deep, 1,110
// branches in all), 100 items in each leaf branch. Prints the seconds of the
// save and of the load, one figure per line ("save_seconds 1.234"), and of a
// bare DOM parse of the same file (the part of a load that is the DOM
// library's), and checks that the loaded address space has every item. Then
// the same for CSV: the export of that address space to "<file>.csv" and the
// import of that file into an empty address space (read, plan, apply), with
// a check that the imported address space exports the same bytes; and the
// same for the workbook ("<file>.xlsx"), its import checked against the CSV.
//
// usage: bench_addressspace.exe <file to write>
#include <windows.h>

#include <cstdio>
#include <string>

#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "bench/BenchAddressSpace.h"
#include "common/FileBytes.h"
#include "bench/BenchTiming.h"
#include "common/Exception.h"
#include "common/MsXml.h"
#include "common/Variant.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

namespace {

using Bench::Seconds;

using Bench::Build;
using Bench::kFanOut;
using Bench::kItemsPerLeaf;

// The DOM library's own share of a load: parsing the file into a document.
double ParseSeconds(const std::wstring& path)
{
    CL::XmlDocument document = CL::CreateDomDocument30(L"DOMDocument30");
    document->put_preserveWhiteSpace(VARIANT_TRUE);
    const double start = Seconds();
    VARIANT_BOOL loaded = VARIANT_FALSE;
    if (FAILED(document->load(CL::CVariant(path), &loaded)) || loaded != VARIANT_TRUE)
        throw CL::CException(E_FAIL, L"DOMDocument30 load");
    return Seconds() - start;
}

size_t CountItems(const COPCServerAddressSpaceBranch& branch)
{
    size_t count = branch.ItemCount();
    for (const auto& child : branch.Branches())
        count += CountItems(*child);
    return count;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_addressspace.exe <file>\n");
        return 2;
    }
    const std::wstring path = CL::Widen(argv[1]);
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int status = 0;
    try {
        const double t0 = Seconds();
        auto space = Build();
        const double t1 = Seconds();
        space->Save(path);
        const double t2 = Seconds();
        auto loaded = CL::CSmartPtr<COPCServerAddressSpace>::Make();
        loaded->Load(path);
        const double t3 = Seconds();
        const double parse = ParseSeconds(path);
        const size_t items = CountItems(*loaded->RootBranch());
        std::printf("items %zu\n", items);
        std::printf("build_seconds %.3f\n", t1 - t0);
        std::printf("save_seconds %.3f\n", t2 - t1);
        std::printf("load_seconds %.3f\n", t3 - t2);
        std::printf("dom_parse_seconds %.3f\n", parse);
        if (items != static_cast<size_t>(kFanOut * kFanOut * kFanOut * kItemsPerLeaf)) {
            std::fprintf(stderr, "loaded %zu items, expected %d\n", items, kFanOut * kFanOut * kFanOut * kItemsPerLeaf);
            status = 1;
        }

        const std::wstring csvPath = path + L".csv";
        const double c0 = Seconds();
        const std::string csv = CL::ExportAddressSpaceCsv(*space);
        CL::WriteWholeFile(csvPath, csv);
        const double c1 = Seconds();
        auto imported = CL::CSmartPtr<COPCServerAddressSpace>::Make();
        const CL::CsvImportPlan plan = CL::ReadAddressSpaceCsv(CL::ReadWholeFile(csvPath));
        const CL::CsvImportResult result = CL::ApplyCsvImport(plan, *imported, false);
        const double c2 = Seconds();
        std::printf("csv_bytes %zu\n", csv.size());
        std::printf("csv_export_seconds %.3f\n", c1 - c0);
        std::printf("csv_import_seconds %.3f\n", c2 - c1);
        if (result.added != items || !plan.rejected.empty() || CL::ExportAddressSpaceCsv(*imported) != csv) {
            std::fprintf(stderr, "CSV import took %zu items (%zu lines rejected) or exports other bytes\n",
                         result.added, plan.rejected.size());
            status = 1;
        }

        // The workbook export and import of the same address space, beside the CSV's.
        const std::wstring workbookPath = path + L".xlsx";
        const double w0 = Seconds();
        CL::ExportAddressSpaceWorkbook(*space, workbookPath);
        const double w1 = Seconds();
        auto fromWorkbook = CL::CSmartPtr<COPCServerAddressSpace>::Make();
        const CL::CsvImportPlan workbookPlan = CL::ReadAddressSpaceWorkbook(CL::ReadWholeFile(workbookPath));
        const CL::CsvImportResult workbookResult = CL::ApplyCsvImport(workbookPlan, *fromWorkbook, false);
        const double w2 = Seconds();
        std::printf("workbook_export_seconds %.3f\n", w1 - w0);
        std::printf("workbook_import_seconds %.3f\n", w2 - w1);
        if (workbookResult.added != items || !workbookPlan.rejected.empty() ||
            CL::ExportAddressSpaceCsv(*fromWorkbook) != csv) {
            std::fprintf(stderr, "workbook import took %zu items (%zu rows rejected) or exports other CSV\n",
                         workbookResult.added, workbookPlan.rejected.size());
            status = 1;
        }
    } catch (const CL::CException& e) {
        std::fprintf(stderr, "%ls\n", e.Text().c_str());
        status = 1;
    }
    ::CoUninitialize();
    return status;
}
