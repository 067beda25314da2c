// Edit, Find... and F3 / Shift+F3 in the address space editor, on the real
// window: matches listed while typing, a match chosen by Enter or a click
// shown in the tree and the list, and stepping through the matches.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"

using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

using EditorFind = test::EditorFixture;

// What the dialog listed.
struct Listed {
    std::wstring count;
    std::vector<Names> rows;   // path, data type, value
};

Listed ReadResults(HWND dialog)
{
    Listed listed;
    listed.count = test::DialogItemText(dialog, IDC_FIND_COUNT);
    const HWND list = ::GetDlgItem(dialog, IDC_FIND_RESULTS);
    for (int i = 0; i < ListView_GetItemCount(list); ++i) {
        Names row;
        for (int column = 0; column < 3; ++column) {
            wchar_t text[512] = {};
            ListView_GetItemText(list, i, column, text, 512);
            row.push_back(text);
        }
        listed.rows.push_back(row);
    }
    return listed;
}

// Types the text (each change searches), reads the list, then presses the button.
DialogScript::Step Search(const std::wstring& text, Listed* listed, int button)
{
    return {L"Find", [=](HWND dialog) {
                test::SetItemText(dialog, IDC_FIND_TEXT, text);
                if (listed)
                    *listed = ReadResults(dialog);
                test::ClickButton(dialog, button);
            }};
}

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

std::wstring SelectedName(HWND list)
{
    const int line = ListView_GetNextItem(list, -1, LVNI_SELECTED);
    wchar_t text[260] = {};
    if (line >= 0)
        ListView_GetItemText(list, line, 0, text, 260);
    return text;
}

} // namespace

TEST_F(EditorFind, MatchesAreListedWithPathDataTypeAndValueWhileTyping)
{
    Listed listed;
    DialogScript script({Search(L"LINE1.s", &listed, IDCANCEL)});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(listed.count, L"1 match(es):") << "only Speed starts with s after Line1.";
    ASSERT_EQ(listed.rows.size(), 1u);
    EXPECT_EQ(listed.rows[0], (Names{L"Plant.Line1.Speed", L"VT_R8", L"12.5"}));
}

TEST_F(EditorFind, EnterTakesTheFirstMatchAndShowsItsBranchAndRowWithTheFocusInTheList)
{
    SelectBranch(L"Plant/Line2");
    DialogScript script({Search(L"la*", nullptr, IDOK)});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1"));
    EXPECT_EQ(SelectedName(List()), L"Label");
    EXPECT_EQ(::GetFocus(), List());
}

TEST_F(EditorFind, AMatchedBranchIsSelectedInTheTreeWithTheFocusThere)
{
    DialogScript script({Search(L"line2", nullptr, IDOK)});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line2"));
    EXPECT_EQ(::GetFocus(), Tree());
}

TEST_F(EditorFind, AClickOnAMatchChoosesIt)
{
    DialogScript script({{L"Find", [](HWND dialog) {
                              test::SetItemText(dialog, IDC_FIND_TEXT, L"plant.line1.*");
                              const HWND list = ::GetDlgItem(dialog, IDC_FIND_RESULTS);
                              RECT rect = {};
                              ListView_GetItemRect(list, 1, &rect, LVIR_LABEL);
                              const LPARAM at = MAKELPARAM(rect.left + 4, (rect.top + rect.bottom) / 2);
                              ::PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, at);
                              ::PostMessageW(list, WM_LBUTTONUP, 0, at);
                          }}});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1"));
    EXPECT_EQ(SelectedName(List()), L"Label") << "the second match: Count, Label, Speed";
}

TEST_F(EditorFind, NoMatchDisablesGoToAndSaysSo)
{
    bool goToEnabled = true;
    std::wstring count;
    DialogScript script({{L"Find", [&](HWND dialog) {
                              test::SetItemText(dialog, IDC_FIND_TEXT, L"nothing*here");
                              goToEnabled = ::IsWindowEnabled(::GetDlgItem(dialog, IDOK)) != FALSE;
                              count = test::DialogItemText(dialog, IDC_FIND_COUNT);
                              test::ClickButton(dialog, IDCANCEL);
                          }}});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_FALSE(goToEnabled);
    EXPECT_EQ(count, L"No branch or item matches.");
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"")) << "nothing moved";
}

TEST_F(EditorFind, F3AndShiftF3StepThroughTheMatchesGoingRoundAtTheEnds)
{
    DialogScript script({Search(L"plant.line1.*", nullptr, IDOK)});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(script.Finished()) << Report(script);
    ASSERT_EQ(SelectedName(List()), L"Count");
    Command(ID_AS_EDIT_FIND_NEXT);
    EXPECT_EQ(SelectedName(List()), L"Label");
    Command(ID_AS_EDIT_FIND_NEXT);
    EXPECT_EQ(SelectedName(List()), L"Speed");
    Command(ID_AS_EDIT_FIND_NEXT);
    EXPECT_EQ(SelectedName(List()), L"Count") << "round to the first";
    Command(ID_AS_EDIT_FIND_PREVIOUS);
    EXPECT_EQ(SelectedName(List()), L"Speed") << "back round to the last";
}

TEST_F(EditorFind, TheKeysCtrlFAndF3ReachTheCommands)
{
    DialogScript script({Search(L"speed", nullptr, IDOK)});
    bool findTaken = false;
    {
        test::CtrlHeld ctrl;
        MSG find = {List(), WM_KEYDOWN, 'F', 0, 0, {}};
        findTaken = F().PreTranslateMessage(find);
    }
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_TRUE(findTaken);
    EXPECT_EQ(SelectedName(List()), L"Speed");
    SelectBranch(L"");
    MSG next = {Tree(), WM_KEYDOWN, VK_F3, 0, 0, {}};
    EXPECT_TRUE(F().PreTranslateMessage(next));
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1")) << "the one match again";
}

TEST_F(EditorFind, F3WithoutASearchOpensTheFindDialog)
{
    DialogScript script({Search(L"heart", nullptr, IDOK)});
    Command(ID_AS_EDIT_FIND_NEXT);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(SelectedName(List()), L"Heartbeat");
}

TEST_F(EditorFind, TheDialogOpensWithTheLastSearch)
{
    DialogScript first({Search(L"speed", nullptr, IDOK)});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(first.Finished()) << Report(first);
    std::wstring shown;
    DialogScript second({{L"Find", [&](HWND dialog) {
                              shown = test::DialogItemText(dialog, IDC_FIND_TEXT);
                              test::ClickButton(dialog, IDCANCEL);
                          }}});
    Command(ID_AS_EDIT_FIND);
    ASSERT_TRUE(second.Finished()) << Report(second);
    EXPECT_EQ(shown, L"speed");
}
