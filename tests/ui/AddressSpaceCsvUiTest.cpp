// CSV export and import through the editor's File menu, its file dialogs and
// the import report, on the real window: what reaches the file, what the
// report lists, and what the address space holds after Import or Cancel.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "addressspace/AddressSpaceCsv.h"
#include "common/Util_Variant.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

using EditorCsv = test::EditorFixture;

DialogScript::Step Answer(const wchar_t* title, int button)
{
    return {title, [button](HWND box) { test::ClickButton(box, button); }};
}

DialogScript::Step Choose(const wchar_t* title, const std::wstring& path)
{
    return {title, [path](HWND dialog) { test::ChooseFile(dialog, path); }};
}

// What the import report showed.
struct ReportSeen {
    std::wstring summary;
    Names lines;
    Names reasons;
    bool importEnabled = false;
    bool updateChecked = true;
};

// Reads the report, sets the update choice and presses the button.
DialogScript::Step ReadReport(ReportSeen& seen, bool update, int button)
{
    return {L"Import CSV", [&seen, update, button](HWND dialog) {
                seen.summary = test::DialogItemText(dialog, IDC_CSV_SUMMARY);
                HWND list = ::GetDlgItem(dialog, IDC_CSV_REJECTED);
                const int count = ListView_GetItemCount(list);
                for (int i = 0; i < count; ++i) {
                    wchar_t text[512] = {};
                    ListView_GetItemText(list, i, 0, text, 512);
                    seen.lines.push_back(text);
                    ListView_GetItemText(list, i, 1, text, 512);
                    seen.reasons.push_back(text);
                }
                seen.importEnabled = ::IsWindowEnabled(::GetDlgItem(dialog, IDOK)) != FALSE;
                seen.updateChecked = test::IsChecked(dialog, IDC_CSV_UPDATE);
                test::SetCheck(dialog, IDC_CSV_UPDATE, update);
                test::ClickButton(dialog, button);
            }};
}

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

std::wstring StatusText(HWND status)
{
    wchar_t text[512] = {};
    ::SendMessageW(status, SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text));
    return text;
}

const std::string kImport =
    "\xEF\xBB\xBFPath,Data type,Value,Readable,Writable,Archive,Scan rate\r\n"
    "Plant.Line1.Speed,VT_R8,99.5,1,1,0,250\r\n"      // exists
    "Plant.Line3.Flow,VT_I4,42,1,0,1,500\r\n"          // new, in a new branch
    "Plant.Line1.Bad,VT_NOPE,1,1,1,0,1000\r\n"         // line 4: unknown type
    "Plant..Empty,VT_I4,1,1,1,0,1000\r\n";             // line 5: empty name

} // namespace

TEST_F(EditorCsv, ExportWritesEveryItemAndAppendsCsvWhenNoExtensionWasTyped)
{
    const std::wstring typed = dir.File(L"items");
    DialogScript script({Choose(L"Export CSV", typed)});
    Command(ID_AS_FILE_EXPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    ASSERT_TRUE(test::FileExists(typed + L".csv"));
    const std::string csv = test::ReadFileBytes(typed + L".csv");
    EXPECT_EQ(csv, CL::ExportAddressSpaceCsv(*F().Document().Model()));
    EXPECT_NE(csv.find("Plant.Line1.Speed,VT_R8,12.5,1,1,1,1000\r\n"), std::string::npos);
    EXPECT_NE(csv.find("Heartbeat,VT_UI2,7,1,0,0,1000\r\n"), std::string::npos);
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorCsv, ImportShowsTheReportAndTakesOnlyTheGoodLinesLeavingExistingItemsAlone)
{
    const std::wstring file = dir.File(L"bulk.csv");
    test::WriteFileBytes(file, kImport);
    ReportSeen seen;
    DialogScript script({Choose(L"Import CSV", file), ReadReport(seen, false, IDOK)});
    Command(ID_AS_FILE_IMPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);

    EXPECT_NE(seen.summary.find(L"2 item(s) can be imported from \"bulk.csv\""), std::wstring::npos)
        << CL::Narrow(seen.summary);
    EXPECT_NE(seen.summary.find(L"2 line(s) cannot be taken"), std::wstring::npos);
    EXPECT_EQ(seen.lines, (Names{L"4", L"5"}));
    ASSERT_EQ(seen.reasons.size(), 2u);
    EXPECT_NE(seen.reasons[0].find(L"unknown data type \"VT_NOPE\""), std::wstring::npos);
    EXPECT_NE(seen.reasons[1].find(L"empty name"), std::wstring::npos);
    EXPECT_TRUE(seen.importEnabled);
    EXPECT_FALSE(seen.updateChecked);

    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2", L"Line3"}));
    const auto flow = Item(L"Plant/Line3", L"Flow");
    ASSERT_TRUE(flow);
    EXPECT_EQ(flow->CanonicalDataType(), VT_I4);
    EXPECT_TRUE(flow->Archive());
    EXPECT_EQ(flow->ScanRate(), 500u);
    EXPECT_EQ(Item(L"Plant/Line1", L"Speed")->ScanRate(), 1000u) << "existing items are left alone";
    EXPECT_FALSE(Item(L"Plant/Line1", L"Bad"));
    EXPECT_TRUE(Dirty());
    EXPECT_NE(StatusText(F().Bars().StatusBar()).find(L"1 item(s) added, 0 updated, 1 left as they were"),
              std::wstring::npos)
        << CL::Narrow(StatusText(F().Bars().StatusBar()));
    EXPECT_EQ(test::ReadFileBytes(exchangeFile), test::EditorSampleSpace()) << "nothing reaches the server before Save";
}

TEST_F(EditorCsv, ImportWithUpdatingChosenUpdatesTheExistingItems)
{
    const std::wstring file = dir.File(L"bulk.csv");
    test::WriteFileBytes(file, kImport);
    ReportSeen seen;
    DialogScript script({Choose(L"Import CSV", file), ReadReport(seen, true, IDOK)});
    Command(ID_AS_FILE_IMPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    const auto speed = Item(L"Plant/Line1", L"Speed");
    ASSERT_TRUE(speed);
    EXPECT_EQ(speed->ScanRate(), 250u);
    EXPECT_FALSE(speed->Archive());
    EXPECT_EQ(CL::VariantToString(speed->Value(), CL::kLocaleSystemDefault, L"\r\n"), L"99.5");
    SelectBranch(L"Plant/Line1");
    EXPECT_NE(LineOf(L"Speed"), -1);
    EXPECT_EQ(Column(2)[static_cast<size_t>(LineOf(L"Speed"))], L"99.5");
}

TEST_F(EditorCsv, CancelInTheReportChangesNothing)
{
    const std::wstring file = dir.File(L"bulk.csv");
    test::WriteFileBytes(file, kImport);
    const auto model = F().Document().Model();
    ReportSeen seen;
    DialogScript script({Choose(L"Import CSV", file), ReadReport(seen, true, IDCANCEL)});
    Command(ID_AS_FILE_IMPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(F().Document().Model().get(), model.get());
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    EXPECT_EQ(Item(L"Plant/Line1", L"Speed")->ScanRate(), 1000u);
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorCsv, FileWithOnlyBadLinesCannotBeImported)
{
    const std::wstring file = dir.File(L"bad.csv");
    test::WriteFileBytes(file, "Path,Data type\r\nx,VT_NOPE\r\n");
    ReportSeen seen;
    DialogScript script({Choose(L"Import CSV", file), ReadReport(seen, false, IDCANCEL)});
    Command(ID_AS_FILE_IMPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_FALSE(seen.importEnabled);
    EXPECT_EQ(seen.lines, (Names{L"2"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorCsv, FileWithoutAPathColumnEndsInTheErrorReportAndChangesNothing)
{
    const std::wstring file = dir.File(L"nopath.csv");
    test::WriteFileBytes(file, "Name,Value\r\nx,1\r\n");
    const auto model = F().Document().Model();
    DialogScript script({Choose(L"Import CSV", file), Answer(L"CException", IDOK)});
    Command(ID_AS_FILE_IMPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_NE(script.Texts()[1].find(L"no \"Path\" column"), std::wstring::npos) << CL::Narrow(script.Texts()[1]);
    EXPECT_EQ(F().Document().Model().get(), model.get());
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorCsv, ExportThenImportIntoAnEmptyAddressSpaceGivesTheSameFile)
{
    const std::wstring first = dir.File(L"first.csv");
    {
        DialogScript script({Choose(L"Export CSV", first)});
        Command(ID_AS_FILE_EXPORT_CSV);
        ASSERT_TRUE(script.Finished()) << Report(script);
    }
    {
        DialogScript script({Answer(L"New", IDYES), Choose(L"Import CSV", first),
                             {L"Import CSV", [](HWND d) { test::ClickButton(d, IDOK); }}});
        Command(ID_AS_FILE_NEW);
        Command(ID_AS_FILE_IMPORT_CSV);
        ASSERT_TRUE(script.Finished()) << Report(script);
    }
    const std::wstring second = dir.File(L"second.csv");
    DialogScript script({Choose(L"Export CSV", second)});
    Command(ID_AS_FILE_EXPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(test::ReadFileBytes(second), test::ReadFileBytes(first));
}
