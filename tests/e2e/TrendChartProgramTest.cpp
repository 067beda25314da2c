// The trend chart in the real MorvaneGui.exe: the explorer's "Show selected
// item values..." opens the historical data window, whose "Show data" draws
// the item's values in the chart below the list.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include "SettingsFileXml.h"
#include "HistorianTestDb.h"
#include "TestSupport.h"
#include "app/DummyWnd.h"
#include "common/historian/HistoricDataWriter.h"
#include "res/resource.h"

using namespace std::chrono_literals;

namespace {

class Installation {
public:
    explicit Installation(const std::wstring& connection)
    {
        test::CopyFileOrFail(test::ProgramFolder() + L"MorvaneGui.exe", Exe());
        const std::string narrow(connection.begin(), connection.end());
        test::WriteFileBytes(dir.File(L"Morvane.ini.xml"),
                             test::SettingsFileXml({{"ServiceName", "MorvaneChart" + std::to_string(::GetCurrentProcessId())},
                                                    {"CustomADOConnection", "-1"},
                                                    {"ADOConnection", narrow}}));
    }
    std::wstring Exe() const { return dir.File(L"MorvaneGui.exe"); }
    test::TempDir dir;
};

// A visible top-level window of the process with the given title.
HWND FindProcessWindow(DWORD processId, const std::wstring& title)
{
    struct Search {
        DWORD processId;
        const std::wstring* title;
        HWND found;
    } search{processId, &title, nullptr};
    ::EnumWindows(
        [](HWND hwnd, LPARAM lParam) -> BOOL {
            auto* s = reinterpret_cast<Search*>(lParam);
            DWORD pid = 0;
            ::GetWindowThreadProcessId(hwnd, &pid);
            if (pid == s->processId && ::IsWindowVisible(hwnd) && test::WindowText(hwnd) == *s->title) {
                s->found = hwnd;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace

TEST(TrendChartProgram, ShowDataDrawsTheItemsValuesInTheChartBelowTheList)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    std::vector<CL::CHistoricValue> values;
    for (int i = 0; i < 50; ++i)
        values.push_back({45000.5 + i / 86400.0, static_cast<WORD>(i == 20 ? 0x40 : 0xC0), CL::CVariant::R8(i * 0.5)});
    CL::AppendHistoricRun(db.ConnectionString(), L"Plant.Tank1.Level", values);
    Installation install(db.ConnectionString());
    test::Process panel(install.Exe(), L"");
    const HWND tray = test::WaitForProcessWindow(panel.Id(), CDummyWnd::kClassName, 20s);
    ASSERT_NE(tray, nullptr);

    ::PostMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    const HWND explorer = test::WaitForProcessWindow(panel.Id(), L"MorvaneDBExplorer", 20s);
    ASSERT_NE(explorer, nullptr);
    HWND list = nullptr;
    ASSERT_TRUE(test::WaitUntil(
        [&] {
            list = ::FindWindowExW(explorer, nullptr, WC_LISTVIEWW, nullptr);
            return list && ::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 1;
        },
        10s));
    // The first row selected as a user's Home key does.
    ::SendMessageW(list, WM_KEYDOWN, VK_HOME, 0);
    ASSERT_TRUE(test::WaitUntil([&] { return ::SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0) == 1; }, 10s));

    ::PostMessageW(explorer, WM_COMMAND, MAKEWPARAM(ID_DBEXPLORER_SHOW_DATA, 0), 0);
    HWND dialog = nullptr;
    ASSERT_TRUE(test::WaitUntil([&] { return (dialog = FindProcessWindow(panel.Id(), L"Historical data")) != nullptr; },
                                20s));
    const HWND chart = ::GetDlgItem(dialog, IDC_HISTDATA_CHART);
    ASSERT_NE(chart, nullptr);
    wchar_t cls[64] = {};
    ::GetClassNameW(chart, cls, 64);
    EXPECT_STREQ(cls, L"MorvaneTrendChart");
    EXPECT_TRUE(::IsWindowVisible(chart));
    RECT listRect, chartRect;
    ::GetWindowRect(::GetDlgItem(dialog, IDC_HISTDATA_LIST), &listRect);
    ::GetWindowRect(chart, &chartRect);
    EXPECT_GT(chartRect.top, listRect.bottom);
    EXPECT_GT(chartRect.bottom - chartRect.top, 100);

    ::PostMessageW(::GetDlgItem(dialog, IDC_HISTDATA_BTN_REFRESH), BM_CLICK, 0, 0);
    EXPECT_TRUE(test::WaitUntil(
        [&] { return test::WindowText(chart) == L"Chart of 'Plant.Tank1.Level': 50 value(s) drawn, 1 NOT GOOD"; }, 20s))
        << testing::PrintToString(test::WindowText(chart));
    EXPECT_EQ(test::DialogItemText(dialog, IDC_HISTDATA_STATUS), L"50 value(s) retrieved for 'Plant.Tank1.Level'");

    ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, 0), 0);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(dialog); }, 10s));
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    EXPECT_EQ(panel.Wait(20s), 0u);
}
