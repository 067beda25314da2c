// The database explorer in the real MorvaneGui.exe: the tray command opens it
// over the database the settings name (a second command raises the same
// window), or says that the database is not accessible.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include "HistorianTestDb.h"
#include "SettingsFileXml.h"
#include "TestSupport.h"
#include "app/DummyWnd.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/Text.h"
#include "res/resource.h"

using namespace std::chrono_literals;

namespace {

class Installation {
public:
    explicit Installation(const std::wstring& connection)
    {
        test::CopyFileOrFail(test::ProgramFolder() + L"MorvaneGui.exe", Exe());
        std::string narrow(connection.begin(), connection.end());
        test::WriteFileBytes(dir.File(L"Morvane.ini.xml"),
                             test::SettingsFileXml({{"ServiceName", "MorvaneHda" + std::to_string(::GetCurrentProcessId())},
                                                    {"CustomADOConnection", "-1"},
                                                    {"ADOConnection", narrow}}));
    }
    std::wstring Exe() const { return dir.File(L"MorvaneGui.exe"); }
    test::TempDir dir;
};

struct WindowCount {
    DWORD processId;
    int count;
};

int ExplorerWindows(DWORD processId)
{
    WindowCount search{processId, 0};
    ::EnumWindows(
        [](HWND hwnd, LPARAM lParam) -> BOOL {
            auto* s = reinterpret_cast<WindowCount*>(lParam);
            DWORD pid = 0;
            ::GetWindowThreadProcessId(hwnd, &pid);
            wchar_t cls[64] = {};
            ::GetClassNameW(hwnd, cls, 64);
            if (pid == s->processId && std::wstring(cls) == L"MorvaneDBExplorer")
                ++s->count;
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.count;
}

} // namespace

TEST(DatabaseExplorerProgram, TrayCommandOpensTheExplorerOverTheConfiguredDatabaseAndRaisesItAgain)
{
    test::ComScope com;
    test::HistorianTestDb db(test::DbKind::Sqlite);
    CL::AppendHistoricRun(db.ConnectionString(), L"Plant.Tank1.Level", {{45000.5, 192, CL::CVariant::R8(1.5)}});
    CL::AppendHistoricRun(db.ConnectionString(), L"Plant.Tank2.Level", {{45000.5, 192, CL::CVariant::R8(2.5)}});
    Installation install(db.ConnectionString());
    test::Process panel(install.Exe(), L"");
    const HWND tray = test::WaitForProcessWindow(panel.Id(), CDummyWnd::kClassName, 20s);
    ASSERT_NE(tray, nullptr);

    ::PostMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    const HWND explorer = test::WaitForProcessWindow(panel.Id(), L"MorvaneDBExplorer", 20s);
    ASSERT_NE(explorer, nullptr);
    EXPECT_EQ(test::WindowText(explorer), L"Varnel OPC HDA Database Explorer");
    // The window may be found while it is still being created.
    HWND list = nullptr;
    ASSERT_TRUE(test::WaitUntil([&] { return (list = ::FindWindowExW(explorer, nullptr, WC_LISTVIEWW, nullptr)) != nullptr; }, 10s));
    EXPECT_TRUE(test::WaitUntil([&] { return ::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 2; }, 10s));
    EXPECT_TRUE(test::WaitUntil([&] { return ::IsWindowVisible(explorer) != FALSE; }, 10s));

    ::ShowWindow(explorer, SW_MINIMIZE);
    ::PostMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsIconic(explorer); }, 10s));
    EXPECT_EQ(ExplorerWindows(panel.Id()), 1);

    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    EXPECT_EQ(panel.Wait(20s), 0u);
}

TEST(DatabaseExplorerProgram, TrayCommandSaysTheDatabaseIsNotAccessible)
{
    Installation install(L"Driver={No Such Driver};Database=nowhere");
    test::Process panel(install.Exe(), L"");
    const HWND tray = test::WaitForProcessWindow(panel.Id(), CDummyWnd::kClassName, 20s);
    ASSERT_NE(tray, nullptr);
    ::PostMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_DBEXPLORER, 0), 0);
    const test::MessageBoxInfo box = test::WaitForMessageBox(panel.Id(), 20s);
    ASSERT_NE(box.hwnd, nullptr);
    EXPECT_EQ(box.title, L"OPC HDA Database Explorer");
    EXPECT_EQ(box.text, L"The HDA database is not accessible.");
    EXPECT_EQ(ExplorerWindows(panel.Id()), 0);
    test::ClickButton(box.hwnd, IDOK);
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    EXPECT_EQ(panel.Wait(20s), 0u);
}
