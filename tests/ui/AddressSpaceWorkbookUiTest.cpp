// Workbook export and import through the editor's File menu, its file
// dialogs and the import report on the real window: the file written, the
// report captioned "Import Workbook" with its rows, and the import as one
// step that Undo takes back.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "common/Text.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

using EditorWorkbook = test::EditorFixture;

DialogScript::Step Choose(const wchar_t* title, const std::wstring& path)
{
    return {title, [path](HWND dialog) { test::ChooseFile(dialog, path); }};
}

struct ReportSeen {
    std::wstring caption;
    std::wstring summary;
    std::wstring label;
    Names rows;
    Names reasons;
};

DialogScript::Step ReadReport(ReportSeen& seen, int button)
{
    return {L"Import Workbook", [&seen, button](HWND dialog) {
                wchar_t text[512] = {};
                ::GetWindowTextW(dialog, text, 512);
                seen.caption = text;
                seen.summary = test::DialogItemText(dialog, IDC_CSV_SUMMARY);
                seen.label = test::DialogItemText(dialog, IDC_CSV_REJECTED_LABEL);
                HWND list = ::GetDlgItem(dialog, IDC_CSV_REJECTED);
                for (int i = 0; i < ListView_GetItemCount(list); ++i) {
                    ListView_GetItemText(list, i, 0, text, 512);
                    seen.rows.push_back(text);
                    ListView_GetItemText(list, i, 1, text, 512);
                    seen.reasons.push_back(text);
                }
                test::ClickButton(dialog, button);
            }};
}

} // namespace

TEST_F(EditorWorkbook, ExportWritesTheAddressSpaceAndAppendsXlsxWhenNoExtensionWasTyped)
{
    const std::wstring typed = dir.File(L"items");
    DialogScript script({Choose(L"Export Workbook", typed)});
    Command(ID_AS_FILE_EXPORT_WORKBOOK);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    ASSERT_TRUE(test::FileExists(typed + L".xlsx"));
    auto back = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    const CL::CsvImportPlan plan = CL::LoadAddressSpaceWorkbook(typed + L".xlsx", *back);
    EXPECT_TRUE(plan.rejected.empty());
    EXPECT_EQ(CL::ExportAddressSpaceCsv(*back), CL::ExportAddressSpaceCsv(*F().Document().Model()));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorWorkbook, ImportShowsTheWorkbookReportAndIsOneStepThatUndoTakesBack)
{
    // The editor's address space with one item more, in a new branch.
    auto changed = CL::CopyAddressSpace(*F().Document().Model());
    auto line = CL::CSmartPtr<COPCServerAddressSpaceBranch>::Make(std::wstring(L"Line9"));
    changed->RootBranch()->FindBranch(L"Plant")->AddBranch(line);
    auto item = CL::CSmartPtr<COPCItem>::Make(DWORD(3), DWORD(500), true, WORD(192), VARTYPE(VT_BSTR), nullptr);
    item->Rename(L"Label");
    item->SetValue(CL::CVariant(std::wstring(L"=1+2")));
    line->AddItem(item);
    const std::wstring file = dir.File(L"bulk.xlsx");
    CL::ExportAddressSpaceWorkbook(*changed, file);

    ReportSeen seen;
    DialogScript script({Choose(L"Import Workbook", file), ReadReport(seen, IDOK)});
    Command(ID_AS_FILE_IMPORT_WORKBOOK);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    EXPECT_EQ(seen.caption, L"Import Workbook");
    EXPECT_NE(seen.summary.find(L"can be imported from the first sheet of \"bulk.xlsx\". Every row can be taken."),
              std::wstring::npos)
        << CL::Narrow(seen.summary);
    EXPECT_NE(seen.label.find(L"Rows that cannot be taken"), std::wstring::npos);
    EXPECT_TRUE(seen.rows.empty());

    const auto label = Item(L"Plant/Line9", L"Label");
    ASSERT_TRUE(label);
    EXPECT_EQ(CL::CVariant(label->Value()).vt, VT_BSTR);
    EXPECT_STREQ(CL::CVariant(label->Value()).bstrVal, L"=1+2");
    EXPECT_TRUE(Dirty());
    Command(ID_AS_EDIT_UNDO);
    EXPECT_FALSE(Item(L"Plant/Line9", L"Label")) << "one Undo takes the whole import back";
}

TEST_F(EditorWorkbook, AnOldBinaryWorkbookEndsInTheErrorReportAndChangesNothing)
{
    const std::wstring file = dir.File(L"old.xls");
    test::WriteFileBytes(file, std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(1024, '\0'));
    const auto model = F().Document().Model();
    DialogScript script({Choose(L"Import Workbook", file),
                         {L"CException", [](HWND box) { test::ClickButton(box, IDOK); }}});
    Command(ID_AS_FILE_IMPORT_WORKBOOK);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    EXPECT_NE(script.Texts()[1].find(L"old binary Excel workbook (.xls)"), std::wstring::npos)
        << CL::Narrow(script.Texts()[1]);
    EXPECT_EQ(F().Document().Model().get(), model.get());
    EXPECT_FALSE(Dirty());
}
