// Edit, Duplicate... in the address space editor, and the save dialogs'
// overwrite question for a name typed without its extension.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

using EditorDuplicate = test::EditorFixture;
using EditorSaveDialogs = test::EditorFixture;

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

DialogScript::Step Copies(const std::wstring& count, std::wstring* preview = nullptr)
{
    return {L"Duplicate", [=](HWND dialog) {
                test::SetItemText(dialog, IDC_DUPLICATE_COUNT, count);
                if (preview)
                    *preview = test::DialogItemText(dialog, IDC_DUPLICATE_PREVIEW);
                test::ClickButton(dialog, IDOK);
            }};
}

} // namespace

TEST_F(EditorDuplicate, CopiesOfANameWithoutANumberGetUnderscoreNumbersAndAreSelected)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    std::wstring preview;
    DialogScript script({Copies(L"3", &preview)});
    Command(ID_AS_EDIT_DUPLICATE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(preview, L"The copies will be named Speed_1 ... Speed_3.");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed", L"Speed_1", L"Speed_2", L"Speed_3"}));
    EXPECT_EQ(ListView_GetSelectedCount(List()), 3u);
    const auto copy = Item(L"Plant/Line1", L"Speed_2");
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->Value().dblVal, 12.5);
    EXPECT_TRUE(copy->Archive());
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorDuplicate, CopiesCountOnFromTheTrailingNumberSkippingNamesThatExist)
{
    SelectBranch(L"Plant/Line2");
    const auto add = [&](const wchar_t* name) {
        DialogScript script({{L"Add Item", [=](HWND d) {
                                  test::SetItemText(d, IDC_ITEM_NAME, name);
                                  test::ClickButton(d, IDOK);
                              }}});
        Command(ID_AS_EDIT_NEW_ITEM);
        ASSERT_TRUE(script.Finished()) << Report(script);
    };
    add(L"Motor7");
    add(L"Motor9");
    FocusList();
    SelectRows({L"Motor7"});
    DialogScript script({Copies(L"3")});
    Command(ID_AS_EDIT_DUPLICATE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(Column(0), (Names{L"Motor10", L"Motor11", L"Motor7", L"Motor8", L"Motor9"}));
    EXPECT_EQ(F().Document().History().UndoDescription(), L"Duplicate 'Motor7' x3");
    Command(ID_AS_EDIT_UNDO);
    EXPECT_EQ(Column(0), (Names{L"Motor7", L"Motor9"}));
}

TEST_F(EditorDuplicate, ACountOutsideOneToTenThousandCannotBeConfirmed)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count"});
    bool okEnabled = true;
    std::wstring preview;
    DialogScript script({{L"Duplicate", [&](HWND d) {
                              test::SetItemText(d, IDC_DUPLICATE_COUNT, L"10001");
                              okEnabled = ::IsWindowEnabled(::GetDlgItem(d, IDOK)) != FALSE;
                              preview = test::DialogItemText(d, IDC_DUPLICATE_PREVIEW);
                              test::ClickButton(d, IDCANCEL);
                          }}});
    Command(ID_AS_EDIT_DUPLICATE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_FALSE(okEnabled);
    EXPECT_EQ(preview, L"Type a number of copies from 1 to 10,000.");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorDuplicate, SeveralSelectedRowsAreNotDuplicated)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count", L"Label"});
    DialogScript script({{L"Duplicate", [](HWND d) { test::ClickButton(d, IDCANCEL); },
                          false, std::chrono::milliseconds(1000)}});
    Command(ID_AS_EDIT_DUPLICATE);
    EXPECT_FALSE(script.Finished()) << "no dialog for several rows";
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

TEST_F(EditorSaveDialogs, SaveACopyWithoutAnExtensionAsksBeforeOverwritingTheXmlFile)
{
    const std::wstring typed = dir.File(L"plant");
    test::WriteFileBytes(typed + L".xml", "keep me");
    DialogScript script({{L"Save a copy", [&](HWND d) { test::ChooseFile(d, typed); }},
                         {L"Save a copy", [](HWND box) { test::ClickButton(box, IDNO); }},
                         {L"Save a copy", [](HWND d) { test::ClickButton(d, IDCANCEL); }}});
    Command(ID_AS_FILE_SAVE_COPY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], L"plant.xml already exists.\nDo you want to replace it?");
    EXPECT_EQ(test::ReadFileBytes(typed + L".xml"), "keep me");
}

TEST_F(EditorSaveDialogs, ExportCsvWithoutAnExtensionAsksBeforeOverwritingTheCsvFile)
{
    const std::wstring typed = dir.File(L"plant");
    test::WriteFileBytes(typed + L".csv", "keep me");
    DialogScript script({{L"Export CSV", [&](HWND d) { test::ChooseFile(d, typed); }},
                         {L"Export CSV", [](HWND box) { test::ClickButton(box, IDNO); }},
                         {L"Export CSV", [](HWND d) { test::ClickButton(d, IDCANCEL); }}});
    Command(ID_AS_FILE_EXPORT_CSV);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(test::ReadFileBytes(typed + L".csv"), "keep me");
}

TEST_F(EditorSaveDialogs, YesToTheOverwriteQuestionWritesTheXmlFile)
{
    const std::wstring typed = dir.File(L"plant");
    test::WriteFileBytes(typed + L".xml", "old");
    DialogScript script({{L"Save a copy", [&](HWND d) { test::ChooseFile(d, typed); }},
                         {L"Save a copy", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_SAVE_COPY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_NE(test::ReadFileBytes(typed + L".xml").find("Name=\"Speed\""), std::string::npos);
}

// Undo and redo of Duplicate, compared as the saved XML.
TEST_F(EditorDuplicate, UndoAndRedoRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows({L"Speed"});
        DialogScript script({Copies(L"3")});
        Command(ID_AS_EDIT_DUPLICATE);
        ASSERT_TRUE(script.Finished()) << Report(script);
        ASSERT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed", L"Speed_1", L"Speed_2", L"Speed_3"}));
    });
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}
