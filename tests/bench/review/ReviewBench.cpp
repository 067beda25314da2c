// Benchmark of the review of changes.
//
//   bench_review.exe compare
//       the compare of 100,000 against 100,000 items with 1,000 differences
//       (target 0.1 s), and the review window opened on 100,000 items with
//       10,000 differences (target 1 s);
//   bench_review.exe impact <ODBC connection string> <label>
//       the historian impact on the plant-scale historian of the histscale
//       benchmark (1,000 items): its one summary query and the figures of
//       every row, for a change of 21 archived items and for one that removes
//       or moves all 1,000 (target 2 s each).
// Each line: "<what> seconds=<s> count=<n> target=<s> ok|OVER".
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "addressspace/AddressSpaceCompare.h"
#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/HistorianImpact.h"
#include "addressspace/dlgReviewChanges.h"
#include "bench/BenchAddressSpace.h"
#include "bench/BenchTiming.h"
#include "common/Text.h"
#include "common/historian/Historian.h"
#include "common/historian/HistorianSummaryOf.h"
#include "support/HistorianTestDb.h"

namespace {

using SpacePtr = CL::CSmartPtr<COPCServerAddressSpace>;

void Line(const char* what, double seconds, long long count, double target)
{
    std::printf("%-44s seconds=%.3f count=%lld target=%.2f %s\n", what, seconds, count, target,
                seconds <= target ? "ok" : "OVER");
    std::fflush(stdout);
}

// A copy of the space with `differences` differences spread over its leaf
// branches: a quarter values changed, a quarter items removed, a quarter
// added, a quarter renamed (one "moved" each).
SpacePtr Changed(const COPCServerAddressSpace& space, int differences)
{
    SpacePtr copy = CL::CopyAddressSpace(space);
    int made = 0;
    for (const auto& area : copy->RootBranch()->Branches())
        for (const auto& line : area->Branches())
            for (const auto& unit : line->Branches()) {
                const int here = std::min(differences - made, differences / 1000);
                for (int k = 0; k < here; ++k, ++made) {
                    const auto items = unit->Items();
                    const auto& item = items.at(static_cast<size_t>(k * 7 % items.size()));
                    switch (k % 4) {
                    case 0: item->SetValue(CL::CVariant::R8(-1.0 - made)); item->SetCanonicalDataType(VT_R8); break;
                    case 1: unit->RemoveItem(item->Name()); break;
                    case 2: {
                        auto added = Bench::MakeItem(1000000 + made);
                        added->Rename((L"New" + std::to_wstring(made)).c_str());
                        added->SetValue(CL::CVariant::R8(-0.5 - made));
                        added->SetCanonicalDataType(VT_R8);
                        unit->AddItem(added);
                        break;
                    }
                    case 3: item->Rename((L"Renamed" + std::to_wstring(made)).c_str()); break;
                    }
                }
            }
    return copy;
}

int Compare()
{
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_WIN95_CLASSES};
    ::InitCommonControlsEx(&controls);
    const SpacePtr before = Bench::Build();
    {
        const SpacePtr after = Changed(*before, 1000);
        double best = 1e9;
        size_t count = 0;
        for (int run = 0; run < 5; ++run) {
            const double start = Bench::Seconds();
            const AddressSpaceDifferences differences = CompareAddressSpaces(*before, *after);
            best = std::min(best, Bench::SecondsSince(start));
            count = differences.size();
        }
        Line("compare 100,000 items, 1,000 differences", best, static_cast<long long>(count), 0.1);
    }
    {
        CAddressSpaceDocument document;
        document.SetModel(CL::CopyAddressSpace(*before));
        document.SetDirty(false);   // the baseline
        document.SetModel(Changed(*before, 10000));
        double best = 1e9;
        long long rows = 0;
        for (int run = 0; run < 3; ++run) {
            ReviewServices services;
            services.save = [] {};
            CdlgReviewChanges review(document, services);
            const double start = Bench::Seconds();
            const HWND window = review.Create(nullptr);
            ::ShowWindow(window, SW_SHOW);
            ::UpdateWindow(window);
            best = std::min(best, Bench::SecondsSince(start));
            rows = ListView_GetItemCount(review.List());
            ::DestroyWindow(window);
        }
        Line("review window, 100,000 items, 10,000 diffs", best, rows, 1.0);
    }
    return 0;
}

// The historian's 1,000 items as the histscale benchmark names them.
SpacePtr HistorianItems()
{
    SpacePtr space = SpacePtr::Make();
    auto plant = CL::CSmartPtr<COPCServerAddressSpaceBranch>::Make(L"Plant");
    space->RootBranch()->AddBranch(plant);
    for (int i = 0; i < 1000; ++i) {
        const std::wstring area = CL::Format(L"Area%02d", i / 10 % 100);
        auto branch = plant->FindBranch(area);
        if (!branch) {
            branch = CL::CSmartPtr<COPCServerAddressSpaceBranch>::Make(area);
            plant->AddBranch(branch);
        }
        auto item = Bench::MakeItem(i);
        item->Rename(CL::Format(L"Item%04d", i).c_str());
        item->SetArchive(true);
        branch->AddItem(item);
    }
    return space;
}

// The figures of every row from one summary query, best of three.
void MeasureImpact(CL::CHistorian& historian, const AddressSpaceDifferences& differences, const char* what)
{
    std::vector<std::wstring> itemIds, branchPaths;
    CHistorianImpact::Concerned(differences, itemIds, branchPaths);
    double best = 1e9;
    long long values = 0;
    for (int run = 0; run < 3; ++run) {
        const double start = Bench::Seconds();
        const CHistorianImpact impact(CL::ReadSummaryOf(historian, itemIds, branchPaths));
        const CHistorianImpact::Totals totals = impact.Total(differences);
        size_t texts = 0;
        for (const AddressSpaceDifference& d : differences)
            texts += impact.CellText(d).size();
        best = std::min(best, Bench::SecondsSince(start));
        values = totals.orphanedValues + totals.settingValues;
        if (run == 0)
            std::printf("%ls\n", CHistorianImpact::SummaryText(totals).c_str());
    }
    Line(what, best, values, 2.0);
}

int Impact(const std::wstring& connection, const std::wstring& label)
{
    test::ComScope com;
    CL::CHistorian historian;
    historian.Configure(connection, CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    const SpacePtr before = HistorianItems();
    std::printf("--- %ls\n", label.c_str());
    {
        // One area (Area00, with the item of 1% of all values) removed, one
        // renamed, one item's archive flag off: the IDs are asked for.
        SpacePtr after = CL::CopyAddressSpace(*before);
        auto plant = after->RootBranch()->FindBranch(L"Plant");
        plant->RemoveBranch(L"Area00");
        plant->FindBranch(L"Area01")->Rename(L"Hall01");
        plant->FindBranch(L"Area02")->FindItem(L"Item0020")->SetArchive(false);
        MeasureImpact(historian, CompareAddressSpaces(*before, *after), "historian impact, 21 items");
    }
    {
        // Half the areas removed, the other half renamed: every archived
        // item loses its ID, and the whole summary is read.
        SpacePtr after = CL::CopyAddressSpace(*before);
        auto plant = after->RootBranch()->FindBranch(L"Plant");
        for (const auto& area : plant->Branches()) {
            if (area->Name() < L"Area50")
                plant->RemoveBranch(area->Name());
            else
                area->Rename((L"Moved" + area->Name()).c_str());
        }
        MeasureImpact(historian, CompareAddressSpaces(*before, *after), "historian impact, all 1,000 items");
    }
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::wstring command = argc > 1 ? argv[1] : L"compare";
    try {
        if (command == L"compare")
            return Compare();
        if (command == L"impact" && argc > 3)
            return Impact(argv[2], argv[3]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    } catch (...) {
        std::fprintf(stderr, "failed\n");
        return 1;
    }
    std::fprintf(stderr, "usage: bench_review compare | impact <connection> <label>\n");
    return 2;
}
