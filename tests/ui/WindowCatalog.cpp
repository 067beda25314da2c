#include <gtest/gtest.h>

#include "WindowCatalog.h"

#include "OptionsTestSupport.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/AddressSpaceExchange.h"
#include "addressspace/AddressSpaceSearch.h"
#include "addressspace/MainFrm.h"
#include "addressspace/dlgAddBranch.h"
#include "addressspace/dlgAddItem.h"
#include "addressspace/dlgCsvImport.h"
#include "addressspace/dlgDuplicate.h"
#include "addressspace/dlgFind.h"
#include "addressspace/dlgVersionRetention.h"
#include "addressspace/dlgReviewChanges.h"
#include "app/AboutDlg.h"
#include "app/dlgChangeHistory.h"
#include "common/ChangeJournal.h"
#include "common/historian/Historian.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/historian/HistorianSummaryOf.h"
#include "config/DbRetention.h"
#include "config/Settings.h"
#include "config/dlgDbOptions.h"
#include "config/dlgOptions.h"
#include "historian/PickerTime.h"
#include "historian/dlgDBExplorer.h"
#include "historian/dlgHistData.h"
#include "historian/dlgTimePeriod.h"
#include "res/resource.h"
#include "support/HistorianTestDb.h"
#include "support/SettingsServiceName.h"
#include "support/TestSupport.h"

namespace test {

OpenedWindow::~OpenedWindow()
{
    if (m_hwnd && ::IsWindow(m_hwnd))
        ::DestroyWindow(m_hwnd);
    while (!m_kept.empty())
        m_kept.pop_back();
}

namespace {

constexpr wchar_t kItemId[] = L"Plant.Line1.Speed";

// A dialog of the template, created modeless from an object of type T made
// with the arguments.
template <typename T, typename... Args>
std::unique_ptr<OpenedWindow> Dialog(int templateId, Args&&... args)
{
    auto opened = std::make_unique<OpenedWindow>();
    T& dialog = opened->Keep<T>(std::forward<Args>(args)...);
    opened->SetHwnd(dialog.Create(nullptr, templateId));
    return opened;
}

// A historian on a fresh SQLite database with one item's values (an hour
// of values a minute apart, the last one of bad quality).
CL::CHistorian& HistorianWithValues(OpenedWindow& opened)
{
    CL::RegisterHistorianControlClasses();
    auto& db = opened.Keep<HistorianTestDb>(DbKind::Sqlite);
    auto& historian = opened.Keep<CL::CHistorian>();
    historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    std::vector<CL::CHistoricValue> values;
    for (int i = 0; i < 60; ++i)
        values.push_back({45000.0 + i / 1440.0, static_cast<WORD>(i == 59 ? 0 : 192), CL::CVariant::R8(i * 1.5)});
    CL::CHistoricDataWriter(db.ConnectionString()).AppendRun(kItemId, values);
    return historian;
}

std::unique_ptr<OpenedWindow> Options()
{
    g_Settings = CSettings();
    auto opened = std::make_unique<OpenedWindow>();
    auto& folder = opened->Keep<TempDir>();
    auto& server = opened->Keep<FakeServerControl>(folder.Path());
    auto& dialog = opened->Keep<CdlgOptions>(server, folder.Path());
    opened->SetHwnd(dialog.Create(nullptr, IDD_OPTIONS));
    return opened;
}

std::unique_ptr<OpenedWindow> Editor()
{
    auto opened = std::make_unique<OpenedWindow>();
    auto& folder = opened->Keep<TempDir>();
    auto& frame = opened->Keep<CMainFrame>(
        CAddressSpaceExchange(SettingsServiceName, folder.File(L"DefaultAddressSpace.xml")));
    opened->SetHwnd(frame.Create());
    opened->translate = [&frame](MSG& msg) { return frame.PreTranslateMessage(msg); };
    ::ShowWindow(frame, SW_SHOW);
    return opened;
}

// The change history over a journal of a save, a settings change and a
// deletion, the save selected with its versions on disk.
std::unique_ptr<OpenedWindow> ChangeHistory()
{
    auto opened = std::make_unique<OpenedWindow>();
    auto& folder = opened->Keep<TempDir>();
    auto& journal = opened->Keep<CL::CChangeJournal>(folder.File(L"ChangeJournal.csv"), nullptr);
    const std::wstring exchange = folder.File(L"DefaultAddressSpace.xml");
    CAddressSpaceVersions versions(exchange);
    const std::wstring older = versions.Keep("<Morvane_OPCDAAddressSpace Name=\"\"/>");
    const std::wstring newer = versions.KeepAt("<Morvane_OPCDAAddressSpace Name=\"\"/>", {2030, 1, 0, 1, 0, 0, 0, 0});
    journal.Append({L"2026-11-22 10:00:00", L"PLANT\\operator", L"SCADA1", L"MorvaneGui.exe 8.6.0.978",
                    CL::kJournalSettingsChanged, L"Title: 'Varnel' -> 'Plant'. Previous settings saved in C:\\x.",
                    folder.File(L"Morvane.ini.xml.2026_11_22-10_00_00"), L""});
    journal.Append({L"2026-11-23 09:00:00", L"PLANT\\operator", L"SCADA1", L"MorvaneGui.exe 8.6.0.978",
                    CL::kJournalAddressSpaceSaved, L"Saved to " + exchange + L".", newer, older});
    journal.Append({L"2026-11-23 11:00:00", L"PLANT\\operator", L"SCADA1", L"MorvaneGui.exe 8.6.0.978",
                    CL::kJournalValuesDeleted, L"Items: Plant.Line1.Speed (1); period: the whole time.", L"", L""});
    CL::ChangeHistoryActions actions;
    actions.restoreAddressSpace = [](HWND, const std::wstring&) { return false; };
    actions.compareFiles = [](HWND, const std::wstring&, const std::wstring&) {};
    auto& dialog = opened->Keep<CL::CdlgChangeHistory>(journal, exchange, CVersionRetention(HKEY_CURRENT_USER,
                                                       L"Software\\MorvaneTests\\CatalogRetention"), actions);
    opened->SetHwnd(dialog.Create(nullptr));
    return opened;
}

// The review of changes over an editor's document: the archived item
// Plant.Line1.Speed removed, another item's scan rate changed; the historian
// holds Speed's values.
std::unique_ptr<OpenedWindow> ReviewChanges()
{
    auto opened = std::make_unique<OpenedWindow>();
    CL::CHistorian& historian = HistorianWithValues(*opened);
    auto& document = opened->Keep<CAddressSpaceDocument>();
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;
    BranchPtr plant = BranchPtr::Make(L"Plant");
    BranchPtr line1 = BranchPtr::Make(L"Line1");
    document.Model()->RootBranch()->AddBranch(plant);
    plant->AddBranch(line1);
    for (const wchar_t* name : {L"Speed", L"Count"}) {
        ItemPtr item = ItemPtr::Make(COPCItem::kReadable, 1000, true, WORD(192), VARTYPE(VT_R8), nullptr);
        item->Rename(name);
        line1->AddItem(item);
    }
    document.SetDirty(false);
    line1->RemoveItem(L"Speed");
    line1->FindItem(L"Count")->SetScanRate(250);
    ReviewServices services;
    services.historianSummary = [&historian](const std::vector<std::wstring>& itemIds,
                                             const std::vector<std::wstring>& branchPaths) {
        return CL::ReadSummaryOf(historian, itemIds, branchPaths);
    };
    services.save = [] {};
    auto& dialog = opened->Keep<CdlgReviewChanges>(document, services);
    opened->SetHwnd(dialog.Create(nullptr));
    return opened;
}

std::unique_ptr<OpenedWindow> VersionRetention()
{
    auto opened = std::make_unique<OpenedWindow>();
    auto& folder = opened->Keep<TempDir>();
    auto& journal = opened->Keep<CL::CChangeJournal>(folder.File(L"ChangeJournal.csv"), nullptr);
    auto& versions = opened->Keep<CAddressSpaceVersions>(folder.File(L"DefaultAddressSpace.xml"));
    auto& retention = opened->Keep<CVersionRetention>(HKEY_CURRENT_USER, L"Software\\MorvaneTests\\CatalogRetention");
    auto& dialog = opened->Keep<CdlgVersionRetention>(retention, versions, journal);
    opened->SetHwnd(dialog.Create(nullptr, IDD_VERSION_RETENTION));
    return opened;
}

std::unique_ptr<OpenedWindow> CsvImportReport()
{
    // The dialog reads the plan while it lives: the plan lives as long.
    auto opened = std::make_unique<OpenedWindow>();
    auto& plan = opened->Keep<CL::CsvImportPlan>();
    plan.rejected.push_back({7, L"Unknown data type \"VT_X\""});
    auto& dialog = opened->Keep<CdlgCsvImport>(plan, L"items.csv");
    opened->SetHwnd(dialog.Create(nullptr, IDD_CSV_IMPORT));
    return opened;
}

// The editor's Find dialog over a small address space, showing the matches
// of a typed text.
std::unique_ptr<OpenedWindow> FindDialog()
{
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;
    auto opened = std::make_unique<OpenedWindow>();
    auto& space = opened->Keep<CL::CSmartPtr<COPCServerAddressSpace>>(CL::CSmartPtr<COPCServerAddressSpace>::Make());
    BranchPtr line = BranchPtr::Make(L"Line1");
    (*space).RootBranch()->AddBranch(line);
    for (const wchar_t* name : {L"Speed", L"Setpoint", L"Motor7"}) {
        ItemPtr item = ItemPtr::Make(COPCItem::kReadable, 1000, false, WORD(192), VT_R8, nullptr);
        item->Rename(name);
        line->AddItem(item);
    }
    auto& search = opened->Keep<CAddressSpaceSearch>(*space);
    auto& dialog = opened->Keep<CdlgFind>(search);
    dialog.query = L"Line1";
    opened->SetHwnd(dialog.Create(nullptr, IDD_FIND));
    return opened;
}

std::unique_ptr<OpenedWindow> DuplicateDialog()
{
    auto namer = [](size_t count) {
        std::vector<std::wstring> names;
        for (size_t i = 0; i < count; ++i)
            names.push_back(L"Motor" + std::to_wstring(8 + i));
        return names;
    };
    return Dialog<CdlgDuplicate>(IDD_DUPLICATE, std::wstring(L"Motor7"), namer);
}

// The time period dialog as the explorer's "Export values..." shows it.
std::unique_ptr<OpenedWindow> ExportPeriod()
{
    auto opened = std::make_unique<OpenedWindow>();
    auto& dialog = opened->Keep<CdlgTimePeriod>();
    dialog.m_caption = L"Export values of the selected items";
    opened->SetHwnd(dialog.Create(nullptr, IDD_TIMEPERIOD));
    return opened;
}

std::unique_ptr<OpenedWindow> Explorer()
{
    auto opened = std::make_unique<OpenedWindow>();
    CL::CHistorian& historian = HistorianWithValues(*opened);
    auto& explorer = opened->Keep<CdlgDBExplorer>(historian);
    explorer.SetProductName(L"Varnel");
    opened->SetHwnd(explorer.Create());
    opened->translate = [&explorer](MSG& msg) { return explorer.PreTranslateMessage(msg); };
    ::ShowWindow(explorer, SW_SHOW);
    return opened;
}

// The explorer as it looks while long work runs: its Cancel button shown in
// the status bar.
std::unique_ptr<OpenedWindow> ExplorerWorking()
{
    std::unique_ptr<OpenedWindow> opened = Explorer();
    const HWND status = ::FindWindowExW(opened->Hwnd(), nullptr, STATUSCLASSNAMEW, nullptr);
    ::ShowWindow(::GetDlgItem(status, ID_DBEXPLORER_CANCEL), SW_SHOWNA);
    return opened;
}

// The historical data window with its values read and the chart shown.
std::unique_ptr<OpenedWindow> HistoricalData()
{
    auto opened = std::make_unique<OpenedWindow>();
    CL::CHistorian& historian = HistorianWithValues(*opened);
    auto& dialog = opened->Keep<CdlgHistData>(historian);
    dialog.m_itemId = kItemId;
    const HWND hwnd = dialog.Create(nullptr, IDD_HISTDATA);
    opened->SetHwnd(hwnd);
    if (!hwnd)
        return opened;
    ::ShowWindow(hwnd, SW_SHOW);
    for (int check : {IDC_TIMEPERIOD_CHK_FROM, IDC_TIMEPERIOD_CHK_TO})
        if (::IsDlgButtonChecked(hwnd, check) == BST_CHECKED)
            ::SendDlgItemMessageW(hwnd, check, BM_CLICK, 0, 0);
    ::SendDlgItemMessageW(hwnd, IDC_HISTDATA_BTN_REFRESH, BM_CLICK, 0, 0);
    if (::IsDlgButtonChecked(hwnd, IDC_HISTDATA_CHART_SHOW) != BST_CHECKED)
        ::SendDlgItemMessageW(hwnd, IDC_HISTDATA_CHART_SHOW, BM_CLICK, 0, 0);
    return opened;
}

} // namespace

// Each entry: name, how it opens, the controls that show a menu to the
// right mouse button, the program's own controls.
const std::vector<WindowEntry>& EveryWindow()
{
    static const std::vector<WindowEntry> windows = {
        {"About", [] { return Dialog<CAboutDlg>(IDD_ABOUTBOX); }, 0, 0},
        {"Options", Options, 0, 0},
        {"DatabaseOptions", [] { return Dialog<CdlgDbOptions>(IDD_DBOPTIONS, CDbRetention{}); }, 0, 0},
        {"Editor", Editor, 2, 1},
        {"ItemDialog", [] { return Dialog<CdlgAddItem>(IDD_ADDITEM); }, 0, 0},
        {"BranchDialog", [] { return Dialog<CdlgAddBranch>(IDD_ADDBRANCH); }, 0, 0},
        {"CsvImportReport", CsvImportReport, 0, 0},
        {"ReviewChanges", ReviewChanges, 0, 0},
        {"FindDialog", FindDialog, 0, 0},
        {"DuplicateDialog", DuplicateDialog, 0, 0},
        {"DatabaseExplorer", Explorer, 1, 0},
        {"DatabaseExplorerWorking", ExplorerWorking, 1, 0},
        {"HistoricalData", HistoricalData, 2, 2},
        {"TimePeriod", [] { return Dialog<CdlgTimePeriod>(IDD_TIMEPERIOD); }, 0, 0},
        {"ExportPeriod", ExportPeriod, 0, 0},
        {"ChangeHistory", ChangeHistory, 0, 0},
        {"VersionRetention", VersionRetention, 0, 0},
    };
    return windows;
}

std::string EntryName(const testing::TestParamInfo<WindowEntry>& info)
{
    return info.param.name;
}

} // namespace test
