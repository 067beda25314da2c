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

// Wine's list hands an emptied name over as a cancelled edit; Windows hands
// over "", which the model refuses through the error report. Either way
// nothing changes.
TEST_F(EditorRename, AnEmptyNameChangesNothing)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    ASSERT_TRUE(PressF2(F(), List()));
    test::MessageBoxAnswerer answerer;
    TypeInList(List(), L"");
    for (const auto& box : answerer.Seen())
        EXPECT_EQ(box.title, L"CException");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
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
