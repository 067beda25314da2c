#include "ServerSimulator.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <atomic>
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

void WriteSettingsFile(const std::wstring& path, const std::wstring& serviceName, const std::wstring& title)
{
    // MSXML writes the file; COM may not be initialised on this thread yet.
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CSettings settings;
    settings.ServiceName = serviceName;
    settings.Title = title;
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

SimulatedServer::SimulatedServer() : SimulatedServer(Options()) {}

SimulatedServer::SimulatedServer(const Options& options)
    : m_serviceName(UniqueServiceName(options.servicePrefix))
{
    CopyFileOrFail(ServerSimulatorPath(), ServerExePath());
    if (options.writeSettings)
        WriteSettingsFile(File(CL::kSettingsFileName), m_serviceName, options.title);
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
