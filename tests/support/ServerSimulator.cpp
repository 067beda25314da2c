#include "ServerSimulator.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <atomic>
#include <cwchar>
#include <sstream>

#include "common/Exception.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "tools/server-sim/SimFiles.h"
#include "tools/server-sim/SimRegistration.h"

namespace test {

std::wstring UniqueServiceName(const std::wstring& prefix)
{
    static std::atomic<unsigned> sequence{0};
    wchar_t suffix[64];
    swprintf(suffix, 64, L"_%lu_%u_%lu", ::GetCurrentProcessId(), sequence++, ::GetTickCount());
    return prefix + suffix;
}

std::wstring ServerSimulatorPath()
{
    return ProgramFolder() + L"server_sim.exe";
}

std::wstring ControlPanelPath()
{
    return ProgramFolder() + L"MorvaneGui.exe";
}

void WriteSettingsFile(const std::wstring& path, const std::wstring& serviceName, const std::wstring& title,
                       const std::wstring& adoConnection, bool customConnection)
{
    // MSXML writes the file; COM may not be initialised on this thread yet.
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CSettings settings;
    settings.ServiceName = serviceName;
    settings.Title = title;
    if (!adoConnection.empty()) {
        settings.ADOConnection = adoConnection;
        settings.CustomADOConnection = customConnection;
    }
    try {
        SaveSettingsTo(path, settings);
    } catch (const CL::CException& e) {
        ADD_FAILURE() << "writing the settings file: " << CL::Narrow(e.Text());
    }
    if (SUCCEEDED(com))
        ::CoUninitialize();
}

bool RegisterService(const std::wstring& name, const std::wstring& exePath)
{
    const DWORD error = sim::RegisterSimulatorService(name, exePath, name + L" (test simulator)");
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_SUCCESS)) << "CreateServiceW failed for " << CL::Narrow(name);
    return error == ERROR_SUCCESS;
}

void DeleteService(const std::wstring& name)
{
    const DWORD error = sim::DeleteSimulatorService(name, 10000);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_SUCCESS)) << "deleting service " << CL::Narrow(name);
}

DWORD ServiceState(const std::wstring& name)
{
    return sim::QuerySimulatorServiceState(name);
}

bool WaitForServiceState(const std::wstring& name, DWORD state, std::chrono::milliseconds timeout)
{
    return WaitUntil([&] { return ServiceState(name) == state; }, timeout);
}

namespace {

// The id of the process that made a test service name ("<prefix>_<pid>_<n>_<tick>"), or 0.
DWORD CreatorProcessId(const std::wstring& name)
{
    unsigned long pid = 0, sequence = 0, tick = 0;
    wchar_t prefix[64] = {};
    if (name.rfind(L"Mv", 0) != 0 || name.size() >= 64)
        return 0;
    std::wstring spaced = name;
    for (wchar_t& c : spaced)
        if (c == L'_')
            c = L' ';
    if (swscanf(spaced.c_str(), L"%63ls %lu %lu %lu", prefix, &pid, &sequence, &tick) != 4)
        return 0;
    return pid;
}

bool ProcessExists(DWORD pid)
{
    HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid);
    if (!process)
        return false;
    DWORD code = 0;
    const bool running = ::GetExitCodeProcess(process, &code) && code == STILL_ACTIVE;
    ::CloseHandle(process);
    return running;
}

// Services left behind by test processes that died before their clean-up
// (a crash, a time-out) are deleted, once per test process: the Wine prefix
// is kept between runs.
void SweepLeftoverTestServices()
{
    static bool swept = false;
    if (swept)
        return;
    swept = true;
    CL::UniqueServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ENUMERATE_SERVICE));
    if (!manager)
        return;
    DWORD needed = 0, returned = 0, resume = 0;
    ::EnumServicesStatusExW(manager.get(), SC_ENUM_PROCESS_INFO, SERVICE_WIN32, SERVICE_STATE_ALL, nullptr, 0,
                            &needed, &returned, &resume, nullptr);
    std::vector<BYTE> buffer(needed);
    resume = 0;
    if (!::EnumServicesStatusExW(manager.get(), SC_ENUM_PROCESS_INFO, SERVICE_WIN32, SERVICE_STATE_ALL,
                                 buffer.data(), needed, &needed, &returned, &resume, nullptr))
        return;
    const auto* services = reinterpret_cast<const ENUM_SERVICE_STATUS_PROCESSW*>(buffer.data());
    std::vector<std::wstring> leftovers;
    for (DWORD i = 0; i < returned; ++i) {
        const DWORD creator = CreatorProcessId(services[i].lpServiceName);
        if (creator && creator != ::GetCurrentProcessId() && !ProcessExists(creator))
            leftovers.emplace_back(services[i].lpServiceName);
    }
    for (const std::wstring& name : leftovers)
        sim::DeleteSimulatorService(name, 5000);
}

} // namespace

SimulatedServer::SimulatedServer() : SimulatedServer(Options()) {}

SimulatedServer::SimulatedServer(const Options& options)
    : m_serviceName(UniqueServiceName(options.servicePrefix))
{
    SweepLeftoverTestServices();
    CopyFileOrFail(ServerSimulatorPath(), ServerExePath());
    if (options.writeSettings)
        WriteSettingsFile(File(CL::kSettingsFileName), m_serviceName, options.title, options.adoConnection,
                          options.customConnection);
    if (options.registerService)
        m_registered = RegisterService(m_serviceName, ServerExePath());
}

SimulatedServer::~SimulatedServer()
{
    if (m_registered)
        DeleteService(m_serviceName);
}

std::wstring SimulatedServer::InstallControlPanel()
{
    CopyFileOrFail(ControlPanelPath(), ControlPanelExePath());
    return ControlPanelExePath();
}

void SimulatedServer::SetKnob(const wchar_t* name, unsigned value)
{
    const std::wstring text = std::to_wstring(value);
    EXPECT_TRUE(::WritePrivateProfileStringW(sim::kKnobSection, name, text.c_str(),
                                             File(sim::kKnobFile).c_str()));
}

bool SimulatedServer::Start(std::chrono::milliseconds timeout)
{
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    CL::UniqueServiceHandle service(
        scm ? ::OpenServiceW(scm.get(), m_serviceName.c_str(), SERVICE_ALL_ACCESS) : nullptr);
    if (!service || (!::StartServiceW(service.get(), 0, nullptr) &&
                     ::GetLastError() != ERROR_SERVICE_ALREADY_RUNNING)) {
        ADD_FAILURE() << "StartServiceW failed, error " << ::GetLastError();
        return false;
    }
    return WaitForServiceState(m_serviceName, SERVICE_RUNNING, timeout);
}

bool SimulatedServer::Stop(std::chrono::milliseconds timeout)
{
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    CL::UniqueServiceHandle service(
        scm ? ::OpenServiceW(scm.get(), m_serviceName.c_str(), SERVICE_ALL_ACCESS) : nullptr);
    SERVICE_STATUS status = {};
    if (!service || (!::ControlService(service.get(), SERVICE_CONTROL_STOP, &status) &&
                     ::GetLastError() != ERROR_SERVICE_NOT_ACTIVE)) {
        ADD_FAILURE() << "ControlService(STOP) failed, error " << ::GetLastError();
        return false;
    }
    return WaitForServiceState(m_serviceName, SERVICE_STOPPED, timeout);
}

bool SimulatedServer::Control(DWORD code)
{
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    CL::UniqueServiceHandle service(
        scm ? ::OpenServiceW(scm.get(), m_serviceName.c_str(), SERVICE_ALL_ACCESS) : nullptr);
    SERVICE_STATUS status = {};
    return service && ::ControlService(service.get(), code, &status);
}

void SimulatedServer::WriteExchangeFile(const std::string& bytes)
{
    WriteFileBytes(File(sim::kExchangeFile), bytes);
}

std::string SimulatedServer::ExchangeFile() const
{
    return ReadFileBytes(File(sim::kExchangeFile));
}

std::vector<std::string> SimulatedServer::Events() const
{
    std::vector<std::string> lines;
    std::istringstream stream(ReadFileBytes(File(sim::kEventLogFile)));
    std::string line;
    while (std::getline(stream, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

bool SimulatedServer::HasEvent(const std::string& line) const
{
    for (const std::string& event : Events())
        if (event == line)
            return true;
    return false;
}

bool SimulatedServer::WaitForEvent(const std::string& line, std::chrono::milliseconds timeout) const
{
    return WaitUntil([&] { return HasEvent(line); }, timeout);
}

std::vector<std::string> SimulatedServer::EventsStartingWith(const std::string& prefix) const
{
    std::vector<std::string> lines;
    for (const std::string& event : Events())
        if (event.rfind(prefix, 0) == 0)
            lines.push_back(event);
    return lines;
}

int SimulatedServer::LoadCount() const
{
    int count = 0;
    for (const std::string& event : Events())
        if (event.rfind("loaded #", 0) == 0)
            ++count;
    return count;
}

bool SimulatedServer::WaitForLoadCount(int count, std::chrono::milliseconds timeout) const
{
    return WaitUntil([&] { return LoadCount() >= count; }, timeout);
}

std::string SimulatedServer::LoadedBytes() const
{
    return ReadFileBytes(File(sim::kLoadedCopyFile));
}

std::vector<std::string> SimulatedServer::CommandLineCalls() const
{
    std::vector<std::string> calls;
    const std::string prefix = "command line ";
    for (const std::string& event : Events())
        if (event.rfind(prefix, 0) == 0)
            calls.push_back(event.substr(prefix.size()));
    return calls;
}

} // namespace test
