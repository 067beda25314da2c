// The address space editor window, driven on the test display as a user
// would: its commands with their questions and dialogs, the tree and the
// list, the sort, the context menus, the accelerators and the layout.
#include <gtest/gtest.h>

#include "EditorFixture.h"
#include "addressspace/ItemId.h"
#include "addressspace/dlgAddItem.h"
#include "app/MessageLoop.h"
#include "common/Bstr.h"
#include "common/Util_Variant.h"
#include "common/ui/Dpi.h"
#include "support/HistorianTestDb.h"
#include "support/LogCapture.h"
#include "support/MenuCapture.h"

using namespace std::chrono_literals;
using test::DialogScript;
using Names = std::vector<std::wstring>;

namespace {

constexpr wchar_t kDuplicateItem[] =
    L"Another OPC item with the same name exists on the same level. Please, enter unique item name.";
constexpr wchar_t kDuplicateBranch[] =
    L"Another branch with the same name exists on the same level. Please, enter unique name.";
constexpr wchar_t kConversionText[] =
    L"Failed to convert the value to the requested data type.\n\nEmpty values are not supported.\n\n"
    L"If you want to change the data type to VT_BSTR - click Yes\nOtherwise click Cancel";

using Editor = test::EditorFixture;
using EditorFile = test::EditorFixture;
using EditorEdit = test::EditorFixture;
using EditorList = test::EditorFixture;
using EditorWindow = test::EditorFixture;

DialogScript::Step Answer(const wchar_t* title, int button)
{
    return {title, [button](HWND box) { test::ClickButton(box, button); }};
}

// Fills the item dialog: name, type, value text; then clicks the button.
DialogScript::Step FillItem(const std::wstring& name, VARTYPE type, const std::wstring& value, int button,
                            const wchar_t* title = L"Add Item")
{
    return {title, [=](HWND dialog) {
                if (::IsWindowEnabled(::GetDlgItem(dialog, IDC_ITEM_NAME)))
                    test::SetItemText(dialog, IDC_ITEM_NAME, name);
                test::SelectComboData(dialog, IDC_ITEM_TYPE, type);
                test::SetItemText(dialog, IDC_ITEM_VALUE, value);
                test::ClickButton(dialog, button);
            }};
}

DialogScript::Step FillBranch(const std::wstring& name, int button, const wchar_t* title = L"Add Branch")
{
    return {title, [=](HWND dialog) {
                test::SetItemText(dialog, IDC_BRANCH_NAME, name);
                test::ClickButton(dialog, button);
            }};
}

// A step that must find no window: it waits a short while and, should the
// window come, closes it with Cancel (the script then counts the step).
DialogScript::Step NotShown(const wchar_t* title)
{
    DialogScript::Step step{title, [](HWND window) {
                                if (!test::ClickButton(window, IDCANCEL))
                                    test::ClickButton(window, IDOK);
                            }};
    step.timeout = std::chrono::milliseconds(1500);
    return step;
}

std::wstring Bstr(const VARIANT& value)
{
    return value.vt == VT_BSTR && value.bstrVal ? std::wstring(value.bstrVal) : L"(not a string)";
}

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

} // namespace

// ---- opening -----------------------------------------------------------------

TEST_F(EditorWindow, OpensTitledWithTreeOfTheServersBranchesAndTheRootsItems)
{
    EXPECT_EQ(test::WindowText(Frame()), L" OPC Address Space");
    EXPECT_EQ(NodeText(Node(L"")), L"Address Space");
    EXPECT_EQ(Children(L""), Names{L"Plant"});
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"")) << "the root is selected";
    EXPECT_EQ(Column(0), Names{L"Heartbeat"});
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorList, SelectingABranchShowsItsItemsInModelOrderWithTheSixColumns)
{
    SelectBranch(L"Plant/Line1");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(Column(1), (Names{L"VT_I4", L"VT_BSTR", L"VT_R8"}));
    EXPECT_EQ(Column(2), (Names{L"7", L"abc", L"12.5"}));
    EXPECT_EQ(Column(3), (Names{L"R", L"W", L"RW"}));
    EXPECT_EQ(Column(4), (Names{L"500", L"2000", L"1000"}));
    EXPECT_EQ(Column(5), (Names{L"", L"", L"X"}));
    const HWND header = ListView_GetHeader(List());
    Names titles;
    for (int i = 0; i < Header_GetItemCount(header); ++i) {
        wchar_t text[64] = {};
        HDITEMW item = {};
        item.mask = HDI_TEXT;
        item.pszText = text;
        item.cchTextMax = 64;
        Header_GetItem(header, i, &item);
        titles.push_back(text);
    }
    EXPECT_EQ(titles, (Names{L"Name", L"Data type", L"Current Value", L"Access", L"Scan Rate", L"Archive"}));
    SelectBranch(L"Plant/Line2");
    EXPECT_TRUE(Column(0).empty());
}

// ---- the menu, toolbar and status bar ----------------------------------------

TEST_F(EditorWindow, MenuHoldsEveryEntryWithItsAccelerator)
{
    const auto menu = test::ReadMenu(::GetMenu(Frame()));
    ASSERT_EQ(menu.size(), 4u);
    EXPECT_EQ(test::MenuTexts(menu),
              (Names{L"&File", L"&Edit", L"&View", L"&Help"}));
    EXPECT_EQ(test::MenuTexts(menu[0].submenu), (Names{L"&New\tCtrl+N", L"&Open...\tCtrl+O", L"&Save\tCtrl+S",
                                                     L"Save &a copy...", L"-", L"&Export CSV...",
                                                     L"&Import CSV...", L"Export &Workbook...", L"Im&port Workbook...",
                                                     L"-", L"Re&view Changes...\tCtrl+Shift+R", L"-",
                                                     L"&Reload\tCtrl+R"}));
    EXPECT_EQ(test::MenuTexts(menu[1].submenu), (Names{L"&Undo\tCtrl+Z", L"&Redo\tCtrl+Y", L"-", L"Cu&t\tCtrl+X",
                                                     L"&Copy\tCtrl+C", L"&Paste\tCtrl+V", L"Dup&licate...",
                                                     L"Rena&me\tF2", L"-",
                                                     L"&Find...\tCtrl+F", L"Find Ne&xt\tF3",
                                                     L"Find Pre&vious\tShift+F3", L"-", L"&New Branch...",
                                                     L"New &Item...", L"&Delete\tDel", L"-",
                                                     L"HDA Database Data...", L"-", L"Properties..."}));
    EXPECT_EQ(test::MenuTexts(menu[2].submenu), (Names{L"&Toolbar", L"&Status Bar", L"-", L"Change &History..."}));
    EXPECT_EQ(test::MenuTexts(menu[3].submenu), (Names{L"Online Help", L"-", L"&About..."}));
}

TEST_F(EditorWindow, ToolbarButtonsCarryTheirTooltipsAndPrompts)
{
    const HWND toolbar = F().Bars().Toolbar();
    ASSERT_NE(toolbar, nullptr);
    std::vector<int> commands;
    const int count = static_cast<int>(::SendMessageW(toolbar, TB_BUTTONCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        TBBUTTON button = {};
        ::SendMessageW(toolbar, TB_GETBUTTON, i, reinterpret_cast<LPARAM>(&button));
        commands.push_back(button.fsStyle & BTNS_SEP ? 0 : button.idCommand);
    }
    EXPECT_EQ(commands, (std::vector<int>{ID_AS_FILE_OPEN, ID_AS_FILE_SAVE, ID_AS_FILE_SAVE_COPY, 0,
                                          ID_AS_EDIT_NEW_BRANCH, ID_AS_EDIT_NEW_ITEM, ID_AS_EDIT_PROPERTIES,
                                          ID_AS_EDIT_DELETE, 0, ID_AS_HELP_ABOUT}));
    const std::pair<int, const wchar_t*> expected[] = {
        {ID_AS_FILE_OPEN, L"Open configuration\nOpen"},
        {ID_AS_FILE_SAVE, L"Save current configuration and send it to the server\nSave"},
        {ID_AS_FILE_SAVE_COPY, L"Save a copy of the current configuration\nSave a copy"},
        {ID_AS_EDIT_NEW_BRANCH, L"Create a new branch in the selected branch\nNew branch"},
        {ID_AS_EDIT_NEW_ITEM, L"Add a new item in the selected branch\nNew item"},
        {ID_AS_EDIT_PROPERTIES, L"Edit properties of the selected branch or item\nProperties"},
        {ID_AS_EDIT_DELETE, L"Delete selected branch or item\nDelete"},
        {ID_AS_HELP_ABOUT, L"Show about dialog\nAbout"},
    };
    for (const auto& [id, text] : expected)
        EXPECT_EQ(CL::CFrameBars::Prompt(id) + L"\n" + CL::CFrameBars::Tooltip(id), text) << id;
}

TEST_F(EditorWindow, ViewEntriesHideAndShowTheBarsAndAreCheckedWhileShown)
{
    const HMENU view = ::GetSubMenu(::GetMenu(Frame()), 2);
    auto checked = [&](UINT id) {
        ::SendMessageW(Frame(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(view), 2);
        return (::GetMenuState(view, id, MF_BYCOMMAND) & MF_CHECKED) != 0;
    };
    EXPECT_TRUE(checked(ID_AS_VIEW_TOOLBAR));
    EXPECT_TRUE(checked(ID_AS_VIEW_STATUS_BAR));
    RECT splitterBefore = {};
    ::GetWindowRect(F().Splitter(), &splitterBefore);

    Command(ID_AS_VIEW_TOOLBAR);
    EXPECT_FALSE(::IsWindowVisible(F().Bars().Toolbar()));
    EXPECT_FALSE(checked(ID_AS_VIEW_TOOLBAR));
    Command(ID_AS_VIEW_STATUS_BAR);
    EXPECT_FALSE(::IsWindowVisible(F().Bars().StatusBar()));
    EXPECT_FALSE(checked(ID_AS_VIEW_STATUS_BAR));
    RECT splitter = {}, client = {};
    ::GetWindowRect(F().Splitter(), &splitter);
    ::GetClientRect(Frame(), &client);
    EXPECT_EQ(splitter.bottom - splitter.top, client.bottom) << "the views take the whole client area";
    EXPECT_GT(splitter.bottom - splitter.top, splitterBefore.bottom - splitterBefore.top);

    Command(ID_AS_VIEW_TOOLBAR);
    Command(ID_AS_VIEW_STATUS_BAR);
    EXPECT_TRUE(::IsWindowVisible(F().Bars().Toolbar()));
    EXPECT_TRUE(::IsWindowVisible(F().Bars().StatusBar()));
    EXPECT_TRUE(checked(ID_AS_VIEW_TOOLBAR));
    EXPECT_TRUE(checked(ID_AS_VIEW_STATUS_BAR));
}

TEST_F(EditorWindow, OnlineHelpOpensTheProductsWebPage)
{
    std::wstring opened;
    F().SetUrlOpener([&opened](const std::wstring& url) { opened = url; });
    Command(ID_AS_HELP_ONLINE);
    EXPECT_EQ(opened, CMainFrame::kHelpUrl);
}

TEST_F(EditorWindow, AboutShowsTheAboutDialog)
{
    DialogScript script({Answer(L"About", IDOK)});
    Command(ID_AS_HELP_ABOUT);
    EXPECT_TRUE(script.Finished()) << Report(script);
}

TEST_F(EditorWindow, CommandsWriteTheirTraceLines)
{
    test::LogCapture log(3);
    F().SetUrlOpener([](const std::wstring&) {});
    Command(ID_AS_HELP_ONLINE);
    Command(ID_AS_VIEW_TOOLBAR);
    EXPECT_TRUE(log.ContainsLike(3, "CMainFrame::OnHelpOnline [MainFrm, ", "]")) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CMainFrame::OnViewToolbar [MainFrm, ", "]")) << log.Dump();
}

// ---- New, Open, Save, Save a copy, Reload ------------------------------------

TEST_F(EditorFile, NewAsksAndYesEmptiesTheAddressSpace)
{
    DialogScript script({Answer(L"New", IDYES)});
    Command(ID_AS_FILE_NEW);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], L"Are you sure you want to erase the current address space?");
    EXPECT_TRUE(Children(L"").empty());
    EXPECT_TRUE(Column(0).empty());
    EXPECT_EQ(F().Document().Model()->RootBranch()->BranchCount(), 0u);
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorFile, NewAnsweredNoOrCancelKeepsEverything)
{
    for (int answer : {IDNO, IDCANCEL}) {
        DialogScript script({Answer(L"New", answer)});
        Command(ID_AS_FILE_NEW);
        ASSERT_TRUE(script.Finished()) << Report(script);
        EXPECT_EQ(Children(L""), Names{L"Plant"});
        EXPECT_FALSE(Dirty());
    }
}

TEST_F(EditorFile, OpenLoadsTheChosenFileIntoTreeAndList)
{
    const std::wstring other = dir.File(L"other.xml");
    test::WriteFileBytes(other, "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Tank\"></Branch>"
                                "<Item Name=\"Level\" CanonicalDataType=\"5\"><Value>3.5</Value></Item>"
                                "</Morvane_OPCDAAddressSpace>");
    DialogScript script({{L"Open", [&](HWND d) { test::ChooseFile(d, other); }}});
    Command(ID_AS_FILE_OPEN);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(Children(L""), Names{L"Tank"});
    EXPECT_EQ(Column(0), Names{L"Level"});
    EXPECT_EQ(Column(2), Names{L"3.5"});
    EXPECT_TRUE(Dirty()) << "the editor now differs from the server";
}

TEST_F(EditorFile, OpenCancelledChangesNothing)
{
    DialogScript script({Answer(L"Open", IDCANCEL)});
    const auto model = F().Document().Model();
    Command(ID_AS_FILE_OPEN);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(F().Document().Model().get(), model.get());
    EXPECT_EQ(Children(L""), Names{L"Plant"});
}

TEST_F(EditorFile, OpenOfAFileThatIsNotAnAddressSpaceIsReportedAndKeepsModelViewsAndDirtyFlag)
{
    const std::wstring bad = dir.File(L"notes.xml");
    test::WriteFileBytes(bad, "this is not XML at all");
    SelectBranch(L"Plant/Line1");
    const auto model = F().Document().Model();
    for (bool dirty : {false, true}) {
        F().Document().SetDirty(dirty);
        DialogScript script({{L"Open", [&](HWND d) { test::ChooseFile(d, bad); }}, Answer(L"CException", IDOK)});
        Command(ID_AS_FILE_OPEN);
        ASSERT_TRUE(script.Finished()) << Report(script);
        EXPECT_NE(script.Texts()[1].find(L"Error loading OPC Address Space file."), std::wstring::npos)
            << CL::Narrow(script.Texts()[1]);
        EXPECT_EQ(F().Document().Model().get(), model.get());
        EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
        EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line1"));
        EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
        EXPECT_EQ(Dirty(), dirty);
    }
}

TEST_F(EditorFile, SaveAsksAndYesWritesTheExchangeFileAndClearsTheDirtyFlag)
{
    F().Document().Model()->RootBranch()->AddBranch(CMainFrame::BranchPtr::Make(L"Added"));
    F().Document().SetDirty();
    DialogScript script({Answer(L"Save", IDYES)});
    Command(ID_AS_FILE_SAVE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], L"Are you sure you want to overwrite the current address space?");
    EXPECT_NE(test::ReadFileBytes(exchangeFile).find("Name=\"Added\""), std::string::npos);
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorFile, SaveAnsweredNoWritesNothing)
{
    F().Document().SetDirty();
    const std::string before = test::ReadFileBytes(exchangeFile);
    DialogScript script({Answer(L"Save", IDNO)});
    Command(ID_AS_FILE_SAVE);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(test::ReadFileBytes(exchangeFile), before);
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorFile, SaveACopyAppendsXmlWhenNoExtensionWasTypedAndKeepsTheDirtyFlag)
{
    F().Document().SetDirty();
    const std::wstring typed = dir.File(L"copy");
    DialogScript script({{L"Save a copy", [&](HWND d) { test::ChooseFile(d, typed); }}});
    Command(ID_AS_FILE_SAVE_COPY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_TRUE(test::FileExists(typed + L".xml"));
    EXPECT_FALSE(test::FileExists(typed));
    EXPECT_NE(test::ReadFileBytes(typed + L".xml").find("Name=\"Speed\""), std::string::npos);
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorFile, SaveACopyKeepsATypedExtension)
{
    const std::wstring typed = dir.File(L"copy.bak");
    DialogScript script({{L"Save a copy", [&](HWND d) { test::ChooseFile(d, typed); }}});
    Command(ID_AS_FILE_SAVE_COPY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_TRUE(test::FileExists(typed));
    EXPECT_FALSE(test::FileExists(typed + L".xml"));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorFile, ReloadWithNoChangesMadeReloadsWithoutAsking)
{
    test::WriteFileBytes(exchangeFile, "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Fresh\"></Branch>"
                                       "</Morvane_OPCDAAddressSpace>");
    test::MessageBoxAnswerer answerer;
    Command(ID_AS_FILE_RELOAD);
    EXPECT_TRUE(answerer.Seen().empty());
    EXPECT_EQ(Children(L""), Names{L"Fresh"});
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorFile, ReloadAfterAChangeAsksAndNoKeepsTheChanges)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count"});
    Command(ID_AS_EDIT_DELETE);
    ASSERT_TRUE(Dirty());
    DialogScript script({Answer(L"Reload", IDNO)});
    Command(ID_AS_FILE_RELOAD);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], L"Do you want to overwrite your changes with the current configuration of the server?");
    EXPECT_EQ(Column(0), (Names{L"Label", L"Speed"}));
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorFile, ReloadAfterAChangeAnsweredYesReloadsTheServersAddressSpace)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count"});
    Command(ID_AS_EDIT_DELETE);
    DialogScript script({Answer(L"Reload", IDYES)});
    Command(ID_AS_FILE_RELOAD);
    ASSERT_TRUE(script.Finished()) << Report(script);
    SelectBranch(L"Plant/Line1");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_FALSE(Dirty());
}

// ---- Close -------------------------------------------------------------------

TEST_F(EditorWindow, ClosingAnUnchangedWindowAsksNothing)
{
    test::MessageBoxAnswerer answerer;
    ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(editor->Window());
    EXPECT_TRUE(answerer.Seen().empty());
}

TEST_F(EditorWindow, ClosingAfterSaveACopyStillAsksWhenChangesWereMadeBefore)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count"});
    Command(ID_AS_EDIT_DELETE);
    DialogScript copy({{L"Save a copy", [&](HWND d) { test::ChooseFile(d, dir.File(L"copy.xml")); }}});
    Command(ID_AS_FILE_SAVE_COPY);
    ASSERT_TRUE(copy.Finished()) << Report(copy);
    DialogScript close({Answer(L"Save", IDCANCEL)});
    ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(close.Finished()) << Report(close);
    EXPECT_EQ(close.Texts()[0], L"Do you want to save your changes?");
    EXPECT_TRUE(editor->Window()) << "Cancel keeps the window open";
}

TEST_F(EditorWindow, CloseQuestionAnsweredYesSavesToTheServerAndCloses)
{
    F().Document().Model()->RootBranch()->AddBranch(CMainFrame::BranchPtr::Make(L"Added"));
    F().Document().SetDirty();
    DialogScript close({Answer(L"Save", IDYES)});
    ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(close.Finished()) << Report(close);
    EXPECT_FALSE(editor->Window());
    EXPECT_NE(test::ReadFileBytes(exchangeFile).find("Name=\"Added\""), std::string::npos);
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorWindow, CloseQuestionAnsweredNoClosesWithoutSaving)
{
    const std::string before = test::ReadFileBytes(exchangeFile);
    F().Document().SetDirty();
    DialogScript close({Answer(L"Save", IDNO)});
    ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(close.Finished()) << Report(close);
    EXPECT_FALSE(editor->Window());
    EXPECT_EQ(test::ReadFileBytes(exchangeFile), before);
}

TEST_F(EditorWindow, CloseQuestionAnsweredCancelKeepsTheWindowAndItsChanges)
{
    F().Document().SetDirty();
    DialogScript close({Answer(L"Save", IDCANCEL)});
    ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(close.Finished()) << Report(close);
    EXPECT_TRUE(editor->Window());
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorWindow, AClosedEditorOpensAgainOnTheServersAddressSpace)
{
    ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
    ASSERT_FALSE(editor->Window());
    test::WriteFileBytes(exchangeFile, "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Again\"></Branch>"
                                       "</Morvane_OPCDAAddressSpace>");
    ASSERT_TRUE(editor->PrepareOpen());
    ASSERT_TRUE(editor->Create());
    EXPECT_EQ(Children(L""), Names{L"Again"});
}

// ---- Add branch, Add item ----------------------------------------------------

TEST_F(EditorEdit, AddBranchAddsUnderTheSelectedBranchInNameOrder)
{
    SelectBranch(L"Plant");
    DialogScript script({FillBranch(L"Line0", IDOK)});
    Command(ID_AS_EDIT_NEW_BRANCH);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line0", L"Line1", L"Line2"}));
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorEdit, AddBranchShowsTheParentAndTheAddTitle)
{
    SelectBranch(L"Plant");
    std::wstring parent;
    DialogScript script({{L"Add Branch", [&](HWND d) {
                              parent = test::DialogItemText(d, IDC_BRANCH_PARENT);
                              test::ClickButton(d, IDCANCEL);
                          }}});
    Command(ID_AS_EDIT_NEW_BRANCH);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(parent, L"Plant");
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorEdit, AddBranchWithADuplicateNameShowsTheMessageAndOpensTheDialogAgainAfterSave)
{
    SelectBranch(L"Plant");
    DialogScript script({FillBranch(L"LINE1", IDOK), Answer(L"Add Branch", IDOK),
                         {L"Add Branch", [](HWND d) {
                              // the rejected name is offered for correction
                              EXPECT_EQ(test::DialogItemText(d, IDC_BRANCH_NAME), L"LINE1");
                              test::SetItemText(d, IDC_BRANCH_NAME, L"Line3");
                              test::ClickButton(d, IDOK);
                          }}});
    Command(ID_AS_EDIT_NEW_BRANCH);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], kDuplicateBranch);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2", L"Line3"}));
}

TEST_F(EditorEdit, AddBranchSaveAndCreateNewOpensTheDialogForTheNextBranch)
{
    SelectBranch(L"Plant/Line2");
    DialogScript script({FillBranch(L"A", IDC_SAVE_AND_NEW), FillBranch(L"B", IDOK)});
    Command(ID_AS_EDIT_NEW_BRANCH);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(Children(L"Plant/Line2"), (Names{L"A", L"B"}));
}

TEST_F(EditorEdit, AddItemAppendsARowWithGoodQualityAndTheTypedValue)
{
    SelectBranch(L"Plant/Line1");
    DialogScript script({FillItem(L"Alpha", VT_I4, L"42", IDOK)});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed", L"Alpha"})) << "appended at the end";
    const auto item = Item(L"Plant/Line1", L"Alpha");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->Quality(), 192);
    EXPECT_EQ(item->CanonicalDataType(), VT_I4);
    EXPECT_EQ(item->Value().vt, VT_I4);
    EXPECT_EQ(item->Value().lVal, 42);
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorEdit, AddingAnItemWhoseNameDiffersOnlyInCaseShowsTheDuplicateMessageAndDropsItAfterSave)
{
    SelectBranch(L"Plant/Line1");
    DialogScript script({FillItem(L"SPEED", VT_R8, L"1", IDOK), Answer(L"Add Item", IDOK),
                         NotShown(L"Add Item")});
    Command(ID_AS_EDIT_NEW_ITEM);
    EXPECT_FALSE(script.Finished()) << "the dialog does not open again";
    ASSERT_EQ(script.StepsDone(), 2u) << Report(script);
    EXPECT_EQ(script.Texts()[1], kDuplicateItem);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(Item(L"Plant/Line1", L"Speed")->Name(), L"Speed");
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorEdit, ADuplicateItemAfterSaveAndCreateNewOpensTheDialogAgain)
{
    SelectBranch(L"Plant/Line1");
    DialogScript script({FillItem(L"count", VT_I4, L"1", IDC_SAVE_AND_NEW), Answer(L"Add Item", IDOK),
                         FillItem(L"Other", VT_I4, L"2", IDOK)});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], kDuplicateItem);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed", L"Other"}));
}

TEST_F(EditorEdit, AddItemSaveAndCreateNewAddsOneAfterAnother)
{
    SelectBranch(L"Plant/Line2");
    DialogScript script({FillItem(L"One", VT_I4, L"1", IDC_SAVE_AND_NEW), FillItem(L"Two", VT_I4, L"2", IDC_SAVE_AND_NEW),
                         Answer(L"Add Item", IDCANCEL)});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(Column(0), (Names{L"One", L"Two"}));
}

TEST_F(EditorEdit, AnEmptyValueWithVtI4AnsweredOkBecomesAnEmptyStringItem)
{
    SelectBranch(L"Plant/Line2");
    DialogScript script({FillItem(L"Blank", VT_I4, L"", IDOK), Answer(L"Error", IDOK)});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], kConversionText);
    const auto item = Item(L"Plant/Line2", L"Blank");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->CanonicalDataType(), VT_BSTR);
    EXPECT_EQ(Bstr(item->Value()), L"");
    EXPECT_EQ(Column(1), Names{L"VT_BSTR"});
}

TEST_F(EditorEdit, ThreeLinesWithAnArrayOfVtI4GiveAThreeElementArray)
{
    SelectBranch(L"Plant/Line2");
    DialogScript script({FillItem(L"Trio", VARTYPE(VT_ARRAY | VT_I4), L"1\r\n2\r\n3", IDOK)});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(script.Finished()) << Report(script);
    const auto item = Item(L"Plant/Line2", L"Trio");
    ASSERT_TRUE(item);
    const CL::CVariant value = item->Value();
    ASSERT_EQ(value.vt, VT_ARRAY | VT_I4);
    LONG lower = 0, upper = -1;
    ::SafeArrayGetLBound(value.parray, 1, &lower);
    ::SafeArrayGetUBound(value.parray, 1, &upper);
    ASSERT_EQ(upper - lower + 1, 3);
    for (LONG i = 0; i < 3; ++i) {
        LONG element = 0, index = lower + i;
        ::SafeArrayGetElement(value.parray, &index, &element);
        EXPECT_EQ(element, i + 1);
    }
}

// ---- Delete --------------------------------------------------------------------

TEST_F(EditorEdit, DeleteWithTheFocusInTheTreeRemovesTheBranchAndEverythingUnderIt)
{
    SelectBranch(L"Plant/Line1");
    FocusTree();
    test::MessageBoxAnswerer answerer;
    Command(ID_AS_EDIT_DELETE);
    EXPECT_TRUE(answerer.Seen().empty()) << "no confirmation";
    EXPECT_EQ(Children(L"Plant"), Names{L"Line2"});
    EXPECT_FALSE(F().Document().Model()->RootBranch()->FindBranch(L"Plant")->FindBranch(L"Line1"));
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorEdit, DeleteWithTheFocusInTheListRemovesEverySelectedItem)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count", L"Speed"});
    Command(ID_AS_EDIT_DELETE);
    EXPECT_EQ(Column(0), Names{L"Label"});
    EXPECT_FALSE(Item(L"Plant/Line1", L"Count"));
    EXPECT_FALSE(Item(L"Plant/Line1", L"Speed"));
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"})) << "the branch stays";
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorEdit, DeleteOfTheRootNodeRemovesNothing)
{
    SelectBranch(L"");
    FocusTree();
    Command(ID_AS_EDIT_DELETE);
    EXPECT_EQ(Children(L""), Names{L"Plant"});
    EXPECT_FALSE(Dirty());
}

// ---- Properties ----------------------------------------------------------------

TEST_F(EditorEdit, BranchPropertiesRenamesTheBranch)
{
    SelectBranch(L"Plant/Line2");
    FocusTree();
    std::wstring shownName;
    DialogScript script({{L"Branch properties", [&](HWND d) {
                              shownName = test::DialogItemText(d, IDC_BRANCH_NAME);
                              test::SetItemText(d, IDC_BRANCH_NAME, L"Line0");
                              test::ClickButton(d, IDOK);
                          }}});
    Command(ID_AS_EDIT_PROPERTIES);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(shownName, L"Line2");
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line0", L"Line1"}));
    EXPECT_TRUE(F().Document().Model()->RootBranch()->FindBranch(L"Plant")->FindBranch(L"Line0"));
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorEdit, BranchPropertiesWithADuplicateNameShowsTheMessageAndAsksAgain)
{
    SelectBranch(L"Plant/Line2");
    FocusTree();
    DialogScript script({FillBranch(L"line1", IDOK, L"Branch properties"), Answer(L"Add Branch", IDOK),
                         Answer(L"Branch properties", IDCANCEL)});
    Command(ID_AS_EDIT_PROPERTIES);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], kDuplicateBranch);
    EXPECT_EQ(Children(L"Plant"), (Names{L"Line1", L"Line2"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorEdit, ItemPropertiesShowsTheItemAndAppliesTheValuesInPlace)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count"});
    std::wstring name, branch, value;
    bool readable = false, writable = true, archive = true;
    DialogScript script({{L"Item(s) properties", [&](HWND d) {
                              name = test::DialogItemText(d, IDC_ITEM_NAME);
                              branch = test::DialogItemText(d, IDC_ITEM_BRANCH);
                              value = test::DialogItemText(d, IDC_ITEM_VALUE);
                              readable = test::IsChecked(d, IDC_ITEM_READABLE);
                              writable = test::IsChecked(d, IDC_ITEM_WRITABLE);
                              archive = test::IsChecked(d, IDC_ITEM_ARCHIVE);
                              test::SetItemText(d, IDC_ITEM_NAME, L"Counter");
                              test::SetItemText(d, IDC_ITEM_VALUE, L"9");
                              test::SetCheck(d, IDC_ITEM_ARCHIVE, true);
                              test::ClickButton(d, IDOK);
                          }}});
    Command(ID_AS_EDIT_PROPERTIES);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(name, L"Count");
    EXPECT_EQ(branch, L"Line1");
    EXPECT_EQ(value, L"7");
    EXPECT_TRUE(readable);
    EXPECT_FALSE(writable);
    EXPECT_FALSE(archive);
    EXPECT_EQ(Column(0), (Names{L"Counter", L"Label", L"Speed"})) << "updated in place";
    EXPECT_EQ(Column(2)[0], L"9");
    EXPECT_EQ(Column(5)[0], L"X");
    EXPECT_TRUE(Item(L"Plant/Line1", L"Counter"));
    EXPECT_FALSE(Item(L"Plant/Line1", L"Count"));
    EXPECT_TRUE(Dirty());
}

TEST_F(EditorEdit, RenamingAnItemToItsOwnNameInOtherLetterCaseChangesNothing)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    DialogScript script({{L"Item(s) properties", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"SPEED");
                              test::ClickButton(d, IDOK);
                          }},
                         NotShown(L"Add Item")});
    Command(ID_AS_EDIT_PROPERTIES);
    EXPECT_FALSE(script.Finished()) << "no duplicate message";
    ASSERT_EQ(script.StepsDone(), 1u) << Report(script);
    EXPECT_EQ(Item(L"Plant/Line1", L"speed")->Name(), L"Speed");
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

TEST_F(EditorEdit, RenamingAnItemToAnotherItemsNameShowsTheDuplicateMessageAndChangesNothing)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    DialogScript script({FillItem(L"label", VT_R8, L"99", IDOK, L"Item(s) properties"), Answer(L"Add Item", IDOK)});
    Command(ID_AS_EDIT_PROPERTIES);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], kDuplicateItem);
    EXPECT_EQ(Column(2), (Names{L"7", L"abc", L"12.5"}));
    EXPECT_FALSE(Dirty());
}

TEST_F(EditorEdit, PropertiesOnThreeSelectedRowsKeepsTheirNamesAndSetsTheSameTypeValueAndFlags)
{
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Count", L"Label", L"Speed"});
    std::wstring nameField;
    bool nameEnabled = true;
    DialogScript script({{L"Item(s) properties", [&](HWND d) {
                              nameField = test::DialogItemText(d, IDC_ITEM_NAME);
                              nameEnabled = ::IsWindowEnabled(::GetDlgItem(d, IDC_ITEM_NAME)) != FALSE;
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_UI2);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"5");
                              test::SetCheck(d, IDC_ITEM_READABLE, true);
                              test::SetCheck(d, IDC_ITEM_WRITABLE, false);
                              test::SetCheck(d, IDC_ITEM_ARCHIVE, true);
                              test::SetItemText(d, IDC_ITEM_SCANRATE, L"750");
                              test::ClickButton(d, IDOK);
                          }}});
    Command(ID_AS_EDIT_PROPERTIES);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(nameField, L"[multiple selection]");
    EXPECT_FALSE(nameEnabled);
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
    EXPECT_EQ(Column(1), (Names{L"VT_UI2", L"VT_UI2", L"VT_UI2"}));
    EXPECT_EQ(Column(2), (Names{L"5", L"5", L"5"}));
    EXPECT_EQ(Column(3), (Names{L"R", L"R", L"R"}));
    EXPECT_EQ(Column(4), (Names{L"750", L"750", L"750"}));
    EXPECT_EQ(Column(5), (Names{L"X", L"X", L"X"}));
    for (const wchar_t* name : {L"Count", L"Label", L"Speed"}) {
        const auto item = Item(L"Plant/Line1", name);
        ASSERT_TRUE(item) << CL::Narrow(name);
        EXPECT_EQ(item->Value().vt, VT_UI2);
        EXPECT_EQ(item->Quality(), 192);
    }
    EXPECT_TRUE(Dirty());
}

// ---- Historical data -------------------------------------------------------------

TEST_F(EditorEdit, HistoricalDataOpensForTheFocusedItemByItsArchivedId)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 0);
    std::wstring opened;
    HWND owner = nullptr;
    editor->SetHistoricalDataOpener([&](HWND o, const std::wstring& id) {
        owner = o;
        opened = id;
    });
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    Command(ID_AS_EDIT_HISTORY);
    EXPECT_EQ(opened, L"Plant.Line1.Speed");
    EXPECT_EQ(owner, Frame());
}

TEST_F(EditorEdit, HistoricalDataWithoutADatabaseSaysTheDatabaseIsNotAccessible)
{
    // The default Jet database does not open here.
    bool opened = false;
    editor->SetHistoricalDataOpener([&](HWND, const std::wstring&) { opened = true; });
    HICON icon = nullptr;
    DialogScript script({{L"OPC HDA Database Explorer", [&](HWND box) {
                              icon = reinterpret_cast<HICON>(::SendDlgItemMessageW(box, 0x0440, STM_GETICON, 0, 0));
                              test::ClickButton(box, IDOK);
                          }}});
    SelectBranch(L"Plant/Line1");
    SelectRows({L"Speed"});
    Command(ID_AS_EDIT_HISTORY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[0], L"The HDA database is not accessible.");
    EXPECT_EQ(icon, ::LoadIconW(nullptr, IDI_HAND)) << "error icon";
    EXPECT_FALSE(opened);
}

TEST_F(EditorEdit, HistoricalDataOpensTheHistoricalDataWindowForTheFocusedItem)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 0);
    std::wstring shownItem;
    DialogScript script({{L"Historical data", [&](HWND dialog) {
                              shownItem = test::DialogItemText(dialog, IDC_HISTDATA_ITEM);
                              ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                          }}});
    SelectBranch(L"Plant/Line1");
    FocusList();
    SelectRows({L"Speed"});
    Command(ID_AS_EDIT_HISTORY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(shownItem, L"Plant.Line1.Speed");
}

// ---- Sorting ---------------------------------------------------------------------

namespace {

bool ShowsArrow(HWND list, int column)
{
    HDITEMW item = {};
    item.mask = HDI_FORMAT;
    Header_GetItem(ListView_GetHeader(list), column, &item);
    return (item.fmt & (HDF_BITMAP | HDF_SORTUP | HDF_SORTDOWN)) != 0;
}

} // namespace

TEST_F(EditorList, EachColumnSortsAscendingThenDescendingWithTheArrowOnItsHeader)
{
    // Wide enough for every column header to be clicked.
    ::SetWindowPos(Frame(), nullptr, 0, 0, 1200, 600, SWP_NOMOVE | SWP_NOZORDER);
    SelectBranch(L"Plant/Line1");
    // Expected names in ascending order of each column.
    const std::vector<Names> ascending = {
        {L"Count", L"Label", L"Speed"},   // Name
        {L"Label", L"Count", L"Speed"},   // VT_BSTR, VT_I4, VT_R8
        {L"Speed", L"Count", L"Label"},   // "12.5", "7", "abc"
        {L"Count", L"Speed", L"Label"},   // R, RW, W
        {L"Count", L"Speed", L"Label"},   // 500, 1000, 2000
    };
    for (int column = 0; column < 5; ++column) {
        test::ClickHeader(List(), column);
        EXPECT_EQ(Column(0), ascending[column]) << "column " << column << " ascending";
        test::ClickHeader(List(), column);
        Names descending = ascending[column];
        std::reverse(descending.begin(), descending.end());
        EXPECT_EQ(Column(0), descending) << "column " << column << " descending";
        for (int other = 0; other < 6; ++other)
            EXPECT_EQ(ShowsArrow(List(), other), other == column) << "arrow of column " << other;
    }
    test::ClickHeader(List(), 5);   // Archive: the archived item last, then first
    EXPECT_EQ(Column(0).back(), L"Speed");
    test::ClickHeader(List(), 5);
    EXPECT_EQ(Column(0).front(), L"Speed");
}

TEST_F(EditorList, AnotherBranchIsShownInTheActiveSort)
{
    SelectBranch(L"Plant/Line1");
    test::ClickHeader(List(), 4);
    test::ClickHeader(List(), 4);   // scan rate descending
    SelectBranch(L"Plant/Line2");
    SelectBranch(L"Plant/Line1");
    EXPECT_EQ(Column(0), (Names{L"Label", L"Speed", L"Count"}));
}

// ---- Context menus -----------------------------------------------------------------

namespace {

// A right click at the centre of a rectangle of the window (client coordinates).
void RightClick(HWND window, const RECT& rect)
{
    POINT at = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    POINT screen = at;
    ::ClientToScreen(window, &screen);
    ::SetCursorPos(screen.x, screen.y);
    // The button-up waits in the queue, so the control's click tracking ends at once.
    ::PostMessageW(window, WM_RBUTTONUP, 0, MAKELPARAM(at.x, at.y));
    ::SendMessageW(window, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(at.x, at.y));
}

} // namespace

TEST_F(EditorEdit, ARightClickOnATreeNodeSelectsItAndOffersTheTreeMenu)
{
    SelectBranch(L"");
    FocusList();
    TreeView_Expand(Tree(), Node(L"Plant"), TVE_EXPAND);
    RECT rect = {};
    ASSERT_TRUE(TreeView_GetItemRect(Tree(), Node(L"Plant/Line2"), &rect, TRUE));
    test::TrackedMenuCapture capture;
    RightClick(Tree(), rect);
    ASSERT_TRUE(capture.Captured());
    EXPECT_EQ(test::MenuTexts(capture.Entries()),
              (Names{L"New Branch...", L"New Item...", L"Delete", L"-", L"Properties..."}));
    std::vector<UINT> ids;
    for (const auto& entry : capture.Entries())
        ids.push_back(entry.id);
    EXPECT_EQ(ids, (std::vector<UINT>{ID_AS_EDIT_NEW_BRANCH, ID_AS_EDIT_NEW_ITEM, ID_AS_EDIT_DELETE, 0,
                                      ID_AS_EDIT_PROPERTIES}));
    EXPECT_EQ(TreeView_GetSelection(Tree()), Node(L"Plant/Line2"));
    EXPECT_EQ(F().LastFocusedView(), Tree()) << "the menu's commands act on the tree";
}

TEST_F(EditorEdit, ARightClickOnTheListOffersTheListMenu)
{
    SelectBranch(L"Plant/Line1");
    RECT rect = {};
    ASSERT_TRUE(ListView_GetItemRect(List(), 1, &rect, LVIR_LABEL));
    test::TrackedMenuCapture capture;
    RightClick(List(), rect);
    ASSERT_TRUE(capture.Captured());
    EXPECT_EQ(test::MenuTexts(capture.Entries()),
              (Names{L"New Item...", L"Delete", L"Historical data...", L"-", L"Properties..."}));
    std::vector<UINT> ids;
    for (const auto& entry : capture.Entries())
        ids.push_back(entry.id);
    EXPECT_EQ(ids, (std::vector<UINT>{ID_AS_EDIT_NEW_ITEM, ID_AS_EDIT_DELETE, ID_AS_EDIT_HISTORY, 0,
                                      ID_AS_EDIT_PROPERTIES}));
    EXPECT_EQ(F().LastFocusedView(), List()) << "the menu's commands act on the list";
}

// ---- Keyboard ------------------------------------------------------------------------

namespace {

using test::CtrlHeld;

} // namespace

TEST_F(EditorWindow, AcceleratorsRunNewOpenSaveAndReload)
{
    F().Document().SetDirty();
    const std::pair<WPARAM, const wchar_t*> keys[] = {
        {'N', L"New"}, {'O', L"Open"}, {'S', L"Save"}, {'R', L"Reload"}};
    for (const auto& [key, title] : keys) {
        DialogScript script({Answer(title, IDCANCEL)});
        {
            CtrlHeld ctrl;
            MSG msg = {List(), WM_KEYDOWN, key, 0, 0, {}};
            EXPECT_TRUE(F().PreTranslateMessage(msg)) << static_cast<char>(key);
        }
        EXPECT_TRUE(script.Finished()) << static_cast<char>(key) << ": " << Report(script);
    }
}

TEST_F(EditorWindow, TheProgramsMessageLoopGivesKeysToTheEditorsAccelerators)
{
    // A second editor made while the program's loop is registered, as the tray makes it.
    CL::CMessageLoop loop;
    CL::CMessageLoop::SetCurrent(&loop);
    test::TempDir otherDir;
    const std::wstring file = otherDir.File(L"DefaultAddressSpace.xml");
    test::WriteFileBytes(file, test::EditorSampleSpace());
    auto second = std::make_unique<CL::CAddressSpaceEditor>(historian, CAddressSpaceExchange(test::SettingsServiceName, file));
    ASSERT_TRUE(second->PrepareOpen());
    ASSERT_TRUE(second->Create());
    CMainFrame& frame = second->Frame();
    ::ShowWindow(frame, SW_SHOW);
    TreeView_SelectItem(frame.Tree(), TreeView_GetRoot(frame.Tree()));
    ListView_SetItemState(frame.List(), 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    ::SetFocus(frame.List());
    // Del is the Delete command only through the accelerators: the list
    // itself does nothing with the key.
    ::PostMessageW(frame.List(), WM_KEYDOWN, VK_DELETE, 0);
    ::PostQuitMessage(0);
    loop.Run();
    EXPECT_EQ(ListView_GetItemCount(frame.List()), 0) << "Heartbeat deleted";
    EXPECT_FALSE(frame.Document().Model()->RootBranch()->FindItem(L"Heartbeat"));
    frame.Document().SetDirty(false);
    second.reset();
    CL::CMessageLoop::SetCurrent(nullptr);
}

TEST_F(EditorWindow, TabMovesTheFocusBetweenTreeAndList)
{
    FocusTree();
    ASSERT_EQ(F().LastFocusedView(), Tree());
    ::SendMessageW(Tree(), WM_KEYDOWN, VK_TAB, 0);
    EXPECT_EQ(F().LastFocusedView(), List());
    ::SendMessageW(List(), WM_KEYDOWN, VK_TAB, 0);
    EXPECT_EQ(F().LastFocusedView(), Tree());
}

// ---- Layout ----------------------------------------------------------------------------

TEST_F(EditorWindow, ResizingTheWindowMakesBothViewsFollow)
{
    ::SetWindowPos(Frame(), nullptr, 0, 0, 1000, 700, SWP_NOMOVE | SWP_NOZORDER);
    RECT splitter = {}, list = {}, tree = {};
    ::GetClientRect(F().Splitter(), &splitter);
    ::GetWindowRect(List(), &list);
    ::GetWindowRect(Tree(), &tree);
    ::MapWindowPoints(nullptr, F().Splitter(), reinterpret_cast<POINT*>(&list), 2);
    ::MapWindowPoints(nullptr, F().Splitter(), reinterpret_cast<POINT*>(&tree), 2);
    EXPECT_EQ(list.right, splitter.right);
    EXPECT_EQ(list.bottom, splitter.bottom);
    EXPECT_EQ(tree.bottom, splitter.bottom);
    EXPECT_EQ(tree.left, 0);
    EXPECT_EQ(list.left, tree.right + F().Splitter().BarWidth());
    EXPECT_EQ(F().Splitter().BarWidth(), CL::CDpi::Of(F().Splitter()).Scale(CL::CSplitter::kBarWidth));

    RECT before = list;
    ::SetWindowPos(Frame(), nullptr, 0, 0, 700, 500, SWP_NOMOVE | SWP_NOZORDER);
    ::GetWindowRect(List(), &list);
    EXPECT_LT(list.right - list.left, before.right - before.left);
}

TEST_F(EditorWindow, DraggingTheSplitterBarMovesTheBorderBetweenTheViews)
{
    const int start = F().Splitter().Position();
    const int y = 50;
    ::SendMessageW(F().Splitter(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(start + 2, y));
    ::SendMessageW(F().Splitter(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(start + 62, y));
    ::SendMessageW(F().Splitter(), WM_LBUTTONUP, 0, MAKELPARAM(start + 62, y));
    EXPECT_EQ(F().Splitter().Position(), start + 60);
    RECT tree = {};
    ::GetClientRect(Tree(), &tree);
    RECT treeWindow = {};
    ::GetWindowRect(Tree(), &treeWindow);
    EXPECT_EQ(treeWindow.right - treeWindow.left, start + 60);
}

TEST_F(EditorWindow, TheSplitterRefusesAPositionThatHidesAView)
{
    const int start = F().Splitter().Position();
    EXPECT_FALSE(F().Splitter().SetPosition(5));
    EXPECT_EQ(F().Splitter().Position(), start);
    RECT client = {};
    ::GetClientRect(F().Splitter(), &client);
    EXPECT_FALSE(F().Splitter().SetPosition(client.right - 10));
    EXPECT_TRUE(F().Splitter().SetPosition(start + 20));
}

TEST_F(EditorWindow, HasASensibleMinimumSize)
{
    MINMAXINFO info = {};
    ::SendMessageW(Frame(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&info));
    // Sizes at 96 dpi, scaled to the window's DPI.
    const CL::CDpi dpi = CL::CDpi::Of(Frame());
    EXPECT_EQ(info.ptMinTrackSize.x, dpi.Scale(CMainFrame::kMinWidth));
    EXPECT_EQ(info.ptMinTrackSize.y, dpi.Scale(CMainFrame::kMinHeight));
    EXPECT_GE(CMainFrame::kMinWidth, 400);
    EXPECT_GE(CMainFrame::kMinHeight, 300);
}

TEST_F(EditorWindow, ASystemColourChangeRebuildsTheSortArrows)
{
    SelectBranch(L"Plant/Line1");
    test::ClickHeader(List(), 0);
    ::SendMessageW(Frame(), WM_SYSCOLORCHANGE, 0, 0);
    EXPECT_TRUE(ShowsArrow(List(), 0));
    EXPECT_EQ(Column(0), (Names{L"Count", L"Label", L"Speed"}));
}

// ---- More of the keyboard, mouse and bars ------------------------------------------

TEST_F(EditorFile, SaveACopyWithTheAllFilesFilterKeepsTheNameAsTyped)
{
    const std::wstring typed = dir.File(L"plain");
    DialogScript script({{L"Save a copy", [&](HWND d) {
                              // The second filter, "All files (*.*)", as a user picks it.
                              const HWND filter = ::GetDlgItem(d, 0x0470);
                              ::SendMessageW(filter, CB_SETCURSEL, 1, 0);
                              ::SendMessageW(d, WM_COMMAND, MAKEWPARAM(0x0470, CBN_SELENDOK),
                                             reinterpret_cast<LPARAM>(filter));
                              test::ChooseFile(d, typed);
                          }}});
    Command(ID_AS_FILE_SAVE_COPY);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_TRUE(test::FileExists(typed));
    EXPECT_FALSE(test::FileExists(typed + L".xml"));
}

TEST_F(EditorEdit, TheContextMenuKeyOffersTheMenuOfTheViewWithTheFocus)
{
    SelectBranch(L"Plant/Line1");
    {
        test::TrackedMenuCapture capture;
        ::SendMessageW(Frame(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(Tree()), -1);
        ASSERT_TRUE(capture.Captured());
        EXPECT_EQ(capture.Entries().front().text, L"New Branch...");
    }
    {
        test::TrackedMenuCapture capture;
        ::SendMessageW(Frame(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(List()), -1);
        ASSERT_TRUE(capture.Captured());
        EXPECT_EQ(test::MenuTexts(capture.Entries()),
                  (Names{L"New Item...", L"Delete", L"Historical data...", L"-", L"Properties..."}));
    }
}

TEST_F(EditorEdit, ADoubleClickOnARowOpensItsProperties)
{
    SelectBranch(L"Plant/Line1");
    RECT rect = {};
    ASSERT_TRUE(ListView_GetItemRect(List(), LineOf(L"Label"), &rect, LVIR_LABEL));
    std::wstring name;
    DialogScript script({{L"Item(s) properties", [&](HWND d) {
                              name = test::DialogItemText(d, IDC_ITEM_NAME);
                              test::ClickButton(d, IDCANCEL);
                          }}});
    const LPARAM at = MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    ::SendMessageW(List(), WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(List(), WM_LBUTTONUP, 0, at);
    ::SendMessageW(List(), WM_LBUTTONDBLCLK, MK_LBUTTON, at);
    ::SendMessageW(List(), WM_LBUTTONUP, 0, at);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(name, L"Label");
}

TEST_F(EditorWindow, AToolbarButtonRunsItsCommand)
{
    const HWND toolbar = F().Bars().Toolbar();
    const int index = static_cast<int>(::SendMessageW(toolbar, TB_COMMANDTOINDEX, ID_AS_HELP_ABOUT, 0));
    RECT rect = {};
    ASSERT_TRUE(::SendMessageW(toolbar, TB_GETITEMRECT, index, reinterpret_cast<LPARAM>(&rect)));
    DialogScript script({Answer(L"About", IDOK)});
    const LPARAM at = MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    ::SendMessageW(toolbar, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(toolbar, WM_LBUTTONUP, 0, at);
    EXPECT_TRUE(script.Finished()) << Report(script);
}

TEST_F(EditorWindow, AMenuEntryUnderTheMouseShowsItsPromptInTheStatusBar)
{
    const HMENU file = ::GetSubMenu(::GetMenu(Frame()), 0);
    ::SendMessageW(Frame(), WM_MENUSELECT, MAKEWPARAM(ID_AS_FILE_SAVE, MF_HILITE), reinterpret_cast<LPARAM>(file));
    EXPECT_EQ(test::WindowText(F().Bars().StatusBar()), L"Save current configuration and send it to the server");
}

TEST_F(EditorEdit, EditEntriesAreGreyedWhereTheyHaveNothingToActOn)
{
    const HMENU edit = ::GetSubMenu(::GetMenu(Frame()), 1);
    auto enabled = [&](UINT id) {
        ::SendMessageW(Frame(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(edit), 1);
        return (::GetMenuState(edit, id, MF_BYCOMMAND) & (MF_GRAYED | MF_DISABLED)) == 0;
    };
    SelectBranch(L"");
    FocusTree();
    EXPECT_FALSE(enabled(ID_AS_EDIT_DELETE)) << "the root stays";
    EXPECT_FALSE(enabled(ID_AS_EDIT_PROPERTIES));
    EXPECT_TRUE(enabled(ID_AS_EDIT_NEW_BRANCH));
    SelectBranch(L"Plant/Line1");
    FocusTree();
    EXPECT_TRUE(enabled(ID_AS_EDIT_DELETE));
    EXPECT_TRUE(enabled(ID_AS_EDIT_PROPERTIES));
    EXPECT_FALSE(enabled(ID_AS_EDIT_HISTORY)) << "no item chosen";
    FocusList();
    EXPECT_FALSE(enabled(ID_AS_EDIT_DELETE)) << "no row selected";
    SelectRows({L"Speed"});
    EXPECT_TRUE(enabled(ID_AS_EDIT_DELETE));
    EXPECT_TRUE(enabled(ID_AS_EDIT_PROPERTIES));
    EXPECT_TRUE(enabled(ID_AS_EDIT_HISTORY));
}
