// Drag and drop in the address space editor with the mouse messages a user's
// drag produces: the button pressed on a row or node and the mouse moved
// (the controls' own drag detection starts the drag), then moved over a
// branch of the tree and released there.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <thread>

#include "EditorFixture.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;
using namespace std::chrono_literals;

namespace {

constexpr wchar_t kDuplicateItem[] =
    L"Another OPC item with the same name exists on the same level. Please, enter unique item name.";
constexpr wchar_t kDuplicateBranch[] =
    L"Another branch with the same name exists on the same level. Please, enter unique name.";

class EditorDragDrop : public test::EditorFixture {
protected:
    static void Pump()
    {
        for (int round = 0; round < 5; ++round) {
            MSG msg;
            while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
                ::TranslateMessage(&msg);
                ::DispatchMessageW(&msg);
            }
            std::this_thread::sleep_for(10ms);
        }
    }
    static LPARAM At(POINT p) { return MAKELPARAM(p.x, p.y); }
    // The middle of a node's text, in the frame's client coordinates.
    POINT NodePoint(const std::wstring& path)
    {
        RECT rect = {};
        TreeView_EnsureVisible(Tree(), Node(path));   // the user sees the branch to drop on
        TreeView_GetItemRect(Tree(), Node(path), &rect, TRUE);
        POINT p = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
        ::MapWindowPoints(Tree(), Frame(), &p, 1);
        return p;
    }
    // Presses the button on the row and moves the mouse off it.
    void StartRowDrag(const std::wstring& row)
    {
        RECT rect = {};
        ListView_GetItemRect(List(), LineOf(row), &rect, LVIR_LABEL);
        const POINT p = {rect.left + 5, (rect.top + rect.bottom) / 2};
        ::PostMessageW(List(), WM_LBUTTONDOWN, MK_LBUTTON, At(p));
        ::PostMessageW(List(), WM_MOUSEMOVE, MK_LBUTTON, At(POINT{p.x + 40, p.y + 40}));
        Pump();
    }
    void StartNodeDrag(const std::wstring& path)
    {
        RECT rect = {};
        TreeView_EnsureVisible(Tree(), Node(path));
        TreeView_GetItemRect(Tree(), Node(path), &rect, TRUE);
        const POINT p = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
        ::PostMessageW(Tree(), WM_LBUTTONDOWN, MK_LBUTTON, At(p));
        ::PostMessageW(Tree(), WM_MOUSEMOVE, MK_LBUTTON, At(POINT{p.x + 40, p.y + 40}));
        Pump();
    }
    // Moves over the node and releases the button there.
    void DropOn(const std::wstring& path, bool ctrl = false)
    {
        const POINT p = NodePoint(path);
        ::PostMessageW(Frame(), WM_MOUSEMOVE, MK_LBUTTON | (ctrl ? MK_CONTROL : 0), At(p));
        ::PostMessageW(Frame(), WM_LBUTTONUP, ctrl ? MK_CONTROL : 0, At(p));
        Pump();
    }
    void DragRows(const Names& rows, const std::wstring& target, bool ctrl = false)
    {
        SelectBranch(L"Plant/Line1");
        FocusList();
        SelectRows(rows);
        StartRowDrag(rows.front());
        ASSERT_TRUE(F().Dragging()) << "the list did not start a drag";
        DropOn(target, ctrl);
    }
};

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

} // namespace

TEST_F(EditorDragDrop, RowsDroppedOnABranchMoveThereAsOneStep)
{
    DragRows({L"Count", L"Label"}, L"Plant/Line2");
    EXPECT_FALSE(F().Dragging());
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line2")) << "the target is shown";
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label"}));
    EXPECT_FALSE(Item(L"Plant/Line1", L"Count"));
    EXPECT_TRUE(Item(L"Plant/Line2", L"Label"));
    EXPECT_EQ(F().Document().History().UndoDescription(), L"Move 2 Items");
    Command(ID_AS_EDIT_UNDO);
    EXPECT_TRUE(Item(L"Plant/Line1", L"Count"));
    EXPECT_FALSE(Item(L"Plant/Line2", L"Count"));
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1")) << "undo shows where they came back to";
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorDragDrop, CtrlHeldAtTheDropCopiesTheRows)
{
    DragRows({L"Speed"}, L"Plant/Line2", true);
    EXPECT_TRUE(Item(L"Plant/Line1", L"Speed")) << "the original stays";
    const auto copy = Item(L"Plant/Line2", L"Speed");
    ASSERT_TRUE(copy);
    EXPECT_NE(copy.get(), Item(L"Plant/Line1", L"Speed").get());
    EXPECT_EQ(copy->Value().dblVal, 12.5);
}

TEST_F(EditorDragDrop, ABranchDroppedOnAnotherBranchMovesThereWithEverythingUnderIt)
{
    StartNodeDrag(L"Plant/Line1");
    ASSERT_TRUE(F().Dragging()) << "the tree did not start a drag";
    DropOn(L"");
    EXPECT_EQ(Children(L""), (Names{L"Line1", L"Plant"}));
    EXPECT_EQ(Children(L"Plant"), Names{L"Line2"});
    EXPECT_TRUE(Item(L"Line1", L"Speed"));
    Command(ID_AS_EDIT_UNDO);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
}

TEST_F(EditorDragDrop, ABranchCannotBeDroppedIntoItselfOrBelowItself)
{
    for (const wchar_t* target : {L"Plant", L"Plant/Line1"}) {
        StartNodeDrag(L"Plant");
        ASSERT_TRUE(F().Dragging());
        test::MessageBoxAnswerer answerer;
        DropOn(target);
        EXPECT_TRUE(answerer.Seen().empty());
        EXPECT_EQ(Children(L""), Names{L"Plant"}) << CL::Narrow(target);
        EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
        EXPECT_FALSE(Dirty());
    }
}

TEST_F(EditorDragDrop, ANameThatExistsInTheTargetShowsTheDuplicateMessageAndMovesNothing)
{
    const auto other = CMainFrame::ItemPtr::Make(COPCItem::kReadable, 1000, false, WORD(192), VT_I4, nullptr);
    other->Rename(L"LABEL");
    F().Document().Model()->RootBranch()->FindBranch(L"Plant")->FindBranch(L"Line2")->AddItem(other);
    DialogScript script({{L"Add Item", [](HWND box) { test::ClickButton(box, IDOK); }}});
    DragRows({L"Count", L"Label"}, L"Plant/Line2");
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], kDuplicateItem);
    EXPECT_TRUE(Item(L"Plant/Line1", L"Count")) << "nothing moved";
    EXPECT_TRUE(Item(L"Plant/Line1", L"Label"));
    EXPECT_EQ(F().Document().History().UndoCount(), 0u);
}

TEST_F(EditorDragDrop, ABranchNameThatExistsInTheTargetShowsTheDuplicateBranchMessage)
{
    F().Document().Model()->RootBranch()->AddBranch(CMainFrame::BranchPtr::Make(L"line1"));
    F().ClearViews();
    F().FillViews();
    DialogScript script({{L"Add Branch", [](HWND box) { test::ClickButton(box, IDOK); }}});
    StartNodeDrag(L"Plant/Line1");
    DropOn(L"");
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], kDuplicateBranch);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
}

TEST_F(EditorDragDrop, EscCancelsTheDrag)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count"});
    StartRowDrag(L"Count");
    ASSERT_TRUE(F().Dragging());
    MSG esc = {List(), WM_KEYDOWN, VK_ESCAPE, 0, 0, {}};
    EXPECT_TRUE(F().PreTranslateMessage(esc));
    EXPECT_FALSE(F().Dragging());
    DropOn(L"Plant/Line2");
    EXPECT_TRUE(Item(L"Plant/Line1", L"Count"));
    EXPECT_FALSE(Dirty());
}

// Undo and redo of what a drop changes, compared as the saved XML.
TEST_F(EditorDragDrop, UndoAndRedoOfMovingRowsRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        DragRows({L"Count", L"Label"}, L"Plant/Line2");
        ASSERT_TRUE(Item(L"Plant/Line2", L"Count"));
    });
    EXPECT_FALSE(Item(L"Plant/Line2", L"Count"));
    EXPECT_TRUE(Item(L"Plant/Line1", L"Label"));
}

TEST_F(EditorDragDrop, UndoAndRedoOfMovingABranchRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        StartNodeDrag(L"Plant/Line1");
        ASSERT_TRUE(F().Dragging()) << "the tree did not start a drag";
        DropOn(L"Plant/Line2");
        ASSERT_EQ(Children(L"Plant/Line2"), Names{L"Line1"});
    });
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
}

TEST_F(EditorDragDrop, UndoAndRedoOfCopyingRowsRestoreTheModelExactly)
{
    ExpectUndoAndRedoRestore([&] {
        DragRows({L"Speed"}, L"Plant/Line2", true);
        ASSERT_TRUE(Item(L"Plant/Line2", L"Speed"));
    });
    EXPECT_FALSE(Item(L"Plant/Line2", L"Speed"));
}
