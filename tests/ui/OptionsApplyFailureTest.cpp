// Every step of the options dialog's apply sequence made to fail on its own,
// against a scripted server control and a scripted service control manager:
// the error report, the dialog left open, the files and the service as the
// steps already done leave them, and the one error line of the log that names
// the failed step, the steps done and where the previous settings are. Also:
// a service that does not stop or start in time is a result (a warning) and
// the change goes on, and a retry after a failure keeps the backup of the
// settings that were in force before the first attempt.
#include <gtest/gtest.h>
#include <windows.h>

#include "OptionsTestSupport.h"
#include "app/ServerProcessControl.h"
#include "common/Exception.h"
#include "common/ProcessRun.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "config/dlgOptions.h"
#include "res/resource.h"
#include "support/FakeServiceManager.h"
#include "support/LogCapture.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

namespace {

constexpr wchar_t kRestartQuestion[] =
    L"To apply new options the OPC server must be restarted (and all the OPC clients will be "
    L"disconnected).\r\n\r\nDo you want to continue?";
constexpr wchar_t kAppliedPrefix[] =
    L"The new settings were successfully applied. \r\n\r\nPrevious settings were saved in ";
constexpr wchar_t kUnreadableExitCode[] = L"GetExitCodeProcess (pi.hProcess, &dwResult)";

// The service calls go to the program's service control (and so to the
// scripted manager the test installs); the server runs are recorded.
class ScmServerControl : public test::FakeServerControl {
public:
    using FakeServerControl::FakeServerControl;

    bool IsServiceRunning(const std::wstring& name) override
    {
        Record(L"running? " + name);
        return m_real.IsServiceRunning(name);
    }
    bool StopServiceAndWait(const std::wstring& name, DWORD timeoutMs) override
    {
        Record(L"stop " + name);
        return m_real.StopServiceAndWait(name, timeoutMs);
    }
    bool StartServiceAndWait(const std::wstring& name, DWORD timeoutMs) override
    {
        Record(L"start " + name);
        return m_real.StartServiceAndWait(name, timeoutMs);
    }

private:
    CL::CServerProcessControl m_real;
};

// The dialog (modeless and hidden) over a fresh installation folder that
// holds the settings in force (title "Before", service "Morvane").
class OptionsApplyFailure : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        g_Settings = CSettings();
        g_Settings.Title = L"Before";
        SaveSettingsTo(SettingsFile(), g_Settings);
        m_before = test::ReadFileBytes(SettingsFile());
    }
    void TearDown() override { g_Settings = CSettings(); }

    std::wstring SettingsFile() const { return folder.File(CL::kSettingsFileName); }
    std::wstring Exe() const { return L"\"" + folder.File(L"Morvane.exe") + L"\""; }
    bool SettingsFileUnchanged() const { return test::ReadFileBytes(SettingsFile()) == m_before; }
    static std::wstring TitleIn(const std::wstring& path)
    {
        CSettings settings;
        LoadSettingsFrom(path, settings);
        return settings.Title;
    }

    // Opens the dialog over `server`, types the new title and service name,
    // presses OK and answers Yes; returns every box that showed.
    std::vector<test::MessageBoxInfo> OkWithNewSettings(CL::IServerControl& server)
    {
        dialog = std::make_unique<CdlgOptions>(server, folder.Path());
        EXPECT_NE(dialog->Create(nullptr, IDD_OPTIONS), nullptr);
        test::SetItemText(*dialog, IDC_ED_TITLE, L"After");
        test::SetItemText(*dialog, IDC_ED_SERVICENAME, L"NewName");
        return PressOk();
    }
    std::vector<test::MessageBoxInfo> PressOk()
    {
        test::MessageBoxAnswerer answerer(
            [](const test::MessageBoxInfo& box) { return box.text == kRestartQuestion ? IDYES : IDOK; });
        test::Click(*dialog, IDOK);
        return answerer.Seen();
    }
    // The one error report after the restart question, with the dialog open.
    void ExpectReportWithTheDialogOpen(const std::vector<test::MessageBoxInfo>& seen, const std::wstring& title,
                                       const std::wstring& textPart)
    {
        ASSERT_EQ(seen.size(), 2u);
        EXPECT_EQ(seen[0].text, kRestartQuestion);
        EXPECT_EQ(seen[1].title, title);
        EXPECT_NE(seen[1].text.find(textPart), std::wstring::npos) << CL::Narrow(seen[1].text);
        EXPECT_TRUE(::IsWindow(*dialog)) << "the dialog stays open";
        EXPECT_FALSE(dialog->Applied());
    }
    // Exactly one error line, naming the step, what was done and where the
    // previous settings are.
    void ExpectOneFailureLine(const test::LogCapture& log, const std::string& step, const std::string& done,
                              const std::string& previous)
    {
        std::vector<std::string> errors;
        for (const std::string& line : log.Lines())
            if (line.rfind("[0] ", 0) == 0)
                errors.push_back(line);
        ASSERT_EQ(errors.size(), 1u) << log.Dump();
        const std::string& line = errors[0];
        EXPECT_EQ(line.rfind("[0] Settings change failed at " + step + " (", 0), 0u) << line;
        EXPECT_NE(line.find(". Done before it: " + done + ". "), std::string::npos) << line;
        EXPECT_NE(line.find(". The previous settings are in " + previous + ". [SettingsApplyTrail, "), std::string::npos)
            << line;
    }
    std::string Unchanged() const { return CL::Narrow(SettingsFile()) + " (unchanged)"; }
    std::string Ran(const wchar_t* argument) const { return CL::Narrow(Exe() + argument) + " ran (exit code 0)"; }

    test::ComApartment com;
    test::TempDir folder;
    test::FakeServerControl server{folder.Path()};
    std::unique_ptr<CdlgOptions> dialog;
    std::string m_before;
};

void ThrowOn(test::FakeServerControl& server, const std::wstring& call, HRESULT error, const wchar_t* source)
{
    server.onCall = [call, error, source](const std::wstring& made) {
        if (made == call)
            throw CL::CException(error, source);
    };
}

// The directories that stand where the backups of the next seconds would be
// written, so that writing the backup fails.
void BlockBackupNames(const std::wstring& folder)
{
    SYSTEMTIME utc;
    ::GetSystemTime(&utc);
    FILETIME now;
    ::SystemTimeToFileTime(&utc, &now);
    ULARGE_INTEGER t{{now.dwLowDateTime, now.dwHighDateTime}};
    for (int second = 0; second < 10; ++second, t.QuadPart += 10000000ull) {
        const FILETIME at{t.LowPart, t.HighPart};
        SYSTEMTIME when;
        ::FileTimeToSystemTime(&at, &when);
        ::CreateDirectoryW((folder + BackupSettingsFileName(when)).c_str(), nullptr);
    }
}

} // namespace

// ---- time-outs are results -------------------------------------------------

TEST_F(OptionsApplyFailure, ServiceThatDoesNotStopInTimeIsAWarningAndTheChangeGoesOn)
{
    test::FakeServiceManager manager;
    test::FakeServiceManager::Service& service = manager.Add(L"Morvane", SERVICE_RUNNING);
    service.stopDuration = test::FakeServiceManager::kNever;
    service.stopWaitHint = 1000;   // the fake clock advances by the hint
    manager.Add(L"NewName", SERVICE_STOPPED);
    test::ScopedServiceManager scoped(manager);
    ScmServerControl scm{folder.Path()};
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(scm);

    ASSERT_EQ(seen.size(), 2u) << (seen.size() > 1 ? CL::Narrow(seen[1].text) : "");
    EXPECT_EQ(seen[1].title, L"Ok");
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(seen[1].text, kAppliedPrefix + backups[0]);
    EXPECT_TRUE(dialog->Applied());
    EXPECT_EQ(scm.calls, (std::vector<std::wstring>{L"running? Morvane", L"stop Morvane", L"run " + Exe() + L" /u",
                                                    L"run " + Exe() + L" /i", L"start NewName"}));
    EXPECT_EQ(TitleIn(SettingsFile()), L"After");
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    EXPECT_EQ(manager.Get(L"NewName").state, static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_TRUE(log.ContainsLike(1, "Service 'Morvane' did not stop within 30000 ms; the settings change goes on [",
                                 "]"))
        << log.Dump();
    EXPECT_EQ(log.Count("[0] "), 0u) << log.Dump();
}

TEST_F(OptionsApplyFailure, ServiceThatDoesNotStartInTimeIsAWarningAndTheSuccessMessageShows)
{
    test::FakeServiceManager manager;
    manager.Add(L"Morvane", SERVICE_RUNNING);
    test::FakeServiceManager::Service& renamed = manager.Add(L"NewName", SERVICE_STOPPED);
    renamed.startDuration = test::FakeServiceManager::kNever;
    renamed.startWaitHint = 1000;
    test::ScopedServiceManager scoped(manager);
    ScmServerControl scm{folder.Path()};
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(scm);

    ASSERT_EQ(seen.size(), 2u);
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(seen[1].text, kAppliedPrefix + backups[0]);
    EXPECT_TRUE(dialog->Applied()) << "the tray reloads the editor and reconfigures the historian";
    EXPECT_FALSE(::IsWindow(*dialog));
    EXPECT_EQ(manager.Get(L"NewName").state, static_cast<DWORD>(SERVICE_START_PENDING));
    EXPECT_EQ(g_Settings.Title, L"After");
    EXPECT_TRUE(log.ContainsLike(1, "Service 'NewName' did not start within 30000 ms; the new settings are in force [",
                                 "]"))
        << log.Dump();
    EXPECT_EQ(log.Count("[0] "), 0u) << log.Dump();
}

// ---- each step failing on its own -------------------------------------------

TEST_F(OptionsApplyFailure, StateQueryFailingDoesNothingElse)
{
    server.running = true;
    ThrowOn(server, L"running? Morvane", HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), L"hSCM.get()");
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    ExpectReportWithTheDialogOpen(seen, L"CException", L"Source='hSCM.get()'");
    EXPECT_EQ(server.calls, (std::vector<std::wstring>{L"running? Morvane"}));
    EXPECT_TRUE(server.running);
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_TRUE(SettingsFileUnchanged());
    EXPECT_EQ(g_Settings.Title, L"Before");
    ExpectOneFailureLine(log, "the state query of service 'Morvane'", "nothing", Unchanged());
}

TEST_F(OptionsApplyFailure, StopRefusedByTheServiceManagerLeavesTheServiceRunning)
{
    test::FakeServiceManager manager;
    manager.Add(L"Morvane", SERVICE_RUNNING).controlError = ERROR_INVALID_SERVICE_CONTROL;
    test::ScopedServiceManager scoped(manager);
    ScmServerControl scm{folder.Path()};
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(scm);
    ExpectReportWithTheDialogOpen(seen, L"CException", L"Error=0x8007041C");
    EXPECT_EQ(manager.Get(L"Morvane").state, static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_EQ(scm.calls, (std::vector<std::wstring>{L"running? Morvane", L"stop Morvane"}));
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_TRUE(SettingsFileUnchanged());
    ExpectOneFailureLine(log, "the stop of service 'Morvane'", "service 'Morvane' was running", Unchanged());
}

TEST_F(OptionsApplyFailure, DependentThatDoesNotStopInTimeIsAnErrorNamingTheStop)
{
    test::FakeServiceManager manager;
    manager.Add(L"Morvane", SERVICE_RUNNING).dependents = {L"Client"};
    test::FakeServiceManager::Service& client = manager.Add(L"Client", SERVICE_RUNNING);
    client.stopDuration = test::FakeServiceManager::kNever;
    client.stopWaitHint = 1000;
    test::ScopedServiceManager scoped(manager);
    ScmServerControl scm{folder.Path()};
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(scm);
    ExpectReportWithTheDialogOpen(seen, L"CException", L"Error=0x800705B4");
    EXPECT_EQ(manager.Get(L"Morvane").state, static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_EQ(manager.Get(L"Client").state, static_cast<DWORD>(SERVICE_STOP_PENDING));
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_TRUE(SettingsFileUnchanged());
    ExpectOneFailureLine(log, "the stop of service 'Morvane'", "service 'Morvane' was running", Unchanged());
}

TEST_F(OptionsApplyFailure, UnregisterThatCannotStartLeavesTheServiceStoppedAndTheSettingsAlone)
{
    server.running = true;
    server.runner = [](const std::wstring& commandLine) { return CL::RunProcessAndWait(commandLine); };
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    ExpectReportWithTheDialogOpen(seen, L"CException", L"CreateProcess");
    EXPECT_FALSE(server.running) << "the stop is not undone";
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_TRUE(SettingsFileUnchanged());
    EXPECT_EQ(g_Settings.Title, L"Before");
    ExpectOneFailureLine(log, "running " + CL::Narrow(Exe()) + " /u",
                         "service 'Morvane' was running; service 'Morvane' stopped", Unchanged());
}

TEST_F(OptionsApplyFailure, UnregisterWhoseExitCodeCannotBeReadStopsBeforeTheBackup)
{
    server.running = true;
    ThrowOn(server, L"run " + Exe() + L" /u", HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), kUnreadableExitCode);
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    ExpectReportWithTheDialogOpen(seen, L"CException", kUnreadableExitCode);
    EXPECT_FALSE(server.running);
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_TRUE(SettingsFileUnchanged());
    ExpectOneFailureLine(log, "running " + CL::Narrow(Exe()) + " /u",
                         "service 'Morvane' was running; service 'Morvane' stopped", Unchanged());
}

TEST_F(OptionsApplyFailure, BackupThatCannotBeWrittenLeavesTheSettingsFileAndTheRecordAlone)
{
    server.running = true;
    server.onCall = [this](const std::wstring& call) {
        if (call == L"run " + Exe() + L" /u")
            BlockBackupNames(folder.Path());
    };
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    // A file cannot be made where a folder has its name: the report of an
    // access denied, with the dialog still open.
    ExpectReportWithTheDialogOpen(seen, L"Exception",
                                  L"Access denied.\n\nPlease, close the application and 'Run as administrator' or contact ");
    EXPECT_EQ(seen[1].text.rfind(L"Access denied.", 0), 0u) << CL::Narrow(seen[1].text);
    EXPECT_EQ(server.calls.size(), 3u) << "nothing after the backup";
    EXPECT_FALSE(server.running);
    EXPECT_TRUE(SettingsFileUnchanged());
    EXPECT_EQ(g_Settings.Title, L"Before");
    std::vector<std::string> errors;
    for (const std::string& line : log.Lines())
        if (line.rfind("[0] ", 0) == 0)
            errors.push_back(line);
    ASSERT_EQ(errors.size(), 1u) << log.Dump();
    EXPECT_EQ(errors[0].rfind("[0] Settings change failed at the backup of the settings in force to " +
                                  CL::Narrow(folder.File(L"Morvane.ini.xml.")),
                              0),
              0u)
        << errors[0];
    EXPECT_NE(errors[0].find("Done before it: service 'Morvane' was running; service 'Morvane' stopped; " +
                             Ran(L" /u") + ". The previous settings are in " + Unchanged() + "."),
              std::string::npos)
        << errors[0];
}

// The settings file cannot be replaced (a folder stands in its place): the
// backup holds the settings in force, the record already the new ones; a
// retry once the file can be written keeps that backup.
TEST_F(OptionsApplyFailure, SettingsSaveFailingKeepsTheBackupAndARetryReusesIt)
{
    server.running = true;
    server.onCall = [this](const std::wstring& call) {
        if (call == L"run " + Exe() + L" /u" && ::DeleteFileW(SettingsFile().c_str()))
            ::CreateDirectoryW(SettingsFile().c_str(), nullptr);
    };
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_TRUE(::IsWindow(*dialog));
    EXPECT_EQ(server.calls.size(), 3u) << "no /i, no start";
    EXPECT_FALSE(server.running);
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    EXPECT_EQ(g_Settings.Title, L"After") << "stored in the record before the save";
    ExpectOneFailureLine(log, "the save of the new settings to " + CL::Narrow(SettingsFile()),
                         "service 'Morvane' was running; service 'Morvane' stopped; " + Ran(L" /u") +
                             "; backup written to " + CL::Narrow(backups[0]) + "; new settings stored in the program",
                         CL::Narrow(backups[0]));

    ::RemoveDirectoryW(SettingsFile().c_str());
    server.onCall = nullptr;
    const std::vector<test::MessageBoxInfo> retry = PressOk();
    ASSERT_EQ(retry.size(), 2u);
    EXPECT_EQ(retry[1].text, kAppliedPrefix + backups[0]) << "the backup of the first attempt";
    EXPECT_EQ(test::BackupFiles(folder.Path()), backups);
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    EXPECT_EQ(TitleIn(SettingsFile()), L"After");
}

TEST_F(OptionsApplyFailure, RegisterFailingLeavesTheNewSettingsAndARetryKeepsTheOldBackup)
{
    server.running = true;
    ThrowOn(server, L"run " + Exe() + L" /i", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND),
            L"CreateProcess (NULL, szCommandLine, NULL, NULL, FALSE, 0, NULL, NULL, &si, &pi)");
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    ExpectReportWithTheDialogOpen(seen, L"CException", L"CreateProcess");
    EXPECT_FALSE(server.running) << "not started again";
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    EXPECT_EQ(TitleIn(SettingsFile()), L"After");
    ExpectOneFailureLine(log, "running " + CL::Narrow(Exe()) + " /i",
                         "service 'Morvane' was running; service 'Morvane' stopped; " + Ran(L" /u") +
                             "; backup written to " + CL::Narrow(backups[0]) +
                             "; new settings stored in the program; new settings saved to " +
                             CL::Narrow(SettingsFile()),
                         CL::Narrow(backups[0]));

    // The retry comes within the same second as often as not: the backup of
    // the settings in force before the first attempt must survive it.
    server.onCall = nullptr;
    const std::vector<test::MessageBoxInfo> retry = PressOk();
    ASSERT_EQ(retry.size(), 2u);
    EXPECT_EQ(retry[1].text, kAppliedPrefix + backups[0]);
    EXPECT_TRUE(dialog->Applied());
    EXPECT_EQ(test::BackupFiles(folder.Path()), backups) << "no backup of the new settings";
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    EXPECT_EQ(server.calls.back(), L"start NewName") << "running before the first attempt, running after the retry";
    EXPECT_TRUE(server.running);
}

// A retry that fails again names the backup it kept: that is still where
// the settings in force before the first attempt are.
TEST_F(OptionsApplyFailure, RetryThatFailsAgainNamesTheKeptBackup)
{
    server.running = true;
    ThrowOn(server, L"run " + Exe() + L" /i", E_FAIL, L"test");
    OkWithNewSettings(server);
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = PressOk();
    ExpectReportWithTheDialogOpen(seen, L"CException", L"Source='test'");
    EXPECT_EQ(test::BackupFiles(folder.Path()), backups);
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    ExpectOneFailureLine(log, "running " + CL::Narrow(Exe()) + " /i",
                         "service 'NewName' was not running; service 'NewName' stopped; " + Ran(L" /u") +
                             "; backup of the unfinished change kept in " + CL::Narrow(backups[0]) +
                             "; new settings stored in the program; new settings saved to " +
                             CL::Narrow(SettingsFile()),
                         CL::Narrow(backups[0]));
}

TEST_F(OptionsApplyFailure, StartFailingLeavesTheServerRegisteredUnderTheNewSettings)
{
    server.running = true;
    ThrowOn(server, L"start NewName", HRESULT_FROM_WIN32(ERROR_SERVICE_DISABLED), L"0");
    test::LogCapture log(1);
    const std::vector<test::MessageBoxInfo> seen = OkWithNewSettings(server);
    ExpectReportWithTheDialogOpen(seen, L"CException", L"Error=0x80070422");
    EXPECT_FALSE(server.running);
    EXPECT_EQ(server.calls.back(), L"start NewName");
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(TitleIn(backups[0]), L"Before");
    EXPECT_EQ(TitleIn(SettingsFile()), L"After");
    EXPECT_EQ(g_Settings.ServiceName, L"NewName");
    ExpectOneFailureLine(log, "the start of service 'NewName'",
                         "service 'Morvane' was running; service 'Morvane' stopped; " + Ran(L" /u") +
                             "; backup written to " + CL::Narrow(backups[0]) +
                             "; new settings stored in the program; new settings saved to " +
                             CL::Narrow(SettingsFile()) + "; " + Ran(L" /i"),
                         CL::Narrow(backups[0]));
}

// After a success the next change writes a backup of its own.
TEST_F(OptionsApplyFailure, ChangeAfterASuccessfulRetryWritesItsOwnBackup)
{
    server.running = false;
    ThrowOn(server, L"run " + Exe() + L" /i", E_FAIL, L"test");
    OkWithNewSettings(server);
    server.onCall = nullptr;
    ASSERT_EQ(PressOk().size(), 2u);
    ASSERT_TRUE(dialog->Applied());
    const std::vector<std::wstring> first = test::BackupFiles(folder.Path());
    ASSERT_EQ(first.size(), 1u);
    ::Sleep(1100);   // another second, another backup name
    dialog = std::make_unique<CdlgOptions>(server, folder.Path());
    ASSERT_NE(dialog->Create(nullptr, IDD_OPTIONS), nullptr);
    test::SetItemText(*dialog, IDC_ED_TITLE, L"Third");
    ASSERT_EQ(PressOk().size(), 2u);
    ASSERT_TRUE(dialog->Applied());
    const std::vector<std::wstring> both = test::BackupFiles(folder.Path());
    ASSERT_EQ(both.size(), 2u);
    EXPECT_NE(dialog->BackupPath(), first[0]);
    EXPECT_EQ(TitleIn(dialog->BackupPath()), L"After");
}
