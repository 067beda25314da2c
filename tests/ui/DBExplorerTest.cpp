// The database explorer over a real database (SQLite and PostgreSQL): its
// title, toolbar, right-click menu and columns, the list of archived items
// with local times, the three comparison rules of its sort, delete all and
// delete selected with their questions and the time period dialog, show data,
// and the tray's entry that opens it.
#include "HistWinFixture.h"

#include <algorithm>

#include "app/DatabaseExplorer.h"
#include "app/DummyWnd.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "historian/dlgDBExplorer.h"
#include "res/resource.h"
#include "support/LogCapture.h"
#include "support/MenuCapture.h"
#include "support/ProcessState.h"

using namespace histwin_test;

namespace {

constexpr wchar_t kPeriodCaption[] = L"Delete selected items values from database";
constexpr wchar_t kClearQuestion[] = L"Are you sure you wish to clear the database?";
constexpr wchar_t kDeleteQuestion[] = L"Are you sure you wish to delete permanently all those values?";

class DBExplorer : public HistorianWindowTest {
protected:
    void Open()
    {
        m_explorer.SetProductName(L"Varnel");
        ASSERT_NE(m_explorer.Create(), nullptr);
        ::ShowWindow(m_explorer, SW_SHOW);
    }
    HWND List() const { return m_explorer.List().Hwnd(); }
    void Command(WORD id) { ::SendMessageW(m_explorer, WM_COMMAND, MAKEWPARAM(id, 0), 0); }
    std::vector<std::wstring> Ids() const { return Column(List(), 0); }

    CdlgDBExplorer m_explorer{m_historian};
};

// What a look at the time period dialog found, and how it was answered.
struct PeriodSeen {
    bool shown = false;
    std::wstring from;
    std::wstring to;
};

// Answers the time period dialog (optionally unchecking a bound first) and
// the question that follows.
test::MessageBoxAnswerer::Answer DeleteAnswers(PeriodSeen& period, int periodButton, int questionButton,
                                               int uncheck = 0)
{
    return [&period, periodButton, questionButton, uncheck](const test::MessageBoxInfo& box) {
        if (box.title == kPeriodCaption) {
            period.shown = true;
            period.from = PickerText(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_FROM));
            period.to = PickerText(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_TO));
            if (uncheck)
                ::SendMessageW(::GetDlgItem(box.hwnd, uncheck), BM_CLICK, 0, 0);
            return periodButton;
        }
        return questionButton;
    };
}

std::vector<std::wstring> Texts(const std::vector<test::MessageBoxInfo>& boxes)
{
    std::vector<std::wstring> texts;
    for (const auto& box : boxes)
        texts.push_back(box.text);
    return texts;
}

} // namespace

TEST_P(DBExplorer, TitleColumnsAndResizableFrame)
{
    Open();
    EXPECT_EQ(test::WindowText(m_explorer), L"Varnel OPC HDA Database Explorer");
    EXPECT_EQ(HeaderText(List(), 0), L"Item ID");
    EXPECT_EQ(HeaderText(List(), 1), L"Earliest value time");
    EXPECT_EQ(HeaderText(List(), 2), L"Latest value time");
    EXPECT_EQ(HeaderText(List(), 3), L"Value count");
    const LONG style = ::GetWindowLongW(m_explorer, GWL_STYLE);
    EXPECT_TRUE(style & WS_THICKFRAME);
    EXPECT_TRUE(::GetWindowLongW(List(), GWL_STYLE) & LVS_SHOWSELALWAYS);
    EXPECT_NE(::SendMessageW(m_explorer, WM_GETICON, ICON_BIG, 0), 0);
}

TEST_P(DBExplorer, ToolbarHoldsTheCommandsWithASeparatorBeforeAbout)
{
    Open();
    const HWND toolbar = m_explorer.Bars().Toolbar();
    ASSERT_NE(toolbar, nullptr);
    std::vector<int> commands;
    const int count = static_cast<int>(::SendMessageW(toolbar, TB_BUTTONCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        TBBUTTON button = {};
        ::SendMessageW(toolbar, TB_GETBUTTON, i, reinterpret_cast<LPARAM>(&button));
        commands.push_back((button.fsStyle & BTNS_SEP) ? 0 : button.idCommand);
    }
    // The five commands in their order, "Export values..." added before the separator.
    EXPECT_EQ(commands, (std::vector<int>{32804, 32809, 32810, 32811, ID_DBEXPLORER_EXPORT, 0, 32808}));
    EXPECT_EQ(CL::CFrameBars::Tooltip(32804), L"Delete all items all values from database");
    EXPECT_EQ(CL::CFrameBars::Tooltip(32809), L"Delete selected item values from database");
    EXPECT_EQ(CL::CFrameBars::Tooltip(32810), L"Refresh");
    EXPECT_EQ(CL::CFrameBars::Prompt(32811), L"Display history of selected item values");
    EXPECT_EQ(CL::CFrameBars::Tooltip(32808), L"About");
}

TEST_P(DBExplorer, RightClickMenuCarriesTheCommands)
{
    Open();
    test::TrackedMenuCapture capture;
    ::SendMessageW(m_explorer, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(List()), MAKELPARAM(50, 50));
    ASSERT_TRUE(capture.Captured());
    const std::vector<test::MenuEntry> entries = capture.Entries();
    std::vector<std::pair<std::wstring, UINT>> seen;
    for (const auto& e : entries)
        seen.emplace_back(e.text, e.id);
    EXPECT_EQ(seen, (std::vector<std::pair<std::wstring, UINT>>{
                        {L"Delete all items all values from database...", 32804},
                        {L"Delete selected item values from database...", 32809},
                        {L"Refresh", 32810},
                        {L"Show selected item values...", 32811},
                        {L"-", 0},
                        {L"&Export values...", ID_DBEXPLORER_EXPORT},
                        {L"&Copy\tCtrl+C", ID_DBEXPLORER_COPY},
                        {L"Select &all\tCtrl+A", ID_DBEXPLORER_SELECT_ALL},
                        {L"-", 0},
                        {L"Change &History...", ID_DBEXPLORER_CHANGE_HISTORY}}));
}

TEST_P(DBExplorer, RightClickMenuOpensFromTheKeyboardToo)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    SelectRows(List(), {0});
    test::TrackedMenuCapture capture;
    ::SendMessageW(m_explorer, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(List()), MAKELPARAM(-1, -1));
    ASSERT_TRUE(capture.Captured());
    EXPECT_EQ(capture.Entries().size(), 10u);
}

TEST_P(DBExplorer, EmptyDatabaseGivesAnEmptyListAndNothingIsSelected)
{
    Open();
    EXPECT_EQ(RowCount(List()), 0);
    test::MessageBoxAnswerer answerer;
    Command(ID_DBEXPLORER_DELETE);
    Command(ID_DBEXPLORER_SHOW_DATA);
    const std::vector<test::MessageBoxInfo> seen = answerer.Seen();
    EXPECT_EQ(Texts(seen), (std::vector<std::wstring>{L"Nothing is selected", L"Nothing is selected"}));
    for (const auto& box : seen)
        EXPECT_EQ(box.title, L"");
}

TEST_P(DBExplorer, ListsEveryItemWithLocalTimesAndCountsInItemIdOrder)
{
    const DATE a0 = Date(2023, 3, 15, 10, 0, 0, 250);
    WriteRun(L"Tank.Level", {a0, a0 + kHour});
    WriteRun(L"Tank.Level", {a0 + 2 * kHour, a0 + 3 * kHour + 500 * kMs, a0 + 4 * kHour});
    WriteRun(L"Boiler.Temp", {a0 - kHour});
    Open();
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"Boiler.Temp", L"Tank.Level"}));
    EXPECT_EQ(CellText(List(), 1, 1), LocalText(a0));
    EXPECT_EQ(CellText(List(), 1, 2), LocalText(a0 + 4 * kHour));
    EXPECT_EQ(CellText(List(), 1, 3), L"5");
    EXPECT_EQ(CellText(List(), 0, 3), L"1");
    EXPECT_EQ(test::WindowText(m_explorer.Bars().StatusBar()), L"2 archived item(s)");
    EXPECT_NE(HeaderBitmap(List(), 0), nullptr);
    EXPECT_EQ(HeaderBitmap(List(), 1), nullptr);
}

TEST_P(DBExplorer, SameHeaderTwiceSortsAscendingThenDescendingAnotherHeaderAscending)
{
    WriteRun(L"b", {Date(2023, 1, 1, 0, 0, 0)});
    WriteRun(L"c", {Date(2023, 1, 1, 0, 0, 0), Date(2023, 1, 1, 0, 0, 1)});
    WriteRun(L"a", {Date(2023, 1, 1, 0, 0, 0), Date(2023, 1, 1, 0, 0, 1), Date(2023, 1, 1, 0, 0, 2)});
    Open();
    ClickHeader(List(), 3);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"b", L"c", L"a"}));
    const HBITMAP up = HeaderBitmap(List(), 3);
    EXPECT_NE(up, nullptr);
    ClickHeader(List(), 3);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a", L"c", L"b"}));
    EXPECT_NE(HeaderBitmap(List(), 3), up);
    ClickHeader(List(), 0);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a", L"b", L"c"}));
    EXPECT_EQ(HeaderBitmap(List(), 0), up);
    EXPECT_EQ(HeaderBitmap(List(), 3), nullptr);
}

TEST_P(DBExplorer, ValueCountSortsNumericallyNineBeforeTen)
{
    std::vector<DATE> ten;
    for (int i = 0; i < 10; ++i)
        ten.push_back(Date(2023, 1, 1, 0, 0, i));
    std::vector<CL::CHistoricValue> values;
    for (DATE t : ten)
        values.push_back({t, 192, CL::CVariant::I4(1)});
    WriteValues(L"ten", values);
    values.pop_back();
    WriteValues(L"nine", values);
    WriteValues(L"hundred", std::vector<CL::CHistoricValue>(100, {ten[0], 192, CL::CVariant::I4(1)}));
    Open();
    ClickHeader(List(), 3);
    EXPECT_EQ(Column(List(), 3), (std::vector<std::wstring>{L"9", L"10", L"100"}));
}

TEST_P(DBExplorer, ItemIdSortsByCodeUnitsUpperCaseFirst)
{
    const DATE t = Date(2023, 1, 1, 0, 0, 0);
    for (const wchar_t* id : {L"a", L"B", L"\u00C4", L"A", L"b"})
        WriteRun(id, {t});
    Open();
    ClickHeader(List(), 1);   // away from the item ID ...
    ClickHeader(List(), 0);   // ... and back: ascending by code unit
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"A", L"B", L"a", L"b", L"\u00C4"}));
}

TEST_P(DBExplorer, TimeColumnsSortByTheDateNotByTheText)
{
    // As text, "02:04:2023" would come before "15:03:2023".
    WriteRun(L"april", {Date(2023, 4, 2, 10, 0, 0)});
    WriteRun(L"march", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"may", {Date(2023, 5, 1, 0, 0, 0), Date(2023, 5, 1, 0, 0, 0, 1)});
    Open();
    ClickHeader(List(), 1);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"march", L"april", L"may"}));
    ClickHeader(List(), 2);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"march", L"april", L"may"}));
    ClickHeader(List(), 2);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"may", L"april", L"march"}));
}

TEST_P(DBExplorer, DeleteAllAnsweredYesClearsTheDatabase)
{
    WriteRun(L"a", {Date(2023, 1, 1, 0, 0, 0)});
    WriteRun(L"b", {Date(2023, 1, 1, 0, 0, 0)});
    Open();
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDYES; });
    Command(ID_DBEXPLORER_DELETE_ALL);
    const std::vector<test::MessageBoxInfo> seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].text, kClearQuestion);
    EXPECT_EQ(seen[0].title, L"");
    EXPECT_EQ(m_db.RowCount(), 0);
    EXPECT_EQ(RowCount(List()), 0);
}

TEST_P(DBExplorer, DeleteAllAnsweredNoDeletesNothingAndDoesNotRefresh)
{
    WriteRun(L"a", {Date(2023, 1, 1, 0, 0, 0)});
    Open();
    WriteRun(L"added.later", {Date(2023, 1, 1, 0, 0, 0)});
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDNO; });
    Command(ID_DBEXPLORER_DELETE_ALL);
    EXPECT_EQ(answerer.Seen().size(), 1u);
    EXPECT_EQ(m_db.RowCount(), 2);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a"}));
    EXPECT_TRUE(Statements(L"DELETE").empty());
}

TEST_P(DBExplorer, DeleteSelectedRemovesRunsWhollyInsideTheLocalPeriodConvertedToUtc)
{
    // Runs of "x": 10:00:00.250-11:00, 11:30-12:00:00.750 and one later.
    const DATE first = Date(2023, 3, 15, 10, 0, 0, 250);
    const DATE last = Date(2023, 3, 15, 12, 0, 0, 750);
    WriteRun(L"x", {first, Date(2023, 3, 15, 11, 0, 0)});
    WriteRun(L"x", {Date(2023, 3, 15, 11, 30, 0), last});
    WriteRun(L"y", {Date(2023, 3, 15, 11, 0, 0)});
    Open();
    SelectRows(List(), {0});
    PeriodSeen period;
    test::MessageBoxAnswerer answerer(DeleteAnswers(period, IDOK, IDYES));
    Command(ID_DBEXPLORER_DELETE);
    ASSERT_TRUE(period.shown);
    // Preset with the row's times (local), to the second.
    EXPECT_EQ(period.from, CL::DateToString(Date(2023, 3, 15, 10, 0, 0) + test::LocalOffsetDays()));
    EXPECT_EQ(period.to, CL::DateToString(Date(2023, 3, 15, 12, 0, 0) + test::LocalOffsetDays()));
    EXPECT_EQ(Texts(answerer.Seen()).back(), kDeleteQuestion);
    // From to the second and To plus one second, back in UTC.
    const std::vector<std::wstring> deletes = Statements(L"DELETE FROM HistoricData WHERE");
    ASSERT_EQ(deletes.size(), 1u);
    EXPECT_NE(deletes[0].find(CL::Format(L"%.14f", Date(2023, 3, 15, 10, 0, 0))), std::wstring::npos) << deletes[0];
    EXPECT_NE(deletes[0].find(CL::Format(L"%.14f", Date(2023, 3, 15, 12, 0, 1))), std::wstring::npos) << deletes[0];
    EXPECT_EQ(m_db.RowCount(L"x"), 0);
    EXPECT_EQ(m_db.RowCount(L"y"), 1);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"y"}));
}

TEST_P(DBExplorer, DeleteSelectedKeepsRunsThatStraddleABound)
{
    WriteRun(L"x", {Date(2023, 3, 15, 10, 0, 0), Date(2023, 3, 15, 11, 0, 0)});
    WriteRun(L"x", {Date(2023, 3, 15, 12, 0, 0), Date(2023, 3, 15, 13, 0, 0)});
    WriteRun(L"z", {Date(2023, 3, 15, 12, 0, 0)});
    Open();
    SelectRows(List(), {0});
    PeriodSeen period;
    // The From picker moved to 10:30 local: the first run straddles it.
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        if (box.title == kPeriodCaption) {
            period.shown = true;
            SetPicker(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_FROM),
                      Date(2023, 3, 15, 10, 30, 0) + test::LocalOffsetDays());
            return IDOK;
        }
        return IDYES;
    });
    Command(ID_DBEXPLORER_DELETE);
    ASSERT_TRUE(period.shown);
    EXPECT_EQ(m_db.RowCount(L"x"), 1);   // the straddling run stays whole
    EXPECT_EQ(m_db.RowCount(L"z"), 1);   // not selected
    EXPECT_EQ(Column(List(), 3), (std::vector<std::wstring>{L"2", L"1"}));
}

TEST_P(DBExplorer, DeleteSelectedWithFromSwitchedOffRemovesEverythingBeforeTo)
{
    WriteRun(L"x", {Date(2023, 3, 15, 10, 0, 0), Date(2023, 3, 15, 11, 0, 0)});
    WriteRun(L"x", {Date(2023, 3, 15, 12, 0, 0), Date(2023, 3, 15, 13, 0, 0)});
    WriteRun(L"x", {Date(2023, 3, 15, 8, 0, 0)});
    Open();
    SelectRows(List(), {0});
    PeriodSeen period;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        if (box.title == kPeriodCaption) {
            period.shown = true;
            ::SendMessageW(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_CHK_FROM), BM_CLICK, 0, 0);
            SetPicker(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_TO), Date(2023, 3, 15, 11, 59, 59) + test::LocalOffsetDays());
            return IDOK;
        }
        return IDYES;
    });
    Command(ID_DBEXPLORER_DELETE);
    ASSERT_TRUE(period.shown);
    const std::vector<std::wstring> deletes = Statements(L"DELETE FROM HistoricData WHERE");
    ASSERT_EQ(deletes.size(), 1u);
    EXPECT_EQ(deletes[0].find(L">="), std::wstring::npos) << deletes[0];   // no lower bound
    EXPECT_EQ(m_db.RowCount(L"x"), 1);
    EXPECT_EQ(CellText(List(), 0, 1), LocalText(Date(2023, 3, 15, 12, 0, 0)));
}

TEST_P(DBExplorer, DeleteSelectedCancelledInThePeriodDialogDeletesNothing)
{
    WriteRun(L"x", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    SelectRows(List(), {0});
    PeriodSeen period;
    test::MessageBoxAnswerer answerer(DeleteAnswers(period, IDCANCEL, IDYES));
    Command(ID_DBEXPLORER_DELETE);
    EXPECT_TRUE(period.shown);
    EXPECT_EQ(answerer.Seen().size(), 1u);   // no question after Cancel
    EXPECT_EQ(m_db.RowCount(), 1);
    EXPECT_TRUE(Statements(L"DELETE").empty());
}

TEST_P(DBExplorer, DeleteSelectedAnsweredNoDeletesNothingAndDoesNotRefresh)
{
    WriteRun(L"x", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    WriteRun(L"x", {Date(2023, 3, 15, 10, 0, 0)});
    SelectRows(List(), {0});
    PeriodSeen period;
    test::MessageBoxAnswerer answerer(DeleteAnswers(period, IDOK, IDNO));
    Command(ID_DBEXPLORER_DELETE);
    EXPECT_TRUE(period.shown);
    EXPECT_EQ(Texts(answerer.Seen()).back(), kDeleteQuestion);
    EXPECT_EQ(m_db.RowCount(), 2);
    EXPECT_TRUE(Statements(L"DELETE").empty());
    EXPECT_EQ(CellText(List(), 0, 3), L"1");   // not refreshed
}

TEST_P(DBExplorer, ShowDataOpensTheHistoryOfTheFirstSelectedItemWithItsSpan)
{
    const DATE first = Date(2023, 3, 15, 10, 0, 0, 250);
    const DATE last = Date(2023, 3, 15, 12, 0, 0, 750);
    WriteRun(L"a", {first, Date(2023, 3, 15, 11, 0, 0), last});
    WriteRun(L"b", {first});
    Open();
    SelectRows(List(), {1, 0});
    std::wstring item, from, to, status;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        if (box.title == L"Historical data") {
            item = test::DialogItemText(box.hwnd, IDC_HISTDATA_ITEM);
            from = PickerText(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_FROM));
            to = PickerText(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_TO));
            ::SendMessageW(::GetDlgItem(box.hwnd, IDC_HISTDATA_BTN_REFRESH), BM_CLICK, 0, 0);
            status = test::DialogItemText(box.hwnd, IDC_HISTDATA_STATUS);
            ::PostMessageW(box.hwnd, WM_COMMAND, IDCANCEL, 0);
        }
        return 0;
    });
    Command(ID_DBEXPLORER_SHOW_DATA);
    EXPECT_EQ(item, L"a");
    EXPECT_EQ(from, CL::DateToString(Date(2023, 3, 15, 10, 0, 0) + test::LocalOffsetDays()));
    EXPECT_EQ(to, CL::DateToString(Date(2023, 3, 15, 12, 0, 0) + test::LocalOffsetDays()));
    // The whole span, the last value's second included.
    EXPECT_EQ(status, L"3 value(s) retrieved for 'a'");
}

TEST_P(DBExplorer, RefreshShowsWhatWasArchivedMeanwhile)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    WriteRun(L"b", {Date(2023, 3, 15, 10, 0, 0)});
    ClickHeader(List(), 3);
    Command(ID_DBEXPLORER_REFRESH);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_NE(HeaderBitmap(List(), 0), nullptr);
    EXPECT_EQ(HeaderBitmap(List(), 3), nullptr);
}

TEST_P(DBExplorer, InfoTipNamesTheWholeItemId)
{
    const std::wstring id = std::wstring(240, L'x') + L".Level";   // the table holds 255 characters
    WriteRun(id, {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    EXPECT_TRUE(::SendMessageW(List(), LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0) & LVS_EX_INFOTIP);
    std::vector<wchar_t> text(1024, L'\0');
    NMLVGETINFOTIPW tip = {};
    tip.hdr.hwndFrom = List();
    tip.hdr.idFrom = IDC_DBEXPLORER_LIST;
    tip.hdr.code = LVN_GETINFOTIPW;
    tip.pszText = text.data();
    tip.cchTextMax = static_cast<int>(text.size());
    tip.iItem = 0;
    ::SendMessageW(m_explorer, WM_NOTIFY, IDC_DBEXPLORER_LIST, reinterpret_cast<LPARAM>(&tip));
    EXPECT_EQ(std::wstring(text.data()), id);
}

TEST_P(DBExplorer, TheListFollowsTheFrameWhenResized)
{
    Open();
    ::SetWindowPos(m_explorer, nullptr, 0, 0, 700, 500, SWP_NOMOVE | SWP_NOZORDER);
    RECT small;
    ::GetWindowRect(List(), &small);
    ::SetWindowPos(m_explorer, nullptr, 0, 0, 900, 650, SWP_NOMOVE | SWP_NOZORDER);
    RECT large;
    ::GetWindowRect(List(), &large);
    EXPECT_EQ(large.right - large.left, small.right - small.left + 200);
    EXPECT_EQ(large.bottom - large.top, small.bottom - small.top + 150);
}

TEST_P(DBExplorer, SystemColourChangeRebuildsTheArrowOfTheSortColumn)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    ClickHeader(List(), 2);
    const HBITMAP before = HeaderBitmap(List(), 2);
    ASSERT_NE(before, nullptr);
    test::LogCapture log(3);
    ::SendMessageW(m_explorer, WM_SYSCOLORCHANGE, 0, 0);
    EXPECT_NE(HeaderBitmap(List(), 2), nullptr);
    EXPECT_EQ(HeaderBitmap(List(), 2), m_explorer.List().SortUpBitmap());
    EXPECT_EQ(HeaderBitmap(List(), 0), nullptr);
    EXPECT_TRUE(log.ContainsLike(3, "CdlgDBExplorer::OnSysColorChange [dlgDBExplorer, ", "]"));
}

TEST_P(DBExplorer, KeysOfTheListRefreshAndDelete)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    WriteRun(L"b", {Date(2023, 3, 15, 10, 0, 0)});
    NMLVKEYDOWN key = {};
    key.hdr.hwndFrom = List();
    key.hdr.idFrom = IDC_DBEXPLORER_LIST;
    key.hdr.code = LVN_KEYDOWN;
    key.wVKey = VK_F5;
    ::SendMessageW(m_explorer, WM_NOTIFY, IDC_DBEXPLORER_LIST, reinterpret_cast<LPARAM>(&key));
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a", L"b"}));
    test::MessageBoxAnswerer answerer;
    key.wVKey = VK_DELETE;
    ::SendMessageW(m_explorer, WM_NOTIFY, IDC_DBEXPLORER_LIST, reinterpret_cast<LPARAM>(&key));
    EXPECT_EQ(Texts(answerer.Seen()), (std::vector<std::wstring>{L"Nothing is selected"}));
}

TEST_P(DBExplorer, WritesItsTraceLines)
{
    test::LogCapture log(3);
    Open();
    Command(ID_DBEXPLORER_REFRESH);
    ClickHeader(List(), 1);
    EXPECT_TRUE(log.ContainsLike(3, "CdlgDBExplorer::OnCreate [dlgDBExplorer, ", "]")) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CdlgDBExplorer::OnRefresh [dlgDBExplorer, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgDBExplorer::OnColumnClick [dlgDBExplorer, ", "]"));
}

INSTANTIATE_TEST_SUITE_P(Db, DBExplorer, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);

// --- the tray's entry ------------------------------------------------------

TEST(DBExplorerFromTray, OpensWhenTheDatabaseCanBeOpenedAndASecondCommandRaisesIt)
{
    const test::SettingsKeeper keepSettings;
    test::ComScope com;
    test::HistorianTestDb db(DbKind::Sqlite);
    CL::AppendHistoricRun(db.ConnectionString(), L"Tray.Item", {{Date(2023, 3, 15, 10, 0, 0), 192, CL::CVariant::I4(1)}});
    CL::CHistorian historian;
    historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
    g_Settings.Title = L"Varnel";
    CDummyWnd tray(CL::MenuFlags{});
    auto part = std::make_unique<CDatabaseExplorer>(historian);
    CDatabaseExplorer& explorer = *part;
    tray.SetDatabaseExplorer(std::move(part));
    ASSERT_TRUE(tray.CreateEx());
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    const HWND window = explorer.Window();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(::IsWindowVisible(window));
    EXPECT_EQ(test::WindowText(window), L"Varnel OPC HDA Database Explorer");
    EXPECT_EQ(Column(explorer.Explorer().List().Hwnd(), 0), (std::vector<std::wstring>{L"Tray.Item"}));
    ::ShowWindow(window, SW_MINIMIZE);
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    EXPECT_EQ(explorer.Window(), window);
    EXPECT_FALSE(::IsIconic(window));
}

TEST(DBExplorerFromTray, SaysTheDatabaseIsNotAccessibleWhenItCannotBeOpened)
{
    test::ComScope com;
    CL::CHistorian historian;
    historian.Configure(L"Driver={No Such Driver};Database=nowhere", CL::CHistorian::kNoLimit,
                        CL::CHistorian::kNoLimit, 50);
    CDummyWnd tray(CL::MenuFlags{});
    auto part = std::make_unique<CDatabaseExplorer>(historian);
    CDatabaseExplorer& explorer = *part;
    tray.SetDatabaseExplorer(std::move(part));
    ASSERT_TRUE(tray.CreateEx());
    test::MessageBoxAnswerer answerer;
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    const std::vector<test::MessageBoxInfo> seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"OPC HDA Database Explorer");
    EXPECT_EQ(seen[0].text, L"The HDA database is not accessible.");
    EXPECT_EQ(explorer.Window(), nullptr);
}
