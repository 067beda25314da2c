#include "SetupFixture.h"

#include "SettingsFileXml.h"
#include "TestSupport.h"
#include "common/Text.h"

using namespace std::chrono_literals;

namespace setup_test {

void SetupFixture::SetUp()
{
    RemoveSetupTraces();
    ASSERT_TRUE(test::FileExists(CurrentSetupPath())) << CL::Narrow(CurrentSetupPath());
}

void SetupFixture::TearDown()
{
    const RunningPanel panel = FindRunningPanel(InstalledPanel());
    if (panel.tray)
        CloseRunningPanel(panel);
    RemoveSetupTraces();
}

void SetupFixture::AddServerFiles()
{
    test::WriteFileBytes(server.File(L"DefaultAddressSpace.xml"), "<Morvane_OPCDAAddressSpace/>\n");
    test::WriteFileBytes(server.File(L"Plant.xml"), "<Morvane_OPCDAAddressSpace><Branch/></Morvane_OPCDAAddressSpace>");
    test::WriteFileBytes(server.File(L"Morvane.ini.xml.2024_03_07-14_05_09"), "<Morvane_ini Title=\"Old\"/>");
    test::WriteFileBytes(server.File(L"MorvaneGui.2024-03-07_000.log"), "10:00:00:0000 (00000001) [2] Starting\r\n");
    test::WriteFileBytes(server.File(L"Morvane.2024-03-07_000.log"), "server log\r\n");
    ::CreateDirectoryW(server.File(L"mapping").c_str(), nullptr);
    test::WriteFileBytes(server.File(L"mapping\\Item1.txt"), "42");
}

void SetupFixture::WriteSettings(int traceLevel)
{
    test::WriteFileBytes(server.File(L"Morvane.ini.xml"),
                         test::SettingsFileXml({{"ServiceName", CL::Narrow(server.ServiceName())},
                                                {"TraceLevel", std::to_string(traceLevel)}}));
}

DWORD SetupFixture::Install(const std::wstring& setup, const std::wstring& arguments)
{
    const std::wstring more = arguments.empty() ? L"" : L" " + arguments;
    return RunSilently(setup, L"/S /SERVICE=" + server.ServiceName() + more);
}

// The uninstaller goes on in a copy of itself and removes its own file last:
// that is the end to wait for.
bool SetupFixture::Uninstall()
{
    const std::optional<std::wstring> command = MachineString(kUninstallKey, L"UninstallString");
    if (!command) {
        ADD_FAILURE() << "no UninstallString";
        return false;
    }
    const std::wstring exe = command->substr(1, command->size() - 2);
    if (RunSilently(exe, L"/S") != 0)
        return false;
    return test::WaitUntil([&] { return !test::FileExists(exe); }, 30s);
}

void ExpectKept(const FolderContents& before, const FolderContents& after)
{
    for (const auto& [name, bytes] : before) {
        const auto found = after.find(name);
        if (found == after.end())
            ADD_FAILURE() << CL::Narrow(name) << " is gone";
        else
            EXPECT_EQ(found->second, bytes) << CL::Narrow(name) << " changed";
    }
}

} // namespace setup_test
