#include "FakeServiceManager.h"

#include <gtest/gtest.h>

#include <cwchar>

#include "common/Text.h"

namespace test {

FakeServiceManager::FakeServiceManager() = default;
FakeServiceManager::~FakeServiceManager() = default;

FakeServiceManager::Service& FakeServiceManager::Add(const std::wstring& name, DWORD state)
{
    auto service = std::make_unique<Service>();
    service->name = name;
    service->state = state;
    Service& added = *service;
    m_services[name] = std::move(service);
    m_order.push_back(name);
    return added;
}

FakeServiceManager::Service& FakeServiceManager::Get(const std::wstring& name)
{
    auto it = m_services.find(name);
    if (it == m_services.end()) {
        ADD_FAILURE() << "no fake service " << CL::Narrow(name);
        return Add(name);
    }
    return *it->second;
}

BOOL FakeServiceManager::Fail(DWORD error)
{
    ::SetLastError(error);
    return FALSE;
}

SC_HANDLE FakeServiceManager::NewHandle(const std::wstring& service, DWORD access)
{
    const SC_HANDLE handle = reinterpret_cast<SC_HANDLE>(m_nextHandle += 0x10);
    m_handles[handle] = HandleInfo{service, access};
    return handle;
}

FakeServiceManager::Service* FakeServiceManager::ServiceOf(SC_HANDLE handle)
{
    auto it = m_handles.find(handle);
    if (it == m_handles.end() || it->second.service.empty()) {
        ADD_FAILURE() << "not an open service handle";
        return nullptr;
    }
    return &Get(it->second.service);
}

// A pending service reaches its final state once its duration has passed.
void FakeServiceManager::Advance(Service& service)
{
    const DWORD elapsed = tick - service.pendingSince;
    if (service.state == SERVICE_START_PENDING && service.startDuration != kNever &&
        elapsed >= service.startDuration)
        service.state = SERVICE_RUNNING;
    else if (service.state == SERVICE_STOP_PENDING && service.stopDuration != kNever &&
             elapsed >= service.stopDuration)
        service.state = SERVICE_STOPPED;
}

void FakeServiceManager::Fill(const Service& service, SERVICE_STATUS* status) const
{
    *status = SERVICE_STATUS{};
    status->dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status->dwCurrentState = service.state;
    if (service.state == SERVICE_START_PENDING)
        status->dwWaitHint = service.startWaitHint;
    else if (service.state == SERVICE_STOP_PENDING)
        status->dwWaitHint = service.stopWaitHint;
    status->dwControlsAccepted = service.state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
}

SC_HANDLE FakeServiceManager::OpenSCManagerW(const wchar_t* machine, const wchar_t*, DWORD access)
{
    lastMachine = machine ? machine : L"(null)";
    lastManagerAccess = access;
    calls.push_back(L"OpenSCManager");
    if (managerOpenError) {
        Fail(managerOpenError);
        return nullptr;
    }
    return NewHandle(L"", access);
}

SC_HANDLE FakeServiceManager::OpenServiceW(SC_HANDLE manager, const wchar_t* name, DWORD access)
{
    calls.push_back(CL::Format(L"OpenService %ls %lx", name, access));
    if (m_handles.count(manager) == 0) {
        ADD_FAILURE() << "OpenServiceW without an open manager handle";
        Fail(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto it = m_services.find(name);
    if (it == m_services.end()) {
        Fail(ERROR_SERVICE_DOES_NOT_EXIST);
        return nullptr;
    }
    if (it->second->openError) {
        Fail(it->second->openError);
        return nullptr;
    }
    return NewHandle(name, access);
}

BOOL FakeServiceManager::CloseServiceHandle(SC_HANDLE handle)
{
    if (m_handles.erase(handle) == 0) {
        ADD_FAILURE() << "closing a handle that is not open";
        return Fail(ERROR_INVALID_HANDLE);
    }
    return TRUE;
}

BOOL FakeServiceManager::StartServiceW(SC_HANDLE handle, DWORD, const wchar_t**)
{
    Service* service = ServiceOf(handle);
    if (!service)
        return Fail(ERROR_INVALID_HANDLE);
    calls.push_back(L"Start " + service->name);
    if (service->startError)
        return Fail(service->startError);
    Advance(*service);
    if (service->state != SERVICE_STOPPED)
        return Fail(ERROR_SERVICE_ALREADY_RUNNING);
    service->state = SERVICE_START_PENDING;
    service->pendingSince = tick;
    return TRUE;
}

BOOL FakeServiceManager::ControlService(SC_HANDLE handle, DWORD control, SERVICE_STATUS* status)
{
    Service* service = ServiceOf(handle);
    if (!service)
        return Fail(ERROR_INVALID_HANDLE);
    calls.push_back(CL::Format(L"Control %ls %lu", service->name.c_str(), control));
    service->controls.push_back(control);
    // "Not active" means the service has stopped by itself meanwhile.
    if (service->controlError == ERROR_SERVICE_NOT_ACTIVE)
        service->state = SERVICE_STOPPED;
    Advance(*service);
    Fill(*service, status);
    if (service->controlError)
        return Fail(service->controlError);
    if (control != SERVICE_CONTROL_STOP)
        return service->state == SERVICE_STOPPED ? Fail(ERROR_SERVICE_NOT_ACTIVE) : TRUE;
    if (service->state == SERVICE_STOPPED)
        return Fail(ERROR_SERVICE_NOT_ACTIVE);
    service->state = SERVICE_STOP_PENDING;
    service->pendingSince = tick;
    Advance(*service);
    Fill(*service, status);
    return TRUE;
}

BOOL FakeServiceManager::QueryServiceStatus(SC_HANDLE handle, SERVICE_STATUS* status)
{
    Service* service = ServiceOf(handle);
    if (!service)
        return Fail(ERROR_INVALID_HANDLE);
    calls.push_back(L"Query " + service->name);
    tick += queryCost;
    if (service->queryError && service->queries >= service->queryErrorAfter)
        return Fail(service->queryError);
    ++service->queries;
    Advance(*service);
    Fill(*service, status);
    return TRUE;
}

BOOL FakeServiceManager::EnumDependentServicesW(SC_HANDLE handle, DWORD state, ENUM_SERVICE_STATUSW* services,
                                                DWORD bufferSize, DWORD* bytesNeeded, DWORD* count)
{
    Service* service = ServiceOf(handle);
    if (!service)
        return Fail(ERROR_INVALID_HANDLE);
    calls.push_back(CL::Format(L"EnumDependents %ls %lu", service->name.c_str(), bufferSize));
    enumerationBufferSizes.push_back(bufferSize);
    EXPECT_EQ(state, static_cast<DWORD>(SERVICE_ACTIVE));

    // Only the dependents that run (or are pending) are listed.
    std::vector<Service*> active;
    for (const std::wstring& name : service->dependents) {
        Service& dependent = Get(name);
        Advance(dependent);
        if (dependent.state != SERVICE_STOPPED)
            active.push_back(&dependent);
    }
    DWORD needed = static_cast<DWORD>(active.size() * sizeof(ENUM_SERVICE_STATUSW));
    for (Service* dependent : active)
        needed += static_cast<DWORD>((dependent->name.size() + 1) * 2 * sizeof(wchar_t));   // name + display

    const bool first = services == nullptr || bufferSize == 0;
    if (first && firstEnumerationError)
        return Fail(firstEnumerationError);
    if (!first && secondEnumerationError)
        return Fail(secondEnumerationError);
    *count = 0;
    if (bufferSize < needed) {
        *bytesNeeded = needed;
        return Fail(ERROR_MORE_DATA);
    }
    // Entries first, their strings after them, as the system lays them out.
    auto* strings = reinterpret_cast<wchar_t*>(reinterpret_cast<BYTE*>(services) +
                                               active.size() * sizeof(ENUM_SERVICE_STATUSW));
    for (size_t i = 0; i < active.size(); ++i) {
        const std::wstring& name = active[i]->name;
        ENUM_SERVICE_STATUSW& entry = services[i];
        entry.lpServiceName = strings;
        wcscpy(strings, name.c_str());
        strings += name.size() + 1;
        entry.lpDisplayName = strings;
        wcscpy(strings, name.c_str());
        strings += name.size() + 1;
        Fill(*active[i], &entry.ServiceStatus);
    }
    *count = static_cast<DWORD>(active.size());
    *bytesNeeded = needed;
    return TRUE;
}

DWORD FakeServiceManager::GetTickCount()
{
    return tick;
}

void FakeServiceManager::Sleep(DWORD milliseconds)
{
    calls.push_back(CL::Format(L"Sleep %lu", milliseconds));
    sleeps.push_back(milliseconds);
    tick += milliseconds;
}

} // namespace test
