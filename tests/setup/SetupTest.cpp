// The control panel's setup program (64-bit build) run silently under Wine,
// with the server simulator registered as the server's service: fresh
// install, upgrade over an older version while the control panel runs, and
// uninstall. These tests share the machine-wide uninstall and logon entries,
// so they run one at a time (RESOURCE_LOCK in tests/CMakeLists.txt).
#include <gtest/gtest.h>

#include "ServerSimulator.h"
#include "SetupFixture.h"
#include "SetupRun.h"
#include "TestSupport.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "version.h"

using namespace std::chrono_literals;
using namespace setup_test;

namespace {

// A service of the given name whose image path is the text given, as an
// administrator or another setup may have registered it; deleted at the end.
class RegisteredService {
public:
    RegisteredService(const std::wstring& name, const std::wstring& imagePath) : m_name(name)
    {
        CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE));
        CL::UniqueServiceHandle service(
            scm ? ::CreateServiceW(scm.get(), name.c_str(), name.c_str(), SERVICE_ALL_ACCESS,
                                   SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL,
                                   imagePath.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr)
                : nullptr);
        EXPECT_TRUE(service) << "CreateServiceW failed, error " << ::GetLastError();
    }
    ~RegisteredService() { test::DeleteService(m_name); }
    RegisteredService(const RegisteredService&) = delete;
    RegisteredService& operator=(const RegisteredService&) = delete;

private:
    std::wstring m_name;
};

class SetupTest : public SetupFixture {};

} // namespace

TEST_F(SetupTest, FreshInstallPutsTheControlPanelBesideTheServerOfTheRegisteredService)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(test::ReadFileBytes(InstalledPanel()), test::ReadFileBytes(test::ControlPanelPath()));
    EXPECT_TRUE(test::FileExists(InstalledUninstaller()));
}

TEST_F(SetupTest, FreshInstallAddsOnlyTheProgramAndItsUninstallerToTheServerFolder)
{
    AddServerFiles();
    const FolderContents before = ReadFolder(server.Folder());
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    FolderContents after = ReadFolder(server.Folder());
    ExpectKept(before, after);
    after.erase(L"MorvaneGui.exe");
    after.erase(kUninstallerName);
    EXPECT_EQ(after.size(), before.size()) << "no other file was added";
}

TEST_F(SetupTest, FreshInstallRegistersTheUninstallerInTheListOfInstalledPrograms)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayName"), L"Varnel OPC Server Control Panel");
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayVersion"), MORVANE_VERSION_WTEXT);
    EXPECT_EQ(MachineString(kUninstallKey, L"Publisher"), L"Varnel");
    EXPECT_EQ(MachineString(kUninstallKey, L"UninstallString"), L"\"" + InstalledUninstaller() + L"\"");
    EXPECT_EQ(MachineString(kUninstallKey, L"InstallLocation"), InstallLocation());
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayIcon"), L"\"" + InstalledPanel() + L"\",0");
    EXPECT_EQ(MachineDword(kUninstallKey, L"NoModify"), 1u);
    EXPECT_EQ(MachineDword(kUninstallKey, L"NoRepair"), 1u);
    // In KB: the program and the uninstaller together.
    const DWORD programKb = static_cast<DWORD>(test::ReadFileBytes(InstalledPanel()).size() / 1024);
    const std::optional<DWORD> size = MachineDword(kUninstallKey, L"EstimatedSize");
    ASSERT_TRUE(size.has_value());
    EXPECT_GT(*size, programKb);
    EXPECT_LT(*size, programKb + 1024);
}

TEST_F(SetupTest, FreshInstallAddsAStartMenuShortcutForEveryUser)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    ASSERT_TRUE(test::FileExists(ShortcutPath())) << CL::Narrow(ShortcutPath());
    EXPECT_EQ(ShortcutTarget(ShortcutPath()), InstalledPanel());
}

TEST_F(SetupTest, FreshInstallStartsTheControlPanelAtLogonForEveryUserByDefault)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(MachineString(kRunKey, kRunValue), L"\"" + InstalledPanel() + L"\"");
}

TEST_F(SetupTest, LogonOptionZeroLeavesTheLogonEntryOut)
{
    ASSERT_EQ(Install(CurrentSetupPath(), L"/LOGON=0"), 0u);
    EXPECT_TRUE(test::FileExists(InstalledPanel()));
    EXPECT_FALSE(MachineString(kRunKey, kRunValue).has_value());
}

TEST_F(SetupTest, FreshInstallStartsNoControlPanel)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(FindRunningPanel(InstalledPanel()).tray, nullptr);
}

TEST_F(SetupTest, FolderGivenOnTheCommandLineWinsOverTheServiceFolder)
{
    test::TempDir other;
    const std::wstring folder = WithoutTrailingBackslash(other.Path());
    ASSERT_EQ(Install(CurrentSetupPath(), L"/D=" + folder), 0u);
    EXPECT_TRUE(test::FileExists(other.File(L"MorvaneGui.exe")));
    EXPECT_FALSE(test::FileExists(InstalledPanel()));
    EXPECT_EQ(MachineString(kUninstallKey, L"InstallLocation"), folder);
    ASSERT_TRUE(Uninstall());
    EXPECT_FALSE(test::FileExists(other.File(L"MorvaneGui.exe")));
}

TEST(SetupWithoutServer, SilentSetupWithoutTheServiceOrAFolderInstallsNothingAndFails)
{
    RemoveSetupTraces();
    const std::wstring service = test::UniqueServiceName(L"MvSetupMissing");
    EXPECT_EQ(RunSilently(CurrentSetupPath(), L"/S /SERVICE=" + service), kExitNoFolder);
    EXPECT_FALSE(MachineKeyExists(kUninstallKey));
    EXPECT_FALSE(test::FileExists(ShortcutPath()));
}

TEST(SetupWithoutServer, ServiceImagePathQuotedWithArgumentsGivesTheServerFolder)
{
    RemoveSetupTraces();
    test::TempDir dir;
    const std::wstring folder = dir.File(L"Varnel OPC Server");
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    test::CopyFileOrFail(test::ServerSimulatorPath(), folder + L"\\Morvane.exe");
    const std::wstring service = test::UniqueServiceName(L"MvSetupQuoted");
    {
        RegisteredService registered(service, L"\"" + folder + L"\\Morvane.exe\" -service");
        EXPECT_EQ(RunSilently(CurrentSetupPath(), L"/S /SERVICE=" + service), 0u);
    }
    EXPECT_TRUE(test::FileExists(folder + L"\\MorvaneGui.exe"));
    EXPECT_EQ(MachineString(kUninstallKey, L"InstallLocation"), folder);
    RemoveSetupTraces();
}

TEST(SetupWithoutServer, ServiceImagePathUnquotedWithSpacesGivesTheServerFolder)
{
    RemoveSetupTraces();
    test::TempDir dir;
    const std::wstring folder = dir.File(L"Varnel OPC Server");
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    test::CopyFileOrFail(test::ServerSimulatorPath(), folder + L"\\Morvane.exe");
    const std::wstring service = test::UniqueServiceName(L"MvSetupUnquoted");
    {
        RegisteredService registered(service, folder + L"\\Morvane.EXE -service");
        EXPECT_EQ(RunSilently(CurrentSetupPath(), L"/S /SERVICE=" + service), 0u);
    }
    EXPECT_TRUE(test::FileExists(folder + L"\\MorvaneGui.exe"));
    EXPECT_EQ(MachineString(kUninstallKey, L"InstallLocation"), folder);
    RemoveSetupTraces();
}

TEST_F(SetupTest, UpgradeWhileTheControlPanelRunsClosesItReplacesItAndStartsItAgain)
{
    WriteSettings(2);
    ASSERT_EQ(Install(OlderSetupPath()), 0u);
    ASSERT_EQ(test::ReadFileBytes(InstalledPanel()), test::ReadFileBytes(OlderPanelPath()));
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayVersion"), kOlderVersion);

    test::Process older(InstalledPanel(), L"", server.Folder());
    ASSERT_NE(WaitForRunningPanel(InstalledPanel(), 20s).tray, nullptr);

    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(older.Wait(20s), 0u) << "the running control panel ended by itself, cleanly";
    EXPECT_EQ(test::ReadFileBytes(InstalledPanel()), test::ReadFileBytes(test::ControlPanelPath()))
        << "the program was replaced";
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayVersion"), MORVANE_VERSION_WTEXT);

    const RunningPanel again = WaitForRunningPanel(InstalledPanel(), 20s);
    ASSERT_NE(again.tray, nullptr) << "the control panel runs again";
    EXPECT_NE(again.processId, older.Id());
    EXPECT_EQ(CloseRunningPanel(again), 0u);

    // Both runs ended through their shut-down: two starts, two stops.
    std::string log;
    for (const auto& [name, bytes] : ReadFolder(server.Folder()))
        if (name.rfind(L"MorvaneGui.", 0) == 0 && name.size() > 4 && name.substr(name.size() - 4) == L".log")
            log += bytes;
    size_t stops = 0;
    for (size_t at = 0; (at = log.find("Stopped [MorvaneGui, 147]", at)) != std::string::npos; ++at)
        ++stops;
    EXPECT_EQ(stops, 2u) << log;
}

TEST_F(SetupTest, UpgradeWhileTheControlPanelRunsKeepsTheSettingsAddressSpacesLogsAndBackups)
{
    AddServerFiles();
    ASSERT_EQ(Install(OlderSetupPath()), 0u);
    test::Process older(InstalledPanel(), L"", server.Folder());
    ASSERT_NE(WaitForRunningPanel(InstalledPanel(), 20s).tray, nullptr);
    FolderContents before = ReadFolder(server.Folder());
    before.erase(L"MorvaneGui.exe");
    before.erase(kUninstallerName);

    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(older.Wait(20s), 0u);
    ExpectKept(before, ReadFolder(server.Folder()));
}

TEST_F(SetupTest, UpgradeOfAControlPanelThatWasNotRunningStartsNone)
{
    ASSERT_EQ(Install(OlderSetupPath()), 0u);
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(test::ReadFileBytes(InstalledPanel()), test::ReadFileBytes(test::ControlPanelPath()));
    EXPECT_EQ(FindRunningPanel(InstalledPanel()).tray, nullptr);
}

TEST_F(SetupTest, UpgradeKeepsTheLogonChoiceOfTheInstalledVersion)
{
    ASSERT_EQ(Install(OlderSetupPath(), L"/LOGON=0"), 0u);
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_FALSE(MachineString(kRunKey, kRunValue).has_value());
}

TEST_F(SetupTest, UpgradeWithLogonZeroRemovesTheLogonEntryOfTheInstalledVersion)
{
    ASSERT_EQ(Install(OlderSetupPath()), 0u);
    ASSERT_TRUE(MachineString(kRunKey, kRunValue).has_value());
    ASSERT_EQ(Install(CurrentSetupPath(), L"/LOGON=0"), 0u);
    EXPECT_FALSE(MachineString(kRunKey, kRunValue).has_value());
}

TEST_F(SetupTest, SetupLeavesAControlPanelOfAnotherFolderRunning)
{
    test::SimulatedServer otherServer(ServerOptions(false));
    const std::wstring otherPanel = otherServer.InstallControlPanel();
    test::Process other(otherPanel, L"", otherServer.Folder());
    ASSERT_NE(WaitForRunningPanel(otherPanel, 20s).tray, nullptr);

    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_TRUE(other.Running());
    EXPECT_EQ(FindRunningPanel(InstalledPanel()).tray, nullptr) << "nothing was closed, so nothing is started";
    EXPECT_EQ(CloseRunningPanel(FindRunningPanel(otherPanel)), 0u);
}

TEST_F(SetupTest, UninstallRemovesExactlyWhatSetupAdded)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    ASSERT_TRUE(Uninstall());
    EXPECT_FALSE(test::FileExists(InstalledPanel()));
    EXPECT_FALSE(test::FileExists(InstalledUninstaller()));
    EXPECT_FALSE(test::FileExists(ShortcutPath()));
    EXPECT_FALSE(MachineString(kRunKey, kRunValue).has_value());
    EXPECT_FALSE(MachineKeyExists(kUninstallKey));
}

TEST_F(SetupTest, UninstallLeavesTheServerFilesAndTheSettingsUntouched)
{
    AddServerFiles();
    const FolderContents before = ReadFolder(server.Folder());
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    ASSERT_TRUE(Uninstall());
    EXPECT_EQ(ReadFolder(server.Folder()), before);
    EXPECT_EQ(test::ServiceState(server.ServiceName()), static_cast<DWORD>(SERVICE_STOPPED))
        << "the server's service is still registered";
}

TEST_F(SetupTest, UninstallClosesTheRunningControlPanel)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    test::Process panel(InstalledPanel(), L"", server.Folder());
    ASSERT_NE(WaitForRunningPanel(InstalledPanel(), 20s).tray, nullptr);
    ASSERT_TRUE(Uninstall());
    EXPECT_EQ(panel.Wait(20s), 0u);
    EXPECT_FALSE(test::FileExists(InstalledPanel()));
    EXPECT_EQ(FindRunningPanel(InstalledPanel()).tray, nullptr) << "nothing is started again";
}

TEST_F(SetupTest, SilentSetupOfAnOlderVersionReplacesTheNewerOneInstalled)
{
    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    ASSERT_EQ(Install(OlderSetupPath()), 0u);
    EXPECT_EQ(test::ReadFileBytes(InstalledPanel()), test::ReadFileBytes(OlderPanelPath()));
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayVersion"), kOlderVersion);
}

TEST_F(SetupTest, InstallIntoAnotherFolderRemovesTheControlPanelFromTheEarlierFolder)
{
    test::TempDir earlier;
    test::WriteFileBytes(earlier.File(L"Morvane.ini.xml"), "<Morvane_ini/>");
    ASSERT_EQ(Install(OlderSetupPath(), L"/D=" + WithoutTrailingBackslash(earlier.Path())), 0u);
    ASSERT_TRUE(test::FileExists(earlier.File(L"MorvaneGui.exe")));

    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_FALSE(test::FileExists(earlier.File(L"MorvaneGui.exe")));
    EXPECT_FALSE(test::FileExists(earlier.File(kUninstallerName)));
    EXPECT_EQ(test::ReadFileBytes(earlier.File(L"Morvane.ini.xml")), "<Morvane_ini/>") << "the rest stays";
    EXPECT_TRUE(test::FileExists(InstalledPanel()));
    EXPECT_EQ(MachineString(kUninstallKey, L"InstallLocation"), InstallLocation());
    EXPECT_EQ(MachineString(kUninstallKey, L"DisplayVersion"), MORVANE_VERSION_WTEXT);
    EXPECT_EQ(MachineString(kRunKey, kRunValue), L"\"" + InstalledPanel() + L"\"");
    EXPECT_EQ(ShortcutTarget(ShortcutPath()), InstalledPanel());
}

TEST_F(SetupTest, InstallIntoAnotherFolderWhileTheControlPanelRunsStartsItAgainFromTheNewFolder)
{
    test::TempDir earlier;
    ASSERT_EQ(Install(OlderSetupPath(), L"/D=" + WithoutTrailingBackslash(earlier.Path())), 0u);
    test::Process older(earlier.File(L"MorvaneGui.exe"), L"", earlier.Path());
    ASSERT_NE(WaitForRunningPanel(earlier.File(L"MorvaneGui.exe"), 20s).tray, nullptr);

    ASSERT_EQ(Install(CurrentSetupPath()), 0u);
    EXPECT_EQ(older.Wait(20s), 0u);
    EXPECT_FALSE(test::FileExists(earlier.File(L"MorvaneGui.exe")));
    const RunningPanel again = WaitForRunningPanel(InstalledPanel(), 20s);
    ASSERT_NE(again.tray, nullptr);
    EXPECT_EQ(CloseRunningPanel(again), 0u);
}
