// The time period dialog: caption and controls, the picker format, the
// presets, the check boxes that switch the pickers, and the values read back
// on OK and on Cancel.
#include <algorithm>
#include <cmath>
#include <utility>

#include "HistWinFixture.h"

#include "historian/PickerTime.h"
#include "historian/dlgTimePeriod.h"
#include "res/resource.h"
#include "support/LogCapture.h"

using namespace histwin_test;

namespace {

constexpr wchar_t kCaption[] = L"Delete selected items values from database";

// Runs the dialog modally on this thread while `drive` works on it from a
// watcher thread; drive ends the dialog.
INT_PTR RunDialog(CdlgTimePeriod& dialog, const std::function<void(HWND)>& drive, bool* seen = nullptr)
{
    bool shown = false;
    std::thread watcher([&] {
        const test::MessageBoxInfo box = test::WaitForMessageBox(0, 10s, kCaption);
        if (!box.hwnd)
            return;
        shown = true;
        drive(box.hwnd);
    });
    const INT_PTR result = dialog.DoModal(nullptr);
    watcher.join();
    if (seen)
        *seen = shown;
    return result;
}

void Click(HWND dialog, int id)
{
    ::SendMessageW(::GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

} // namespace

TEST(TimePeriodDialog, ShowsCaptionControlsAndMnemonics)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 13, 45, 30);
    dialog.m_to = Date(2024, 2, 2, 8, 0, 0);
    std::wstring from, to, ok, cancel;
    bool icon = false;
    bool seen = false;
    RunDialog(dialog, [&](HWND box) {
        from = test::DialogItemText(box, IDC_TIMEPERIOD_CHK_FROM);
        to = test::DialogItemText(box, IDC_TIMEPERIOD_CHK_TO);
        ok = test::DialogItemText(box, IDOK);
        cancel = test::DialogItemText(box, IDCANCEL);
        icon = ::SendMessageW(box, WM_GETICON, ICON_BIG, 0) != 0;
        test::ClickButton(box, IDCANCEL);
    }, &seen);
    ASSERT_TRUE(seen);
    EXPECT_EQ(from, L"&From:");
    EXPECT_EQ(to, L"&To:");
    EXPECT_EQ(ok, L"OK");
    EXPECT_EQ(cancel, L"Cancel");
    EXPECT_TRUE(icon);
}

TEST(TimePeriodDialog, PickersShowThePresetTimesInTheGivenFormat)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 13, 45, 30);
    dialog.m_to = Date(2024, 12, 31, 23, 59, 59);
    std::wstring fromShown, toShown, fromText;
    RunDialog(dialog, [&](HWND box) {
        fromShown = PickerText(::GetDlgItem(box, IDC_TIMEPERIOD_FROM));
        toShown = PickerText(::GetDlgItem(box, IDC_TIMEPERIOD_TO));
        fromText = test::WindowText(::GetDlgItem(box, IDC_TIMEPERIOD_FROM));
        test::ClickButton(box, IDCANCEL);
    });
    EXPECT_EQ(fromShown, L"01:02:2024 - 13:45:30:000");
    EXPECT_EQ(toShown, L"31:12:2024 - 23:59:59:000");
    // The picker's own text is the display format "dd.MM.yyyy - HH:mm:ss".
    EXPECT_EQ(fromText, L"01.02.2024 - 13:45:30");
}

TEST(TimePeriodDialog, BothBoundsAreCheckedAndEnabledByDefault)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 0, 0, 0);
    dialog.m_to = Date(2024, 2, 2, 0, 0, 0);
    bool fromChecked = false, toChecked = false, fromEnabled = false, toEnabled = false;
    RunDialog(dialog, [&](HWND box) {
        fromChecked = Checked(box, IDC_TIMEPERIOD_CHK_FROM);
        toChecked = Checked(box, IDC_TIMEPERIOD_CHK_TO);
        fromEnabled = ::IsWindowEnabled(::GetDlgItem(box, IDC_TIMEPERIOD_FROM));
        toEnabled = ::IsWindowEnabled(::GetDlgItem(box, IDC_TIMEPERIOD_TO));
        test::ClickButton(box, IDOK);
    });
    EXPECT_TRUE(fromChecked && toChecked && fromEnabled && toEnabled);
    EXPECT_TRUE(dialog.m_useFrom);
    EXPECT_TRUE(dialog.m_useTo);
}

TEST(TimePeriodDialog, UncheckedPresetDisablesItsPicker)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 0, 0, 0);
    dialog.m_to = Date(2024, 2, 2, 0, 0, 0);
    dialog.m_useTo = false;
    bool toChecked = true, toEnabled = true, fromEnabled = false;
    RunDialog(dialog, [&](HWND box) {
        toChecked = Checked(box, IDC_TIMEPERIOD_CHK_TO);
        toEnabled = ::IsWindowEnabled(::GetDlgItem(box, IDC_TIMEPERIOD_TO));
        fromEnabled = ::IsWindowEnabled(::GetDlgItem(box, IDC_TIMEPERIOD_FROM));
        test::ClickButton(box, IDOK);
    });
    EXPECT_FALSE(toChecked);
    EXPECT_FALSE(toEnabled);
    EXPECT_TRUE(fromEnabled);
    EXPECT_FALSE(dialog.m_useTo);
}

// The picker is moved after its box was unchecked: closing must read it
// back, so a dialog that kept the preset fails here.
TEST(TimePeriodDialog, UncheckingFromDisablesItsPickerAndItsValueIsStillReadBack)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 13, 45, 30);
    dialog.m_to = Date(2024, 2, 2, 0, 0, 0);
    bool enabledAfterUncheck = true, enabledAfterRecheck = false;
    RunDialog(dialog, [&](HWND box) {
        Click(box, IDC_TIMEPERIOD_CHK_FROM);
        enabledAfterUncheck = ::IsWindowEnabled(::GetDlgItem(box, IDC_TIMEPERIOD_FROM));
        Click(box, IDC_TIMEPERIOD_CHK_FROM);
        enabledAfterRecheck = ::IsWindowEnabled(::GetDlgItem(box, IDC_TIMEPERIOD_FROM));
        Click(box, IDC_TIMEPERIOD_CHK_FROM);
        SYSTEMTIME moved = CL::DateToSystemTime(Date(2023, 11, 5, 6, 7, 8));
        ::SendMessageW(::GetDlgItem(box, IDC_TIMEPERIOD_FROM), DTM_SETSYSTEMTIME, GDT_VALID,
                       reinterpret_cast<LPARAM>(&moved));
        test::ClickButton(box, IDOK);
    });
    EXPECT_FALSE(enabledAfterUncheck);
    EXPECT_TRUE(enabledAfterRecheck);
    EXPECT_FALSE(dialog.m_useFrom);
    EXPECT_TRUE(dialog.m_useTo);
    EXPECT_EQ(CL::DateToString(dialog.m_from), L"05:11:2023 - 06:07:08:000") << "the moved picker is read back";
}

// The picker holds 500 ms (checked first, so that the test cannot pass
// because the control dropped them): what the dialog hands back when it
// closes is the picked second exactly, with no milliseconds, both as the
// date and as its text.
TEST(TimePeriodDialog, PickerSecondComesBackExactlyWithZeroMilliseconds)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2020, 1, 1, 0, 0, 0);
    dialog.m_to = Date(2020, 1, 1, 0, 0, 0);
    WORD heldMilliseconds = 0;
    const INT_PTR result = RunDialog(dialog, [&](HWND box) {
        for (const int id : {IDC_TIMEPERIOD_FROM, IDC_TIMEPERIOD_TO}) {
            const HWND picker = ::GetDlgItem(box, id);
            SYSTEMTIME st = CL::DateToSystemTime(Date(2024, 2, 1, 13, 45, id == IDC_TIMEPERIOD_FROM ? 30 : 59));
            st.wMilliseconds = 500;
            ::SendMessageW(picker, DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&st));
            SYSTEMTIME held = {};
            ::SendMessageW(picker, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&held));
            heldMilliseconds = std::max(heldMilliseconds, held.wMilliseconds);
        }
        test::ClickButton(box, IDOK);
    });
    EXPECT_EQ(result, IDOK);
    ASSERT_EQ(heldMilliseconds, 500) << "the picker keeps the milliseconds it is given";
    for (const auto& [date, second] : {std::pair{dialog.m_from, 30}, std::pair{dialog.m_to, 59}}) {
        SYSTEMTIME exact = {};
        exact.wYear = 2024;
        exact.wMonth = 2;
        exact.wDay = 1;
        exact.wHour = 13;
        exact.wMinute = 45;
        exact.wSecond = static_cast<WORD>(second);
        DATE expected = 0;
        ASSERT_TRUE(::SystemTimeToVariantTime(&exact, &expected));
        EXPECT_EQ(date, expected) << second;
        // Half a second more would be 1/172800 of a day.
        EXPECT_LT(std::abs(date - expected) * 86400000.0, 1.0) << second;
        EXPECT_EQ(CL::DateToString(date), L"01:02:2024 - 13:45:" + std::to_wstring(second) + L":000");
    }
}

TEST(TimePeriodDialog, FromAfterToIsAcceptedAsItStands)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 3, 1, 0, 0, 0);
    dialog.m_to = Date(2024, 2, 1, 0, 0, 0);
    EXPECT_EQ(RunDialog(dialog, [](HWND box) { test::ClickButton(box, IDOK); }), IDOK);
    EXPECT_GT(dialog.m_from, dialog.m_to);
}

TEST(TimePeriodDialog, CancelReturnsTwo)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 0, 0, 0);
    dialog.m_to = Date(2024, 2, 2, 0, 0, 0);
    EXPECT_EQ(RunDialog(dialog, [](HWND box) { test::ClickButton(box, IDCANCEL); }), IDCANCEL);
    EXPECT_EQ(IDCANCEL, 2);
}

TEST(TimePeriodDialog, TabOrderFollowsTheScreen)
{
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 0, 0, 0);
    dialog.m_to = Date(2024, 2, 2, 0, 0, 0);
    std::vector<int> order;
    RunDialog(dialog, [&](HWND box) {
        HWND first = ::GetNextDlgTabItem(box, nullptr, FALSE);
        HWND control = first;
        do {
            order.push_back(::GetDlgCtrlID(control));
            control = ::GetNextDlgTabItem(box, control, FALSE);
        } while (control && control != first && order.size() < 20);
        test::ClickButton(box, IDCANCEL);
    });
    EXPECT_EQ(order, (std::vector<int>{IDC_TIMEPERIOD_CHK_FROM, IDC_TIMEPERIOD_FROM, IDC_TIMEPERIOD_CHK_TO,
                                       IDC_TIMEPERIOD_TO, IDOK, IDCANCEL}));
}

TEST(TimePeriodDialog, WritesItsTraceLines)
{
    test::LogCapture log(3);
    CdlgTimePeriod dialog;
    dialog.m_from = Date(2024, 2, 1, 0, 0, 0);
    dialog.m_to = Date(2024, 2, 2, 0, 0, 0);
    RunDialog(dialog, [](HWND box) {
        Click(box, IDC_TIMEPERIOD_CHK_TO);
        test::ClickButton(box, IDOK);
    });
    EXPECT_TRUE(log.ContainsLike(3, "CdlgTimePeriod::OnInitDialog [dlgTimePeriod, ", "]")) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CdlgTimePeriod::OnBnClickedChkTo [dlgTimePeriod, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgTimePeriod::OnCloseCmd [dlgTimePeriod, ", "]"));
}
