#include "common/ServiceControl.h"

#include <vector>

#include "common/ServiceHandle.h"
#include "common/ServiceManager.h"
#include "common/Exception.h"

namespace CL {

namespace {

constexpr wchar_t kManagerSource[] = L"hSCM.get()";
constexpr wchar_t kServiceSource[] = L"hService.get()";
constexpr wchar_t kDependentSource[] = L"hDepService.get()";
constexpr wchar_t kRequestSource[] = L"0";
constexpr wchar_t kSecondEnumerationSource[] =
    L"::EnumDependentServicesW ((SC_HANDLE) hService.get(), 0x00000001, pDependencies, dwBytesNeeded, "
    L"&dwBytesNeeded, &dwCount)";
constexpr wchar_t kWaitQuerySource[] = L"QueryServiceStatus ((SC_HANDLE) hService.get(), &ss)";
constexpr wchar_t kDependentQuerySource[] = L"QueryServiceStatus ((SC_HANDLE) hDepService.get(), &ss)";
constexpr wchar_t kRunningQuerySource[] = L"::QueryServiceStatus ((SC_HANDLE) hService.get(), &ss)";
constexpr wchar_t kControlSource[] = L"::ControlService ((SC_HANDLE) hService.get(), dwCtrl, &ss)";

[[noreturn]] void ThrowError(DWORD error, const wchar_t* source)
{
    throw CException(HResultFromWin32(static_cast<long>(error)), source);
}

const wchar_t* MachineOrNull(const std::wstring& machine)
{
    return machine.empty() ? nullptr : machine.c_str();
}

CServiceHandle OpenManager(IServiceManager& scm, const std::wstring& machine)
{
    CServiceHandle manager(scm, scm.OpenSCManagerW(MachineOrNull(machine), nullptr, SC_MANAGER_ALL_ACCESS));
    if (!manager)
        ThrowLastError(kManagerSource);
    return manager;
}

// Elapsed milliseconds since the start tick, correct across the wrap of the
// 32-bit tick count.
DWORD Elapsed(IServiceManager& scm, DWORD startTick)
{
    return scm.GetTickCount() - startTick;
}

void Query(IServiceManager& scm, SC_HANDLE service, SERVICE_STATUS& status, const wchar_t* source)
{
    if (!scm.QueryServiceStatus(service, &status))
        ThrowLastError(source);
}

// Polls the service's status, sleeping its wait hint before each query,
// until it reaches `state` (true) or more than timeoutMs have passed since
// startTick (false). A status already in that state returns true at once.
bool WaitForState(IServiceManager& scm, SC_HANDLE service, SERVICE_STATUS& status, DWORD state,
                  DWORD startTick, DWORD timeoutMs, const wchar_t* querySource)
{
    while (status.dwCurrentState != state) {
        scm.Sleep(status.dwWaitHint);
        Query(scm, service, status, querySource);
        if (status.dwCurrentState == state)
            return true;
        if (Elapsed(scm, startTick) > timeoutMs)
            return false;
    }
    return true;
}

// The active services that depend on this one, as the manager lists them.
std::vector<std::wstring> ActiveDependents(IServiceManager& scm, SC_HANDLE service)
{
    DWORD needed = 0;
    DWORD count = 0;
    if (scm.EnumDependentServicesW(service, SERVICE_ACTIVE, nullptr, 0, &needed, &count))
        return {};   // the empty buffer sufficed: there are none
    const DWORD error = ::GetLastError();
    if (error != ERROR_MORE_DATA)
        ThrowError(error, kRequestSource);

    std::vector<BYTE> buffer(needed);
    auto* dependencies = reinterpret_cast<ENUM_SERVICE_STATUSW*>(buffer.data());
    if (!scm.EnumDependentServicesW(service, SERVICE_ACTIVE, dependencies, needed, &needed, &count))
        ThrowLastError(kSecondEnumerationSource);
    std::vector<std::wstring> names;
    for (DWORD i = 0; i < count; ++i)
        names.emplace_back(dependencies[i].lpServiceName);
    return names;
}

// Stops one dependent and waits for it; not stopping within the time-out
// (counted from the caller's start tick) is an error.
void StopDependent(IServiceManager& scm, SC_HANDLE manager, const std::wstring& name, DWORD startTick,
                   DWORD timeoutMs)
{
    CServiceHandle dependent(scm, scm.OpenServiceW(manager, name.c_str(), SERVICE_STOP | SERVICE_QUERY_STATUS));
    if (!dependent)
        ThrowLastError(kDependentSource);
    SERVICE_STATUS status = {};
    if (!scm.ControlService(dependent.get(), SERVICE_CONTROL_STOP, &status)) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_SERVICE_NOT_ACTIVE)
            ThrowError(error, kRequestSource);
    }
    if (!WaitForState(scm, dependent.get(), status, SERVICE_STOPPED, startTick, timeoutMs, kDependentQuerySource))
        throw CException(kServiceTimeoutError, L"");
}

} // namespace

bool IsServiceRunning(const std::wstring& name, const std::wstring& machine)
{
    IServiceManager& scm = CurrentServiceManager();
    CServiceHandle manager = OpenManager(scm, machine);
    CServiceHandle service(scm, scm.OpenServiceW(manager.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (!service)
        return false;
    SERVICE_STATUS status = {};
    Query(scm, service.get(), status, kRunningQuerySource);
    return status.dwCurrentState == SERVICE_RUNNING;
}

DWORD StartServiceAndWait(const std::wstring& name, const std::wstring& machine, DWORD noWaitThreadId,
                          DWORD timeoutMs)
{
    IServiceManager& scm = CurrentServiceManager();
    CServiceHandle manager = OpenManager(scm, machine);
    CServiceHandle service(scm, scm.OpenServiceW(manager.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (!service)
        ThrowLastError(kServiceSource);

    if (!scm.StartServiceW(service.get(), 0, nullptr)) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_SERVICE_ALREADY_RUNNING)
            ThrowError(error, kRequestSource);
    }
    if (noWaitThreadId == ::GetCurrentThreadId())
        return kServiceNotYet;

    const DWORD startTick = scm.GetTickCount();
    SERVICE_STATUS status = {};
    Query(scm, service.get(), status, kWaitQuerySource);
    return WaitForState(scm, service.get(), status, SERVICE_RUNNING, startTick, timeoutMs, kWaitQuerySource)
               ? kServiceDone
               : kServiceNotYet;
}

DWORD StopServiceAndWait(const std::wstring& name, const std::wstring& machine, DWORD noWaitThreadId,
                         DWORD timeoutMs)
{
    IServiceManager& scm = CurrentServiceManager();
    CServiceHandle manager = OpenManager(scm, machine);
    CServiceHandle service(scm, scm.OpenServiceW(manager.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (!service) {
        const DWORD error = ::GetLastError();
        if (error == ERROR_SERVICE_DOES_NOT_EXIST)
            return kServiceDone;
        ThrowError(error, kServiceSource);
    }

    // One start tick for every time-out below, dependents and service alike.
    const DWORD startTick = scm.GetTickCount();
    for (const std::wstring& dependent : ActiveDependents(scm, service.get()))
        StopDependent(scm, manager.get(), dependent, startTick, timeoutMs);

    SERVICE_STATUS status = {};
    if (!scm.ControlService(service.get(), SERVICE_CONTROL_STOP, &status)) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_SERVICE_NOT_ACTIVE)
            ThrowError(error, kRequestSource);
    }
    if (noWaitThreadId == ::GetCurrentThreadId())
        return kServiceNotYet;

    return WaitForState(scm, service.get(), status, SERVICE_STOPPED, startTick, timeoutMs, kWaitQuerySource)
               ? kServiceDone
               : kServiceNotYet;
}

void ControlServiceCode(const std::wstring& name, DWORD code, const std::wstring& machine)
{
    IServiceManager& scm = CurrentServiceManager();
    CServiceHandle manager = OpenManager(scm, machine);
    CServiceHandle service(scm, scm.OpenServiceW(manager.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (!service)
        ThrowLastError(kServiceSource);
    SERVICE_STATUS status = {};
    if (!scm.ControlService(service.get(), code, &status))
        ThrowLastError(kControlSource);
}

} // namespace CL
