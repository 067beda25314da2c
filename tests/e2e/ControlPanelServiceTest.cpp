// The control panel (MorvaneGui.exe) in an installation folder beside the
// server simulator (Morvane.exe) and a settings file naming a unique
// service: its tray commands start and stop the real service, Exit ends it
// with exit code 0, and its About box shows the version the build put in
// the executable's resource.
#include <gtest/gtest.h>

#include "res/resource.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "version.h"

using namespace std::chrono_literals;

namespace {

// Rewrites the executable's resources without its version resource: every
// other resource is copied from the original into a fresh resource section.
bool RemoveVersionResource(const std::wstring& original, const std::wstring& exe)
{
    struct Resource {
        std::wstring type;
        std::wstring name;
        WORD language;
        std::string data;
    };
    struct Collector {
        HMODULE module;
        std::vector<Resource> resources;
        static std::wstring Id(LPCWSTR id)
        {
            return IS_INTRESOURCE(id) ? L"#" + std::to_wstring(reinterpret_cast<ULONG_PTR>(id)) : id;
        }
        static LPCWSTR Back(const std::wstring& id)
        {
            return id[0] == L'#' ? MAKEINTRESOURCEW(std::stoi(id.substr(1))) : id.c_str();
        }
    } collector{::LoadLibraryExW(original.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), {}};
    if (!collector.module)
        return false;
    ::EnumResourceTypesW(collector.module, [](HMODULE module, LPWSTR type, LONG_PTR param) -> BOOL {
        return ::EnumResourceNamesW(module, type, [](HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR param) -> BOOL {
            return ::EnumResourceLanguagesW(module, type, name,
                [](HMODULE module, LPCWSTR type, LPCWSTR name, WORD language, LONG_PTR param) -> BOOL {
                    auto* c = reinterpret_cast<Collector*>(param);
                    HRSRC found = ::FindResourceExW(module, type, name, language);
                    const char* bytes = static_cast<const char*>(::LockResource(::LoadResource(module, found)));
                    c->resources.push_back({Collector::Id(type), Collector::Id(name), language,
                                            std::string(bytes, ::SizeofResource(module, found))});
                    return TRUE;
                }, param);
        }, param);
    }, reinterpret_cast<LONG_PTR>(&collector));
    ::FreeLibrary(collector.module);

    HANDLE update = ::BeginUpdateResourceW(exe.c_str(), TRUE);
    if (!update)
        return false;
    for (Resource& r : collector.resources) {
        if (r.type == L"#16")   // RT_VERSION
            continue;
        if (!::UpdateResourceW(update, Collector::Back(r.type), Collector::Back(r.name), r.language, r.data.data(),
                               static_cast<DWORD>(r.data.size())))
            return false;
    }
    return ::EndUpdateResourceW(update, FALSE) != FALSE;
}

// The control panel running from the simulated server's folder.
class ControlPanel : public testing::Test {
protected:
    void Launch(const std::wstring& exe, const std::wstring& arguments = L"")
    {
        m_process = std::make_unique<test::Process>(exe, arguments, server.Folder());
        m_tray = test::WaitForProcessWindow(m_process->Id(), L"MorvaneGuiTrayWindow", 20s);
        ASSERT_NE(m_tray, nullptr) << "the tray window did not appear";
    }
    void Launch() { Launch(server.InstallControlPanel()); }

    void Command(WORD id) { ::PostMessageW(m_tray, WM_COMMAND, MAKEWPARAM(id, 0), 0); }

    test::MessageBoxInfo Box(const std::wstring& title, std::chrono::milliseconds timeout = 20s)
    {
        return test::WaitForMessageBox(m_process->Id(), timeout, title);
    }
    // Posts the command and waits for the message box it shows.
    test::MessageBoxInfo CommandBox(WORD id, const std::wstring& title)
    {
        Command(id);
        return Box(title);
    }

    // Exit answered Yes; the program's exit code.
    DWORD Exit()
    {
        const test::MessageBoxInfo box = CommandBox(ID_MN_SHUTDOWN, L"Exit");
        EXPECT_NE(box.hwnd, nullptr);
        test::ClickButton(box.hwnd, IDYES);
        return m_process->Wait(20s);
    }

    void TearDown() override
    {
        if (m_process && m_process->Running())
            Exit();
    }

    test::SimulatedServer server;
    std::unique_ptr<test::Process> m_process;
    HWND m_tray = nullptr;
};

} // namespace

TEST_F(ControlPanel, StartCommandStartsTheServerService)
{
    Launch();
    ASSERT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    Command(ID_MN_START_SERVER);
    EXPECT_TRUE(test::WaitForServiceState(server.ServiceName(), SERVICE_RUNNING, 20s));
    EXPECT_TRUE(server.WaitForEvent("started " + std::string(server.ServiceName().begin(), server.ServiceName().end())));
}

TEST_F(ControlPanel, StopCommandAnsweredYesStopsTheServerService)
{
    ASSERT_TRUE(server.Start());
    Launch();
    const test::MessageBoxInfo question = CommandBox(ID_MN_STOP_SERVER, L"Stop Varnel OPC Server");
    ASSERT_NE(question.hwnd, nullptr);
    EXPECT_EQ(question.text, L"Are you sure you want to stop the server (all OPC clients will be disconnected)?");
    test::ClickButton(question.hwnd, IDYES);
    EXPECT_TRUE(test::WaitForServiceState(server.ServiceName(), SERVICE_STOPPED, 20s));
    EXPECT_TRUE(server.WaitForEvent("stopped"));
}

TEST_F(ControlPanel, StopCommandAnsweredNoLeavesTheServerRunning)
{
    ASSERT_TRUE(server.Start());
    Launch();
    const test::MessageBoxInfo question = CommandBox(ID_MN_STOP_SERVER, L"Stop Varnel OPC Server");
    ASSERT_NE(question.hwnd, nullptr);
    test::ClickButton(question.hwnd, IDNO);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(question.hwnd); }, 10s));
    ::Sleep(300);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_FALSE(server.HasEvent("stop requested"));
}

TEST_F(ControlPanel, StartOnARunningServerShowsAlreadyRunning)
{
    ASSERT_TRUE(server.Start());
    Launch();
    const test::MessageBoxInfo box = CommandBox(ID_MN_START_SERVER, L"Start Varnel OPC Server");
    ASSERT_NE(box.hwnd, nullptr);
    EXPECT_EQ(box.text, L"The server is already running.");
    test::ClickButton(box.hwnd, IDOK);
}

TEST_F(ControlPanel, ExitAnsweredYesEndsTheProgramWithExitCodeZero)
{
    Launch();
    EXPECT_EQ(Exit(), 0u);
}

TEST_F(ControlPanel, ExitAnsweredNoKeepsTheProgramRunning)
{
    Launch();
    const test::MessageBoxInfo box = CommandBox(ID_MN_SHUTDOWN, L"Exit");
    ASSERT_NE(box.hwnd, nullptr);
    EXPECT_EQ(box.text, L"Have you closed all the windows of this application?");
    test::ClickButton(box.hwnd, IDNO);
    EXPECT_EQ(m_process->Wait(1s), static_cast<DWORD>(STILL_ACTIVE));
    EXPECT_TRUE(::IsWindow(m_tray));
}

TEST_F(ControlPanel, AboutShowsTheVersionTheBuildPutInTheResource)
{
    Launch();
    const test::MessageBoxInfo about = CommandBox(ID_MN_ABOUT, L"About");
    ASSERT_NE(about.hwnd, nullptr);
    EXPECT_EQ(test::DialogItemText(about.hwnd, IDC_ABOUT_VERSION), L"Version: " MORVANE_VERSION_WTEXT);
    EXPECT_EQ(test::DialogItemText(about.hwnd, IDC_ABOUT_TITLE), L"Varnel OPC Server Control Panel");
    test::ClickButton(about.hwnd, IDOK);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(about.hwnd); }, 10s));
}

TEST_F(ControlPanel, AboutHeadingFollowsTheTitleSetting)
{
    test::WriteSettingsFile(server.File(L"Morvane.ini.xml"), server.ServiceName(), L"Northfield");
    Launch();
    const test::MessageBoxInfo about = CommandBox(ID_MN_ABOUT, L"About");
    ASSERT_NE(about.hwnd, nullptr);
    EXPECT_EQ(test::DialogItemText(about.hwnd, IDC_ABOUT_TITLE), L"Northfield OPC Server Control Panel");
    test::ClickButton(about.hwnd, IDOK);
}

TEST_F(ControlPanel, AboutOfAnExecutableWithoutVersionResourceShowsVersionFollowedByNothing)
{
    const std::wstring exe = server.InstallControlPanel();
    ASSERT_TRUE(RemoveVersionResource(test::ControlPanelPath(), exe));
    DWORD handle = 0;
    ASSERT_EQ(::GetFileVersionInfoSizeW(exe.c_str(), &handle), 0u) << "the version resource is gone";

    Launch(exe);
    const test::MessageBoxInfo about = CommandBox(ID_MN_ABOUT, L"About");
    ASSERT_NE(about.hwnd, nullptr);
    EXPECT_EQ(test::DialogItemText(about.hwnd, IDC_ABOUT_VERSION), L"Version: ");
    test::ClickButton(about.hwnd, IDOK);
}
