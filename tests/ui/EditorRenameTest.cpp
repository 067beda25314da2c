// Rename in place in the address space editor: F2 opens the name of the
// selected branch or item for editing in the tree or the list, the model's
// name rules and the duplicate messages apply, and undo takes it back.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

using EditorRename = test::EditorFixture;

constexpr wchar_t kDuplicateItem[] =
    L"Another OPC item with the same name exists on the same level. Please, enter unique item name.";
constexpr wchar_t kDuplicateBranch[] =
    L"Another branch with the same name exists on the same level. Please, enter unique name.";

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

// Lets the window handle what is posted to it (the rename runs after the
// label edit has gone).
void Pump()
{
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

// F2 as the program's message loop hands it to the editor.
bool PressF2(CMainFrame& frame, HWND view)
{
    MSG msg = {view, WM_KEYDOWN, VK_F2, 0, 0, {}};
    return frame.PreTranslateMessage(msg);
}

// Types the name into the list's label edit and presses Enter there.
void TypeInList(HWND list, const std::wstring& name)
{
    const HWND edit = ListView_GetEditControl(list);
    ASSERT_NE(edit, nullptr) << "no label edit";
    ::SetWindowTextW(edit, name.c_str());
    ::SendMessageW(edit, WM_KEYDOWN, VK_RETURN, 0);
    Pump();
}

} // namespace

TEST_F(EditorRename, F2InTheTreeRenamesTheBranchInPlaceAndUndoTakesItBack)
{
    SelectBranch(L"Plant/Line2");
    FocusTree();
    ASSERT_TRUE(PressF2(F(), Tree()));
    const HWND edit = TreeView_GetEditControl(Tree());
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(test::WindowText(edit), L"Line2");
    ::SetWindowTextW(edit, L"Line0");
    TreeView_EndEditLabelNow(Tree(), FALSE);
    Pump();
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line0", L"Line1"}));
    EXPECT_TRUE(F().Document().Model()->RootBranch()->FindBranch(L"Plant")->FindBranch(L"Line0"));
    EXPECT_TRUE(Dirty());
    Command(ID_AS_EDIT_UNDO);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorRename, TheRootCannotBeRenamed)
{
    SelectBranch(L"");
    FocusTree();
    PressF2(F(), Tree());
    EXPECT_EQ(TreeView_GetEditControl(Tree()), nullptr);
}

TEST_F(EditorRename, ABranchNameThatExistsShowsTheDuplicateBranchMessageAndKeepsTheName)
{
    SelectBranch(L"Plant/Line2");
    FocusTree();
    ASSERT_TRUE(PressF2(F(), Tree()));
    DialogScript script({{L"Add Branch", [](HWND box) { test::ClickButton(box, IDOK); }}});
    ::SetWindowTextW(TreeView_GetEditControl(Tree()), L"LINE1");
    TreeView_EndEditLabelNow(Tree(), FALSE);
    Pump();
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], kDuplicateBranch);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorRename, F2InTheListRenamesTheFocusedItem)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    ASSERT_TRUE(PressF2(F(), List()));
    TypeInList(List(), L"Velocity");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Velocity"}));
    EXPECT_TRUE(Item(L"Plant/Line1", L"Velocity"));
    EXPECT_EQ(F().Document().History().UndoDescription(), L"Rename Item 'Speed'");
}

TEST_F(EditorRename, AnItemNameThatExistsShowsTheDuplicateItemMessageAndKeepsTheName)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    ASSERT_TRUE(PressF2(F(), List()));
    DialogScript script({{L"Add Item", [](HWND box) { test::ClickButton(box, IDOK); }}});
    TypeInList(List(), L"count");
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], kDuplicateItem);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_FALSE(Dirty());
}

// An emptied name, as Windows' list hands it over when the edit ends: the
// text "" (Wine's list hands it over as a cancelled edit, a null text, so
// the end of the edit is sent here as Windows sends it). The model refuses
// the name through the error report, and nothing changes.
TEST_F(EditorRename, AnEmptyNameChangesNothing)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    ASSERT_TRUE(PressF2(F(), List()));
    const int line = ListView_GetNextItem(List(), -1, LVNI_FOCUSED);
    ASSERT_GE(line, 0);
    ListView_CancelEditLabel(List());
    Pump();
    DialogScript script({{L"CException", [](HWND box) { test::ClickButton(box, IDOK); }}});
    wchar_t empty[1] = {};
    NMLVDISPINFOW info = {};
    info.hdr.hwndFrom = List();
    info.hdr.idFrom = static_cast<UINT_PTR>(::GetDlgCtrlID(List()));
    info.hdr.code = LVN_ENDLABELEDITW;
    info.item.mask = LVIF_TEXT;
    info.item.iItem = line;
    info.item.pszText = empty;
    ::SendMessageW(::GetParent(List()), WM_NOTIFY, info.hdr.idFrom, reinterpret_cast<LPARAM>(&info));
    Pump();
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_FALSE(script.Texts()[0].empty());
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_TRUE(Item(L"Plant/Line1", L"Speed"));
    EXPECT_FALSE(Dirty());
    EXPECT_EQ(F().Document().History().UndoCount(), 0u);
}

TEST_F(EditorRename, KeysTypedIntoTheNameAreNotTheEditorsAccelerators)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    ASSERT_TRUE(PressF2(F(), List()));
    const HWND edit = ListView_GetEditControl(List());
    ASSERT_NE(edit, nullptr);
    MSG del = {edit, WM_KEYDOWN, VK_DELETE, 0, 0, {}};
    EXPECT_FALSE(F().PreTranslateMessage(del));
    ListView_CancelEditLabel(List());
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

// Undo and redo of a rename in place, compared as the saved XML.
TEST_F(EditorRename, UndoAndRedoOfRenamingAnItemInPlaceRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows({L"Speed"});
        ASSERT_TRUE(PressF2(F(), List()));
        TypeInList(List(), L"Velocity");
        ASSERT_TRUE(Item(L"Plant/Line1", L"Velocity"));
    });
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

TEST_F(EditorRename, UndoAndRedoOfRenamingABranchInPlaceRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        SelectBranch(L"Plant/Line2");
        FocusTree();
        ASSERT_TRUE(PressF2(F(), Tree()));
        const HWND edit = TreeView_GetEditControl(Tree());
        ASSERT_NE(edit, nullptr);
        ::SetWindowTextW(edit, L"Line0");
        TreeView_EndEditLabelNow(Tree(), FALSE);
        Pump();
        ASSERT_EQ(Children(L"Plant"), (Names{L"Line0", L"Line1"}));
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
}
