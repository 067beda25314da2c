// The options dialog in the real control panel, in an installation folder
// beside the server simulator registered as a service: OK with a new title
// and service name stops the service, runs " /u", writes the backup of the
// old settings, saves the new ones, runs " /i" and starts the service under
// its new name; a stopped service is not started; a failure in the middle
// ends in the error report with the dialog still open.
#include <gtest/gtest.h>

#include <algorithm>

#include "common/Text.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/ComApartment.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "tools/server-sim/SimFiles.h"
#include "support/ProcessState.h"

using namespace std::chrono_literals;

namespace {

constexpr wchar_t kRestartQuestion[] =
    L"To apply new options the OPC server must be restarted (and all the OPC clients will be "
    L"disconnected).\r\n\r\nDo you want to continue?";
constexpr wchar_t kAppliedPrefix[] =
    L"The new settings were successfully applied. \r\n\r\nPrevious settings were saved in ";

struct WindowSearch {
    DWORD processId;
    HWND except;
    std::wstring title;
    HWND found = nullptr;
};

// A visible dialog-class window of the process with this title (any title
// when empty), other than `except`.
HWND FindDialog(DWORD processId, const std::wstring& title, HWND except)
{
    WindowSearch search{processId, except, title};
    ::EnumWindows(
        [](HWND hwnd, LPARAM param) -> BOOL {
            auto* s = reinterpret_cast<WindowSearch*>(param);
            wchar_t cls[16] = {};
            ::GetClassNameW(hwnd, cls, 16);
            DWORD pid = 0;
            ::GetWindowThreadProcessId(hwnd, &pid);
            if (hwnd == s->except || pid != s->processId || std::wstring(cls) != L"#32770" || !::IsWindowVisible(hwnd))
                return TRUE;
            if (!s->title.empty() && test::WindowText(hwnd) != s->title)
                return TRUE;
            s->found = hwnd;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND WaitForDialog(DWORD processId, const std::wstring& title, HWND except = nullptr,
                   std::chrono::milliseconds timeout = 40s)
{
    HWND found = nullptr;
    test::WaitUntil([&] { return (found = FindDialog(processId, title, except)) != nullptr; }, timeout);
    return found;
}

// The names of the folder's files that match the pattern.
std::vector<std::wstring> FileNames(const std::wstring& folder, const wchar_t* pattern)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW data;
    HANDLE find = ::FindFirstFileW((folder + pattern).c_str(), &data);
    if (find == INVALID_HANDLE_VALUE)
        return names;
    do {
        names.push_back(data.cFileName);
    } while (::FindNextFileW(find, &data));
    ::FindClose(find);
    return names;
}

std::vector<std::wstring> BackupFiles(const std::wstring& folder)
{
    std::vector<std::wstring> files;
    for (const std::wstring& name : FileNames(folder, L"Morvane.ini.xml.*"))
        if (name.size() > 16 && name.find(L".saving") == std::wstring::npos)
            files.push_back(folder + name);
    return files;
}

// Where a line is in the simulator's events; the size when it is missing.
size_t EventIndex(const std::vector<std::string>& events, const std::string& line)
{
    return static_cast<size_t>(std::find(events.begin(), events.end(), line) - events.begin());
}

// The control panel in the simulator's folder, its options dialog open.
class OptionsApply : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        server.SetKnob(sim::kKnobServiceOnInstall, 1);   // " /u" deletes, " /i" registers the service
        newService = test::UniqueServiceName(L"MvRenamed");
        // What the server keeps beside it: the tray reloads it after OK.
        server.WriteExchangeFile("<Morvane_OPCDAAddressSpace Name=\"\"></Morvane_OPCDAAddressSpace>");
    }
    void TearDown() override
    {
        if (m_process && m_process->Running()) {
            if (m_dialog && ::IsWindow(m_dialog))
                ::PostMessageW(m_dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
            ::PostMessageW(m_tray, WM_COMMAND, MAKEWPARAM(ID_MN_SHUTDOWN, 0), 0);
            const HWND exitBox = WaitForDialog(m_process->Id(), L"Exit");
            if (exitBox)
                test::ClickButton(exitBox, IDYES);
            m_process->Wait(20s);
        }
        test::DeleteService(newService);
    }

    void LaunchAndOpenOptions()
    {
        m_process = std::make_unique<test::Process>(server.InstallControlPanel(), L"", server.Folder());
        m_tray = test::WaitForProcessWindow(m_process->Id(), L"MorvaneGuiTrayWindow", 20s);
        ASSERT_NE(m_tray, nullptr) << "the tray window did not appear";
        ::PostMessageW(m_tray, WM_COMMAND, MAKEWPARAM(ID_MN_OPTIONS, 0), 0);
        m_dialog = WaitForDialog(m_process->Id(), L"Options");
        ASSERT_NE(m_dialog, nullptr) << "the options dialog did not appear";
    }
    void SetText(int id, const std::wstring& text)
    {
        ::SendMessageW(::GetDlgItem(m_dialog, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    // OK, and Yes to the restart question.
    void OkAndYes()
    {
        ::PostMessageW(m_dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
        const HWND question = WaitForDialog(m_process->Id(), L"Ok", m_dialog);
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(test::DialogItemText(question, 0xFFFF), kRestartQuestion);
        test::ClickButton(question, IDYES);
        ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(question); }, 10s));
    }
    std::string Narrow(const std::wstring& text) const { return CL::Narrow(text); }
    // The tray has handled everything before a command posted now: when the
    // About box of that command shows, no error report is up.
    void ExpectNoErrorReportSoFar()
    {
        ::PostMessageW(m_tray, WM_COMMAND, MAKEWPARAM(ID_MN_ABOUT, 0), 0);
        const HWND about = WaitForDialog(m_process->Id(), L"About");
        ASSERT_NE(about, nullptr);
        EXPECT_EQ(FindDialog(m_process->Id(), L"CException", nullptr), nullptr) << "an error was reported";
        test::ClickButton(about, IDOK);
        EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(about); }, 10s));
    }

    test::ComApartment com;
    test::SimulatedServer server;
    std::wstring newService;
    std::unique_ptr<test::Process> m_process;
    HWND m_tray = nullptr;
    HWND m_dialog = nullptr;
};

} // namespace

TEST_F(OptionsApply, OkOnARunningServerRunsTheWholeSequenceAndStartsItUnderTheNewName)
{
    ASSERT_TRUE(server.Start());
    const std::string oldFile = test::ReadFileBytes(server.File(L"Morvane.ini.xml"));
    LaunchAndOpenOptions();
    SetText(IDC_ED_TITLE, L"Northfield");
    SetText(IDC_ED_SERVICENAME, newService);
    OkAndYes();

    const HWND done = WaitForDialog(m_process->Id(), L"Ok", m_dialog);
    ASSERT_NE(done, nullptr) << "no success message";
    const std::wstring doneText = test::DialogItemText(done, 0xFFFF);
    test::ClickButton(done, IDOK);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(m_dialog); }, 10s)) << "the dialog closes";
    ExpectNoErrorReportSoFar();   // the editor's address space reloaded, the historian configured

    // The simulator's record, in order.
    ASSERT_TRUE(server.WaitForEvent("started " + Narrow(newService), 20s));
    const std::vector<std::string> events = server.Events();
    const size_t stopped = EventIndex(events, "stopped");
    const size_t unregister = EventIndex(events, "command line /u");
    const size_t deleted = EventIndex(events, "delete service " + Narrow(server.ServiceName()) + ": error 0");
    const size_t reregister = EventIndex(events, "command line /i");
    const size_t registered = EventIndex(events, "register service " + Narrow(newService) + ": error 0");
    const size_t started = EventIndex(events, "started " + Narrow(newService));
    ASSERT_LT(started, events.size());
    EXPECT_LT(stopped, unregister);
    EXPECT_LT(unregister, deleted);
    EXPECT_LT(deleted, reregister);
    EXPECT_LT(reregister, registered);
    EXPECT_LT(registered, started);
    EXPECT_EQ(test::ServiceState(newService), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_EQ(test::ServiceState(server.ServiceName()), 0u) << "the old service was removed by /u";

    // The backup holds the old settings, the file the new ones.
    const std::vector<std::wstring> backups = BackupFiles(server.Folder());
    ASSERT_EQ(backups.size(), 1u);
    CSettings backup;
    LoadSettingsFrom(backups[0], backup);
    EXPECT_EQ(backup.ServiceName, server.ServiceName());
    EXPECT_EQ(backup.Title, L"Varnel");
    CSettings old;
    test::WriteFileBytes(server.File(L"old.xml"), oldFile);
    LoadSettingsFrom(server.File(L"old.xml"), old);
    EXPECT_EQ(backup.DbLastValues, old.DbLastValues);
    CSettings saved;
    LoadSettingsFrom(server.File(L"Morvane.ini.xml"), saved);
    EXPECT_EQ(saved.ServiceName, newService);
    EXPECT_EQ(saved.Title, L"Northfield");

    // The success message names the backup's full path.
    ASSERT_EQ(doneText.rfind(kAppliedPrefix, 0), 0u) << Narrow(doneText);
    EXPECT_TRUE(CL::EqualsNoCase(doneText.substr(wcslen(kAppliedPrefix)), backups[0])) << Narrow(doneText);
}

TEST_F(OptionsApply, OkOnAStoppedServerStartsNothing)
{
    LaunchAndOpenOptions();
    SetText(IDC_ED_SERVICENAME, newService);
    OkAndYes();
    const HWND done = WaitForDialog(m_process->Id(), L"Ok", m_dialog);
    ASSERT_NE(done, nullptr) << "no success message";
    test::ClickButton(done, IDOK);
    ExpectNoErrorReportSoFar();
    ASSERT_TRUE(server.WaitForEvent("register service " + Narrow(newService) + ": error 0", 20s));
    EXPECT_EQ(server.CommandLineCalls(), (std::vector<std::string>{"/u", "/i"}));
    EXPECT_EQ(server.EventsStartingWith("started").size(), 0u);
    EXPECT_EQ(test::ServiceState(newService), static_cast<DWORD>(SERVICE_STOPPED));
    EXPECT_EQ(BackupFiles(server.Folder()).size(), 1u);
}

// The server executable goes away while the service runs: the service is
// stopped, then running " /u" fails; nothing else is done.
TEST_F(OptionsApply, MissingServerExecutableEndsInTheErrorReportWithTheDialogOpen)
{
    ASSERT_TRUE(server.Start());
    const std::string oldFile = test::ReadFileBytes(server.File(L"Morvane.ini.xml"));
    LaunchAndOpenOptions();
    ASSERT_TRUE(::MoveFileW(server.ServerExePath().c_str(), server.File(L"Morvane.away").c_str()))
        << "error " << ::GetLastError();
    SetText(IDC_ED_TITLE, L"Northfield");
    OkAndYes();
    const HWND report = WaitForDialog(m_process->Id(), L"CException", m_dialog);
    ASSERT_NE(report, nullptr) << "no error report";
    const std::wstring reportText = test::DialogItemText(report, 0xFFFF);
    EXPECT_NE(reportText.find(L"CreateProcess"), std::wstring::npos) << Narrow(reportText);
    test::ClickButton(report, IDOK);
    ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(report); }, 10s));

    EXPECT_TRUE(::IsWindow(m_dialog) && ::IsWindowVisible(m_dialog)) << "the dialog stays open";
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED)) << "the stop is not undone";
    EXPECT_TRUE(server.HasEvent("stopped"));
    EXPECT_TRUE(server.CommandLineCalls().empty());
    EXPECT_TRUE(BackupFiles(server.Folder()).empty());
    EXPECT_EQ(test::ReadFileBytes(server.File(L"Morvane.ini.xml")), oldFile);
}

namespace {

// A class identifier that another program registered in this prefix, for
// the life of the object.
class RegisteredClsid {
public:
    RegisteredClsid()
    {
        GUID clsid = GUID_NULL;
        ::CoCreateGuid(&clsid);
        wchar_t text[40] = {};
        ::StringFromGUID2(clsid, text, 40);
        m_text = text;
        HKEY key = nullptr;
        EXPECT_EQ(::RegCreateKeyExW(HKEY_CLASSES_ROOT, (L"CLSID\\" + m_text).c_str(), 0, nullptr, 0, KEY_WRITE,
                                    nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        if (key)
            ::RegCloseKey(key);
    }
    ~RegisteredClsid() { ::RegDeleteKeyW(HKEY_CLASSES_ROOT, (L"CLSID\\" + m_text).c_str()); }
    const std::wstring& Text() const { return m_text; }

private:
    std::wstring m_text;
};

} // namespace

// Refusals come before the restart question: the running service is left
// alone and nothing is run or written.
TEST_F(OptionsApply, ClsidRegisteredByAnotherProgramIsRefusedBeforeAnythingIsStopped)
{
    RegisteredClsid other;
    ASSERT_TRUE(server.Start());
    const std::string oldFile = test::ReadFileBytes(server.File(L"Morvane.ini.xml"));
    LaunchAndOpenOptions();
    SetText(IDC_ED_AE_CLSID, other.Text());
    ::PostMessageW(m_dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    const HWND refusal = WaitForDialog(m_process->Id(), L"Options", m_dialog);
    ASSERT_NE(refusal, nullptr);
    EXPECT_EQ(test::DialogItemText(refusal, 0xFFFF),
              L"The 'OPC AE Server CLSID' is probably used. Using this clsid here may damage the system. Please, "
              L"specify unused clsid.");
    test::ClickButton(refusal, IDOK);
    ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(refusal); }, 10s));
    EXPECT_TRUE(::IsWindow(m_dialog));
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_FALSE(server.HasEvent("stop requested"));
    EXPECT_TRUE(server.CommandLineCalls().empty());
    EXPECT_TRUE(BackupFiles(server.Folder()).empty());
    EXPECT_EQ(test::ReadFileBytes(server.File(L"Morvane.ini.xml")), oldFile);
}

TEST_F(OptionsApply, PortOutsideTheRangeIsRefusedBeforeAnythingIsStopped)
{
    ASSERT_TRUE(server.Start());
    const std::string oldFile = test::ReadFileBytes(server.File(L"Morvane.ini.xml"));
    LaunchAndOpenOptions();
    SetText(IDC_ED_UA_PORT, L"70000");
    ::PostMessageW(m_dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    const HWND refusal = WaitForDialog(m_process->Id(), L"Options", m_dialog);
    ASSERT_NE(refusal, nullptr);
    EXPECT_EQ(test::DialogItemText(refusal, 0xFFFF),
              L"The port of the OPC UA Server must be a whole number from 1 to 65535.");
    test::ClickButton(refusal, IDOK);
    ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(refusal); }, 10s));
    EXPECT_TRUE(::IsWindow(m_dialog));
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_FALSE(server.HasEvent("stop requested"));
    EXPECT_TRUE(server.CommandLineCalls().empty());
    EXPECT_EQ(test::ReadFileBytes(server.File(L"Morvane.ini.xml")), oldFile);
}

TEST_F(OptionsApply, OptionsIsRefusedWhileTheAddressSpaceEditorIsOpen)
{
    m_process = std::make_unique<test::Process>(server.InstallControlPanel(), L"", server.Folder());
    m_tray = test::WaitForProcessWindow(m_process->Id(), L"MorvaneGuiTrayWindow", 20s);
    ASSERT_NE(m_tray, nullptr);
    ::PostMessageW(m_tray, WM_COMMAND, MAKEWPARAM(ID_MN_CONTROL, 0), 0);
    ASSERT_NE(test::WaitForProcessWindow(m_process->Id(), L"MorvaneAddressSpaceEditor", 20s), nullptr);
    ::PostMessageW(m_tray, WM_COMMAND, MAKEWPARAM(ID_MN_OPTIONS, 0), 0);
    const HWND refusal = WaitForDialog(m_process->Id(), L"Options");
    ASSERT_NE(refusal, nullptr);
    EXPECT_EQ(test::DialogItemText(refusal, 0xFFFF), L"Please, close the OPC Address Space window and try again.");
    EXPECT_EQ(::GetDlgItem(refusal, IDC_ED_TITLE), nullptr) << "the options dialog itself did not open";
    test::ClickButton(refusal, IDOK);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(refusal); }, 10s));
}

// ---- time-outs and failures of the sequence against the simulator ----------

namespace {

// The control panel's own log lines (every MorvaneGui.*.log of the folder).
std::vector<std::string> ControlPanelLogLines(const std::wstring& folder)
{
    std::vector<std::string> lines;
    for (const std::wstring& name : FileNames(folder, L"MorvaneGui.*.log")) {
        const std::string bytes = test::ReadFileBytes(folder + name);
        size_t start = 0;
        for (size_t end; (end = bytes.find("\r\n", start)) != std::string::npos; start = end + 2)
            lines.push_back(bytes.substr(start, end - start));
    }
    return lines;
}

// The log lines of this level that contain the text.
std::vector<std::string> LogLinesWith(const std::wstring& folder, unsigned level, const std::string& text)
{
    std::vector<std::string> found;
    const std::string tag = ") [" + std::to_string(level) + "] ";
    for (const std::string& line : ControlPanelLogLines(folder))
        if (line.find(tag) != std::string::npos && line.find(text) != std::string::npos)
            found.push_back(line);
    return found;
}

} // namespace

// The service takes longer than the 30 s time-out to stop: a warning, and the
// rest of the sequence runs to the success message.
TEST_F(OptionsApply, ServiceSlowToStopIsAWarningAndTheChangeGoesOnToTheSuccessMessage)
{
    ASSERT_TRUE(server.Start());
    server.SetKnob(sim::kKnobStopDelay, 33000);
    server.SetKnob(sim::kKnobStopWaitHint, 500);
    LaunchAndOpenOptions();
    SetText(IDC_ED_SERVICENAME, newService);
    OkAndYes();
    const HWND done = WaitForDialog(m_process->Id(), L"Ok", m_dialog, 120s);
    ASSERT_NE(done, nullptr) << "no success message";
    const std::wstring doneText = test::DialogItemText(done, 0xFFFF);
    test::ClickButton(done, IDOK);
    ExpectNoErrorReportSoFar();
    const std::vector<std::wstring> backups = BackupFiles(server.Folder());
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_TRUE(CL::EqualsNoCase(doneText, kAppliedPrefix + backups[0])) << Narrow(doneText);
    EXPECT_EQ(LogLinesWith(server.Folder(), 1, "did not stop within 30000 ms; the settings change goes on").size(),
              1u);
    EXPECT_TRUE(LogLinesWith(server.Folder(), 0, "").empty()) << "no error logged";
    EXPECT_TRUE(server.WaitForEvent("started " + Narrow(newService), 20s));
    EXPECT_EQ(server.CommandLineCalls(), (std::vector<std::string>{"/u", "/i"}));
}

// The service under its new name takes longer than 30 s to start: the
// success message shows after the time-out, the change is complete.
TEST_F(OptionsApply, ServiceSlowToStartIsAWarningAndTheSuccessMessageShows)
{
    ASSERT_TRUE(server.Start());
    server.SetKnob(sim::kKnobStartDelay, 33000);
    server.SetKnob(sim::kKnobStartWaitHint, 500);
    LaunchAndOpenOptions();
    SetText(IDC_ED_TITLE, L"Northfield");
    SetText(IDC_ED_SERVICENAME, newService);
    OkAndYes();
    const HWND done = WaitForDialog(m_process->Id(), L"Ok", m_dialog, 120s);
    ASSERT_NE(done, nullptr) << "no success message";
    EXPECT_EQ(test::ServiceState(newService), static_cast<DWORD>(SERVICE_START_PENDING)) << "still starting";
    test::ClickButton(done, IDOK);
    EXPECT_TRUE(test::WaitUntil([&] { return !::IsWindow(m_dialog); }, 10s)) << "the dialog closes";
    ExpectNoErrorReportSoFar();
    EXPECT_EQ(LogLinesWith(server.Folder(), 1, "' did not start within 30000 ms; the new settings are in force").size(),
              1u);
    EXPECT_TRUE(LogLinesWith(server.Folder(), 0, "").empty()) << "no error logged";
    CSettings saved;
    LoadSettingsFrom(server.File(L"Morvane.ini.xml"), saved);
    EXPECT_EQ(saved.Title, L"Northfield");
    EXPECT_TRUE(test::WaitUntil([&] { return test::ServiceState(newService) == SERVICE_RUNNING; }, 20s));
}

// " /u" takes the executable away: " /i" cannot be started. The backup and
// the new settings file stay, the service stays stopped and unregistered,
// and the log says so.
TEST_F(OptionsApply, RegisterThatCannotStartIsReportedAndLeavesTheBackupAndTheNewSettings)
{
    ASSERT_TRUE(server.Start());
    server.SetKnob(sim::kKnobGoneAfterUnregister, 1);
    LaunchAndOpenOptions();
    SetText(IDC_ED_TITLE, L"Northfield");
    SetText(IDC_ED_SERVICENAME, newService);
    OkAndYes();
    const HWND report = WaitForDialog(m_process->Id(), L"CException", m_dialog);
    ASSERT_NE(report, nullptr) << "no error report";
    EXPECT_NE(test::DialogItemText(report, 0xFFFF).find(L"CreateProcess"), std::wstring::npos);
    test::ClickButton(report, IDOK);
    ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(report); }, 10s));

    EXPECT_TRUE(::IsWindow(m_dialog) && ::IsWindowVisible(m_dialog)) << "the dialog stays open";
    EXPECT_EQ(server.CommandLineCalls(), (std::vector<std::string>{"/u"}));
    EXPECT_EQ(test::ServiceState(server.ServiceName()), 0u) << "removed by /u";
    EXPECT_EQ(test::ServiceState(newService), 0u) << "never registered";
    const std::vector<std::wstring> backups = BackupFiles(server.Folder());
    ASSERT_EQ(backups.size(), 1u);
    CSettings backup;
    LoadSettingsFrom(backups[0], backup);
    EXPECT_EQ(backup.ServiceName, server.ServiceName());
    CSettings saved;
    LoadSettingsFrom(server.File(L"Morvane.ini.xml"), saved);
    EXPECT_EQ(saved.ServiceName, newService);

    const std::vector<std::string> errors = LogLinesWith(server.Folder(), 0, "");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_NE(errors[0].find("Settings change failed at running \"" + Narrow(server.Folder()) + "Morvane.exe\" /i ("),
              std::string::npos)
        << errors[0];
    EXPECT_NE(errors[0].find("backup written to " + Narrow(backups[0])), std::string::npos) << errors[0];
    EXPECT_NE(errors[0].find("The previous settings are in " + Narrow(backups[0]) + "."), std::string::npos)
        << errors[0];

    // With the executable back, OK again completes the change and keeps the
    // one backup of the settings in force before the first attempt.
    ASSERT_TRUE(::MoveFileW(server.File(L"Morvane.exe.gone").c_str(), server.ServerExePath().c_str()));
    server.SetKnob(sim::kKnobGoneAfterUnregister, 0);
    OkAndYes();
    const HWND done = WaitForDialog(m_process->Id(), L"Ok", m_dialog);
    ASSERT_NE(done, nullptr) << "no success message";
    EXPECT_TRUE(CL::EqualsNoCase(test::DialogItemText(done, 0xFFFF), kAppliedPrefix + backups[0]));
    test::ClickButton(done, IDOK);
    EXPECT_EQ(BackupFiles(server.Folder()), backups);
    EXPECT_TRUE(server.WaitForEvent("started " + Narrow(newService), 20s)) << "it ran before the first attempt";
}

// The settings file cannot be replaced (a folder stands in its place; under
// Wine run as root a read-only file would still be written): the backup is
// written, the save is refused with "Access denied.", the service stays
// stopped. A retry once
// the file can be written completes the change with that one backup.
TEST_F(OptionsApply, SettingsFileThatCannotBeWrittenIsReportedAfterTheBackup)
{
    ASSERT_TRUE(server.Start());
    LaunchAndOpenOptions();
    const std::wstring settingsFile = server.File(L"Morvane.ini.xml");
    ASSERT_TRUE(::DeleteFileW(settingsFile.c_str()));
    ASSERT_TRUE(::CreateDirectoryW(settingsFile.c_str(), nullptr));
    SetText(IDC_ED_TITLE, L"Northfield");
    OkAndYes();
    HWND report = nullptr;
    ASSERT_TRUE(test::WaitUntil(
        [&] {
            report = FindDialog(m_process->Id(), L"", m_dialog);
            return report != nullptr;
        },
        40s))
        << "no error report";
    // Writing over a folder is refused as a read-only file is on Windows.
    EXPECT_EQ(test::WindowText(report), L"Exception");
    EXPECT_EQ(test::DialogItemText(report, 0xFFFF).rfind(L"Access denied.", 0), 0u);
    test::ClickButton(report, IDOK);
    ASSERT_TRUE(test::WaitUntil([&] { return !::IsWindow(report); }, 10s));

    EXPECT_TRUE(::IsWindow(m_dialog) && ::IsWindowVisible(m_dialog)) << "the dialog stays open";
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED)) << "the stop is not undone";
    EXPECT_EQ(server.CommandLineCalls(), (std::vector<std::string>{"/u"}));
    const std::vector<std::wstring> backups = BackupFiles(server.Folder());
    ASSERT_EQ(backups.size(), 1u);
    CSettings backup;
    LoadSettingsFrom(backups[0], backup);
    EXPECT_EQ(backup.Title, L"Varnel");
    EXPECT_EQ(backup.ServiceName, server.ServiceName());
    const std::vector<std::string> errors = LogLinesWith(server.Folder(), 0, "");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_NE(errors[0].find("Settings change failed at the save of the new settings to " + Narrow(settingsFile)),
              std::string::npos)
        << errors[0];
    EXPECT_NE(errors[0].find("The previous settings are in " + Narrow(backups[0]) + "."), std::string::npos)
        << errors[0];

    ASSERT_TRUE(::RemoveDirectoryW(settingsFile.c_str()));
    OkAndYes();
    const HWND done = WaitForDialog(m_process->Id(), L"Ok", m_dialog);
    ASSERT_NE(done, nullptr) << "no success message";
    EXPECT_TRUE(CL::EqualsNoCase(test::DialogItemText(done, 0xFFFF), kAppliedPrefix + backups[0]));
    test::ClickButton(done, IDOK);
    EXPECT_EQ(BackupFiles(server.Folder()), backups);
    CSettings saved;
    LoadSettingsFrom(settingsFile, saved);
    EXPECT_EQ(saved.Title, L"Northfield");
    EXPECT_TRUE(test::WaitUntil([&] { return server.State() == SERVICE_RUNNING; }, 20s)) << "started again";
}
