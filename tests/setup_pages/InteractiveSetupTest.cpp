// The 64-bit setup run with its pages, driven through its windows: the folder
// it proposes and what it says about it, and the question before it closes a
// running control panel.
#include <gtest/gtest.h>

#include <memory>

#include "SetupFixture.h"
#include "SetupRun.h"
#include "TestSupport.h"
#include "common/Text.h"

using namespace std::chrono_literals;
using namespace setup_test;

namespace {

// A setup started with its pages for the given service. The destructor ends
// it if a test leaves it open.
class InteractiveSetupTest : public SetupFixture {
protected:
    void Start(const std::wstring& serviceName, const std::wstring& setup = CurrentSetupPath())
    {
        m_setup = std::make_unique<test::Process>(setup, L"/SERVICE=" + serviceName);
        m_window = WaitForSetupWindow(m_setup->Id(), 20s);
        ASSERT_NE(m_window, nullptr) << "the setup shows no first page";
    }
    // Next (or Install) on the current page; the control `id` of the next page
    // once it shows.
    HWND Next(int id)
    {
        test::ClickButton(m_window, IDOK);
        return WaitForPageControl(m_window, id, 20s);
    }
    HWND DirectoryPage() { return Next(kDirectoryEditId); }
    std::wstring PageText(int id)
    {
        const HWND control = WaitForPageControl(m_window, id, 0ms);
        return control ? ControlText(control) : L"(no such control)";
    }
    // Cancel, confirmed; the setup ends.
    void CancelSetup()
    {
        test::ClickButton(m_window, IDCANCEL);
        const HWND box = WaitForSetupMessageBox(m_window, 20s);
        ASSERT_NE(box, nullptr) << "no question before cancelling";
        test::ClickButton(box, IDYES);
        EXPECT_NE(m_setup->Wait(20s), static_cast<DWORD>(STILL_ACTIVE));
    }

    std::unique_ptr<test::Process> m_setup;
    HWND m_window = nullptr;
};

} // namespace

TEST_F(InteractiveSetupTest, ProposesTheFolderOfTheServiceAndSaysWhereItCameFrom)
{
    ASSERT_NO_FATAL_FAILURE(Start(server.ServiceName()));
    const HWND folder = DirectoryPage();
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(ControlText(folder), InstallLocation());
    const std::wstring text = PageText(kDirectoryTextId);
    EXPECT_NE(text.find(L"Setup found the server of the service \"" + server.ServiceName() + L"\""),
              std::wstring::npos)
        << CL::Narrow(text);
    EXPECT_TRUE(::IsWindowEnabled(::GetDlgItem(m_window, IDOK)));
    CancelSetup();
    EXPECT_FALSE(test::FileExists(InstalledPanel()));
}

TEST_F(InteractiveSetupTest, WithoutTheServiceSaysWhyAndWaitsForTheFolder)
{
    ASSERT_NO_FATAL_FAILURE(Start(test::UniqueServiceName(L"MvSetupMissing")));
    const HWND folder = DirectoryPage();
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(ControlText(folder), L"");
    const std::wstring text = PageText(kDirectoryTextId);
    EXPECT_NE(text.find(L"is not installed on this computer, so Setup cannot find the server's installation folder"),
              std::wstring::npos)
        << CL::Narrow(text);
    EXPECT_FALSE(::IsWindowEnabled(::GetDlgItem(m_window, IDOK))) << "Next waits for a folder";

    ::SendMessageW(folder, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(InstallLocation().c_str()));
    EXPECT_TRUE(test::WaitUntil([&] { return ::IsWindowEnabled(::GetDlgItem(m_window, IDOK)) != FALSE; }, 5s));
    EXPECT_NE(Next(kComponentsTreeId), nullptr) << "the folder of Morvane.exe is taken without a question";
    CancelSetup();
}

TEST_F(InteractiveSetupTest, FolderWithoutTheServerIsTakenOnlyAfterAWarning)
{
    test::TempDir empty;
    ASSERT_NO_FATAL_FAILURE(Start(test::UniqueServiceName(L"MvSetupMissing")));
    const HWND folder = DirectoryPage();
    ASSERT_NE(folder, nullptr);
    const std::wstring emptyFolder = WithoutTrailingBackslash(empty.Path());
    ::SendMessageW(folder, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(emptyFolder.c_str()));
    ASSERT_TRUE(test::WaitUntil([&] { return ::IsWindowEnabled(::GetDlgItem(m_window, IDOK)) != FALSE; }, 5s));

    test::ClickButton(m_window, IDOK);
    HWND box = WaitForSetupMessageBox(m_window, 20s);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(test::DialogItemText(box, 0xFFFF).rfind(L"There is no Morvane.exe in " + emptyFolder, 0), 0u)
        << CL::Narrow(test::DialogItemText(box, 0xFFFF));
    test::ClickButton(box, IDNO);
    ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(box); }, 5s));
    EXPECT_NE(WaitForPageControl(m_window, kDirectoryEditId, 0ms), nullptr) << "No stays on the folder page";

    test::ClickButton(m_window, IDOK);
    box = WaitForSetupMessageBox(m_window, 20s);
    ASSERT_NE(box, nullptr);
    test::ClickButton(box, IDYES);
    EXPECT_NE(WaitForPageControl(m_window, kComponentsTreeId, 20s), nullptr) << "Yes takes the folder";
    CancelSetup();
}

TEST_F(InteractiveSetupTest, CancellingTheCloseQuestionLeavesTheRunningControlPanelAndItsProgram)
{
    ASSERT_EQ(Install(OlderSetupPath()), 0u);
    test::Process older(InstalledPanel(), L"", server.Folder());
    ASSERT_NE(WaitForRunningPanel(InstalledPanel(), 20s).tray, nullptr);

    ASSERT_NO_FATAL_FAILURE(Start(server.ServiceName()));
    ASSERT_NE(DirectoryPage(), nullptr);
    ASSERT_NE(Next(kComponentsTreeId), nullptr);
    test::ClickButton(m_window, IDOK); // Install
    const HWND box = WaitForSetupMessageBox(m_window, 20s);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(test::DialogItemText(box, 0xFFFF).rfind(L"The control panel is running. Setup closes it now", 0), 0u)
        << CL::Narrow(test::DialogItemText(box, 0xFFFF));
    test::ClickButton(box, IDCANCEL);

    const HWND title = ::GetDlgItem(m_window, kHeaderTitleId);
    EXPECT_TRUE(test::WaitUntil([&] { return ControlText(title) == L"Installation Aborted"; }, 20s))
        << CL::Narrow(ControlText(title));
    EXPECT_TRUE(older.Running());
    EXPECT_EQ(test::ReadFileBytes(InstalledPanel()), test::ReadFileBytes(OlderPanelPath()));
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayVersion"), kOlderVersion);
}
