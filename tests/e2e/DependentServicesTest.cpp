// Stopping the server stops the services that depend on it first. Wine's
// EnumDependentServicesW answers "none" whatever is configured, so these
// tests put a manager in the service control seam that forwards every call
// to the system's SCM and answers the dependent enumeration itself, from the
// dependencies the SCM holds for each active service. Two simulators run as
// real services: the server, and a second one configured to depend on it.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/DummyWnd.h"
#include "common/ServiceControl.h"
#include "common/ServiceManager.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/FakeServiceManager.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "tools/server-sim/SimFiles.h"
#include "support/ProcessState.h"

namespace {

// The names in a double-NUL-terminated list.
std::vector<std::wstring> MultiString(const wchar_t* list)
{
    std::vector<std::wstring> names;
    for (const wchar_t* p = list; p && *p; p += wcslen(p) + 1)
        names.emplace_back(p);
    return names;
}

// Whether the service is configured to depend on `on`. Read from the
// service database in the registry: Wine's QueryServiceConfigW leaves
// lpDependencies empty although the SCM stores them there.
bool DependsOn(const std::wstring& service, const std::wstring& on)
{
    const std::wstring key = L"System\\CurrentControlSet\\Services\\" + service;
    std::vector<wchar_t> list(4096, L'\0');
    DWORD size = static_cast<DWORD>(list.size() * sizeof(wchar_t));
    if (::RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"DependOnService", RRF_RT_REG_MULTI_SZ, nullptr,
                       list.data(), &size) != ERROR_SUCCESS)
        return false;
    for (const std::wstring& name : MultiString(list.data()))
        if (CL::EqualsNoCase(name, on))
            return true;
    return false;
}

// The system's manager, with the dependent enumeration worked out from the
// configured dependencies; it records the control requests in order.
class ScmWithDependents : public CL::IServiceManager {
public:
    std::vector<std::wstring> controls;   // "<service> <code> (<state of the watched service>)"
    std::wstring watched;                 // whose state each control request notes

    SC_HANDLE OpenSCManagerW(const wchar_t* machine, const wchar_t* database, DWORD access) override
    {
        return m_system.OpenSCManagerW(machine, database, access);
    }
    SC_HANDLE OpenServiceW(SC_HANDLE manager, const wchar_t* name, DWORD access) override
    {
        const SC_HANDLE handle = m_system.OpenServiceW(manager, name, access);
        if (handle)
            m_names[handle] = name;
        return handle;
    }
    BOOL CloseServiceHandle(SC_HANDLE handle) override
    {
        m_names.erase(handle);
        return m_system.CloseServiceHandle(handle);
    }
    BOOL StartServiceW(SC_HANDLE service, DWORD argc, const wchar_t** argv) override
    {
        return m_system.StartServiceW(service, argc, argv);
    }
    BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) override
    {
        controls.push_back(m_names[service] + L" " + std::to_wstring(control) + L" (" +
                           std::to_wstring(test::ServiceState(watched)) + L")");
        return m_system.ControlService(service, control, status);
    }
    BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) override
    {
        return m_system.QueryServiceStatus(service, status);
    }
    BOOL EnumDependentServicesW(SC_HANDLE service, DWORD state, ENUM_SERVICE_STATUSW* services, DWORD bufferSize,
                                DWORD* bytesNeeded, DWORD* count) override
    {
        *count = 0;
        std::vector<ENUM_SERVICE_STATUS_PROCESSW> dependents = ActiveDependents(m_names[service], state);
        DWORD needed = 0;
        for (const auto& d : dependents)
            needed += static_cast<DWORD>(sizeof(ENUM_SERVICE_STATUSW) +
                                         (wcslen(d.lpServiceName) + wcslen(d.lpDisplayName) + 2) * sizeof(wchar_t));
        *bytesNeeded = needed;
        if (bufferSize < needed) {
            ::SetLastError(ERROR_MORE_DATA);
            return FALSE;
        }
        auto* strings = reinterpret_cast<wchar_t*>(reinterpret_cast<BYTE*>(services) +
                                                   dependents.size() * sizeof(ENUM_SERVICE_STATUSW));
        for (size_t i = 0; i < dependents.size(); ++i) {
            services[i].lpServiceName = strings;
            wcscpy(strings, dependents[i].lpServiceName);
            strings += wcslen(strings) + 1;
            services[i].lpDisplayName = strings;
            wcscpy(strings, dependents[i].lpDisplayName);
            strings += wcslen(strings) + 1;
            memcpy(&services[i].ServiceStatus, &dependents[i].ServiceStatusProcess, sizeof(SERVICE_STATUS));
        }
        *count = static_cast<DWORD>(dependents.size());
        return TRUE;
    }
    DWORD GetTickCount() override { return m_system.GetTickCount(); }
    void Sleep(DWORD milliseconds) override { m_system.Sleep(milliseconds); }

private:
    // The services in the given state class that depend on `name`.
    std::vector<ENUM_SERVICE_STATUS_PROCESSW> ActiveDependents(const std::wstring& name, DWORD state)
    {
        CL::UniqueServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ENUMERATE_SERVICE));
        DWORD needed = 0;
        DWORD returned = 0;
        DWORD resume = 0;
        ::EnumServicesStatusExW(manager.get(), SC_ENUM_PROCESS_INFO, SERVICE_WIN32, state, nullptr, 0, &needed,
                                &returned, &resume, nullptr);
        m_buffer.assign(needed, 0);
        resume = 0;
        std::vector<ENUM_SERVICE_STATUS_PROCESSW> dependents;
        if (!::EnumServicesStatusExW(manager.get(), SC_ENUM_PROCESS_INFO, SERVICE_WIN32, state, m_buffer.data(),
                                     needed, &needed, &returned, &resume, nullptr)) {
            ADD_FAILURE() << "EnumServicesStatusExW failed, error " << ::GetLastError();
            return dependents;
        }
        auto* all = reinterpret_cast<ENUM_SERVICE_STATUS_PROCESSW*>(m_buffer.data());
        for (DWORD i = 0; i < returned; ++i)
            if (DependsOn(all[i].lpServiceName, name))
                dependents.push_back(all[i]);
        return dependents;
    }

    CL::SystemServiceManager m_system;
    std::map<SC_HANDLE, std::wstring> m_names;
    std::vector<BYTE> m_buffer;
};

// The server and a second simulator that depends on it, both running.
class DependentServices : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        dependent.SetKnob(sim::kKnobStopDelay, 800);
        dependent.SetKnob(sim::kKnobStopWaitHint, 100);
        // Created with its dependency (Wine does not store dependencies
        // changed later with ChangeServiceConfigW).
        CL::UniqueServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
        const std::wstring dependencies = server.ServiceName() + L'\0';
        const std::wstring command = L"\"" + dependent.ServerExePath() + L"\"";
        CL::UniqueServiceHandle service(::CreateServiceW(
            manager.get(), dependent.ServiceName().c_str(), dependent.ServiceName().c_str(), SERVICE_ALL_ACCESS,
            SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, command.c_str(), nullptr,
            nullptr, dependencies.c_str(), nullptr, nullptr));
        ASSERT_TRUE(service) << "CreateServiceW, error " << ::GetLastError();
        m_dependentRegistered = true;
        ASSERT_TRUE(server.Start());
        ASSERT_TRUE(dependent.Start());
        scm.watched = dependent.ServiceName();
    }

    void TearDown() override
    {
        if (m_dependentRegistered)
            test::DeleteService(dependent.ServiceName());
    }

    test::SimulatedServer server;
    test::SimulatedServer dependent{[] {
        test::SimulatedServer::Options options;
        options.servicePrefix = L"MvDependent";
        options.registerService = false;
        return options;
    }()};
    ScmWithDependents scm;
    bool m_dependentRegistered = false;
};

} // namespace

TEST_F(DependentServices, StopServiceAndWaitStopsTheDependentFirst)
{
    test::ScopedServiceManager scope(scm);
    EXPECT_EQ(CL::StopServiceAndWait(server.ServiceName(), L"", 0, 30000), 0u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    EXPECT_EQ(dependent.State(), static_cast<DWORD>(SERVICE_STOPPED));
    // The dependent was asked first, and had stopped before the server was.
    ASSERT_EQ(scm.controls.size(), 2u);
    EXPECT_EQ(scm.controls[0], dependent.ServiceName() + L" 1 (4)");
    EXPECT_EQ(scm.controls[1], server.ServiceName() + L" 1 (1)");
}

TEST_F(DependentServices, TrayStopCommandStopsTheDependentFirst)
{
    test::ScopedServiceManager scope(scm);
    g_Settings.ServiceName = server.ServiceName();
    CDummyWnd window(CL::MenuFlags{});
    ASSERT_TRUE(window.CreateEx());
    test::MessageBoxAnswerer answer(
        [](const test::MessageBoxInfo& box) { return ::GetDlgItem(box.hwnd, IDYES) ? IDYES : IDOK; });
    ::SendMessageW(window, WM_COMMAND, MAKEWPARAM(ID_MN_STOP_SERVER, 0), 0);
    ASSERT_EQ(answer.Seen().size(), 1u);
    EXPECT_EQ(answer.Seen()[0].title, L"Stop Varnel OPC Server");
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    EXPECT_EQ(dependent.State(), static_cast<DWORD>(SERVICE_STOPPED));
    ASSERT_EQ(scm.controls.size(), 2u);
    EXPECT_EQ(scm.controls[1], server.ServiceName() + L" 1 (1)");
}

TEST_F(DependentServices, DependentSlowerThanTheTimeOutRaisesTheTimeOutError)
{
    dependent.SetKnob(sim::kKnobStopDelay, 3000);
    test::ScopedServiceManager scope(scm);
    try {
        CL::StopServiceAndWait(server.ServiceName(), L"", 0, 500);
        ADD_FAILURE() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x800705B4ul);
        EXPECT_EQ(e.Source(), L"");
    }
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING)) << "the server itself was not stopped";
    EXPECT_TRUE(test::WaitForServiceState(dependent.ServiceName(), SERVICE_STOPPED));
}

TEST_F(DependentServices, WinesOwnEnumerationReportsNoneWhichIsWhyTheSeamExists)
{
    // Documents the platform fact these tests work around; if a future Wine
    // lists dependents, the seam may go.
    CL::UniqueServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    CL::UniqueServiceHandle service(::OpenServiceW(manager.get(), server.ServiceName().c_str(), SERVICE_ALL_ACCESS));
    DWORD needed = 0;
    DWORD count = 0;
    const BOOL ok = ::EnumDependentServicesW(service.get(), SERVICE_ACTIVE, nullptr, 0, &needed, &count);
    EXPECT_TRUE(ok && count == 0) << "Wine now enumerates dependents (needed " << needed << ")";
}

