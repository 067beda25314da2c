// The About box: dialog 210 with the Title-based heading and the version of
// the running executable's version resource (the test program carries the
// control panel's resources, built from the project version).
#include <gtest/gtest.h>

#include <thread>

#include "app/AboutDlg.h"
#include "app/DummyWnd.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/LogCapture.h"
#include "support/ProcessState.h"
#include "support/TestSupport.h"
#include "version.h"

using namespace std::chrono_literals;

namespace {

// What a look at the open About box found.
struct AboutSeen {
    bool shown = false;
    std::wstring heading;
    std::wstring version;
    std::wstring closeButton;
    bool bigIcon = false;
};

// Waits for the About box on another thread, reads it, then closes it with
// the given action (a click on Close, or the window's close command).
class AboutWatcher {
public:
    explicit AboutWatcher(bool clickClose = true)
        : m_thread([this, clickClose] {
              const test::MessageBoxInfo box = test::WaitForMessageBox(0, 10s, L"About");
              if (!box.hwnd)
                  return;
              m_seen.shown = true;
              m_seen.heading = test::DialogItemText(box.hwnd, IDC_ABOUT_TITLE);
              m_seen.version = test::DialogItemText(box.hwnd, IDC_ABOUT_VERSION);
              m_seen.closeButton = test::WindowText(::GetDlgItem(box.hwnd, IDOK));
              m_seen.bigIcon = ::SendMessageW(box.hwnd, WM_GETICON, ICON_BIG, 0) != 0;
              if (clickClose)
                  test::ClickButton(box.hwnd, IDOK);
              else
                  ::PostMessageW(box.hwnd, WM_SYSCOMMAND, SC_CLOSE, 0);
          })
    {
    }
    ~AboutWatcher()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    const AboutSeen& Seen()
    {
        m_thread.join();
        return m_seen;
    }

private:
    AboutSeen m_seen;
    std::thread m_thread;
};

} // namespace

TEST(AboutDialog, ShowsTitleHeadingAndProductVersion)
{
    test::SettingsKeeper settings;
    g_Settings.Title = L"Northfield";
    AboutWatcher watcher;
    CAboutDlg dialog;
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    const AboutSeen& seen = watcher.Seen();
    ASSERT_TRUE(seen.shown);
    EXPECT_EQ(seen.heading, L"Northfield OPC Server Control Panel");
    EXPECT_EQ(seen.version, L"Version: " MORVANE_VERSION_WTEXT);
    EXPECT_EQ(seen.closeButton, L"Close");
    EXPECT_TRUE(seen.bigIcon);
}

TEST(AboutDialog, OpensFromTheTrayMenuEntry)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    AboutWatcher watcher;
    ::SendMessageW(window, WM_COMMAND, MAKEWPARAM(ID_MN_ABOUT, 0), 0);
    const AboutSeen& seen = watcher.Seen();
    ASSERT_TRUE(seen.shown);
    EXPECT_EQ(seen.heading, L"Varnel OPC Server Control Panel");
    EXPECT_EQ(seen.version, L"Version: " MORVANE_VERSION_WTEXT);
}

TEST(AboutDialog, CloseCommandOfTheWindowEndsItWithItsId)
{
    AboutWatcher watcher(false);
    CAboutDlg dialog;
    EXPECT_EQ(dialog.DoModal(nullptr), IDCANCEL);
    EXPECT_TRUE(watcher.Seen().shown);
}

TEST(AboutDialog, WritesItsTraceLines)
{
    test::LogCapture log(3);
    AboutWatcher watcher;
    CAboutDlg dialog;
    dialog.DoModal(nullptr);
    watcher.Seen();
    EXPECT_TRUE(log.Contains("[3] CAboutDlg::OnInitDialog [AboutDlg, 29]"));
    EXPECT_TRUE(log.Contains("[3] CAboutDlg::OnCloseCmd [AboutDlg, 59]"));
}

TEST(AboutDialog, ResourceHoldsCaptionAndInitialTexts)
{
    const HWND dialog = ::CreateDialogParamW(
        ::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_ABOUTBOX), nullptr,
        [](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR { return message == WM_INITDIALOG; }, 0);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(test::WindowText(dialog), L"About");
    EXPECT_EQ(test::DialogItemText(dialog, IDC_ABOUT_TITLE), L"\"Varnel OPC Server Engine\"");
    EXPECT_EQ(test::DialogItemText(dialog, IDC_ABOUT_VERSION), L"version: 8.6.0.978");
    EXPECT_EQ(test::WindowText(::GetDlgItem(dialog, IDOK)), L"Close");
    ::DestroyWindow(dialog);
}

TEST(AboutDialog, ProductInfoOfTheRunningExecutableIsTheBuildsVersion)
{
    std::wstring name;
    std::wstring version;
    EXPECT_TRUE(CAboutDlg::GetProductInfo(name, version));
    EXPECT_EQ(name, L"Varnel OPC Server Engine");
    EXPECT_EQ(version, MORVANE_VERSION_WTEXT);
}
