// The database maintenance options dialog on the test display: three check
// boxes that are not a one-of-three choice, the number edits enabled with
// their boxes, numbers read as signed integers (the first that is not a
// number fails, gets the focus and the dialog still closes), and Cancel or
// closing the window taking no value.
#include <gtest/gtest.h>
#include <windows.h>

#include "OptionsTestSupport.h"
#include "config/dlgDbOptions.h"
#include "res/resource.h"
#include "support/LogCapture.h"

namespace {

// The dialog, modeless and hidden, over the given values.
class DbOptionsDialog : public testing::Test {
protected:
    void Open(const CDbRetention& values)
    {
        m_dialog = std::make_unique<CdlgDbOptions>(values);
        ASSERT_NE(m_dialog->Create(nullptr, IDD_DBOPTIONS), nullptr);
    }
    void Open() { Open(CDbRetention{}); }
    HWND Hwnd() const { return *m_dialog; }
    const CDbRetention& Values() const { return m_dialog->Values(); }
    std::wstring Text(int id) const { return test::ItemText(Hwnd(), id); }
    void SetText(int id, const std::wstring& text) { test::SetItemText(Hwnd(), id, text); }
    void Click(int id) { test::Click(Hwnd(), id); }
    bool Checked(int id) const { return test::IsChecked(Hwnd(), id); }
    bool Enabled(int id) const { return test::IsEnabled(Hwnd(), id); }

    std::unique_ptr<CdlgDbOptions> m_dialog;
};

// The last window that got the focus while the hook below was set.
HWND g_focused = nullptr;

LRESULT CALLBACK RecordFocus(int code, WPARAM wParam, LPARAM lParam)
{
    if (code == HCBT_SETFOCUS && wParam)
        g_focused = reinterpret_cast<HWND>(wParam);
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

CDbRetention BothLimits()
{
    CDbRetention values;
    values.KeepAll = false;
    values.KeepLast = true;
    values.LastValues = 200;
    values.KeepMinutes = true;
    values.LastMinutes = 30;
    values.DeletePercent = 25;
    return values;
}

} // namespace

TEST_F(DbOptionsDialog, OpeningShowsTheValuesAndEnablesEachNumberWithItsBox)
{
    CDbRetention values;
    values.KeepAll = false;
    values.KeepLast = true;
    values.LastValues = -5;
    values.KeepMinutes = false;
    values.LastMinutes = 90;
    values.DeletePercent = 70;
    Open(values);
    EXPECT_FALSE(Checked(IDC_CH_KEEP_ALL));
    EXPECT_TRUE(Checked(IDC_CH_KEEP_NUMBER));
    EXPECT_FALSE(Checked(IDC_CH_KEEP_MINUTES));
    EXPECT_EQ(Text(IDC_ED_KEEP_NUMBER), L"-5");
    EXPECT_EQ(Text(IDC_ED_KEEP_MINUTES), L"90");
    EXPECT_EQ(Text(IDC_ED_DELETE_PERCENT), L"70");
    EXPECT_TRUE(Enabled(IDC_ED_KEEP_NUMBER));
    EXPECT_FALSE(Enabled(IDC_ED_KEEP_MINUTES));
    EXPECT_TRUE(Enabled(IDC_ED_DELETE_PERCENT));
    EXPECT_NE(::SendMessageW(Hwnd(), WM_GETICON, ICON_BIG, 0), 0);
}

TEST_F(DbOptionsDialog, UncheckingKeepAllTurnsOnBothLimitsAndEnablesBothEdits)
{
    Open();
    ASSERT_TRUE(Checked(IDC_CH_KEEP_ALL));
    ASSERT_FALSE(Enabled(IDC_ED_KEEP_NUMBER));
    Click(IDC_CH_KEEP_ALL);
    EXPECT_FALSE(Checked(IDC_CH_KEEP_ALL));
    EXPECT_TRUE(Checked(IDC_CH_KEEP_NUMBER));
    EXPECT_TRUE(Checked(IDC_CH_KEEP_MINUTES));
    EXPECT_TRUE(Enabled(IDC_ED_KEEP_NUMBER));
    EXPECT_TRUE(Enabled(IDC_ED_KEEP_MINUTES));
}

TEST_F(DbOptionsDialog, CheckingKeepAllTurnsBothLimitsOffAndDisablesTheirEdits)
{
    Open(BothLimits());
    Click(IDC_CH_KEEP_ALL);
    EXPECT_TRUE(Checked(IDC_CH_KEEP_ALL));
    EXPECT_FALSE(Checked(IDC_CH_KEEP_NUMBER));
    EXPECT_FALSE(Checked(IDC_CH_KEEP_MINUTES));
    EXPECT_FALSE(Enabled(IDC_ED_KEEP_NUMBER));
    EXPECT_FALSE(Enabled(IDC_ED_KEEP_MINUTES));
}

TEST_F(DbOptionsDialog, TurningOffBothLimitBoxesTurnsKeepAllOnByItself)
{
    Open(BothLimits());
    Click(IDC_CH_KEEP_NUMBER);
    EXPECT_FALSE(Checked(IDC_CH_KEEP_ALL)) << "one limit is still on";
    EXPECT_FALSE(Enabled(IDC_ED_KEEP_NUMBER));
    Click(IDC_CH_KEEP_MINUTES);
    EXPECT_TRUE(Checked(IDC_CH_KEEP_ALL));
    EXPECT_FALSE(Enabled(IDC_ED_KEEP_MINUTES));
}

TEST_F(DbOptionsDialog, BothLimitBoxesMayBeOnTogether)
{
    Open();
    Click(IDC_CH_KEEP_NUMBER);
    EXPECT_FALSE(Checked(IDC_CH_KEEP_ALL));
    Click(IDC_CH_KEEP_MINUTES);
    EXPECT_TRUE(Checked(IDC_CH_KEEP_NUMBER));
    EXPECT_TRUE(Checked(IDC_CH_KEEP_MINUTES));
    EXPECT_FALSE(Checked(IDC_CH_KEEP_ALL));
    Click(IDOK);
    EXPECT_FALSE(::IsWindow(Hwnd()));
    EXPECT_TRUE(Values().KeepLast);
    EXPECT_TRUE(Values().KeepMinutes);
    EXPECT_FALSE(Values().KeepAll);
}

TEST_F(DbOptionsDialog, NumbersAreKeptAsTypedWithoutARangeCheck)
{
    Open(BothLimits());
    SetText(IDC_ED_KEEP_NUMBER, L"0");
    SetText(IDC_ED_KEEP_MINUTES, L"-15");
    SetText(IDC_ED_DELETE_PERCENT, L"150");
    Click(IDOK);
    EXPECT_EQ(Values().LastValues, 0);
    EXPECT_EQ(Values().LastMinutes, -15);
    EXPECT_EQ(Values().DeletePercent, 150);
    EXPECT_EQ(Values().BadNumberField, 0);
}

TEST_F(DbOptionsDialog, TextThatIsNotANumberFailsItsFieldStopsTheReadingAndStillCloses)
{
    Open(BothLimits());
    SetText(IDC_ED_KEEP_NUMBER, L"300");
    SetText(IDC_ED_KEEP_MINUTES, L"ten");
    SetText(IDC_ED_DELETE_PERCENT, L"80");
    // The focus goes to the failed edit before the dialog closes.
    g_focused = nullptr;
    const HHOOK hook = ::SetWindowsHookExW(WH_CBT, &RecordFocus, nullptr, ::GetCurrentThreadId());
    const HWND minutes = ::GetDlgItem(Hwnd(), IDC_ED_KEEP_MINUTES);
    Click(IDOK);
    ::UnhookWindowsHookEx(hook);
    const HWND focused = g_focused;
    EXPECT_FALSE(::IsWindow(Hwnd())) << "closed all the same";
    EXPECT_EQ(Values().LastValues, 300) << "read before the failed field";
    EXPECT_EQ(Values().LastMinutes, 30) << "the failed field keeps its value";
    EXPECT_EQ(Values().DeletePercent, 25) << "not read after the failed field";
    EXPECT_EQ(Values().BadNumberField, IDC_ED_KEEP_MINUTES);
    EXPECT_EQ(focused, minutes);
}

TEST_F(DbOptionsDialog, CancelTakesNoValue)
{
    Open();
    Click(IDC_CH_KEEP_ALL);
    SetText(IDC_ED_DELETE_PERCENT, L"10");
    Click(IDCANCEL);
    EXPECT_FALSE(::IsWindow(Hwnd()));
    EXPECT_TRUE(Values().KeepAll);
    EXPECT_FALSE(Values().KeepLast);
    EXPECT_EQ(Values().DeletePercent, 50);
}

TEST_F(DbOptionsDialog, ClosingTheWindowTakesNoValue)
{
    test::LogCapture log(3);
    Open();
    SetText(IDC_ED_DELETE_PERCENT, L"10");
    ::SendMessageW(Hwnd(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(::IsWindow(Hwnd()));
    EXPECT_EQ(Values().DeletePercent, 50);
    EXPECT_TRUE(log.ContainsLike(3, "CdlgDbOptions::OnClose [dlgDbOptions, ", "]")) << log.Dump();
}
