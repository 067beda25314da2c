// The real MorvaneGui.exe, copied into an installation folder of its own and
// started under Wine.
#include <gtest/gtest.h>

#include <regex>

#include "SettingsFileXml.h"
#include "TestSupport.h"
#include "app/DummyWnd.h"
#include "common/Text.h"

using namespace std::chrono_literals;

namespace {

std::string SettingsXml(int traceLevel, const std::string& serviceName)
{
    return test::SettingsFileXml({{"ServiceName", serviceName}, {"TraceLevel", std::to_string(traceLevel)}});
}

// An installation folder holding a copy of the control panel and its settings.
class Installation {
public:
    explicit Installation(int traceLevel = 2)
    {
        test::CopyFileOrFail(test::ProgramFolder() + L"MorvaneGui.exe", Exe());
        WriteSettings(SettingsXml(traceLevel, "MorvaneE2E" + std::to_string(::GetCurrentProcessId())));
    }
    std::wstring Exe() const { return dir.File(L"MorvaneGui.exe"); }
    void WriteSettings(const std::string& xml) const { test::WriteFileBytes(dir.File(L"Morvane.ini.xml"), xml); }
    // The text of every log file of this installation, oldest first.
    std::string LogText() const
    {
        std::string text;
        WIN32_FIND_DATAW data;
        HANDLE find = ::FindFirstFileW(dir.File(L"MorvaneGui.*.log").c_str(), &data);
        if (find == INVALID_HANDLE_VALUE)
            return text;
        do
            text += test::ReadFileBytes(dir.File(data.cFileName));
        while (::FindNextFileW(find, &data));
        ::FindClose(find);
        return text;
    }
    test::TempDir dir;
};

HWND WaitForTrayWindow(const test::Process& p)
{
    return test::WaitForProcessWindow(p.Id(), CDummyWnd::kClassName, 20s);
}

// Starts the control panel, waits for its tray window and closes it through
// that window; a fatal failure when the window does not appear or the exit
// code is not 0.
void StartAndClose(const Installation& install)
{
    test::Process panel(install.Exe(), L"");
    const HWND tray = WaitForTrayWindow(panel);
    ASSERT_NE(tray, nullptr);
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    ASSERT_EQ(panel.Wait(20s), 0u);
}

} // namespace

TEST(Startup, SecondInstanceSaysAlreadyRunningAndExitsZeroWhileTheFirstKeepsRunning)
{
    Installation install;
    test::Process first(install.Exe(), L"");
    ASSERT_NE(WaitForTrayWindow(first), nullptr);

    test::Process second(install.Exe(), L"");
    const auto box = test::WaitForMessageBox(second.Id(), 20s);
    ASSERT_NE(box.hwnd, nullptr) << "the second instance shows no message";
    EXPECT_EQ(box.title, L"Start");
    EXPECT_EQ(box.text, L"The application is already running, see systray.");
    EXPECT_EQ(test::WaitForProcessWindow(second.Id(), CDummyWnd::kClassName, 0ms), nullptr)
        << "the second instance creates no tray window";
    test::ClickButton(box.hwnd, IDOK);
    EXPECT_EQ(second.Wait(20s), 0u);
    EXPECT_TRUE(first.Running());

    ::PostMessageW(WaitForTrayWindow(first), WM_CLOSE, 0, 0);
    EXPECT_EQ(first.Wait(20s), 0u);

    // Both logged their start; only the first one logged a stop.
    const std::string log = install.LogText();
    size_t starts = 0, at = 0;
    while ((at = log.find("Starting ....", at)) != std::string::npos) {
        ++starts;
        ++at;
    }
    EXPECT_EQ(starts, 2u) << log;
    EXPECT_EQ(log.find("Stopped"), log.rfind("Stopped")) << log;
}

TEST(Startup, InstanceMutexNamedAfterTheServiceExistsWhileTheProgramRuns)
{
    Installation install;
    const std::wstring name = L"MorvaneE2E" + std::to_wstring(::GetCurrentProcessId()) + L"Mutex";
    test::Process panel(install.Exe(), L"");
    HWND tray = WaitForTrayWindow(panel);
    ASSERT_NE(tray, nullptr);
    HANDLE mutex = ::OpenMutexW(SYNCHRONIZE, FALSE, name.c_str());
    EXPECT_NE(mutex, nullptr);
    if (mutex)
        ::CloseHandle(mutex);
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    ASSERT_EQ(panel.Wait(20s), 0u);
    EXPECT_EQ(::OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()), nullptr) << "closed when the program ends";
}

TEST(Startup, SameExecutableCopiedToAnotherFolderIsNotTheSameInstance)
{
    Installation one, two;
    test::Process first(one.Exe(), L"");
    ASSERT_NE(WaitForTrayWindow(first), nullptr);
    test::Process second(two.Exe(), L"");
    EXPECT_NE(WaitForTrayWindow(second), nullptr);
    EXPECT_EQ(test::WaitForMessageBox(second.Id(), 500ms).hwnd, nullptr);
    ::PostMessageW(WaitForTrayWindow(second), WM_CLOSE, 0, 0);
    ::PostMessageW(WaitForTrayWindow(first), WM_CLOSE, 0, 0);
    EXPECT_EQ(second.Wait(20s), 0u);
    EXPECT_EQ(first.Wait(20s), 0u);
}

TEST(Startup, StartAndStopAtTraceLevel2LogStartingAndStoppedInTheLineFormat)
{
    Installation install(2);
    ASSERT_NO_FATAL_FAILURE(StartAndClose(install));
    const std::string log = install.LogText();
    const std::regex expected(
        "\\d\\d:\\d\\d:\\d\\d:\\d{4} \\([0-9a-f]{8}\\) \\[2\\] Starting \\.{51} \\[MorvaneGui, 50\\]\r\n"
        "\\d\\d:\\d\\d:\\d\\d:\\d{4} \\([0-9a-f]{8}\\) \\[2\\] Stopped \\[MorvaneGui, 147\\]\r\n");
    EXPECT_TRUE(std::regex_match(log, expected)) << log;
}

TEST(Startup, LogFileIsNamedAfterTheExecutableAndTodaysDate)
{
    Installation install(2);
    test::Process panel(install.Exe(), L"");
    HWND tray = WaitForTrayWindow(panel);
    ASSERT_NE(tray, nullptr);
    SYSTEMTIME today;
    ::GetLocalTime(&today);
    const std::wstring name = CL::Format(L"MorvaneGui.%04d-%02d-%02d_000.log", today.wYear, today.wMonth, today.wDay);
    EXPECT_TRUE(test::FileExists(install.dir.File(name)));
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    EXPECT_EQ(panel.Wait(20s), 0u);
}

TEST(Startup, TraceLevel3AlsoLogsTheTrayWindowHandlers)
{
    Installation install(3);
    ASSERT_NO_FATAL_FAILURE(StartAndClose(install));
    const std::string log = install.LogText();
    EXPECT_NE(log.find("[3] CDummyWnd::OnCreate [DummyWnd, 143]\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("[3] CDummyWnd::OnDestroy [DummyWnd, 173]\r\n"), std::string::npos) << log;
    EXPECT_LT(log.find("CDummyWnd::OnDestroy"), log.find("Stopped [MorvaneGui, 147]"))
        << "the tray window is destroyed before the last line";
}

TEST(Startup, TraceLevel1WritesNoLogForAQuietRun)
{
    Installation install(1);
    ASSERT_NO_FATAL_FAILURE(StartAndClose(install));
    EXPECT_EQ(install.LogText(), "");
}

TEST(Startup, QuitMessagePostedToTheThreadEndsTheProgramCleanly)
{
    Installation install(2);
    test::Process panel(install.Exe(), L"");
    HWND tray = WaitForTrayWindow(panel);
    ASSERT_NE(tray, nullptr);
    const DWORD thread = ::GetWindowThreadProcessId(tray, nullptr);
    ASSERT_TRUE(::PostThreadMessageW(thread, WM_QUIT, 0, 0));
    EXPECT_EQ(panel.Wait(20s), 0u);
    EXPECT_NE(install.LogText().find("Stopped [MorvaneGui, 147]"), std::string::npos);
}

TEST(Startup, SettingsFileThatIsNotXmlStartsWithTheDefaults)
{
    Installation install;
    install.WriteSettings("<<< definitely not XML");
    test::Process panel(install.Exe(), L"");
    HWND tray = WaitForTrayWindow(panel);
    ASSERT_NE(tray, nullptr) << "the program runs on its defaults";
    EXPECT_EQ(test::WaitForMessageBox(panel.Id(), 300ms).hwnd, nullptr);
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    EXPECT_EQ(panel.Wait(20s), 0u);
}

TEST(Startup, EmptySettingsFileStartsWithTheDefaults)
{
    Installation install;
    install.WriteSettings("");
    StartAndClose(install);
}

TEST(Startup, SettingsWithAWrongTypeAreReportedAndTheProgramEndsWithoutCrashing)
{
    Installation install;
    std::string xml = SettingsXml(2, "MorvaneBadType");
    xml.replace(xml.find("XmlDaPort=\"8082\""), 16, "XmlDaPort=\"eighty\"");
    install.WriteSettings(xml);
    test::Process panel(install.Exe(), L"");
    const auto box = test::WaitForMessageBox(panel.Id(), 20s);
    ASSERT_NE(box.hwnd, nullptr);
    EXPECT_EQ(box.title, L"CException");
    EXPECT_NE(box.text.find(L"XmlDaPort"), std::wstring::npos) << CL::ToUtf8(box.text);
    test::ClickButton(box.hwnd, IDOK);
    EXPECT_EQ(panel.Wait(20s), 0u) << "the start-up failed, was reported, and the program ended normally";
}
