// The tray window's failures reach the error report with the source text of
// the failed step. This test program carries no resources, so loading the
// tray icon and the tray menu fails here for real.
#include <gtest/gtest.h>

#include "app/DummyWnd.h"
#include "config/Settings.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

TEST(TrayWindowFailures, MissingTrayIconIsReportedWithItsSource)
{
    test::MessageBoxAnswerer answer;
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx()) << "the window is still created";
    const auto seen = answer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"CException");
    EXPECT_NE(seen[0].text.find(L"Source='nid.hIcon = ::LoadIconW(_AtlBaseModule.GetModuleInstance (), "
                                L"((LPWSTR)((ULONG_PTR)((WORD)(201)))))'"),
              std::wstring::npos)
        << std::string(seen[0].text.begin(), seen[0].text.end());
}

TEST(TrayWindowFailures, MissingTrayMenuIsReportedWithItsSourceAndTheTrayStaysUsable)
{
    const test::SettingsKeeper keepSettings;
    g_Settings.ServiceName = test::UniqueServiceName(L"MvMissing");
    test::MessageBoxAnswerer answer;
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_RBUTTONDOWN);
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_RBUTTONDOWN);
    const auto seen = answer.Seen();
    ASSERT_EQ(seen.size(), 3u) << "the icon at creation, then the menu twice";
    for (size_t i = 1; i < 3; ++i) {
        EXPECT_EQ(seen[i].title, L"CException");
        EXPECT_NE(seen[i].text.find(L"Source='hMenu = ::LoadMenuW (_AtlBaseModule.GetModuleInstance (), "
                                    L"((LPWSTR)((ULONG_PTR)((WORD)(203)))))'"),
                  std::wstring::npos);
    }
}
