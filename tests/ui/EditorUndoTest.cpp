// Undo and redo in the address space editor, on the real window: every kind
// of change comes back exactly (the address space saved before the change,
// after the undo, after the change and after the redo are compared as XML),
// the dirty flag follows the state last loaded from or saved to the server,
// and the Edit menu names what Undo and Redo would do.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "support/MenuCapture.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

class EditorUndo : public test::EditorFixture {
protected:
    // The Edit menu's entries as the user sees them when it opens.
    Names EditMenu()
    {
        const HMENU edit = ::GetSubMenu(::GetMenu(Frame()), 1);
        ::SendMessageW(Frame(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(edit), 1);
        return test::MenuTexts(test::ReadMenu(edit));
    }
    bool EditEntryEnabled(UINT id)
    {
        const HMENU edit = ::GetSubMenu(::GetMenu(Frame()), 1);
        ::SendMessageW(Frame(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(edit), 1);
        return (::GetMenuState(edit, id, MF_BYCOMMAND) & MF_GRAYED) == 0;
    }
    void DeleteRows(const Names& rows)
    {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows(rows);
        Command(ID_AS_EDIT_DELETE);
    }
};

DialogScript::Step Fill(const wchar_t* title, int id, const std::wstring& text, int button = IDOK)
{
    return {title, [=](HWND dialog) {
                test::SetItemText(dialog, id, text);
                test::ClickButton(dialog, button);
            }};
}

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

} // namespace

TEST_F(EditorUndo, UndoAndRedoOfAddingABranchRestoreTheModelAndTheTree)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant");
        DialogScript script({Fill(L"Add Branch", IDC_BRANCH_NAME, L"Line3")});
        Command(ID_AS_EDIT_NEW_BRANCH);
        ASSERT_TRUE(script.Finished()) << Report(script);
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    Command(ID_AS_EDIT_REDO);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2", L"Line3"}));
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant")) << "the touched branch is selected";
}

TEST_F(EditorUndo, UndoAndRedoOfAddingAnItemRestoreTheModelAndTheList)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line2");
        DialogScript script({Fill(L"Add Item", IDC_ITEM_NAME, L"Level")});
        Command(ID_AS_EDIT_NEW_ITEM);
        ASSERT_TRUE(script.Finished()) << Report(script);
    });
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line2"));
    EXPECT_TRUE(Column(0).empty());
    Command(ID_AS_EDIT_REDO);
    EXPECT_EQ(Column(0), Names{L"Level"});
}

TEST_F(EditorUndo, UndoOfDeletingABranchBringsItBackWithEverythingUnderItAndSelectsIt)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusTree();
        Command(ID_AS_EDIT_DELETE);
        ASSERT_EQ(Children(L"Plant"), Names{L"Line2"});
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1"));
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

TEST_F(EditorUndo, UndoAndRedoOfDeletingItemsRestoreTheModelAndTheList)
{
    ExpectUndoAndRedoRestore([&] { DeleteRows({L"Count", L"Speed"}); });
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    Command(ID_AS_EDIT_REDO);
    EXPECT_EQ(Column(0), Names{L"Label"});
}

TEST_F(EditorUndo, UndoAndRedoOfRenamingABranchRestoreTheModelAndTheTree)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line2");
        FocusTree();
        DialogScript script({Fill(L"Branch properties", IDC_BRANCH_NAME, L"Line0")});
        Command(ID_AS_EDIT_PROPERTIES);
        ASSERT_TRUE(script.Finished()) << Report(script);
        ASSERT_EQ(Children(L"Plant"), (Names{L"Line0", L"Line1"}));
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    Command(ID_AS_EDIT_REDO);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line0", L"Line1"}));
}

TEST_F(EditorUndo, UndoAndRedoOfOneItemsPropertiesRestoreNameValueAndFlags)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows({L"Speed"});
        DialogScript script({{L"Item(s) properties", [](HWND d) {
                                  test::SetItemText(d, IDC_ITEM_NAME, L"Velocity");
                                  test::SetItemText(d, IDC_ITEM_VALUE, L"99.25");
                                  test::SetCheck(d, IDC_ITEM_ARCHIVE, false);
                                  test::ClickButton(d, IDOK);
                              }}});
        Command(ID_AS_EDIT_PROPERTIES);
        ASSERT_TRUE(script.Finished()) << Report(script);
    });
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(Column(2), (Names{L"7", L"abc", L"12.5"}));
}

TEST_F(EditorUndo, UndoAndRedoOfPropertiesOnSeveralItemsRestoreEveryItem)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows({L"Count", L"Label", L"Speed"});
        DialogScript script({{L"Item(s) properties", [](HWND d) {
                                  test::SelectComboData(d, IDC_ITEM_TYPE, VT_I2);
                                  test::SetItemText(d, IDC_ITEM_VALUE, L"3");
                                  test::ClickButton(d, IDOK);
                              }}});
        Command(ID_AS_EDIT_PROPERTIES);
        ASSERT_TRUE(script.Finished()) << Report(script);
    });
    EXPECT_EQ(Column(1), (Names{L"VT_I4", L"VT_BSTR", L"VT_R8"}));
}

TEST_F(EditorUndo, UndoAndRedoOfACsvImportRestoreTheWholeAddressSpace)
{
    const std::wstring file = dir.File(L"bulk.csv");
    test::WriteFileBytes(file, "Path,Data type,Value\r\nPlant.Line1.Speed,VT_R8,99.5\r\nPlant.Line3.Flow,VT_I4,42\r\n");
    ExpectUndoAndRedoRestore([&] {
        DialogScript script({{L"Import CSV", [&](HWND d) { test::ChooseFile(d, file); }},
                             {L"Import CSV", [](HWND d) {
                                  test::SetCheck(d, IDC_CSV_UPDATE, true);
                                  test::ClickButton(d, IDOK);
                              }}});
        Command(ID_AS_FILE_IMPORT_CSV);
        ASSERT_TRUE(script.Finished()) << Report(script);
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    Command(ID_AS_EDIT_REDO);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2", L"Line3"}));
}

TEST_F(EditorUndo, EveryStepIsUndoneInTurnBackToTheLoadedState)
{
    const std::string loaded = Xml();
    DeleteRows({L"Count"});
    const std::string one = Xml();
    DeleteRows({L"Label"});
    SelectBranch(L"Plant/Line2");
    FocusTree();
    Command(ID_AS_EDIT_DELETE);
    EXPECT_EQ(F().Document().History().UndoCount(), 3u);
    Command(ID_AS_EDIT_UNDO);
    Command(ID_AS_EDIT_UNDO);
    EXPECT_EQ(Xml(), one);
    EXPECT_TRUE(Dirty());
    Command(ID_AS_EDIT_UNDO);
    EXPECT_EQ(Xml(), loaded);
    EXPECT_FALSE(Dirty());
    Command(ID_AS_EDIT_UNDO);   // nothing left: changes nothing
    EXPECT_EQ(Xml(), loaded);
    EXPECT_EQ(F().Document().History().RedoCount(), 3u);
}

TEST_F(EditorUndo, ANewChangeAfterUndoingDropsTheRedoStepsAndTheCleanStateStaysReachable)
{
    DeleteRows({L"Count"});
    Command(ID_AS_EDIT_UNDO);
    ASSERT_FALSE(Dirty());
    DeleteRows({L"Speed"});
    EXPECT_TRUE(Dirty());
    EXPECT_EQ(F().Document().History().RedoCount(), 0u);
    EXPECT_FALSE(EditEntryEnabled(ID_AS_EDIT_REDO));
    Command(ID_AS_EDIT_UNDO);
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorUndo, RedoAfterUndoingToTheLoadedStateMarksTheEditorChangedAgain)
{
    DeleteRows({L"Count"});
    Command(ID_AS_EDIT_UNDO);
    DeleteRows({L"Label"});   // the clean state is now one undo away
    Command(ID_AS_EDIT_UNDO);
    EXPECT_FALSE(Dirty());
    Command(ID_AS_EDIT_REDO);
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorUndo, SaveStartsAFreshHistoryWhoseStartIsTheCleanState)
{
    DeleteRows({L"Count"});
    DialogScript script({{L"Save", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_SAVE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_FALSE(Dirty());
    EXPECT_FALSE(EditEntryEnabled(ID_AS_EDIT_UNDO));
    DeleteRows({L"Label"});
    Command(ID_AS_EDIT_UNDO);
    EXPECT_FALSE(Dirty()) << "back at the saved state";
    EXPECT_EQ(Column(0), (Names{L"Label", L"Speed"}));
}

TEST_F(EditorUndo, ReloadAndNewStartAFreshHistory)
{
    DeleteRows({L"Count"});
    DialogScript reload({{L"Reload", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_RELOAD);
    ASSERT_TRUE(reload.Finished()) << Report(reload);
    EXPECT_EQ(F().Document().History().UndoCount(), 0u);
    DeleteRows({L"Count"});
    DialogScript erase({{L"New", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_NEW);
    ASSERT_TRUE(erase.Finished()) << Report(erase);
    EXPECT_EQ(F().Document().History().UndoCount(), 0u);
    EXPECT_TRUE(Dirty()) << "a new address space differs from the server's, with nothing to undo";
}

TEST_F(EditorUndo, TheEditMenuNamesWhatUndoAndRedoWouldDo)
{
    Names menu = EditMenu();
    ASSERT_GE(menu.size(), 2u);
    EXPECT_EQ(menu[0], L"&Undo\tCtrl+Z");
    EXPECT_EQ(menu[1], L"&Redo\tCtrl+Y");
    EXPECT_FALSE(EditEntryEnabled(ID_AS_EDIT_UNDO));
    EXPECT_FALSE(EditEntryEnabled(ID_AS_EDIT_REDO));
    DeleteRows({L"Count"});
    menu = EditMenu();
    EXPECT_EQ(menu[0], L"&Undo Delete Item 'Count'\tCtrl+Z");
    EXPECT_TRUE(EditEntryEnabled(ID_AS_EDIT_UNDO));
    Command(ID_AS_EDIT_UNDO);
    menu = EditMenu();
    EXPECT_EQ(menu[0], L"&Undo\tCtrl+Z");
    EXPECT_EQ(menu[1], L"&Redo Delete Item 'Count'\tCtrl+Y");
    EXPECT_TRUE(EditEntryEnabled(ID_AS_EDIT_REDO));
}

TEST_F(EditorUndo, AnAmpersandInANameIsShownAsItIsInTheMenu)
{
    SelectBranch(L"Plant/Line2");
    DialogScript script({Fill(L"Add Item", IDC_ITEM_NAME, L"R&D")});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(EditMenu()[0], L"&Undo New Item 'R&&D'\tCtrl+Z");
}

TEST_F(EditorUndo, CtrlZAndCtrlYAreTheAcceleratorsOfUndoAndRedo)
{
    DeleteRows({L"Count"});
    bool undoTaken = false, undone = false, redoTaken = false;
    {
        test::CtrlHeld ctrl;
        MSG undo = {List(), WM_KEYDOWN, 'Z', 0, 0, {}};
        undoTaken = F().PreTranslateMessage(undo);
        undone = Column(0) == Names{L"Count", L"Label", L"Speed"};
        MSG redo = {List(), WM_KEYDOWN, 'Y', 0, 0, {}};
        redoTaken = F().PreTranslateMessage(redo);
    }
    EXPECT_TRUE(undoTaken);
    EXPECT_TRUE(undone);
    EXPECT_TRUE(redoTaken);
    EXPECT_EQ(Column(0), (Names{L"Label", L"Speed"}));
}

TEST_F(EditorUndo, AFailingRedoIsReportedAndLeavesModelViewsFlagAndHistory)
{
    SelectBranch(L"Plant");
    DialogScript add({Fill(L"Add Branch", IDC_BRANCH_NAME, L"Line3")});
    Command(ID_AS_EDIT_NEW_BRANCH);
    ASSERT_TRUE(add.Finished()) << Report(add);
    Command(ID_AS_EDIT_UNDO);
    // Someone else's branch of the same name is in the way of the redo.
    F().Document().Model()->RootBranch()->FindBranch(L"Plant")->AddBranch(CMainFrame::BranchPtr::Make(L"LINE3"));
    const std::string before = Xml();
    const bool dirty = Dirty();
    test::MessageBoxAnswerer answerer;
    Command(ID_AS_EDIT_REDO);
    ASSERT_EQ(answerer.Seen().size(), 1u) << "the error report";
    EXPECT_EQ(answerer.Seen()[0].title, L"CException");
    EXPECT_EQ(Xml(), before);
    EXPECT_EQ(Dirty(), dirty);
    EXPECT_EQ(F().Document().History().RedoCount(), 1u);
    EXPECT_EQ(F().Document().History().UndoCount(), 0u);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"})) << "the views as they were";
}

TEST_F(EditorUndo, AFailingUndoIsReportedAndLeavesModelViewsFlagAndHistory)
{
    SelectBranch(L"Plant");
    DialogScript add({Fill(L"Add Branch", IDC_BRANCH_NAME, L"Line3")});
    Command(ID_AS_EDIT_NEW_BRANCH);
    ASSERT_TRUE(add.Finished()) << Report(add);
    // The branch is gone already (taken out behind the editor's back): the undo cannot take it out.
    F().Document().Model()->RootBranch()->FindBranch(L"Plant")->RemoveBranch(L"Line3");
    const std::string before = Xml();
    test::MessageBoxAnswerer answerer;
    Command(ID_AS_EDIT_UNDO);
    ASSERT_EQ(answerer.Seen().size(), 1u) << "the error report";
    EXPECT_EQ(answerer.Seen()[0].title, L"CException");
    EXPECT_EQ(Xml(), before);
    EXPECT_TRUE(Dirty());
    EXPECT_EQ(F().Document().History().UndoCount(), 1u) << "the step stays to be undone";
    EXPECT_EQ(F().Document().History().RedoCount(), 0u);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2", L"Line3"})) << "the views as they were";
}

TEST_F(EditorUndo, ReloadKeepsTheExpandedBranchesAndTheSelectedBranchAndRows)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Label", L"Speed"});
    DialogScript save({{L"Save", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_SAVE);
    ASSERT_TRUE(save.Finished()) << Report(save);
    Command(ID_AS_FILE_RELOAD);   // unchanged: reloads without asking
    EXPECT_NE(TreeView_GetItemState(Tree(), Node(L"Plant"), TVIS_EXPANDED) & TVIS_EXPANDED, 0u);
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1"));
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(ListView_GetSelectedCount(List()), 2u);
    EXPECT_EQ(ListView_GetNextItem(List(), -1, LVNI_SELECTED), LineOf(L"Label"));
}

TEST_F(EditorUndo, AfterAReloadWithoutTheSelectedBranchItsNearestParentIsSelected)
{
    SelectBranch(L"Plant/Line2");
    test::WriteFileBytes(exchangeFile, "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"></Branch>"
                                       "</Morvane_OPCDAAddressSpace>");
    Command(ID_AS_FILE_RELOAD);
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant"));
}
