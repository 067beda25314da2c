// The address space editor's status bar: beside the prompt, the items of
// the branch the list shows and of the whole address space, and "Modified" with the number of changes
// while there are unsaved changes; kept current after every change, while
// the menu prompts still show in the first pane.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "addressspace/EditorStatus.h"

using test::DialogScript;

namespace {

class EditorStatus : public test::EditorFixture {
protected:
    std::wstring Pane(int pane)
    {
        wchar_t text[256] = {};
        const HWND status = F().Bars().StatusBar();
        if (LOWORD(::SendMessageW(status, SB_GETTEXTLENGTHW, pane, 0)) < 256)
            ::SendMessageW(status, SB_GETTEXTW, pane, reinterpret_cast<LPARAM>(text));
        return text;
    }
    std::wstring BranchPane() { return Pane(CEditorStatus::kBranchPane); }
    std::wstring TotalPane() { return Pane(CEditorStatus::kTotalPane); }
    std::wstring ModifiedPane() { return Pane(CEditorStatus::kModifiedPane); }
    void DeleteRow(const std::wstring& name)
    {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows({name});
        Command(ID_AS_EDIT_DELETE);
    }
    void AddItem(const std::wstring& name)
    {
        DialogScript script({{L"Add Item", [name](HWND dialog) {
                                  test::SetItemText(dialog, IDC_ITEM_NAME, name);
                                  test::ClickButton(dialog, IDOK);
                              }}});
        Command(ID_AS_EDIT_NEW_ITEM);
        ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    }
};

} // namespace

TEST_F(EditorStatus, TheStatusBarHasThePromptAndThreePanesBesideIt)
{
    EXPECT_EQ(::SendMessageW(F().Bars().StatusBar(), SB_GETPARTS, 0, 0), 4);
    EXPECT_EQ(Pane(0), L"Ready");
}

TEST_F(EditorStatus, OpeningShowsTheCountsOfTheSelectedBranchAndTheWholeAddressSpace)
{
    EXPECT_EQ(BranchPane(), L"Branch: 1 item(s)");   // the root holds Heartbeat
    EXPECT_EQ(TotalPane(), L"Address space: 4 item(s)");
    EXPECT_EQ(ModifiedPane(), L"");
    SelectBranch(L"Plant/Line1");
    EXPECT_EQ(BranchPane(), L"Branch: 3 item(s)");
    SelectBranch(L"Plant/Line2");
    EXPECT_EQ(BranchPane(), L"Branch: 0 item(s)");
}

TEST_F(EditorStatus, AddingAnItemCountsItAndShowsModified)
{
    SelectBranch(L"Plant/Line1");
    AddItem(L"Level");
    EXPECT_EQ(BranchPane(), L"Branch: 4 item(s)");
    EXPECT_EQ(TotalPane(), L"Address space: 5 item(s)");
    EXPECT_EQ(ModifiedPane(), L"Modified: 1 change");
}

TEST_F(EditorStatus, DeletingCountsAndUndoToTheCleanStateClearsModified)
{
    DeleteRow(L"Count");
    EXPECT_EQ(BranchPane(), L"Branch: 2 item(s)");
    EXPECT_EQ(TotalPane(), L"Address space: 3 item(s)");
    EXPECT_EQ(ModifiedPane(), L"Modified: 1 change");
    Command(ID_AS_EDIT_UNDO);
    EXPECT_EQ(BranchPane(), L"Branch: 3 item(s)");
    EXPECT_EQ(TotalPane(), L"Address space: 4 item(s)");
    EXPECT_EQ(ModifiedPane(), L"");
    Command(ID_AS_EDIT_REDO);
    EXPECT_EQ(TotalPane(), L"Address space: 3 item(s)");
    EXPECT_EQ(ModifiedPane(), L"Modified: 1 change");
}

TEST_F(EditorStatus, DeletingABranchCountsEverythingUnderIt)
{
    SelectBranch(L"Plant");
    FocusTree();
    Command(ID_AS_EDIT_DELETE);
    EXPECT_EQ(TotalPane(), L"Address space: 1 item(s)");
    EXPECT_EQ(ModifiedPane(), L"Modified: 6 changes");
}

TEST_F(EditorStatus, SavingClearsModifiedAndTheTitleStaysAsItIs)
{
    DeleteRow(L"Label");
    ASSERT_EQ(ModifiedPane(), L"Modified: 1 change");
    DialogScript script({{L"Save", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_SAVE);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    EXPECT_EQ(ModifiedPane(), L"");
    EXPECT_EQ(TotalPane(), L"Address space: 3 item(s)");
    wchar_t title[64] = {};
    ::GetWindowTextW(Frame(), title, 64);
    EXPECT_STREQ(title, L" OPC Address Space");
}

TEST_F(EditorStatus, AMenuPromptShowsInTheFirstPaneBesideTheCounts)
{
    ::SendMessageW(Frame(), WM_MENUSELECT, MAKEWPARAM(ID_AS_FILE_SAVE, MF_STRING), 0);
    EXPECT_EQ(Pane(0), CL::CFrameBars::Prompt(ID_AS_FILE_SAVE));
    EXPECT_FALSE(Pane(0).empty());
    EXPECT_EQ(TotalPane(), L"Address space: 4 item(s)");
    ::SendMessageW(Frame(), WM_MENUSELECT, MAKEWPARAM(0, 0xFFFF), 0);
    EXPECT_EQ(Pane(0), L"Ready");
}

// The tray reloads the editor after the options changed: no command of the
// editor runs, the panes follow the reloaded address space all the same.
TEST_F(EditorStatus, AReloadStartedByTheTrayShowsTheNewCountsAndClearsModified)
{
    DeleteRow(L"Count");
    ASSERT_EQ(ModifiedPane(), L"Modified: 1 change");
    test::WriteFileBytes(exchangeFile, "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"></Branch>"
                                       "</Morvane_OPCDAAddressSpace>");
    editor->ReloadFromFile();
    EXPECT_EQ(TotalPane(), L"Address space: 0 item(s)");
    EXPECT_EQ(ModifiedPane(), L"");
}
