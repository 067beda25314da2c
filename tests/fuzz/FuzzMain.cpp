// fuzz_loaders: feeds mutated inputs to every loader of the program (the
// address space XML by Reload, the load from a stopped server and Open; the
// CSV import; the settings file and the options dialog over it; a
// historian row's stored run) and prints what each made of them.
//
//   fuzz_loaders --seconds 40            a short campaign: 40 s shared by the loaders
//   fuzz_loaders --inputs 1000000        a long one: that many inputs in all
//   options: --seed N, --bound MS (an input running longer is a hang; 10000),
//            --only NAME (the loaders whose name starts with NAME)
//
// Exit code 0 when every input ended in a documented outcome; 1 for a
// violation, 3 for a hang, 4 for a crash (Watchdog.h).
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "AddressSpaceFuzz.h"
#include "CsvFuzz.h"
#include "WorkbookFuzz.h"
#include "RecordFuzz.h"
#include "SettingsFuzz.h"
#include "Watchdog.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "support/TestSupport.h"

using Clock = std::chrono::steady_clock;

namespace {

struct Options {
    double seconds = 0;
    unsigned long long inputs = 0;
    unsigned long long seed = 20261123;
    unsigned boundMs = 10000;
    std::string only;   // the loaders whose name starts with this (all when empty)
};

Options ParseOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--seconds"))
            options.seconds = std::atof(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--inputs"))
            options.inputs = std::strtoull(argv[i + 1], nullptr, 10);
        else if (!std::strcmp(argv[i], "--seed"))
            options.seed = std::strtoull(argv[i + 1], nullptr, 10);
        else if (!std::strcmp(argv[i], "--only"))
            options.only = argv[i + 1];
        else if (!std::strcmp(argv[i], "--bound"))
            options.boundMs = static_cast<unsigned>(std::strtoul(argv[i + 1], nullptr, 10));
    }
    if (options.seconds <= 0 && options.inputs == 0)
        options.seconds = 40;
    return options;
}

std::string SampleCsv(const std::wstring& folder)
{
    const std::wstring file = folder + L"sample.xml";
    test::WriteFileBytes(file, fuzz::CAddressSpaceFuzz::SampleDocument());
    auto space = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    space->Load(file);
    return CL::ExportAddressSpaceCsv(*space);
}

void Print(const fuzz::LoaderCounts& c)
{
    std::printf("%-20s %10llu inputs %10llu loaded %10llu refused   slowest %8.1f ms   %llu violations\n",
                c.loader.c_str(), static_cast<unsigned long long>(c.inputs),
                static_cast<unsigned long long>(c.loaded), static_cast<unsigned long long>(c.refused), c.slowestMs,
                static_cast<unsigned long long>(c.violations));
    for (const auto& [kind, count] : c.errors)
        std::printf("%20s   refused: %-40s %10llu\n", "", kind.c_str(), static_cast<unsigned long long>(count));
    for (const std::string& violation : c.firstViolations)
        std::printf("%20s   VIOLATION: %s\n", "", violation.c_str());
}

// Runs one input of the target under the watchdog and times it.
void RunInput(fuzz::IFuzzTarget& target, fuzz::CFuzzRandom& random, fuzz::LoaderCounts& counts,
              fuzz::CWatchdog& watchdog)
{
    const auto start = Clock::now();
    const uint64_t violationsBefore = counts.violations;
    watchdog.Enter(&target);
    target.RunOne(random, counts);
    watchdog.Leave();
    ++counts.inputs;
    const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    if (ms > counts.slowestMs)
        counts.slowestMs = ms;
    if (violationsBefore == 0 && counts.violations != 0)
        fuzz::SaveInput("violation", target);   // the first one of this loader
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = ParseOptions(argc, argv);
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_WIN95_CLASSES | ICC_DATE_CLASSES};
    ::InitCommonControlsEx(&classes);
    std::printf("fuzz_loaders: seed %llu, bound %u ms per input\n", options.seed, options.boundMs);
    std::fflush(stdout);

    test::TempDir folder;
    fuzz::CAddressSpaceFuzz xml(folder.Path());
    fuzz::CCsvFuzz csv(SampleCsv(folder.Path()));
    fuzz::CSettingsFuzz settings(folder.Path(), options.inputs ? 50 : 5);
    fuzz::CRecordFuzz records;
    fuzz::CWorkbookFuzz workbook(folder.Path());
    // Shares of the inputs (long campaign), by what one input costs: a row
    // decodes in microseconds, a file goes through the disk and MSXML.
    struct Entry {
        fuzz::IFuzzTarget* target;
        double share;
    };
    const std::vector<Entry> entries = {
        {&xml, 0.05}, {&csv, 0.12}, {&settings, 0.03}, {&records, 0.70}, {&workbook, 0.10}};

    fuzz::CWatchdog watchdog(options.boundMs);
    std::vector<fuzz::LoaderCounts> counts(entries.size());
    unsigned long long total = 0;
    bool failed = false;
    for (size_t i = 0; i < entries.size(); ++i) {
        fuzz::IFuzzTarget& target = *entries[i].target;
        if (std::string(target.Name()).rfind(options.only, 0) != 0)
            continue;
        fuzz::LoaderCounts& c = counts[i];
        c.loader = target.Name();
        fuzz::CFuzzRandom random(options.seed * 31 + i);
        const auto start = Clock::now();
        const unsigned long long wanted = static_cast<unsigned long long>(options.inputs * entries[i].share + 0.5);
        const double seconds = options.seconds / entries.size();
        while (options.inputs ? c.inputs < wanted
                              : std::chrono::duration<double>(Clock::now() - start).count() < seconds)
            RunInput(target, random, c, watchdog);
        total += c.inputs;
        failed = failed || c.violations != 0;
        Print(c);
        std::printf("%20s   %.1f s\n", "", std::chrono::duration<double>(Clock::now() - start).count());
        std::fflush(stdout);
    }
    std::printf("options dialogs opened over a read settings file: %llu\n",
                static_cast<unsigned long long>(settings.DialogsOpened()));
    std::printf("total: %llu inputs, 0 crashes, 0 hangs, %s\n", total, failed ? "VIOLATIONS (see above)" : "0 violations");
    std::fflush(stdout);
    ::CoUninitialize();
    return failed ? 1 : 0;
}
