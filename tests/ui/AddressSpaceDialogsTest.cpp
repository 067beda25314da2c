// The item and branch dialogs on their own: their fields, the 32 data types,
// the conversion message, the keyboard (Ctrl+Enter, Enter, mnemonics, tab
// order) and their layout at the default dialog font.
#include <gtest/gtest.h>
#include <windows.h>

#include <set>

#include "addressspace/dlgAddBranch.h"
#include "addressspace/dlgAddItem.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "res/resource.h"
#include "support/DialogScript.h"
#include "support/TestSupport.h"

using test::DialogScript;
using namespace std::chrono_literals;

namespace {

constexpr wchar_t kConversionText[] =
    L"Failed to convert the value to the requested data type.\n\nEmpty values are not supported.\n\n"
    L"If you want to change the data type to VT_BSTR - click Yes\nOtherwise click Cancel";

std::string Report(DialogScript& script)
{
    return CL::Narrow(script.Report());
}

// Mnemonic letters of the dialog's labels, buttons and check boxes.
std::vector<wchar_t> Mnemonics(HWND dialog)
{
    std::vector<wchar_t> letters;
    for (HWND child = ::GetWindow(dialog, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        wchar_t cls[32] = {};
        ::GetClassNameW(child, cls, 32);
        if (_wcsicmp(cls, L"Static") != 0 && _wcsicmp(cls, L"Button") != 0)
            continue;
        const std::wstring text = test::WindowText(child);
        for (size_t i = 0; i + 1 < text.size(); ++i) {
            if (text[i] != L'&')
                continue;
            if (text[i + 1] == L'&') {
                ++i;
                continue;
            }
            letters.push_back(static_cast<wchar_t>(towupper(text[i + 1])));
        }
    }
    return letters;
}

// Controls whose text does not fit their rectangle at the dialog's font.
std::vector<std::wstring> CutOffTexts(HWND dialog)
{
    std::vector<std::wstring> cut;
    const HFONT font = reinterpret_cast<HFONT>(::SendMessageW(dialog, WM_GETFONT, 0, 0));
    for (HWND child = ::GetWindow(dialog, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        wchar_t cls[32] = {};
        ::GetClassNameW(child, cls, 32);
        const bool isStatic = _wcsicmp(cls, L"Static") == 0;
        if (!isStatic && _wcsicmp(cls, L"Button") != 0)
            continue;
        const std::wstring text = test::WindowText(child);
        if (text.empty())
            continue;
        RECT client = {};
        ::GetClientRect(child, &client);
        const LONG style = ::GetWindowLongW(child, GWL_STYLE);
        const LONG kind = style & BS_TYPEMASK;
        const bool isCheck = !isStatic && (kind == BS_AUTOCHECKBOX || kind == BS_CHECKBOX);
        int room = client.right;
        if (isCheck)
            room -= ::GetSystemMetrics(SM_CXMENUCHECK) + 4;
        else if (!isStatic)
            room -= 8;   // a push button's frame
        HDC dc = ::GetDC(child);
        const HGDIOBJ old = ::SelectObject(dc, font);
        RECT need = {0, 0, room, 0};
        ::DrawTextW(dc, text.c_str(), -1, &need, DT_CALCRECT | DT_WORDBREAK);
        ::SelectObject(dc, old);
        ::ReleaseDC(child, dc);
        if (need.right > room || need.bottom > client.bottom)
            cut.push_back(text);
    }
    return cut;
}

// The ids of the tab stops from the first one on, in tab order.
std::vector<int> TabOrder(HWND dialog)
{
    std::vector<int> ids;
    HWND first = ::GetNextDlgTabItem(dialog, nullptr, FALSE);
    HWND at = first;
    do {
        ids.push_back(::GetDlgCtrlID(at));
        at = ::GetNextDlgTabItem(dialog, at, FALSE);
    } while (at && at != first && ids.size() < 50);
    return ids;
}

} // namespace

TEST(ItemDialog, OffersThe32DataTypesInTheirOrderByVtNameWithTheirVarType)
{
    const VARTYPE expected[32] = {22, 16, 2, 3, 20, 23, 17, 18, 19, 21, 4, 5, 6, 7, 11, 8,
                                  8214, 8208, 8194, 8195, 8212, 8215, 8209, 8210, 8211, 8213, 8196, 8197, 8198, 8199, 8203, 8200};
    std::vector<VARTYPE> types;
    std::vector<std::wstring> names;
    int selectedData = -1;
    CdlgAddItem dialog;
    dialog.dataType = VT_DATE;
    DialogScript script({{L"Add Item", [&](HWND d) {
                              const HWND combo = ::GetDlgItem(d, IDC_ITEM_TYPE);
                              const int count = static_cast<int>(::SendMessageW(combo, CB_GETCOUNT, 0, 0));
                              for (int i = 0; i < count; ++i) {
                                  types.push_back(static_cast<VARTYPE>(::SendMessageW(combo, CB_GETITEMDATA, i, 0)));
                                  wchar_t text[64] = {};
                                  ::SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text));
                                  names.push_back(text);
                              }
                              const int selected = static_cast<int>(::SendMessageW(combo, CB_GETCURSEL, 0, 0));
                              selectedData = static_cast<int>(::SendMessageW(combo, CB_GETITEMDATA, selected, 0));
                              test::ClickButton(d, IDCANCEL);
                          }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDCANCEL);
    ASSERT_TRUE(script.Finished()) << Report(script);
    ASSERT_EQ(types.size(), 32u);
    for (size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(types[i], expected[i]) << "position " << i + 1;
        EXPECT_EQ(names[i], CL::VarTypeToString(expected[i])) << "position " << i + 1;
    }
    EXPECT_EQ(names[0], L"VT_INT");
    EXPECT_EQ(names[16], L"VT_INT | VT_ARRAY");
    EXPECT_EQ(selectedData, VT_DATE) << "the item's type is selected";
}

TEST(ItemDialog, TitleFollowsTheModeAndTheFieldsShowTheItem)
{
    for (bool add : {true, false}) {
        CdlgAddItem dialog;
        dialog.addMode = add;
        dialog.name = L"Speed";
        dialog.branch = L"Line1";
        dialog.valueText = L"12.5";
        dialog.readable = true;
        dialog.writable = false;
        dialog.archive = true;
        dialog.scanRate = 250;
        std::wstring title, name, branch, value, rate, hint;
        bool readable = false, writable = true, archive = false, saveNewEnabled = false, branchReadOnly = false;
        DialogScript script({{L"", [&](HWND d) {
                                  title = test::WindowText(d);
                                  name = test::DialogItemText(d, IDC_ITEM_NAME);
                                  branch = test::DialogItemText(d, IDC_ITEM_BRANCH);
                                  value = test::DialogItemText(d, IDC_ITEM_VALUE);
                                  rate = test::DialogItemText(d, IDC_ITEM_SCANRATE);
                                  hint = test::DialogItemText(d, IDC_ITEM_HINT);
                                  readable = test::IsChecked(d, IDC_ITEM_READABLE);
                                  writable = test::IsChecked(d, IDC_ITEM_WRITABLE);
                                  archive = test::IsChecked(d, IDC_ITEM_ARCHIVE);
                                  saveNewEnabled = ::IsWindowEnabled(::GetDlgItem(d, IDC_SAVE_AND_NEW)) != FALSE;
                                  branchReadOnly = (::GetWindowLongW(::GetDlgItem(d, IDC_ITEM_BRANCH), GWL_STYLE) & ES_READONLY) != 0;
                                  test::ClickButton(d, IDCANCEL);
                              }}});
        EXPECT_EQ(dialog.DoModal(nullptr), IDCANCEL);
        ASSERT_TRUE(script.Finished()) << Report(script);
        EXPECT_EQ(title, add ? L"Add Item" : L"Item(s) properties");
        EXPECT_EQ(name, L"Speed");
        EXPECT_EQ(branch, L"Line1");
        EXPECT_TRUE(branchReadOnly);
        EXPECT_EQ(value, L"12.5");
        EXPECT_EQ(rate, L"250");
        EXPECT_EQ(hint, L"For arrays, enter each value in a single line.\nUse 'Ctrl+Enter' to start a new line.");
        EXPECT_TRUE(readable);
        EXPECT_FALSE(writable);
        EXPECT_TRUE(archive);
        EXPECT_EQ(saveNewEnabled, add) << "Save and Create New belongs to adding";
    }
}

TEST(ItemDialog, SaveReadsTheFieldsAndConvertsTheValueToTheChosenType)
{
    CdlgAddItem dialog;
    DialogScript script({{L"Add Item", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Level");
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_R4);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"2.5");
                              test::SetCheck(d, IDC_ITEM_READABLE, false);
                              test::SetCheck(d, IDC_ITEM_WRITABLE, true);
                              test::SetCheck(d, IDC_ITEM_ARCHIVE, true);
                              test::SetItemText(d, IDC_ITEM_SCANRATE, L"125");
                              test::ClickButton(d, IDC_SAVE_AND_NEW);
                          }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDC_SAVE_AND_NEW);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(dialog.name, L"Level");
    EXPECT_EQ(dialog.dataType, VT_R4);
    EXPECT_EQ(dialog.value.vt, VT_R4);
    EXPECT_FLOAT_EQ(dialog.value.fltVal, 2.5f);
    EXPECT_FALSE(dialog.readable);
    EXPECT_TRUE(dialog.writable);
    EXPECT_TRUE(dialog.archive);
    EXPECT_EQ(dialog.scanRate, 125u);
}

TEST(ItemDialog, AnEmptyValueWithVtI4BringsTheConversionMessageAndOkMakesAnEmptyString)
{
    CdlgAddItem dialog;
    bool hasOk = false, hasCancel = false, hasYes = true;
    HICON icon = nullptr;
    DialogScript script({{L"Add Item", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Blank");
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_I4);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"");
                              test::ClickButton(d, IDOK);
                          }},
                         {L"Error", [&](HWND box) {
                              hasOk = ::GetDlgItem(box, IDOK) != nullptr;
                              hasCancel = ::GetDlgItem(box, IDCANCEL) != nullptr;
                              hasYes = ::GetDlgItem(box, IDYES) != nullptr;
                              icon = reinterpret_cast<HICON>(::SendDlgItemMessageW(box, 0x0440, STM_GETICON, 0, 0));
                              test::ClickButton(box, IDOK);
                          }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], kConversionText);
    EXPECT_TRUE(hasOk);
    EXPECT_TRUE(hasCancel);
    EXPECT_FALSE(hasYes) << "the text speaks of Yes, the box has OK and Cancel";
    EXPECT_EQ(icon, ::LoadIconW(nullptr, IDI_EXCLAMATION));
    EXPECT_EQ(dialog.dataType, VT_BSTR);
    ASSERT_EQ(dialog.value.vt, VT_BSTR);
    EXPECT_EQ(std::wstring(dialog.value.bstrVal ? dialog.value.bstrVal : L"?"), L"");
}

TEST(ItemDialog, OkInTheConversionMessageKeepsTheTextAsAString)
{
    CdlgAddItem dialog;
    DialogScript script({{L"Add Item", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Mixed");
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_I2);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"twelve");
                              test::ClickButton(d, IDOK);
                          }},
                         {L"Error", [](HWND box) { test::ClickButton(box, IDOK); }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(dialog.dataType, VT_BSTR);
    EXPECT_EQ(std::wstring(dialog.value.bstrVal), L"twelve");
}

TEST(ItemDialog, CancelInTheConversionMessageLeavesTheDialogOpenWithTheEnteredTextIntact)
{
    CdlgAddItem dialog;
    std::wstring textAfter;
    VARTYPE typeAfter = 0;
    DialogScript script({{L"Add Item", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Typo");
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_I4);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"12x");
                              test::ClickButton(d, IDOK);
                          }},
                         {L"Error", [](HWND box) { test::ClickButton(box, IDCANCEL); }},
                         {L"Add Item",
                          [&](HWND d) {
                              textAfter = test::DialogItemText(d, IDC_ITEM_VALUE);
                              const HWND combo = ::GetDlgItem(d, IDC_ITEM_TYPE);
                              typeAfter = static_cast<VARTYPE>(::SendMessageW(
                                  combo, CB_GETITEMDATA, ::SendMessageW(combo, CB_GETCURSEL, 0, 0), 0));
                              test::SetItemText(d, IDC_ITEM_VALUE, L"12");
                              test::ClickButton(d, IDOK);
                          },
                          DialogScript::kSameWindow}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(textAfter, L"12x");
    EXPECT_EQ(typeAfter, VT_I4);
    EXPECT_EQ(dialog.value.vt, VT_I4);
    EXPECT_EQ(dialog.value.lVal, 12);
}

TEST(ItemDialog, ThreeLinesWithAnArrayOfVtI4GiveAThreeElementArray)
{
    CdlgAddItem dialog;
    DialogScript script({{L"Add Item", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Trio");
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_ARRAY | VT_I4);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"1\r\n2\r\n3");
                              test::ClickButton(d, IDOK);
                          }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    ASSERT_TRUE(script.Finished()) << Report(script);
    ASSERT_EQ(dialog.value.vt, VT_ARRAY | VT_I4);
    LONG lower = 0, upper = -1;
    ::SafeArrayGetLBound(dialog.value.parray, 1, &lower);
    ::SafeArrayGetUBound(dialog.value.parray, 1, &upper);
    EXPECT_EQ(upper - lower + 1, 3);
}

TEST(ItemDialog, EditingSeveralItemsShowsMultipleSelectionAndKeepsTheName)
{
    CdlgAddItem dialog;
    dialog.addMode = false;
    dialog.multipleSelection = true;
    dialog.name = L"First";
    std::wstring shown;
    DialogScript script({{L"Item(s) properties", [&](HWND d) {
                              shown = test::DialogItemText(d, IDC_ITEM_NAME);
                              test::ClickButton(d, IDOK);
                          }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(shown, L"[multiple selection]");
    EXPECT_EQ(dialog.name, L"First");
}

TEST(ItemDialog, AScanRateOutOfRangeIsRefusedAndTheDialogStaysOpen)
{
    CdlgAddItem dialog;
    DialogScript script({{L"Add Item", [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Fast");
                              test::SetItemText(d, IDC_ITEM_SCANRATE, L"99999999999");
                              test::ClickButton(d, IDOK);
                          }},
                         {L"Error", [](HWND box) { test::ClickButton(box, IDOK); }},
                         {L"Add Item",
                          [](HWND d) {
                              test::SetItemText(d, IDC_ITEM_SCANRATE, L"86400000");
                              test::ClickButton(d, IDOK);
                          },
                          DialogScript::kSameWindow}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(script.Texts()[1], L"Enter a scan rate from 0 to 86400000 milliseconds.");
    EXPECT_EQ(dialog.scanRate, 86400000u);
}

TEST(ItemDialog, CloseBoxEndsWithCancel)
{
    CdlgAddItem dialog;
    DialogScript script({{L"Add Item", [](HWND d) { ::PostMessageW(d, WM_SYSCOMMAND, SC_CLOSE, 0); }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDCANCEL);
    EXPECT_TRUE(script.Finished()) << Report(script);
}

namespace {

// Key strokes for one dialog: the watcher shares the dialog thread's input
// state (so Ctrl held here is held there) and posts the keys into the
// dialog thread's queue, where its modal loop handles them as typed keys.
// Other test programs on the display do not get in the way.
class DialogKeyboard {
public:
    explicit DialogKeyboard(HWND dialog)
        : m_self(::GetCurrentThreadId()), m_dialogThread(::GetWindowThreadProcessId(dialog, nullptr))
    {
        ::AttachThreadInput(m_self, m_dialogThread, TRUE);
    }
    ~DialogKeyboard()
    {
        HoldCtrl(false);
        ::AttachThreadInput(m_self, m_dialogThread, FALSE);
    }
    void HoldCtrl(bool down)
    {
        BYTE state[256];
        ::GetKeyboardState(state);
        state[VK_CONTROL] = state[VK_LCONTROL] = down ? 0x80 : 0;
        ::SetKeyboardState(state);
    }
    static void Press(HWND control, WORD key)
    {
        const UINT scan = ::MapVirtualKeyW(key, MAPVK_VK_TO_VSC);
        ::PostMessageW(control, WM_KEYDOWN, key, 1 | (scan << 16));
        ::PostMessageW(control, WM_KEYUP, key, 1 | (scan << 16) | 0xC0000000u);
    }

private:
    DWORD m_self;
    DWORD m_dialogThread;
};

} // namespace

TEST(ItemDialog, CtrlEnterStartsANewLineInTheValueAndEnterAlonePressesSave)
{
    CdlgAddItem dialog;
    std::wstring typed;
    bool closedByEnter = false;
    DialogScript script({{L"Add Item", [&](HWND d) {
                              test::SetItemText(d, IDC_ITEM_NAME, L"Lines");
                              test::SelectComboData(d, IDC_ITEM_TYPE, VT_ARRAY | VT_I4);
                              test::SetItemText(d, IDC_ITEM_VALUE, L"1");
                              const HWND value = ::GetDlgItem(d, IDC_ITEM_VALUE);
                              ::SendMessageW(value, EM_SETSEL, 1, 1);
                              {
                                  DialogKeyboard keys(d);
                                  keys.HoldCtrl(true);
                                  DialogKeyboard::Press(value, VK_RETURN);
                                  test::WaitUntil([&] { return test::DialogItemText(d, IDC_ITEM_VALUE) != L"1"; }, 5s);
                                  keys.HoldCtrl(false);
                                  ::SendMessageW(value, EM_SETSEL, 0x7FFF, 0x7FFF);
                                  ::SendMessageW(value, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"2"));
                                  typed = test::DialogItemText(d, IDC_ITEM_VALUE);
                                  DialogKeyboard::Press(value, VK_RETURN);
                                  closedByEnter = test::WaitUntil([&] { return !::IsWindow(d); }, 5s);
                              }
                              // Never leave the test hanging on an open dialog.
                              if (!closedByEnter)
                                  test::ClickButton(d, IDCANCEL);
                          }}});
    const INT_PTR result = dialog.DoModal(nullptr);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(typed, L"1\r\n2");
    EXPECT_TRUE(closedByEnter);
    EXPECT_EQ(result, IDOK) << "Enter alone presses the default button";
    ASSERT_EQ(dialog.value.vt, VT_ARRAY | VT_I4);
    LONG upper = -1;
    ::SafeArrayGetUBound(dialog.value.parray, 1, &upper);
    EXPECT_EQ(upper, 1) << "two elements";
}

TEST(ItemDialog, MnemonicsAreUniqueTabOrderFollowsTheScreenAndNoTextIsCutOff)
{
    CdlgAddItem dialog;
    std::vector<wchar_t> mnemonics;
    std::vector<int> order;
    std::vector<std::wstring> cut;
    DialogScript script({{L"Add Item", [&](HWND d) {
                              mnemonics = Mnemonics(d);
                              order = TabOrder(d);
                              cut = CutOffTexts(d);
                              test::ClickButton(d, IDCANCEL);
                          }}});
    dialog.DoModal(nullptr);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(std::set<wchar_t>(mnemonics.begin(), mnemonics.end()).size(), mnemonics.size());
    EXPECT_GE(mnemonics.size(), 10u);
    EXPECT_EQ(order, (std::vector<int>{IDC_ITEM_NAME, IDC_ITEM_TYPE, IDC_ITEM_VALUE, IDC_ITEM_READABLE,
                                       IDC_ITEM_WRITABLE, IDC_ITEM_SCANRATE, IDC_ITEM_ARCHIVE, IDOK,
                                       IDC_SAVE_AND_NEW, IDCANCEL}));
    EXPECT_TRUE(cut.empty()) << CL::Narrow(cut.empty() ? L"" : cut.front());
}

TEST(ItemDialog, GrowingTheDialogGrowsTheValueFieldAndKeepsTheButtonsInTheCorner)
{
    CdlgAddItem dialog;
    RECT valueBefore = {}, valueAfter = {}, okBefore = {}, okAfter = {};
    DialogScript script({{L"Add Item", [&](HWND d) {
                              ::GetWindowRect(::GetDlgItem(d, IDC_ITEM_VALUE), &valueBefore);
                              ::GetWindowRect(::GetDlgItem(d, IDOK), &okBefore);
                              RECT window = {};
                              ::GetWindowRect(d, &window);
                              ::SetWindowPos(d, nullptr, 0, 0, window.right - window.left + 100,
                                             window.bottom - window.top + 80, SWP_NOMOVE | SWP_NOZORDER);
                              ::GetWindowRect(::GetDlgItem(d, IDC_ITEM_VALUE), &valueAfter);
                              ::GetWindowRect(::GetDlgItem(d, IDOK), &okAfter);
                              test::ClickButton(d, IDCANCEL);
                          }}});
    dialog.DoModal(nullptr);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(valueAfter.right - valueAfter.left, valueBefore.right - valueBefore.left + 100);
    EXPECT_EQ(valueAfter.bottom - valueAfter.top, valueBefore.bottom - valueBefore.top + 80);
    EXPECT_EQ(okAfter.right - okBefore.right, 100);
    EXPECT_EQ(okAfter.bottom - okBefore.bottom, 80);
}

TEST(BranchDialog, TitleFollowsTheModeAndSaveReadsTheName)
{
    for (bool add : {true, false}) {
        CdlgAddBranch dialog;
        dialog.addMode = add;
        dialog.name = L"Old";
        dialog.parent = L"Plant";
        std::wstring title, name, parent;
        bool saveNewEnabled = false;
        DialogScript script({{L"", [&](HWND d) {
                                  title = test::WindowText(d);
                                  name = test::DialogItemText(d, IDC_BRANCH_NAME);
                                  parent = test::DialogItemText(d, IDC_BRANCH_PARENT);
                                  saveNewEnabled = ::IsWindowEnabled(::GetDlgItem(d, IDC_SAVE_AND_NEW)) != FALSE;
                                  test::SetItemText(d, IDC_BRANCH_NAME, L"New");
                                  test::ClickButton(d, IDOK);
                              }}});
        EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
        ASSERT_TRUE(script.Finished()) << Report(script);
        EXPECT_EQ(title, add ? L"Add Branch" : L"Branch properties");
        EXPECT_EQ(name, L"Old");
        EXPECT_EQ(parent, L"Plant");
        EXPECT_EQ(saveNewEnabled, add);
        EXPECT_EQ(dialog.name, L"New");
    }
}

TEST(BranchDialog, SaveAndCreateNewAndCancelEndWithTheirIds)
{
    CdlgAddBranch dialog;
    DialogScript script({{L"Add Branch", [](HWND d) { test::ClickButton(d, IDC_SAVE_AND_NEW); }}});
    EXPECT_EQ(dialog.DoModal(nullptr), IDC_SAVE_AND_NEW);
    ASSERT_TRUE(script.Finished()) << Report(script);
    CdlgAddBranch second;
    DialogScript cancel({{L"Add Branch", [](HWND d) { test::ClickButton(d, IDCANCEL); }}});
    EXPECT_EQ(second.DoModal(nullptr), IDCANCEL);
    ASSERT_TRUE(cancel.Finished()) << Report(cancel);
}

TEST(BranchDialog, MnemonicsAreUniqueTabOrderFollowsTheScreenAndNoTextIsCutOff)
{
    CdlgAddBranch dialog;
    std::vector<wchar_t> mnemonics;
    std::vector<int> order;
    std::vector<std::wstring> cut;
    DialogScript script({{L"Add Branch", [&](HWND d) {
                              mnemonics = Mnemonics(d);
                              order = TabOrder(d);
                              cut = CutOffTexts(d);
                              test::ClickButton(d, IDCANCEL);
                          }}});
    dialog.DoModal(nullptr);
    ASSERT_TRUE(script.Finished()) << Report(script);
    EXPECT_EQ(std::set<wchar_t>(mnemonics.begin(), mnemonics.end()).size(), mnemonics.size());
    EXPECT_EQ(order, (std::vector<int>{IDC_BRANCH_NAME, IDOK, IDC_SAVE_AND_NEW, IDCANCEL}));
    EXPECT_TRUE(cut.empty()) << CL::Narrow(cut.empty() ? L"" : cut.front());
}
