#pragma once
// FakeServiceManager: a scripted service control manager for the tests of
// service control. Services are small state machines on a fake clock: a
// start or stop request makes a service pending for a scripted duration,
// after which a status query sees the final state. Sleep advances the clock
// by its argument, so time-outs are checked exactly and without waiting.
// Every call is recorded; handles are counted so tests can see that each
// opened handle was closed again. Failures are scripted as Win32 errors.
#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/ServiceManager.h"

namespace test {

class FakeServiceManager : public CL::IServiceManager {
public:
    static constexpr DWORD kNever = INFINITE;   // a duration that never ends

    struct Service {
        std::wstring name;
        DWORD state = SERVICE_STOPPED;
        DWORD startWaitHint = 0;          // reported while START_PENDING
        DWORD stopWaitHint = 0;           // reported while STOP_PENDING
        DWORD startDuration = 0;          // ms from the start request to RUNNING
        DWORD stopDuration = 0;           // ms from the stop request to STOPPED
        std::vector<std::wstring> dependents;   // services that depend on this one
        DWORD openError = 0;              // OpenServiceW fails with this
        DWORD startError = 0;             // StartServiceW fails with this
        DWORD controlError = 0;           // ControlService fails with this
        DWORD queryError = 0;             // QueryServiceStatus fails with this ...
        int queryErrorAfter = 0;          // ... after this many successful queries
        // Progress, kept by the fake.
        DWORD pendingSince = 0;
        int queries = 0;
        std::vector<DWORD> controls;      // control codes received
    };

    FakeServiceManager();
    ~FakeServiceManager() override;

    Service& Add(const std::wstring& name, DWORD state = SERVICE_STOPPED);
    Service& Get(const std::wstring& name);

    // Scripted failures of the manager itself.
    DWORD managerOpenError = 0;
    DWORD firstEnumerationError = 0;     // instead of ERROR_MORE_DATA
    DWORD secondEnumerationError = 0;
    // The fake clock and what one status query costs on it.
    DWORD tick = 1000;
    DWORD queryCost = 0;

    // What happened.
    std::vector<std::wstring> calls;      // e.g. L"Query Morvane", L"Sleep 500"
    std::vector<DWORD> sleeps;
    std::wstring lastMachine = L"(none)"; // L"(null)" for the local machine
    DWORD lastManagerAccess = 0;
    std::vector<DWORD> enumerationBufferSizes;
    int openHandles() const { return static_cast<int>(m_handles.size()); }
    int queryCount(const std::wstring& name) { return Get(name).queries; }

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

private:
    struct HandleInfo {
        std::wstring service;   // empty for the manager
        DWORD access = 0;
    };
    SC_HANDLE NewHandle(const std::wstring& service, DWORD access);
    Service* ServiceOf(SC_HANDLE handle);
    void Advance(Service& service);
    void Fill(const Service& service, SERVICE_STATUS* status) const;
    BOOL Fail(DWORD error);

    std::map<std::wstring, std::unique_ptr<Service>> m_services;
    std::vector<std::wstring> m_order;
    std::map<SC_HANDLE, HandleInfo> m_handles;
    uintptr_t m_nextHandle = 0x5C000;
};

// Installs a manager as the one service control uses, for one scope.
class ScopedServiceManager {
public:
    explicit ScopedServiceManager(CL::IServiceManager& manager) { CL::SetServiceManager(&manager); }
    ~ScopedServiceManager() { CL::SetServiceManager(nullptr); }
    ScopedServiceManager(const ScopedServiceManager&) = delete;
    ScopedServiceManager& operator=(const ScopedServiceManager&) = delete;
};

} // namespace test
