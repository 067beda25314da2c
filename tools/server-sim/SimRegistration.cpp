#include "SimRegistration.h"

#include "common/Handle.h"

namespace sim {

namespace {

DWORD LastErrorOr(DWORD fallback)
{
    const DWORD error = ::GetLastError();
    return error ? error : fallback;
}

bool WaitForStop(SC_HANDLE service, DWORD timeoutMs)
{
    const DWORD start = ::GetTickCount();
    SERVICE_STATUS status = {};
    while (::QueryServiceStatus(service, &status) && status.dwCurrentState != SERVICE_STOPPED) {
        if (::GetTickCount() - start > timeoutMs)
            return false;
        ::Sleep(50);
    }
    return true;
}

} // namespace

DWORD RegisterSimulatorService(const std::wstring& name, const std::wstring& exePath,
                               const std::wstring& displayName)
{
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    if (!scm)
        return LastErrorOr(ERROR_GEN_FAILURE);
    const std::wstring commandLine = L"\"" + exePath + L"\"";
    CL::UniqueServiceHandle service(::CreateServiceW(
        scm.get(), name.c_str(), displayName.c_str(), SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
        SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, commandLine.c_str(), nullptr, nullptr, nullptr,
        nullptr, nullptr));
    if (service)
        return ERROR_SUCCESS;
    if (::GetLastError() != ERROR_SERVICE_EXISTS)
        return LastErrorOr(ERROR_GEN_FAILURE);
    service.reset(::OpenServiceW(scm.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (!service)
        return LastErrorOr(ERROR_GEN_FAILURE);
    if (!::ChangeServiceConfigW(service.get(), SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START,
                                SERVICE_ERROR_NORMAL, commandLine.c_str(), nullptr, nullptr, nullptr,
                                nullptr, nullptr, displayName.c_str()))
        return LastErrorOr(ERROR_GEN_FAILURE);
    return ERROR_SUCCESS;
}

DWORD DeleteSimulatorService(const std::wstring& name, DWORD timeoutMs)
{
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    if (!scm)
        return LastErrorOr(ERROR_GEN_FAILURE);
    CL::UniqueServiceHandle service(::OpenServiceW(scm.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (!service)
        return ::GetLastError() == ERROR_SERVICE_DOES_NOT_EXIST ? ERROR_SUCCESS : LastErrorOr(ERROR_GEN_FAILURE);
    SERVICE_STATUS status = {};
    if (::ControlService(service.get(), SERVICE_CONTROL_STOP, &status) ||
        ::GetLastError() != ERROR_SERVICE_NOT_ACTIVE)
        WaitForStop(service.get(), timeoutMs);
    if (!::DeleteService(service.get()) && ::GetLastError() != ERROR_SERVICE_MARKED_FOR_DELETE)
        return LastErrorOr(ERROR_GEN_FAILURE);
    return ERROR_SUCCESS;
}

DWORD QuerySimulatorServiceState(const std::wstring& name)
{
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!scm)
        return 0;
    CL::UniqueServiceHandle service(::OpenServiceW(scm.get(), name.c_str(), SERVICE_QUERY_STATUS));
    SERVICE_STATUS status = {};
    if (!service || !::QueryServiceStatus(service.get(), &status))
        return 0;
    return status.dwCurrentState;
}

} // namespace sim
