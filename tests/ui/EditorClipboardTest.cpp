// Cut, Copy and Paste in the address space editor, on the real window and
// the real clipboard: what Copy puts there is read back as text, text laid
// out as a spreadsheet puts it there is pasted, and names that exist get the
// next free number.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "common/ui/Clipboard.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

constexpr wchar_t kHeader[] = L"Path\tData type\tValue\tReadable\tWritable\tArchive\tScan rate\r\n";

class EditorClipboard : public test::EditorFixture {
protected:
    std::wstring ClipboardText()
    {
        CL::CClipboard clipboard(nullptr);
        return clipboard.Text().value_or(L"(no text)");
    }
    void PutOnClipboard(const std::wstring& text) { CL::CClipboard(nullptr).PutText(text); }
    void CopyRows(const std::wstring& branch, const Names& rows)
    {
        SelectBranch(branch);
        FocusList();
        SelectRows(rows);
        Command(ID_AS_EDIT_COPY);
    }
    std::wstring Status()
    {
        wchar_t text[512] = {};
        ::SendMessageW(F().Bars().StatusBar(), SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text));
        return text;
    }
};

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

} // namespace

TEST_F(EditorClipboard, CopyOfRowsPutsThemAsTabSeparatedCellsUnderTheExportHeader)
{
    CopyRows(L"Plant/Line1", {L"Count", L"Speed"});
    EXPECT_EQ(ClipboardText(), std::wstring(kHeader) + L"Count\tVT_I4\t7\t1\t0\t0\t500\r\n"
                                                       L"Speed\tVT_R8\t12.5\t1\t1\t1\t1000\r\n");
    EXPECT_FALSE(Dirty()) << "copy changes nothing";
}

TEST_F(EditorClipboard, CopyOfABranchStartsItsRowsPathsWithTheBranchName)
{
    SelectBranch(L"Plant");
    FocusTree();
    Command(ID_AS_EDIT_COPY);
    EXPECT_EQ(ClipboardText(), std::wstring(kHeader) + L"Plant.Line1.Count\tVT_I4\t7\t1\t0\t0\t500\r\n"
                                                       L"Plant.Line1.Label\tVT_BSTR\tabc\t0\t1\t0\t2000\r\n"
                                                       L"Plant.Line1.Speed\tVT_R8\t12.5\t1\t1\t1\t1000\r\n");
}

TEST_F(EditorClipboard, PasteIntoTheSameBranchGivesANameThatExistsTheNextFreeNumber)
{
    CopyRows(L"Plant/Line1", {L"Speed"});
    Command(ID_AS_EDIT_PASTE);
    Command(ID_AS_EDIT_PASTE);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed", L"Speed_2", L"Speed_3"}));
    const auto copy = Item(L"Plant/Line1", L"Speed_3");
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->CanonicalDataType(), VT_R8);
    EXPECT_EQ(copy->ScanRate(), 1000u);
    EXPECT_TRUE(copy->Archive());
    EXPECT_EQ(Item(L"Plant/Line1", L"Speed")->Value().dblVal, 12.5) << "the original is left alone";
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorClipboard, APastedBranchThatExistsOnTheLevelGetsTheNextFreeNumber)
{
    SelectBranch(L"Plant/Line1");
    FocusTree();
    Command(ID_AS_EDIT_COPY);
    SelectBranch(L"Plant");
    Command(ID_AS_EDIT_PASTE);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line1_2", L"Line2"}));
    SelectBranch(L"Plant/Line1_2");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

TEST_F(EditorClipboard, SpreadsheetCellsWithSemicolonsAndDecimalCommasPasteBelowTheSelectedBranch)
{
    PutOnClipboard(L"Path;Data type;Value;Scan rate\r\nTank.Level;VT_R8;3,5;250\r\nTank.Name;VT_BSTR;a,b;100\r\n");
    SelectBranch(L"Plant/Line2");
    Command(ID_AS_EDIT_PASTE);
    EXPECT_EQ(Children(L"Plant/Line2"), Names{L"Tank"});
    const auto level = Item(L"Plant/Line2/Tank", L"Level");
    ASSERT_TRUE(level);
    EXPECT_EQ(level->Value().dblVal, 3.5);
    EXPECT_EQ(level->ScanRate(), 250u);
    EXPECT_EQ(std::wstring(Item(L"Plant/Line2/Tank", L"Name")->Value().bstrVal), L"a,b");
    EXPECT_NE(Status().find(L"2 item(s) added"), std::wstring::npos) << CL::Narrow(Status());
    EXPECT_NE(Status().find(L"semicolon"), std::wstring::npos);
}

TEST_F(EditorClipboard, TabSeparatedCellsFromASpreadsheetPaste)
{
    PutOnClipboard(L"Path\tData type\tValue\nFlow\tVT_I4\t42\n");
    SelectBranch(L"Plant/Line2");
    FocusList();
    Command(ID_AS_EDIT_PASTE);
    EXPECT_EQ(Column(0), Names{L"Flow"});
    EXPECT_EQ(Column(2), Names{L"42"});
}

TEST_F(EditorClipboard, BadLinesAreReportedAsImportReportsThemAndPasteTakesTheGoodOnes)
{
    PutOnClipboard(L"Path\tData type\tValue\r\nGood\tVT_I4\t1\r\nBad\tVT_NOPE\t1\r\n");
    SelectBranch(L"Plant/Line2");
    std::wstring summary;
    bool updateShown = true;
    DialogScript script({{L"Paste", [&](HWND d) {
                              summary = test::DialogItemText(d, IDC_CSV_SUMMARY);
                              updateShown = ::IsWindowVisible(::GetDlgItem(d, IDC_CSV_UPDATE)) != FALSE;
                              test::ClickButton(d, IDOK);
                          }}});
    Command(ID_AS_EDIT_PASTE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_NE(summary.find(L"1 line(s) cannot be taken"), std::wstring::npos) << CL::Narrow(summary);
    EXPECT_NE(summary.find(L"Separator: tab"), std::wstring::npos);
    EXPECT_FALSE(updateShown) << "a paste never updates an existing item";
    EXPECT_EQ(Column(0), Names{L"Good"});
}

TEST_F(EditorClipboard, CancelInThePasteReportPastesNothing)
{
    PutOnClipboard(L"Path\tData type\tValue\r\nGood\tVT_I4\t1\r\nBad\tVT_NOPE\t1\r\n");
    SelectBranch(L"Plant/Line2");
    DialogScript script({{L"Paste", [](HWND d) { test::ClickButton(d, IDCANCEL); }}});
    Command(ID_AS_EDIT_PASTE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_TRUE(Column(0).empty());
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorClipboard, TextWithoutAPathColumnIsReportedAndChangesNothing)
{
    PutOnClipboard(L"just some words");
    SelectBranch(L"Plant/Line2");
    test::MessageBoxAnswerer answerer;
    Command(ID_AS_EDIT_PASTE);
    ASSERT_EQ(answerer.Seen().size(), 1u);
    EXPECT_EQ(answerer.Seen()[0].title, L"CException");
    EXPECT_TRUE(Column(0).empty());
    EXPECT_FALSE(Dirty());
    EXPECT_EQ(F().Document().History().UndoCount(), 0u);
}

TEST_F(EditorClipboard, CutTakesTheRowsOutAsOneStepAndPasteElsewhereBringsThemThere)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count", L"Label"});
    Command(ID_AS_EDIT_CUT);
    EXPECT_EQ(Column(0), Names{L"Speed"});
    EXPECT_EQ(F().Document().History().UndoDescription(), L"Cut 2 Items");
    SelectBranch(L"Plant/Line2");
    Command(ID_AS_EDIT_PASTE);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label"}));
    Command(ID_AS_EDIT_UNDO);
    Command(ID_AS_EDIT_UNDO);
    SelectBranch(L"Plant/Line1");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorClipboard, UndoOfAPasteRestoresTheModelExactly)
{
    const std::wstring before = dir.File(L"before.xml");
    const std::wstring after = dir.File(L"after.xml");
    F().Document().Model()->Save(before);
    SelectBranch(L"Plant");
    FocusTree();
    Command(ID_AS_EDIT_COPY);
    SelectBranch(L"");
    Command(ID_AS_EDIT_PASTE);
    EXPECT_EQ(Children(L""), (Names{L"Plant", L"Plant_2"}));
    Command(ID_AS_EDIT_UNDO);
    F().Document().Model()->Save(after);
    EXPECT_EQ(test::ReadFileBytes(after), test::ReadFileBytes(before));
    EXPECT_EQ(Children(L""), Names{L"Plant"});
}

// Undo and redo of the clipboard's changes, compared as the saved XML.
TEST_F(EditorClipboard, UndoAndRedoOfCuttingRowsRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows({L"Count", L"Label"});
        Command(ID_AS_EDIT_CUT);
        ASSERT_EQ(Column(0), Names{L"Speed"});
    });
    SelectBranch(L"Plant/Line1");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

TEST_F(EditorClipboard, UndoAndRedoOfCuttingABranchRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusTree();
        Command(ID_AS_EDIT_CUT);
        ASSERT_EQ(Children(L"Plant"), Names{L"Line2"});
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
}

// A paste, and then a paste made after a redo: its numbers go on from the
// names the redo brought back, and its undo and redo give back exactly the
// states before and after it.
TEST_F(EditorClipboard, UndoAndRedoOfAPasteRestoreTheModelExactlyAlsoAfterARedo)
{
    CopyRows(L"Plant/Line1", {L"Count", L"Speed"});
    ExpectUndoAndRedoRestore([&] {
        Command(ID_AS_EDIT_PASTE);
        ASSERT_EQ(Column(0), (Names{L"Count", L"Count_2", L"Label", L"Speed", L"Speed_2"}));
    });
    Command(ID_AS_EDIT_REDO);
    ExpectUndoAndRedoRestore(
        [&] {
            Command(ID_AS_EDIT_PASTE);
            ASSERT_EQ(Column(0),
                      (Names{L"Count", L"Count_2", L"Count_3", L"Label", L"Speed", L"Speed_2", L"Speed_3"}));
        },
        false);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Count_2", L"Label", L"Speed", L"Speed_2"}));
}

TEST_F(EditorClipboard, UndoAndRedoOfPastingABranchRestoreTheModelExactly)
{
    SelectBranch(L"Plant");
    FocusTree();
    Command(ID_AS_EDIT_COPY);
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"");
        Command(ID_AS_EDIT_PASTE);
        ASSERT_EQ(Children(L""), (Names{L"Plant", L"Plant_2"}));
    });
    EXPECT_EQ(Children(L""), Names{L"Plant"});
}
