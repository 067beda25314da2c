#pragma once
// The fixture of the setup tests: the server simulator installed in a folder
// of its own and registered as a service (unique name, "MvSetup..."), the
// setup's machine-wide traces removed before and after each test, and a
// control panel still running from the folder closed at the end.
#include <gtest/gtest.h>

#include <string>

#include "ServerSimulator.h"
#include "SetupRun.h"

namespace setup_test {

class SetupFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // The files an administrator's server folder holds besides the server:
    // address space files, a settings backup, logs, the mapping folder.
    void AddServerFiles();
    // The settings file with the given trace level (2 logs start and stop).
    void WriteSettings(int traceLevel);

    std::wstring InstalledPanel() const { return server.File(L"MorvaneGui.exe"); }
    std::wstring InstalledUninstaller() const { return server.File(kUninstallerName); }
    std::wstring InstallLocation() const { return WithoutTrailingBackslash(server.Folder()); }

    // Runs a setup silently for the server's service, with more arguments.
    DWORD Install(const std::wstring& setup, const std::wstring& arguments = L"");
    // Runs the registered uninstaller silently, as the list of installed
    // programs does, and waits for its end.
    bool Uninstall();

    test::SimulatedServer server{ServerOptions()};
};

// Every file of `before` is still there with the same bytes.
void ExpectKept(const FolderContents& before, const FolderContents& after);

} // namespace setup_test
