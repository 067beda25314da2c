// The program's side of the spreadsheet round trips (spreadsheet-roundtrip.sh):
//   export-corpus <out.xlsx>   the value corpus as Export Workbook writes it
//   check-corpus <in.xlsx> <dir>
//                              imports the workbook as Import Workbook does
//                              and compares it with the corpus: exactly, value
//                              by value, and as the two address space files
//                              saved into <dir> (their value times left out)
//   history-sample <out.xlsx>  five values of an item as "Save data..." writes
//                              them to a workbook, two to a sheet
//   dump <in.xlsx>             one line per item ("path|type|value|R W A|scan
//                              rate"), then one per row not taken or noted
// Exit code 0 when all is as expected, 1 on a difference, 2 on a failure.
#include <windows.h>
#include <objbase.h>

#include <cstdio>
#include <regex>
#include <string>

#include "AddressSpaceCorpus.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "common/Exception.h"
#include "common/FileBytes.h"
#include "common/Text.h"
#include "common/ReplacingFile.h"
#include "common/Util_Variant.h"
#include "historian/HistoryWorkbookWriter.h"

namespace {

using SpacePtr = CL::CSmartPtr<COPCServerAddressSpace>;

void Print(const std::wstring& line)
{
    const std::string text = CL::ToUtf8(line) + "\n";
    fwrite(text.data(), 1, text.size(), stdout);
}

void PrintPlanRemarks(const CL::CsvImportPlan& plan)
{
    for (const auto& rejected : plan.rejected)
        Print(CL::Format(L"rejected row %zu: %ls", rejected.line, rejected.reason.c_str()));
    for (const auto& note : plan.notes)
        Print(CL::Format(L"note row %zu: %ls", note.line, note.reason.c_str()));
}

// The saved address space file without its value times (an import stamps
// its own).
std::string WithoutValueTimes(const std::wstring& path)
{
    return std::regex_replace(CL::ReadWholeFile(path), std::regex(" ValueTime=\"[0-9-]+\""), "");
}

int CheckCorpus(const std::wstring& workbook, const std::wstring& folder)
{
    const SpacePtr expected = ValueCorpusSpace();
    SpacePtr actual = SpacePtr::Make();
    const CL::CsvImportPlan plan = CL::LoadAddressSpaceWorkbook(workbook, *actual);
    PrintPlanRemarks(plan);
    const std::wstring difference = CompareAddressSpaces(*expected, *actual);
    if (!difference.empty()) {
        Print(L"difference: " + difference);
        return 1;
    }
    const std::wstring expectedFile = folder + L"\\expected.xml";
    const std::wstring actualFile = folder + L"\\imported.xml";
    expected->Save(expectedFile);
    actual->Save(actualFile);
    if (WithoutValueTimes(expectedFile) != WithoutValueTimes(actualFile)) {
        Print(L"difference: the saved address space files differ");
        return 1;
    }
    if (!plan.rejected.empty())
        return 1;
    Print(L"same address space");
    return 0;
}

void DumpBranch(const COPCServerAddressSpaceBranch& branch, const std::wstring& path)
{
    for (const auto& item : branch.Items()) {
        const CL::CVariant value = item->Value();
        std::wstring text = CL::VariantToString(value, CL::kLocaleInvariant, L"\\n");
        for (size_t at = 0; (at = text.find(L'\n', at)) != std::wstring::npos;)
            text.replace(at, 1, L"\\n");
        Print(path + item->Name() + L"|" + CL::VarTypeToString(value.vt) + L"|" + text + L"|" +
              (item->Readable() ? L"1" : L"0") + (item->Writable() ? L"1" : L"0") + (item->Archive() ? L"1" : L"0") +
              L"|" + std::to_wstring(item->ScanRate()));
    }
    for (const auto& child : branch.Branches())
        DumpBranch(*child, path + child->Name() + L".");
}

int Run(int argc, wchar_t** argv)
{
    const std::wstring command = argc > 1 ? argv[1] : L"";
    if (command == L"export-corpus" && argc == 3) {
        CL::ExportAddressSpaceWorkbook(*ValueCorpusSpace(), argv[2]);
        return 0;
    }
    if (command == L"history-sample" && argc == 3) {
        CL::CHistorianValues values;
        const CL::CVariant samples[] = {CL::CVariant::R8(1.5), CL::CVariant(std::wstring(L"=1+2")),
                                        CL::CVariant::I4(-7), CL::CVariant::Bool(true), CL::CVariant::R8(0.25)};
        SYSTEMTIME time = {2025, 3, 5, 14, 8, 0, 50, 250};
        for (size_t i = 0; i < std::size(samples); ++i) {
            FILETIME ft;
            ::SystemTimeToFileTime(&time, &ft);
            values.values.push_back(samples[i]);
            values.times.push_back(ft);
            values.qualities.push_back(i == 2 ? WORD(0) : WORD(192));
            ++time.wSecond;
        }
        CL::CReplacingFile file(argv[2], L"CreateFile (szFile)");
        CL::CHistoryWorkbookWriter writer(file, 2);
        writer.Write(L"Plant.Line1.Speed", values);
        writer.Close();
        file.Commit();
        return 0;
    }
    if (command == L"check-corpus" && argc == 4)
        return CheckCorpus(argv[2], argv[3]);
    if (command == L"dump" && argc == 3) {
        SpacePtr space = SpacePtr::Make();
        const CL::CsvImportPlan plan = CL::LoadAddressSpaceWorkbook(argv[2], *space);
        DumpBranch(*space->RootBranch(), L"");
        PrintPlanRemarks(plan);
        return 0;
    }
    Print(L"usage: workbook_tool export-corpus <out.xlsx> | check-corpus <in.xlsx> <folder> | dump <in.xlsx>");
    return 2;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int result = 2;
    try {
        result = Run(argc, argv);
    } catch (const CL::CException& e) {
        Print(L"failure: " + e.Source() + L" (" + e.Text() + L")");
    }
    fflush(stdout);
    ::CoUninitialize();
    return result;
}
