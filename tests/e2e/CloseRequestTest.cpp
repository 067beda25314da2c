// Other programs (the setup, before it replaces or removes the program) end a
// running control panel by sending WM_CLOSE to its tray window, the window of
// class "MorvaneGuiTrayWindow". The program then ends as after "Exit", but
// without the Exit question.
#include <gtest/gtest.h>

#include "SettingsFileXml.h"
#include "TestSupport.h"
#include "app/DummyWnd.h"
#include "common/Text.h"
#include "res/resource.h"

using namespace std::chrono_literals;

namespace {

// A copy of the control panel in a folder of its own, logging at level 3.
class CloseRequestTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::CopyFileOrFail(test::ProgramFolder() + L"MorvaneGui.exe", Exe());
        const std::string service = "MorvaneClose" + std::to_string(::GetCurrentProcessId());
        test::WriteFileBytes(dir.File(L"Morvane.ini.xml"),
                             test::SettingsFileXml({{"ServiceName", service}, {"TraceLevel", "3"}}));
    }
    std::wstring Exe() const { return dir.File(L"MorvaneGui.exe"); }
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

} // namespace

TEST_F(CloseRequestTest, CloseRequestToTheTrayWindowEndsTheProgramWithoutTheExitQuestion)
{
    test::Process panel(Exe(), L"");
    const HWND tray = test::WaitForProcessWindow(panel.Id(), CDummyWnd::kClassName, 20s);
    ASSERT_NE(tray, nullptr);
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    const DWORD code = panel.Wait(20s);
    if (code == STILL_ACTIVE) {
        const test::MessageBoxInfo box = test::WaitForMessageBox(panel.Id(), 0ms);
        FAIL() << "the program still runs; message box: " << (box.hwnd ? "\"" + CL::Narrow(box.text) + "\"" : "none");
    }
    EXPECT_EQ(code, 0u);
    const std::string log = LogText();
    EXPECT_NE(log.find("[3] CDummyWnd::OnClose"), std::string::npos) << log;
    EXPECT_EQ(log.find("CDummyWnd::OnShutdown"), std::string::npos) << "the Exit command did not run";
    EXPECT_LT(log.find("CDummyWnd::OnDestroy [DummyWnd, 173]"), log.find("Stopped [MorvaneGui, 147]"))
        << "the tray window went before the last line\n" << log;
}

TEST_F(CloseRequestTest, CloseRequestWhileTheExitQuestionIsOpenEndsTheProgram)
{
    test::Process panel(Exe(), L"");
    const HWND tray = test::WaitForProcessWindow(panel.Id(), CDummyWnd::kClassName, 20s);
    ASSERT_NE(tray, nullptr);
    ::PostMessageW(tray, WM_COMMAND, ID_MN_SHUTDOWN, 0);
    ASSERT_NE(test::WaitForMessageBox(panel.Id(), 20s, L"Exit").hwnd, nullptr);
    ::PostMessageW(tray, WM_CLOSE, 0, 0);
    EXPECT_EQ(panel.Wait(20s), 0u);
    EXPECT_NE(LogText().find("Stopped [MorvaneGui, 147]"), std::string::npos) << LogText();
}
