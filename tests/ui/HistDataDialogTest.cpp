// The historical data window over a real database: presets, the check boxes
// and the maximum count, the four columns with local times and qualities,
// the status line, the text-only sort, the bounds sent to the database, a
// row that cannot be decoded, the XML export through the real save dialog,
// and the entry point for other windows.
#include "HistWinFixture.h"
#include "HistDataWindow.h"

#include "common/Text.h"

#include <cstdlib>

#include "historian/dlgHistData.h"
#include "res/resource.h"
#include "support/FileDialogAnswer.h"
#include "support/LogCapture.h"
#include "unit/ValueTestHelpers.h"

using namespace histwin_test;

namespace {

constexpr double kBase = 45000.0;   // 15.03.2023 00:00 UTC

using HistDataDialog = HistorianWindowTest;

// Values i = 0..n-1 at kBase + 10 h + i seconds.
std::vector<DATE> Seconds(int n)
{
    std::vector<DATE> times;
    for (int i = 0; i < n; ++i)
        times.push_back(kBase + 10 * kHour + i * kSecond);
    return times;
}

// The hand-written expected files (tests/data/histwin), through Wine's Z: drive.
std::wstring ExpectedFile(const wchar_t* name)
{
    return std::wstring(L"Z:" MORVANE_TEST_DATA_DIR L"/histwin/") + name;
}

} // namespace

TEST_P(HistDataDialog, ShowsItemCaptionColumnsAndControlTexts)
{
    HistDataWindow window(m_historian, L"Plant.Tank1.Level");
    ASSERT_TRUE(window.Open());
    EXPECT_EQ(test::WindowText(window.Hwnd()), L"Historical data");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_ITEM), L"Plant.Tank1.Level");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_MAX_COUNT), L"1000");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_MAX_NOTE), L"value(s), 0 - without limit");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_NOTE),
              L"Time Format: 'Day.Month.Year - hour:minute:second'");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_BTN_REFRESH), L"&Show data");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_OPEN_FILE), L"Sa&ve data...");
    EXPECT_EQ(HeaderText(window.List(), 0), L"Value");
    EXPECT_EQ(HeaderText(window.List(), 1), L"Time (UTC)");
    EXPECT_EQ(HeaderText(window.List(), 2), L"Var. type");
    EXPECT_EQ(HeaderText(window.List(), 3), L"Quality");
    EXPECT_TRUE(::GetWindowLongW(window.List(), GWL_STYLE) & LVS_OWNERDATA);
}

TEST_P(HistDataDialog, TabOrderFollowsTheScreenAndShowDataHasTheFocus)
{
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    EXPECT_EQ(::GetFocus(), window.Item(IDC_HISTDATA_BTN_REFRESH));
    std::vector<int> order;
    const HWND first = ::GetNextDlgTabItem(window.Hwnd(), nullptr, FALSE);
    HWND control = first;
    do {
        order.push_back(::GetDlgCtrlID(control));
        control = ::GetNextDlgTabItem(window.Hwnd(), control, FALSE);
    } while (control && control != first && order.size() < 20);
    EXPECT_EQ(order, (std::vector<int>{IDC_HISTDATA_ITEM, IDC_TIMEPERIOD_CHK_FROM, IDC_TIMEPERIOD_FROM,
                                       IDC_TIMEPERIOD_CHK_TO, IDC_TIMEPERIOD_TO, IDC_HISTDATA_MAX_COUNT,
                                       IDC_HISTDATA_CHART_SHOW, IDC_HISTDATA_BTN_REFRESH, IDC_HISTDATA_OPEN_FILE,
                                       IDC_HISTDATA_LIST, IDC_HISTDATA_CHART}));
}

TEST_P(HistDataDialog, LongItemIdSitsInAReadOnlyEditThatShowsItWhole)
{
    const std::wstring id = L"Plant.Area51.Line7.Station12.Conveyor.Motor.Drive.Temperatures.Winding.Phase3.Sensor";
    HistDataWindow window(m_historian, id);
    ASSERT_TRUE(window.Open());
    const HWND item = window.Item(IDC_HISTDATA_ITEM);
    wchar_t cls[32] = {};
    ::GetClassNameW(item, cls, 32);
    EXPECT_EQ(_wcsicmp(cls, L"Edit"), 0);
    EXPECT_TRUE(::GetWindowLongW(item, GWL_STYLE) & ES_READONLY);
    EXPECT_EQ(test::WindowText(item), id);
}

TEST_P(HistDataDialog, FromAndToNotGivenBecomeAnHourAgoAndNowInLocalTime)
{
    HistDataWindow window(m_historian, L"t");
    const DATE before = CL::NowUtcDate() + test::LocalOffsetDays();
    ASSERT_TRUE(window.Open());
    const DATE after = CL::NowUtcDate() + test::LocalOffsetDays();
    const DATE from = CL::SystemTimeToDate(PickerTime(window.Item(IDC_TIMEPERIOD_FROM)));
    const DATE to = CL::SystemTimeToDate(PickerTime(window.Item(IDC_TIMEPERIOD_TO)));
    EXPECT_GE(to, before - 1000 * kMs);
    EXPECT_LE(to, after + 1000 * kMs);
    EXPECT_NEAR(to - from, kHour, 1000 * kMs);
    EXPECT_TRUE(Checked(window.Hwnd(), IDC_TIMEPERIOD_CHK_FROM));
    EXPECT_TRUE(Checked(window.Hwnd(), IDC_TIMEPERIOD_CHK_TO));
}

TEST_P(HistDataDialog, GivenFromAndToArePresetInTheGivenFormat)
{
    HistDataWindow window(m_historian, L"t", Date(2023, 3, 15, 11, 0, 0, 250), Date(2023, 3, 16, 9, 30, 5, 999));
    ASSERT_TRUE(window.Open());
    EXPECT_EQ(PickerText(window.Item(IDC_TIMEPERIOD_FROM)), L"15:03:2023 - 11:00:00:000");
    // To the second: the read adds one second to To, so the last value of
    // that second is still inside.
    EXPECT_EQ(PickerText(window.Item(IDC_TIMEPERIOD_TO)), L"16:03:2023 - 09:30:05:000");
    EXPECT_EQ(test::WindowText(window.Item(IDC_TIMEPERIOD_FROM)), L"15.03.2023 - 11:00:00");
}

TEST_P(HistDataDialog, CheckStateOutsideZeroToTwoIsTakenAsUnchecked)
{
    HistDataWindow window(m_historian, L"t");
    window.Dialog().m_useFrom = 7;
    window.Dialog().m_useTo = BST_UNCHECKED;
    ASSERT_TRUE(window.Open());
    EXPECT_EQ(::IsDlgButtonChecked(window.Hwnd(), IDC_TIMEPERIOD_CHK_FROM), static_cast<UINT>(BST_UNCHECKED));
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_TIMEPERIOD_FROM)));
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_TIMEPERIOD_TO)));
}

TEST_P(HistDataDialog, CheckBoxesSwitchTheirPickers)
{
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.Click(IDC_TIMEPERIOD_CHK_FROM);
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_TIMEPERIOD_FROM)));
    EXPECT_TRUE(::IsWindowEnabled(window.Item(IDC_TIMEPERIOD_TO)));
    window.Click(IDC_TIMEPERIOD_CHK_TO);
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_TIMEPERIOD_TO)));
    window.Click(IDC_TIMEPERIOD_CHK_FROM);
    EXPECT_TRUE(::IsWindowEnabled(window.Item(IDC_TIMEPERIOD_FROM)));
}

TEST_P(HistDataDialog, BothChecksClearedShowAllValuesUpToTheMaximum)
{
    const std::vector<DATE> t = Seconds(7);
    WriteRun(L"t", {t[4], t[5], t[6]});
    WriteRun(L"t", {t[0], t[1], t[2], t[3]});
    WriteRun(L"other", {t[0]});
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(5);
    window.ShowAll();
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"0", L"1", L"2", L"3", L"0"}));
    EXPECT_EQ(window.Status(), L"5 value(s) retrieved for 't'");
}

TEST_P(HistDataDialog, MaximumZeroShowsAllValues)
{
    const std::vector<DATE> t = Seconds(1200);
    std::vector<CL::CHistoricValue> values;
    for (size_t i = 0; i < t.size(); ++i)
        values.push_back({t[i], 192, CL::CVariant::I4(static_cast<LONG>(i))});
    WriteValues(L"many", values);
    HistDataWindow window(m_historian, L"many");
    ASSERT_TRUE(window.Open());
    window.SetMax(0);
    window.ShowAll();
    EXPECT_EQ(RowCount(window.List()), 1200);
    EXPECT_EQ(CellText(window.List(), 1199, 0), L"1199");
    EXPECT_EQ(window.Status(), L"1200 value(s) retrieved for 'many'");
}

TEST_P(HistDataDialog, MaximumNShowsTheFirstNInTimeOrder)
{
    const std::vector<DATE> t = Seconds(6);
    WriteRun(L"t", {t[3], t[4], t[5]});
    WriteRun(L"t", {t[0], t[1], t[2]});
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(2);
    window.ShowAll();
    EXPECT_EQ(Column(window.List(), 1), (std::vector<std::wstring>{LocalText(t[0]), LocalText(t[1])}));
    EXPECT_EQ(window.Status(), L"2 value(s) retrieved for 't'");
}

TEST_P(HistDataDialog, RowsShowValueLocalTimeTypeAndQuality)
{
    const DATE t = kBase + 10 * kHour + 250 * kMs;
    WriteValues(L"q", {{t, 0xC0, CL::CVariant::R8(1.5)},
                       {t + kSecond, 0x40, CL::CVariant::I4(-7)},
                       {t + 2 * kSecond, 0x00, CL::CVariant(L"text")},
                       {t + 3 * kSecond, 0xD8, ValueTest::MakeArray<SHORT>(VT_I2, {1, 2})},
                       {t + 4 * kSecond, 0xFF3F, CL::CVariant::Bool(true)}});
    HistDataWindow window(m_historian, L"q");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    ASSERT_EQ(RowCount(window.List()), 5);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"1.5", L"-7", L"text", L"1\r\n2", L"True"}));
    EXPECT_EQ(CellText(window.List(), 0, 1), LocalText(t));
    EXPECT_EQ(CellText(window.List(), 4, 1), LocalText(t + 4 * kSecond));
    EXPECT_EQ(Column(window.List(), 2),
              (std::vector<std::wstring>{L"VT_R8", L"VT_I4", L"VT_BSTR", L"VT_I2 | VT_ARRAY", L"VT_BOOL"}));
    EXPECT_EQ(Column(window.List(), 3),
              (std::vector<std::wstring>{L"GOOD", L"NOT GOOD", L"NOT GOOD", L"GOOD", L"NOT GOOD"}));
}

TEST_P(HistDataDialog, TheStatusLineIsSetEvenWhenNothingIsFound)
{
    HistDataWindow window(m_historian, L"nothing.here");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    EXPECT_EQ(RowCount(window.List()), 0);
    EXPECT_EQ(window.Status(), L"0 value(s) retrieved for 'nothing.here'");
}

TEST_P(HistDataDialog, BoundsAreLocalPickerTimesConvertedToUtcWithTheLastSecondIncluded)
{
    // Stored at UTC 10:00:00.000 .. 10:00:05.000 and 10:00:05.900.
    const DATE t0 = Date(2023, 3, 15, 10, 0, 0);
    WriteRun(L"b", {t0, Date(2023, 3, 15, 10, 0, 1), Date(2023, 3, 15, 10, 0, 2), Date(2023, 3, 15, 10, 0, 3),
                    Date(2023, 3, 15, 10, 0, 4), Date(2023, 3, 15, 10, 0, 5), Date(2023, 3, 15, 10, 0, 5, 900),
                    Date(2023, 3, 15, 10, 0, 6)});
    // The pickers show local time: 10:00:01 .. 10:00:05 UTC in the zone of now.
    HistDataWindow window(m_historian, L"b", t0 + kSecond + test::LocalOffsetDays(),
                          t0 + 5 * kSecond + test::LocalOffsetDays());
    ASSERT_TRUE(window.Open());
    window.Click(IDC_HISTDATA_BTN_REFRESH);
    // From inclusive, To + one second exclusive: 10:00:05.900 is still in.
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"1", L"2", L"3", L"4", L"5", L"6"}));
    const std::vector<std::wstring> reads = Statements(L"SELECT * FROM HistoricData");
    ASSERT_EQ(reads.size(), 1u);
    // The UTC bounds as the query prints them: To + 1 s, and From.
    EXPECT_NE(reads[0].find(CL::Format(L"%.14f", Date(2023, 3, 15, 10, 0, 6))), std::wstring::npos) << reads[0];
    EXPECT_NE(reads[0].find(CL::Format(L"%.14f", Date(2023, 3, 15, 10, 0, 1))), std::wstring::npos) << reads[0];
}

TEST_P(HistDataDialog, ValueColumnSortsAsTextAndASecondClickReverses)
{
    const std::vector<DATE> t = Seconds(4);
    WriteValues(L"s", {{t[0], 192, CL::CVariant::I4(9)},
                       {t[1], 192, CL::CVariant::I4(10)},
                       {t[2], 192, CL::CVariant::I4(100)},
                       {t[3], 192, CL::CVariant::I4(2)}});
    HistDataWindow window(m_historian, L"s");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    ClickHeader(window.List(), 0);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"10", L"100", L"2", L"9"}));
    const HBITMAP up = HeaderBitmap(window.List(), 0);
    EXPECT_NE(up, nullptr);
    EXPECT_EQ(HeaderBitmap(window.List(), 1), nullptr);
    ClickHeader(window.List(), 0);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"9", L"2", L"100", L"10"}));
    EXPECT_NE(HeaderBitmap(window.List(), 0), nullptr);
    EXPECT_NE(HeaderBitmap(window.List(), 0), up);
    ClickHeader(window.List(), 3);
    EXPECT_EQ(HeaderBitmap(window.List(), 0), nullptr);
    EXPECT_EQ(HeaderBitmap(window.List(), 3), up);
}

TEST_P(HistDataDialog, TimeColumnSortsByItsTextDayFieldFirst)
{
    // 02.04.2023 comes before 15.03.2023 as text.
    const DATE march = Date(2023, 3, 15, 10, 0, 0);
    const DATE april = Date(2023, 4, 2, 10, 0, 0);
    WriteValues(L"d", {{march, 192, CL::CVariant::I4(1)}, {april, 192, CL::CVariant::I4(2)}});
    HistDataWindow window(m_historian, L"d");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    ClickHeader(window.List(), 1);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"2", L"1"}));
}

TEST_P(HistDataDialog, ARowThatCannotBeDecodedKeepsTheValuesBeforeItAndTheWindowWorks)
{
    const std::vector<DATE> t = Seconds(6);
    WriteRun(L"bad", {t[0], t[1]});
    // A run whose third record's variant type is not storable.
    CL::var_length_container cache;
    for (int i = 2; i < 5; ++i) {
        CL::CVariant v = CL::CVariant::I4(i);
        cache.Append(t[i], 192, v);
    }
    BYTE* bytes = static_cast<BYTE*>(cache.Array()->pvData);
    const uint32_t recordSize = cache.UsedSize() / 3;
    // The record begins with its time (8 bytes) and quality (2 bytes); the
    // variant type follows. 0x0D (VT_UNKNOWN) cannot be stored.
    bytes[2 * recordSize + 10] = 0x0D;
    m_writer->AppendRun(L"bad", cache, t[2], t[4]);
    WriteRun(L"bad", {t[5]});
    test::LogCapture log(1);
    HistDataWindow window(m_historian, L"bad");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    // The faulty run's records before the fault are shown, then the next run.
    const std::vector<std::wstring> values = Column(window.List(), 0);
    EXPECT_EQ(values, (std::vector<std::wstring>{L"0", L"1", L"2", L"3", L"0"}));
    EXPECT_TRUE(log.Contains("Bad info in DB")) << log.Dump();
    // Still working: a second read gives the same.
    window.Click(IDC_HISTDATA_BTN_REFRESH);
    EXPECT_EQ(Column(window.List(), 0), values);
}

TEST_P(HistDataDialog, AValueWithoutTextIsReportedAndTheValuesBeforeItStayShown)
{
    // A date past the year 9999 is stored but has no text.
    CL::CVariant farDate;
    farDate.vt = VT_DATE;
    farDate.date = 5.0e6;
    const std::vector<DATE> t = {Date(2023, 3, 15, 10, 0, 0), Date(2023, 3, 15, 10, 0, 1), Date(2023, 3, 15, 10, 0, 10)};
    WriteValues(L"d", {{t[0], 192, CL::CVariant::I4(1)}, {t[1], 192, farDate}, {t[2], 192, CL::CVariant::I4(3)}});
    HistDataWindow window(m_historian, L"d");
    ASSERT_TRUE(window.Open());
    {
        test::MessageBoxAnswerer answerer;
        window.ShowAll();
        EXPECT_EQ(answerer.Seen().size(), 1u);
    }
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"1"}));
    // The window keeps working: a read that avoids the value shows the rest.
    window.Click(IDC_TIMEPERIOD_CHK_FROM);
    SetPicker(window.Item(IDC_TIMEPERIOD_FROM), Date(2023, 3, 15, 10, 0, 5) + test::LocalOffsetDays());
    window.Click(IDC_HISTDATA_BTN_REFRESH);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"3"}));
}

TEST_P(HistDataDialog, TheListFollowsTheWindowWhenResized)
{
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    RECT before;
    ::GetWindowRect(window.List(), &before);
    RECT frame;
    ::GetWindowRect(window.Hwnd(), &frame);
    ::SetWindowPos(window.Hwnd(), nullptr, 0, 0, frame.right - frame.left + 200, frame.bottom - frame.top + 100,
                   SWP_NOMOVE | SWP_NOZORDER);
    RECT after;
    ::GetWindowRect(window.List(), &after);
    EXPECT_EQ(after.right - after.left, before.right - before.left + 200);
    EXPECT_EQ(after.bottom - after.top, before.bottom - before.top + 100);
}

TEST_P(HistDataDialog, SaveDataWritesTheExportThroughTheSaveDialog)
{
    const std::vector<CL::CHistoricValue> values = MixedValues();
    const std::wstring itemId = L"Anlage.Beh\u00E4lter-1.Temp <A&B>";
    WriteValues(itemId, values);
    test::TempDir folder;
    const std::wstring path = folder.File(L"export.xml");
    HistDataWindow window(m_historian, itemId);
    ASSERT_TRUE(window.Open());
    window.UncheckBounds();
    test::FileDialogAnswer answer(path);
    window.Click(IDC_HISTDATA_OPEN_FILE);
    ASSERT_TRUE(answer.Answered());
    EXPECT_EQ(answer.Title(), L"Save As");
    const std::string written = test::ReadFileBytes(path);
    const std::string expected = test::ReadFileBytes(ExpectedFile(L"export-mixed.xml"));
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(written, expected);
}

TEST_P(HistDataDialog, SaveDataCancelledInTheSaveDialogWritesNothingAndReadsNothing)
{
    WriteRun(L"t", {kBase});
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    test::FileDialogAnswer answer(L"");
    window.Click(IDC_HISTDATA_OPEN_FILE);
    ASSERT_TRUE(answer.Answered());
    EXPECT_TRUE(Statements(L"SELECT").empty());
}

TEST_P(HistDataDialog, WritesItsTraceLines)
{
    test::LogCapture log(3);
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    ClickHeader(window.List(), 2);
    EXPECT_TRUE(log.ContainsLike(3, "CdlgHistData::OnInitDialog [dlgHistData, ", "]")) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CdlgHistData::OnBnClickedChkFrom [dlgHistData, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgHistData::OnBnClickedChkTo [dlgHistData, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgHistData::OnBnClickedBtnRefresh [dlgHistData, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgHistData::OnColumnClick [dlgHistData, ", "]"));
}

INSTANTIATE_TEST_SUITE_P(Db, HistDataDialog, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);

TEST(ShowHistoricalData, SaysTheDatabaseIsNotAccessibleWhenItCannotBeOpened)
{
    test::ComScope com;
    CL::CHistorian historian;
    historian.Configure(L"Driver={No Such Driver};Database=nowhere", CL::CHistorian::kNoLimit,
                        CL::CHistorian::kNoLimit, 50);
    test::MessageBoxAnswerer answerer;
    ShowHistoricalData(nullptr, historian, L"x");
    const std::vector<test::MessageBoxInfo> seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"OPC HDA Database Explorer");
    EXPECT_EQ(seen[0].text, L"The HDA database is not accessible.");
}

TEST(ShowHistoricalData, OpensTheWindowForTheItemWithTheLastHour)
{
    test::ComScope com;
    test::HistorianTestDb db(DbKind::Sqlite);
    CL::CHistorian historian;
    historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    const DATE now = CL::NowUtcDate();
    CL::AppendHistoricRun(db.ConnectionString(), L"Recent.Item",
                          {{now - 2 * kHour, 192, CL::CVariant::I4(1)}, {now - 0.5 * kHour, 192, CL::CVariant::I4(2)}});
    std::wstring item, status;
    std::thread watcher([&] {
        const test::MessageBoxInfo box = test::WaitForMessageBox(0, 10s, L"Historical data");
        if (!box.hwnd)
            return;
        item = test::DialogItemText(box.hwnd, IDC_HISTDATA_ITEM);
        ::SendMessageW(::GetDlgItem(box.hwnd, IDC_HISTDATA_BTN_REFRESH), BM_CLICK, 0, 0);
        status = test::DialogItemText(box.hwnd, IDC_HISTDATA_STATUS);
        ::PostMessageW(box.hwnd, WM_COMMAND, IDCANCEL, 0);
    });
    ShowHistoricalData(nullptr, historian, L"Recent.Item");
    watcher.join();
    EXPECT_EQ(item, L"Recent.Item");
    EXPECT_EQ(status, L"1 value(s) retrieved for 'Recent.Item'");
}
