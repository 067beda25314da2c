// The tray menu as a right-click on the tray icon shows it: read from the
// real popup while it is tracked, for every combination of the command-line
// switches and the presence of the server executable, and with the server
// running, stopped, or its state unreadable.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "app/DummyWnd.h"
#include "app/MenuFlags.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/FakeServiceManager.h"
#include "support/MenuCapture.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

using test::MenuEntry;

namespace {

// Right-clicks the tray icon and returns the menu that was shown.
std::vector<MenuEntry> RightClickMenu(CDummyWnd& window)
{
    test::TrackedMenuCapture capture;
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_RBUTTONDOWN);
    EXPECT_TRUE(capture.Captured()) << "no menu was shown";
    return capture.Entries();
}

const MenuEntry* FindEntry(const std::vector<MenuEntry>& entries, const std::wstring& prefix)
{
    for (const MenuEntry& entry : entries)
        if (entry.text.rfind(prefix, 0) == 0)
            return &entry;
    return nullptr;
}

// The expected menu, entry by entry, written out from the rules: the four
// command entries that are switched on, a separator, the server submenu and
// the separator before "Exit" when the server is there, then "Exit".
std::vector<MenuEntry> ExpectedMenu(bool as, bool hda, bool opt, bool about, bool server,
                                    const std::wstring& caption)
{
    std::vector<MenuEntry> menu;
    if (as)
        menu.push_back({L"OPC Address Space...", ID_MN_CONTROL, {}});
    if (hda)
        menu.push_back({L"OPC HDA Database Explorer...", ID_MN_DBEXPLORER, {}});
    if (opt)
        menu.push_back({L"Options...", ID_MN_OPTIONS, {}});
    if (about)
        menu.push_back({L"About...", ID_MN_ABOUT, {}});
    menu.push_back({L"-", 0, {}});
    if (server) {
        menu.push_back({caption, 0, {{L"Start", ID_MN_START_SERVER, {}}, {L"Stop", ID_MN_STOP_SERVER, {}}}});
        menu.push_back({L"-", 0, {}});
    }
    menu.push_back({L"Exit", ID_MN_SHUTDOWN, {}});
    return menu;
}

std::string Describe(const std::vector<MenuEntry>& entries)
{
    std::string text;
    for (const MenuEntry& entry : entries) {
        text += "[" + std::string(entry.text.begin(), entry.text.end()) + " " + std::to_string(entry.id);
        if (!entry.submenu.empty())
            text += " {" + Describe(entry.submenu) + "}";
        text += "] ";
    }
    return text;
}

// switches bit 0 noas, 1 nohda, 2 noopt, 3 noabout; then the server's presence.
class TrayMenuCombination : public testing::TestWithParam<std::tuple<int, bool>> {};

} // namespace

TEST_P(TrayMenuCombination, ShowsExactlyTheEntriesOfTheSwitchesAndServerPresence)
{
    const test::SettingsKeeper keepSettings;
    const int switches = std::get<0>(GetParam());
    const bool serverPresent = std::get<1>(GetParam());
    g_Settings.ServiceName = test::UniqueServiceName(L"MvMissing");

    // The flags as start-up decides them: from a command line and from the
    // server executable in an installation folder.
    std::wstring commandLine = L"\"C:\\Program Files\\Varnel\\MorvaneGui.exe\"";
    if (switches & 1) commandLine += L" noas";
    if (switches & 2) commandLine += L" NOHDA";
    if (switches & 4) commandLine += L" NoOpt";
    if (switches & 8) commandLine += L" noabout";
    test::TempDir folder;
    if (serverPresent)
        test::WriteFileBytes(folder.File(L"Morvane.exe"), "MZ");
    CL::MenuFlags flags;
    CL::ApplyCommandLineSwitches(commandLine.c_str(), flags);
    CL::ApplyServerPresence(CL::ServerExecutableExists(folder.File(CL::kServerExecutableName)), flags);

    CDummyWnd window(flags);
    ASSERT_TRUE(window.CreateEx());
    const std::vector<MenuEntry> shown = RightClickMenu(window);
    const std::vector<MenuEntry> expected =
        ExpectedMenu(!(switches & 1) && serverPresent, !(switches & 2), !(switches & 4) && serverPresent,
                     !(switches & 8) && serverPresent, serverPresent, L"OPC Server (Stopped)");
    EXPECT_EQ(shown, expected) << "shown:    " << Describe(shown) << "\nexpected: " << Describe(expected);
}

INSTANTIATE_TEST_SUITE_P(AllSwitchesAndServerPresence, TrayMenuCombination,
                         testing::Combine(testing::Range(0, 16), testing::Bool()));

TEST(TrayMenu, WithoutServerHoldsOnlyDatabaseExplorerSeparatorAndExit)
{
    CL::MenuFlags flags;
    CL::ApplyServerPresence(false, flags);
    CDummyWnd window(flags);
    ASSERT_TRUE(window.CreateEx());
    EXPECT_EQ(test::MenuTexts(RightClickMenu(window)),
              (std::vector<std::wstring>{L"OPC HDA Database Explorer...", L"-", L"Exit"}));
}

TEST(TrayMenu, NoOptHidesOnlyTheOptionsEntry)
{
    const test::SettingsKeeper keepSettings;
    CL::MenuFlags flags;
    CL::ApplyCommandLineSwitches(L"MorvaneGui.exe noopt", flags);
    g_Settings.ServiceName = test::UniqueServiceName(L"MvMissing");
    CDummyWnd window(flags);
    ASSERT_TRUE(window.CreateEx());
    EXPECT_EQ(test::MenuTexts(RightClickMenu(window)),
              (std::vector<std::wstring>{L"OPC Address Space...", L"OPC HDA Database Explorer...", L"About...",
                                         L"-", L"OPC Server (Stopped)", L"-", L"Exit"}));
}

TEST(TrayMenu, ServerCaptionShowsRunningForARunningService)
{
    const test::SettingsKeeper keepSettings;
    test::SimulatedServer server;
    ASSERT_TRUE(server.Start());
    g_Settings.ServiceName = server.ServiceName();
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    const std::vector<MenuEntry> shown = RightClickMenu(window);
    EXPECT_NE(FindEntry(shown, L"OPC Server (Running)"), nullptr) << Describe(shown);
}

TEST(TrayMenu, ServerCaptionShowsStoppedForAStoppedService)
{
    const test::SettingsKeeper keepSettings;
    test::SimulatedServer server;
    g_Settings.ServiceName = server.ServiceName();
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    const std::vector<MenuEntry> shown = RightClickMenu(window);
    EXPECT_NE(FindEntry(shown, L"OPC Server (Stopped)"), nullptr) << Describe(shown);
}

TEST(TrayMenu, ServerCaptionIsAskedAnewEveryTimeTheMenuOpens)
{
    const test::SettingsKeeper keepSettings;
    test::SimulatedServer server;
    g_Settings.ServiceName = server.ServiceName();
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    EXPECT_NE(FindEntry(RightClickMenu(window), L"OPC Server (Stopped)"), nullptr);
    ASSERT_TRUE(server.Start());
    EXPECT_NE(FindEntry(RightClickMenu(window), L"OPC Server (Running)"), nullptr);
}

TEST(TrayMenu, ServerCaptionIsPlainWhenTheStateCannotBeRead)
{
    test::FakeServiceManager scm;
    scm.managerOpenError = ERROR_ACCESS_DENIED;   // not elevated
    test::ScopedServiceManager scope(scm);
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    const std::vector<MenuEntry> shown = RightClickMenu(window);
    ASSERT_EQ(shown.size(), 8u) << Describe(shown);
    EXPECT_EQ(shown[5].text, L"OPC Server");
    EXPECT_EQ(shown[5].submenu.size(), 2u);
}

TEST(TrayMenu, BuildTrayMenuMatchesTheMenuShown)
{
    const test::SettingsKeeper keepSettings;
    g_Settings.ServiceName = test::UniqueServiceName(L"MvMissing");
    CL::MenuFlags flags;
    flags.ShowAbout = false;
    CDummyWnd window(flags);
    ASSERT_TRUE(window.CreateEx());
    const CL::UniqueMenu built = window.BuildTrayMenu();
    EXPECT_EQ(test::ReadMenu(::GetSubMenu(built.get(), 0)), RightClickMenu(window));
}

TEST(TrayMenu, OtherMouseMessagesShowNoMenu)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    test::TrackedMenuCapture capture(300);
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_LBUTTONDOWN);
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_RBUTTONUP);
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_MOUSEMOVE);
    EXPECT_FALSE(capture.Captured());
}
