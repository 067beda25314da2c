#pragma once
// The server simulator (tools/server-sim) installed for a test: an
// installation folder in a fresh TempDir holding the simulator as
// Morvane.exe and a settings file Morvane.ini.xml that names a unique
// service, registered with the service control manager as an own-process
// service of that name. The destructor stops and deletes the service, then
// the folder goes.
//
//   test::SimulatedServer server;                  // installed and registered
//   server.InstallControlPanel();                  // MorvaneGui.exe beside it
//   ASSERT_TRUE(server.Start());                   // running
//   server.WriteExchangeFile(bytes);               // DefaultAddressSpace.xml
//   server.Control(128);                           // reload
//   ASSERT_TRUE(server.WaitForLoadCount(2));       // start load + reload
//   EXPECT_EQ(server.LoadedBytes(), bytes);
//
// Tests run in parallel (ctest -j2) in one Wine prefix: every simulator gets
// its own service name and folder.
#include <windows.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace test {

// A service name no other test uses: "<prefix>_<process id>_<sequence>_<tick>".
// Use prefixes that start with "Mv" and hold no "_": services of such names
// whose creating process has gone (a crashed or timed-out test) are deleted
// by the next SimulatedServer.
std::wstring UniqueServiceName(const std::wstring& prefix = L"MvTest");

// The built simulator (server_sim.exe beside the test program).
std::wstring ServerSimulatorPath();
// The built control panel (MorvaneGui.exe beside the test program).
std::wstring ControlPanelPath();

// Writes a complete settings file (default keys) naming the service. A
// non-empty adoConnection becomes ADOConnection, with CustomADOConnection set
// as customConnection says (the simulator then archives into that database).
void WriteSettingsFile(const std::wstring& path, const std::wstring& serviceName,
                       const std::wstring& title = L"Varnel", const std::wstring& adoConnection = L"",
                       bool customConnection = true);

// Registers exePath as an own-process, demand-start service (CreateServiceW).
// Adds a test failure and returns false when that fails.
bool RegisterService(const std::wstring& name, const std::wstring& exePath);
// Stops the service (up to 10 s) and deletes it; a missing service is fine.
void DeleteService(const std::wstring& name);
// SERVICE_RUNNING, SERVICE_STOPPED, ...; 0 when the service does not exist.
DWORD ServiceState(const std::wstring& name);
bool WaitForServiceState(const std::wstring& name, DWORD state,
                         std::chrono::milliseconds timeout = std::chrono::seconds(10));

class SimulatedServer {
public:
    struct Options {
        std::wstring servicePrefix = L"MvTest";
        bool registerService = true;     // false: only the folder and its files
        bool writeSettings = true;       // false: no Morvane.ini.xml
        std::wstring title = L"Varnel";
        // The historian database the simulator archives into (a connection
        // string; empty: none), and whether CustomADOConnection is set.
        std::wstring adoConnection;
        bool customConnection = true;
    };

    SimulatedServer();
    explicit SimulatedServer(const Options& options);
    ~SimulatedServer();
    SimulatedServer(const SimulatedServer&) = delete;
    SimulatedServer& operator=(const SimulatedServer&) = delete;

    // The installation folder (ends with a backslash) and files in it.
    const std::wstring& Folder() const { return m_dir.Path(); }
    std::wstring File(const std::wstring& name) const { return m_dir.File(name); }
    const std::wstring& ServiceName() const { return m_serviceName; }
    std::wstring ServerExePath() const { return File(L"Morvane.exe"); }

    // Copies MorvaneGui.exe into the folder; returns its path there.
    std::wstring InstallControlPanel();
    std::wstring ControlPanelExePath() const { return File(L"MorvaneGui.exe"); }

    // A knob of ServerSim.ini (sim::kKnob... names); read by the simulator at
    // every event, so it may change while the service runs.
    void SetKnob(const wchar_t* name, unsigned value);

    // Service control straight through the SCM (not through the product).
    bool Start(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    bool Stop(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    DWORD State() const { return ServiceState(m_serviceName); }
    bool Control(DWORD code);

    // The exchange file DefaultAddressSpace.xml.
    void WriteExchangeFile(const std::string& bytes);
    std::string ExchangeFile() const;

    // What the simulator reported: its event log lines (see SimFiles.h).
    std::vector<std::string> Events() const;
    bool HasEvent(const std::string& line) const;
    bool WaitForEvent(const std::string& line,
                      std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;
    // The event lines that start with prefix, in order.
    std::vector<std::string> EventsStartingWith(const std::string& prefix) const;
    // Successful loads so far ("loaded #n" lines), the bytes of the last one.
    int LoadCount() const;
    bool WaitForLoadCount(int count, std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;
    std::string LoadedBytes() const;
    // " /u" and " /i" calls in order, as "/u" and "/i".
    std::vector<std::string> CommandLineCalls() const;

private:
    TempDir m_dir;
    std::wstring m_serviceName;
    bool m_registered = false;
};

} // namespace test
