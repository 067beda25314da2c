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
#include "support/LogWatch.h"
#include "support/MenuCapture.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"

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

class ServerCommands : public testing::Test {
protected:
    void SetUp() override { g_Settings.ServiceName = server.ServiceName(); }
    test::SimulatedServer server;
    CDummyWnd window{CL::MenuFlags{}};
};

} // namespace

// ---- the tray icon ---------------------------------------------------------

TEST(TrayWindow, CreatingAddsTheTrayIcon)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    EXPECT_TRUE(TrayIconExists(window));
}

TEST(TrayWindow, DestroyingRemovesTheTrayIcon)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    const HWND hwnd = window;
    ASSERT_TRUE(TrayIconExists(hwnd));
    window.DestroyWindow();
    EXPECT_FALSE(TrayIconExists(hwnd));
}

TEST(TrayWindow, TipIsTitleFollowedByControlPanelText)
{
    g_Settings.Title = L"Northfield";
    EXPECT_EQ(CDummyWnd::TrayTip(), L"Northfield OPC Server Control Panel");
}

TEST(TrayWindow, TipIsCutTo127Characters)
{
    g_Settings.Title = std::wstring(120, L'T');
    const std::wstring tip = CDummyWnd::TrayTip();
    EXPECT_EQ(tip.size(), 127u);
    EXPECT_EQ(tip, std::wstring(120, L'T') + L" OPC Se");
}

TEST(TrayWindow, DestroyingClosesTheEditorAndExplorerWindows)
{
    test::EditorCounters editor;
    test::ExplorerCounters explorer;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    window.SetDatabaseExplorer(std::make_unique<test::FakeExplorer>(explorer, true));
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
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Start Varnel OPC Server");
    EXPECT_EQ(seen[0].text, L"The server is already running.");
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
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Stop Varnel OPC Server");
    EXPECT_EQ(seen[0].text, L"The server is already stopped.");
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
    const auto seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Stop Varnel OPC Server");
    EXPECT_EQ(seen[0].text, kStopQuestion);
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

TEST(Exit, AsksWhetherAllWindowsAreClosed)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    bool buttons = false;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        buttons = HasButtons(box.hwnd, {IDYES, IDNO, IDCANCEL});
        return IDNO;
    });
    Command(window, ID_MN_SHUTDOWN);
    const auto seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Exit");
    EXPECT_EQ(seen[0].text, L"Have you closed all the windows of this application?");
    EXPECT_TRUE(buttons);
}

TEST(Exit, AnsweredNoChangesNothing)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDNO);
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_FALSE(QuitPosted());
    EXPECT_TRUE(window.IsWindow());
    EXPECT_TRUE(TrayIconExists(window));
}

TEST(Exit, AnsweredCancelChangesNothing)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDCANCEL);
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_FALSE(QuitPosted());
    EXPECT_TRUE(window.IsWindow());
}

TEST(Exit, AnsweredYesEndsTheMessageLoopWithExitCodeZero)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDYES);
    Command(window, ID_MN_SHUTDOWN);
    WPARAM exitCode = 99;
    EXPECT_TRUE(QuitPosted(&exitCode));
    EXPECT_EQ(exitCode, 0u);
}

TEST(Exit, OpenWindowsAreNotAskedAbout)
{
    test::EditorCounters editor;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    Answering answer(IDYES);
    Command(window, ID_MN_SHUTDOWN);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_TRUE(QuitPosted());
    EXPECT_TRUE(::IsWindow(editor.window)) << "still open until the tray window goes";
}

// ---- the address space editor ----------------------------------------------

TEST(AddressSpaceEntry, OpensTheEditorAfterItsPreparation)
{
    test::EditorCounters editor;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    EXPECT_EQ(editor.prepared, 1);
    EXPECT_EQ(editor.created, 1);
    EXPECT_TRUE(::IsWindowVisible(editor.window));
}

TEST(AddressSpaceEntry, DoubleClickIsTheDefaultAction)
{
    test::EditorCounters editor;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    ASSERT_TRUE(window.CreateEx());
    ShellNote(window, WM_LBUTTONDBLCLK);
    EXPECT_EQ(editor.created, 1);
    EXPECT_TRUE(::IsWindowVisible(editor.window));
}

TEST(AddressSpaceEntry, DoubleClickWhileEditorMinimisedRestoresItInsteadOfCreatingAnother)
{
    test::EditorCounters editor;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
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

TEST(AddressSpaceEntry, DeclinedPreparationOpensNothing)
{
    test::EditorCounters editor;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor, false));
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    EXPECT_EQ(editor.prepared, 1);
    EXPECT_EQ(editor.created, 0);
}

TEST(AddressSpaceEntry, FailedCreationIsReported)
{
    test::EditorCounters editor;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor, true, true));
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

TEST(OptionsEntry, RefusedWhileTheEditorIsOpen)
{
    test::EditorCounters editor;
    test::OptionsCounters options;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, true));
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    Answering answer(IDOK);
    Command(window, ID_MN_OPTIONS);
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Options");
    EXPECT_EQ(seen[0].text, L"Please, close the OPC Address Space window and try again.");
    EXPECT_EQ(options.runs, 0) << "nothing opened";
    EXPECT_EQ(editor.reloaded, 0);
}

TEST(OptionsEntry, RefusedAlsoWhileTheEditorIsMinimised)
{
    test::EditorCounters editor;
    test::OptionsCounters options;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, true));
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_CONTROL);
    ::ShowWindow(editor.window, SW_MINIMIZE);
    Answering answer(IDOK);
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(answer.answerer.Seen().size(), 1u);
    EXPECT_EQ(options.runs, 0);
}

TEST(OptionsEntry, AcceptedOptionsReloadTheEditorAndApplyTheSettings)
{
    test::EditorCounters editor;
    test::OptionsCounters options;
    int applied = 0;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, true));
    window.SetSettingsAppliedHandler([&] { ++applied; });
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(options.runs, 1);
    EXPECT_EQ(editor.reloaded, 1);
    EXPECT_EQ(applied, 1);
}

TEST(OptionsEntry, CancelledOptionsChangeNothing)
{
    test::EditorCounters editor;
    test::OptionsCounters options;
    int applied = 0;
    CDummyWnd window(CL::MenuFlags{});
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, false));
    window.SetSettingsAppliedHandler([&] { ++applied; });
    ASSERT_TRUE(window.CreateEx());
    Command(window, ID_MN_OPTIONS);
    EXPECT_EQ(options.runs, 1);
    EXPECT_EQ(editor.reloaded, 0);
    EXPECT_EQ(applied, 0);
}

// ---- the database explorer -------------------------------------------------

TEST(DatabaseExplorerEntry, InaccessibleDatabaseShowsTheMessage)
{
    test::ExplorerCounters explorer;
    CDummyWnd window(CL::MenuFlags{});
    window.SetDatabaseExplorer(std::make_unique<test::FakeExplorer>(explorer, false));
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_DBEXPLORER);
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"OPC HDA Database Explorer");
    EXPECT_EQ(seen[0].text, L"The HDA database is not accessible.");
    EXPECT_EQ(explorer.created, 0);
}

TEST(DatabaseExplorerEntry, WithoutADatabaseLayerTheDatabaseIsNotAccessible)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    Answering answer(IDOK);
    Command(window, ID_MN_DBEXPLORER);
    const auto seen = answer.answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].text, L"The HDA database is not accessible.");
}

TEST(DatabaseExplorerEntry, AccessibleDatabaseOpensTheExplorerOnceAndRestoresIt)
{
    test::ExplorerCounters explorer;
    CDummyWnd window(CL::MenuFlags{});
    window.SetDatabaseExplorer(std::make_unique<test::FakeExplorer>(explorer, true));
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
    test::SimulatedServer server;
    g_Settings.ServiceName = server.ServiceName();
    test::LogWatch log(4);
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
    for (const char* line : {"3 CDummyWnd::OnCreate [DummyWnd, 143]", "3 CDummyWnd::OnControl [DummyWnd, 197]",
                             "3 CDummyWnd::OnMnDBExplorer [DummyWnd, 329]", "3 CDummyWnd::OnMnOptions [DummyWnd, 296]",
                             "3 CDummyWnd::OnMnStopServer [DummyWnd, 385]", "3 CDummyWnd::OnShutdown [DummyWnd, 233]",
                             "3 CDummyWnd::OnMnStartServer [DummyWnd, 363]", "4 CDummyWnd::OnShellNote [DummyWnd, 72]",
                             "3 CDummyWnd::OnDestroy [DummyWnd, 173]"})
        EXPECT_TRUE(log.Contains(line)) << line;
}

TEST(TrayHandlers, ShellNoteIsNotLoggedBelowTraceLevel)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    test::LogWatch log(3);
    ShellNote(window, WM_MOUSEMOVE);
    EXPECT_FALSE(log.Contains("4 CDummyWnd::OnShellNote [DummyWnd, 72]"));
}

TEST(TrayHandlers, RightClickMenuWritesNoErrorLines)
{
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    test::LogWatch log(4);
    {
        test::TrackedMenuCapture capture;
        ShellNote(window, WM_RBUTTONDOWN);
        EXPECT_TRUE(capture.Captured());
    }
    for (const std::string& message : log.Messages())
        EXPECT_NE(message.substr(0, 2), "0 ") << message;
}
