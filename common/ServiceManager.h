#pragma once
// IServiceManager: the service control manager calls that service control
// makes, one method per system call, plus the clock and Sleep of its wait
// loops. SystemServiceManager forwards to the system; tests substitute a
// scripted manager (the system's dependent-service enumeration cannot be
// scripted, and the time-outs must be checked without waiting for them).
#include <windows.h>
#include <winsvc.h>

namespace CL {

class IServiceManager {
public:
    virtual ~IServiceManager() = default;

    virtual SC_HANDLE OpenSCManagerW(const wchar_t* machine, const wchar_t* database, DWORD access) = 0;
    virtual SC_HANDLE OpenServiceW(SC_HANDLE manager, const wchar_t* name, DWORD access) = 0;
    virtual BOOL CloseServiceHandle(SC_HANDLE handle) = 0;
    virtual BOOL StartServiceW(SC_HANDLE service, DWORD argc, const wchar_t** argv) = 0;
    virtual BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) = 0;
    virtual BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) = 0;
    virtual BOOL EnumDependentServicesW(SC_HANDLE service, DWORD state, ENUM_SERVICE_STATUSW* services,
                                        DWORD bufferSize, DWORD* bytesNeeded, DWORD* count) = 0;
    virtual DWORD GetTickCount() = 0;
    virtual void Sleep(DWORD milliseconds) = 0;
};

// The system's service control manager, clock and Sleep.
class SystemServiceManager final : public IServiceManager {
public:
    SC_HANDLE OpenSCManagerW(const wchar_t* machine, const wchar_t* database, DWORD access) override;
    SC_HANDLE OpenServiceW(SC_HANDLE manager, const wchar_t* name, DWORD access) override;
    BOOL CloseServiceHandle(SC_HANDLE handle) override;
    BOOL StartServiceW(SC_HANDLE service, DWORD argc, const wchar_t** argv) override;
    BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status) override;
    BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status) override;
    BOOL EnumDependentServicesW(SC_HANDLE service, DWORD state, ENUM_SERVICE_STATUSW* services,
                                DWORD bufferSize, DWORD* bytesNeeded, DWORD* count) override;
    DWORD GetTickCount() override;
    void Sleep(DWORD milliseconds) override;
};

// The manager that service control uses: the system's unless a test has set
// another one. SetServiceManager(nullptr) restores the system's.
IServiceManager& CurrentServiceManager();
void SetServiceManager(IServiceManager* manager);

} // namespace CL
