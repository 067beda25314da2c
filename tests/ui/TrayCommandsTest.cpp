// The tray window's commands: starting and stopping the server with their
// messages and question, Exit with its question, the address space editor,
// the database explorer and the options entries, the tray icon, and the
// trace line of every handler.
#include <gtest/gtest.h>
#include <windows.h>
#include <shellapi.h>

#include <memory>

#include "FakeTrayParts.h"
#include "app/DummyWnd.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/FakeServiceManager.h"
#include "support/LogCapture.h"
#include "support/MenuCapture.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

using namespace std::chrono_literals;

namespace {

constexpr wchar_t kStopQuestion[] =
    L"Are you sure you want to stop the server (all OPC clients will be disconnected)?";

void Command(CDummyWnd& window, WORD id)
{
    ::SendMessageW(window, WM_COMMAND, MAKEWPARAM(id, 0), 0);
}

void ShellNote(CDummyWnd& window, UINT mouseMessage)
{
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, mouseMessage);
}

// Whether a WM_QUIT is waiting, and its exit code.
bool QuitPosted(WPARAM* exitCode = nullptr)
{
    MSG msg;
    if (!::PeekMessageW(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE))
        return false;
    if (exitCode)
        *exitCode = msg.wParam;
    return true;
}

bool TrayIconExists(HWND owner)
{
    NOTIFYICONDATAW nid = {};
    nid.cbSize = sizeof nid;
    nid.hWnd = owner;
    nid.uID = CDummyWnd::kTrayIconId;
    nid.uFlags = NIF_TIP;
    wcscpy(nid.szTip, L"probe");
    return ::Shell_NotifyIconW(NIM_MODIFY, &nid) != FALSE;
}

// Answers message boxes with a fixed button (OK where the box has no such
// button) and records them.
struct Answering {
    explicit Answering(int button)
        : answerer([button](const test::MessageBoxInfo& box) {
              return ::GetDlgItem(box.hwnd, button) ? button : IDOK;
          })
    {
    }
    test::MessageBoxAnswerer answerer;
};

bool HasButtons(HWND box, std::initializer_list<int> ids)
{
    for (int id : ids)
        if (!::GetDlgItem(box, id))
            return false;
    return true;
}

// Whether exactly one message box was shown, with this title and text.
testing::AssertionResult ShownOneBox(const std::vector<test::MessageBoxInfo>& seen, const std::wstring& title,
                                     const std::wstring& text)
{
    if (seen.size() != 1)
        return testing::AssertionFailure() << seen.size() << " message boxes shown";
    if (seen[0].title != title || seen[0].text != text)
        return testing::AssertionFailure() << "shown: " << CL::Narrow(seen[0].title) << " / "
                                           << CL::Narrow(seen[0].text);
    return testing::AssertionSuccess();
}

// A tray window (not yet created) and the stand-ins a test may give it; the
// counters outlive the window, which owns the stand-ins.
class TrayFixture : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void AddEditor(bool acceptOpen = true, bool createFails = false)
    {
        window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor, acceptOpen, createFails));
    }
    void AddExplorer(bool accessible)
    {
        window.SetDatabaseExplorer(std::make_unique<test::FakeExplorer>(explorer, accessible));
    }
    void AddOptions(bool accepted) { window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, accepted)); }

    test::EditorCounters editor;
    test::ExplorerCounters explorer;
    test::OptionsCounters options;
    CDummyWnd window{CL::MenuFlags{}};
};

using TrayWindow = TrayFixture;
using Exit = TrayFixture;
using AddressSpaceEntry = TrayFixture;
using OptionsEntry = TrayFixture;
using DatabaseExplorerEntry = TrayFixture;

// The tray window of a simulated server, named in the settings.
class ServerCommands : public TrayFixture {
protected:
    void SetUp() override { g_Settings.ServiceName = server.ServiceName(); }
    test::SimulatedServer server;
};

} // namespace

// ---- the tray icon ---------------------------------------------------------

TEST_F(TrayWindow, CreatingAddsTheTrayIcon)
{
    ASSERT_TRUE(window.CreateEx());
    EXPECT_TRUE(TrayIconExists(window));
}

TEST_F(TrayWindow, DestroyingRemovesTheTrayIcon)
{
    ASSERT_TRUE(window.CreateEx());
    const HWND hwnd = window;
    ASSERT_TRUE(TrayIconExists(hwnd));
    window.DestroyWindow();
    EXPECT_FALSE(TrayIconExists(hwnd));
}

TEST_F(TrayWindow, TipIsTitleFollowedByControlPanelText)
{
    g_Settings.Title = L"Northfield";
    EXPECT_EQ(CDummyWnd::TrayTip(), L"Northfield OPC Server Control Panel");
}

TEST_F(TrayWindow, TipIsCutTo127Characters)
{
    g_Settings.Title = std::wstring(120, L'T');
    const std::wstring tip = CDummyWnd::TrayTip();
    EXPECT_EQ(tip.size(), 127u);
    EXPECT_EQ(tip, std::wstring(120, L'T') + L" OPC Se");
}

TEST_F(TrayWindow, DestroyingClosesTheEditorAndExplorerWindows)
{
    AddEditor();
    AddExplorer(true);
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    Command(window, ID_MN_DBEXPLORER);
    ASSERT_TRUE(::IsWindow(editor.window));
    ASSERT_TRUE(::IsWindow(explorer.window));
    window.DestroyWindow();
    EXPECT_FALSE(::IsWindow(editor.window));
    EXPECT_FALSE(::IsWindow(explorer.window));
}

// ---- Start and Stop --------------------------------------------------------

TEST_F(ServerCommands, StartOnARunningServiceShowsAlreadyRunning)
{
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_START_SERVER);
    EXPECT_TRUE(ShownOneBox(answer.answerer.Seen(), L"Start Varnel OPC Server", L"The server is already running."));
}

TEST_F(ServerCommands, StartStartsAStoppedServiceWithoutAMessage)
{
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_START_SERVER);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING)) << "started and waited for";
    EXPECT_TRUE(answer.answerer.Seen().empty());
}

TEST_F(ServerCommands, StopOnAStoppedServiceShowsAlreadyStopped)
{
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_STOP_SERVER);
    EXPECT_TRUE(ShownOneBox(answer.answerer.Seen(), L"Stop Varnel OPC Server", L"The server is already stopped."));
}

TEST_F(ServerCommands, StopAsksYesNoCancelFirst)
{
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(window.CreateEx());
    bool buttons = false;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        buttons = HasButtons(box.hwnd, {IDYES, IDNO, IDCANCEL});
        return IDNO;
    });
    Command(window, ID_MN_STOP_SERVER);
    EXPECT_TRUE(ShownOneBox(answerer.Seen(), L"Stop Varnel OPC Server", kStopQuestion));
    EXPECT_TRUE(buttons);
}

TEST_F(ServerCommands, StopAnsweredNoKeepsTheServerRunning)
{
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDNO);
    Command(window, ID_MN_STOP_SERVER);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_FALSE(server.HasEvent("stop requested"));
}

TEST_F(ServerCommands, StopAnsweredCancelKeepsTheServerRunning)
{
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDCANCEL);
    Command(window, ID_MN_STOP_SERVER);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_FALSE(server.HasEvent("stop requested"));
}

TEST_F(ServerCommands, StopAnsweredYesStopsTheServerAndWaits)
{
    server.SetKnob(L"StopDelay", 400);
    server.SetKnob(L"StopWaitHint", 100);
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDYES);
    Command(window, ID_MN_STOP_SERVER);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED)) << "the command waits for the stop";
}

TEST(ServerCommandFailures, AccessDeniedIsReportedAndTheTrayStaysUsable)
{
    test::FakeServiceManager scm;
    scm.managerOpenError = ERROR_ACCESS_DENIED;
    test::ScopedServiceManager scope(scm);
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_START_SERVER);
    Command(window, ID_MN_STOP_SERVER);
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].title, L"Exception");
    EXPECT_EQ(seen[0].text.rfind(L"Access denied.", 0), 0u);
    EXPECT_EQ(seen[1].title, L"Exception");
}

// ---- Exit ------------------------------------------------------------------

TEST_F(Exit, AsksWhetherAllWindowsAreClosed)
{
    ASSERT_TRUE(window.CreateEx());
    bool buttons = false;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        buttons = HasButtons(box.hwnd, {IDYES, IDNO, IDCANCEL});
        return IDNO;
    });
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_TRUE(ShownOneBox(answerer.Seen(), L"Exit", L"Have you closed all the windows of this application?"));
    EXPECT_TRUE(buttons);
}

TEST_F(Exit, AnsweredNoChangesNothing)
{
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDNO);
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_FALSE(QuitPosted());
    EXPECT_TRUE(window.IsWindow());
    EXPECT_TRUE(TrayIconExists(window));
}

TEST_F(Exit, AnsweredCancelChangesNothing)
{
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDCANCEL);
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_FALSE(QuitPosted());
    EXPECT_TRUE(window.IsWindow());
}

TEST_F(Exit, AnsweredYesEndsTheMessageLoopWithExitCodeZero)
{
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDYES);
    Command(window, ID_MN_SHUTDOWN);
    WPARAM exitCode = 99;
    EXPECT_TRUE(QuitPosted(&exitCode));
    EXPECT_EQ(exitCode, 0u);
}

TEST_F(Exit, OpenWindowsAreNotAskedAbout)
{
    AddEditor();
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    Answering answer(IDYES);
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_TRUE(QuitPosted());
    EXPECT_TRUE(::IsWindow(editor.window)) << "still open until the tray window goes";
}

// ---- the address space editor ----------------------------------------------

TEST_F(AddressSpaceEntry, OpensTheEditorAfterItsPreparation)
{
    AddEditor();
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    EXPECT_EQ(editor.prepared, 1);
    EXPECT_EQ(editor.created, 1);
    EXPECT_TRUE(::IsWindowVisible(editor.window));
}

TEST_F(AddressSpaceEntry, DoubleClickIsTheDefaultAction)
{
    AddEditor();
    ASSERT_TRUE(window.CreateEx());
    ShellNote(window, WM_LBUTTONDBLCLK);
    EXPECT_EQ(editor.created, 1);
    EXPECT_TRUE(::IsWindowVisible(editor.window));
}

TEST_F(AddressSpaceEntry, DoubleClickWhileEditorMinimisedRestoresItInsteadOfCreatingAnother)
{
    AddEditor();
    ASSERT_TRUE(window.CreateEx());
    ShellNote(window, WM_LBUTTONDBLCLK);
    const HWND first = editor.window;
    ::ShowWindow(first, SW_MINIMIZE);
    ASSERT_TRUE(::IsIconic(first));
    ShellNote(window, WM_LBUTTONDBLCLK);
    EXPECT_EQ(editor.created, 1);
    EXPECT_EQ(editor.prepared, 1);
    EXPECT_EQ(editor.window, first);
    EXPECT_FALSE(::IsIconic(first));
    EXPECT_TRUE(::IsWindowVisible(first));
}

TEST_F(AddressSpaceEntry, DeclinedPreparationOpensNothing)
{
    AddEditor(false);
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    EXPECT_EQ(editor.prepared, 1);
    EXPECT_EQ(editor.created, 0);
}

TEST_F(AddressSpaceEntry, FailedCreationIsReported)
{
    AddEditor(true, true);
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_CONTROL);
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"CException");
    EXPECT_NE(seen[0].text.find(L"Error=0x80070008("), std::wstring::npos) << CL::Narrow(seen[0].text);
    EXPECT_NE(seen[0].text.find(L"Source='m_wndMain.CreateEx()'"), std::wstring::npos);
}

// ---- Options ---------------------------------------------------------------

TEST_F(OptionsEntry, RefusedWhileTheEditorIsOpen)
{
    AddEditor();
    AddOptions(true);
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    Answering answer(IDOK);
    Command(window, ID_MN_OPTIONS);
    EXPECT_TRUE(ShownOneBox(answer.answerer.Seen(), L"Options", L"Please, close the OPC Address Space window and try again."));
    EXPECT_EQ(options.runs, 0) << "nothing opened";
    EXPECT_EQ(editor.reloaded, 0);
}

TEST_F(OptionsEntry, RefusedAlsoWhileTheEditorIsMinimised)
{
    AddEditor();
    AddOptions(true);
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    ::ShowWindow(editor.window, SW_MINIMIZE);
    Answering answer(IDOK);
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_EQ(options.runs, 0);
}

TEST_F(OptionsEntry, AcceptedOptionsReloadTheEditorAndApplyTheSettings)
{
    int applied = 0;
    AddEditor();
    AddOptions(true);
    window.SetSettingsAppliedHandler([&] { ++applied; });
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(options.runs, 1);
    EXPECT_EQ(editor.reloaded, 1);
    EXPECT_EQ(applied, 1);
}

TEST_F(OptionsEntry, AFailedReloadOfTheEditorIsReportedAndTheSettingsAreStillApplied)
{
    int applied = 0;
    editor.reloadFails = true;
    AddEditor();
    AddOptions(true);
    window.SetSettingsAppliedHandler([&] { ++applied; });
    ASSERT_TRUE(window.CreateEx());
    test::MessageBoxAnswerer answerer;
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(editor.reloaded, 1);
    EXPECT_EQ(applied, 1) << "the historian follows the new settings although the editor could not reload";
    ASSERT_EQ(answerer.Seen().size(), 1u);
    EXPECT_NE(answerer.Seen()[0].text.find(L"Error loading OPC Address Space file."), std::wstring::npos);
}

TEST_F(OptionsEntry, CancelledOptionsChangeNothing)
{
    int applied = 0;
    AddEditor();
    AddOptions(false);
    window.SetSettingsAppliedHandler([&] { ++applied; });
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(options.runs, 1);
    EXPECT_EQ(editor.reloaded, 0);
    EXPECT_EQ(applied, 0);
}

// ---- the database explorer -------------------------------------------------

TEST_F(DatabaseExplorerEntry, InaccessibleDatabaseShowsTheMessage)
{
    AddExplorer(false);
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_DBEXPLORER);
    EXPECT_TRUE(ShownOneBox(answer.answerer.Seen(), L"OPC HDA Database Explorer", L"The HDA database is not accessible."));
    EXPECT_EQ(explorer.created, 0);
}

TEST_F(DatabaseExplorerEntry, WithoutADatabaseLayerTheDatabaseIsNotAccessible)
{
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_DBEXPLORER);
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].text, L"The HDA database is not accessible.");
}

TEST_F(DatabaseExplorerEntry, AccessibleDatabaseOpensTheExplorerOnceAndRestoresIt)
{
    AddExplorer(true);
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_DBEXPLORER);
    ASSERT_TRUE(::IsWindowVisible(explorer.window));
    ::ShowWindow(explorer.window, SW_MINIMIZE);
    Command(window, ID_MN_DBEXPLORER);
    EXPECT_EQ(explorer.created, 1);
    EXPECT_FALSE(::IsIconic(explorer.window));
}

// ---- trace lines -----------------------------------------------------------

TEST(TrayHandlers, EachWritesItsTraceLine)
{
    const test::SettingsKeeper keepSettings;
    test::SimulatedServer server;
    g_Settings.ServiceName = server.ServiceName();
    test::LogCapture log(4);
    {
        CDummyWnd window(CL::MenuFlags{});
        ASSERT_TRUE(window.CreateEx());
        Answering answer(IDNO);
        Command(window, ID_MN_CONTROL);
        Command(window, ID_MN_DBEXPLORER);
        Command(window, ID_MN_OPTIONS);
        Command(window, ID_MN_STOP_SERVER);
        Command(window, ID_MN_SHUTDOWN);
        ASSERT_TRUE(server.Start());
        Command(window, ID_MN_START_SERVER);
        ShellNote(window, WM_MOUSEMOVE);
    }
    for (const char* line : {"[3] CDummyWnd::OnCreate [DummyWnd, 143]", "[3] CDummyWnd::OnControl [DummyWnd, 197]",
                             "[3] CDummyWnd::OnMnDBExplorer [DummyWnd, 329]", "[3] CDummyWnd::OnMnOptions [DummyWnd, 296]",
                             "[3] CDummyWnd::OnMnStopServer [DummyWnd, 385]", "[3] CDummyWnd::OnShutdown [DummyWnd, 233]",
                             "[3] CDummyWnd::OnMnStartServer [DummyWnd, 363]", "[4] CDummyWnd::OnShellNote [DummyWnd, 72]",
                             "[3] CDummyWnd::OnDestroy [DummyWnd, 173]"})
        EXPECT_TRUE(log.Contains(line)) << line;
}

TEST(TrayHandlers, ShellNoteIsNotLoggedBelowTraceLevel)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    test::LogCapture log(3);
    ShellNote(window, WM_MOUSEMOVE);
    EXPECT_FALSE(log.Contains("[4] CDummyWnd::OnShellNote [DummyWnd, 72]"));
}

TEST(TrayHandlers, RightClickMenuWritesNoErrorLines)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    test::LogCapture log(4);
    {
        test::TrackedMenuCapture capture;
        ShellNote(window, WM_RBUTTONDOWN);
        EXPECT_TRUE(capture.Captured());
    }
    for (const std::string& message : log.Lines())
        EXPECT_NE(message.substr(0, 4), "[0] ") << message;
}
