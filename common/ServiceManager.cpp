#include "common/ServiceManager.h"

namespace CL {

SC_HANDLE SystemServiceManager::OpenSCManagerW(const wchar_t* machine, const wchar_t* database, DWORD access)
{
    return ::OpenSCManagerW(machine, database, access);
}

SC_HANDLE SystemServiceManager::OpenServiceW(SC_HANDLE manager, const wchar_t* name, DWORD access)
{
    return ::OpenServiceW(manager, name, access);
}

BOOL SystemServiceManager::CloseServiceHandle(SC_HANDLE handle)
{
    return ::CloseServiceHandle(handle);
}

BOOL SystemServiceManager::StartServiceW(SC_HANDLE service, DWORD argc, const wchar_t** argv)
{
    return ::StartServiceW(service, argc, argv);
}

BOOL SystemServiceManager::ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status)
{
    return ::ControlService(service, control, status);
}

BOOL SystemServiceManager::QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status)
{
    return ::QueryServiceStatus(service, status);
}

BOOL SystemServiceManager::EnumDependentServicesW(SC_HANDLE service, DWORD state, ENUM_SERVICE_STATUSW* services,
                                                  DWORD bufferSize, DWORD* bytesNeeded, DWORD* count)
{
    return ::EnumDependentServicesW(service, state, services, bufferSize, bytesNeeded, count);
}

DWORD SystemServiceManager::GetTickCount()
{
    return ::GetTickCount();
}

void SystemServiceManager::Sleep(DWORD milliseconds)
{
    ::Sleep(milliseconds);
}

namespace {
SystemServiceManager g_systemManager;
IServiceManager* g_currentManager = &g_systemManager;
} // namespace

IServiceManager& CurrentServiceManager()
{
    return *g_currentManager;
}

void SetServiceManager(IServiceManager* manager)
{
    g_currentManager = manager ? manager : &g_systemManager;
}

} // namespace CL
