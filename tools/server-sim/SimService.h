#pragma once
// CSimService: the simulated server's Windows service. The control handler
// only queues requests (reload, write, stop) and returns at once, as a real
// service must; the service's main thread works them off in order. With a
// historian database named in the settings, the archiver's thread appends
// runs of the archived items' values meanwhile (SimArchiver.h).
#include <windows.h>

#include <deque>
#include <memory>
#include <string>

#include "SimAddressSpace.h"
#include "SimArchiver.h"
#include "SimReport.h"

namespace sim {

class CSimService {
public:
    // archiveConnection: the connection string of the historian database,
    // empty for none (nothing is archived).
    CSimService(std::wstring name, std::wstring archiveConnection, CSimReport& report);
    ~CSimService();
    CSimService(const CSimService&) = delete;
    CSimService& operator=(const CSimService&) = delete;

    // Connects to the service control manager and runs until the service has
    // stopped. Returns the process exit code.
    int Run();

private:
    enum class Request { Reload, Write, Stop };

    static void WINAPI StaticServiceMain(DWORD argc, LPWSTR* argv);
    static DWORD WINAPI StaticHandler(DWORD control, DWORD eventType, void* eventData, void* context);

    void ServiceMain();
    DWORD OnControl(DWORD control);
    void ReportStatus(DWORD state, DWORD waitHint, DWORD checkPoint);
    void Post(Request request);
    Request NextRequest();
    void Start();
    void Stop();
    void LoadAddressSpace();
    void StartArchiving();

    static CSimService* s_instance;

    std::wstring m_name;
    CSimReport& m_report;
    CSimAddressSpace m_addressSpace;
    std::wstring m_archiveConnection;
    std::unique_ptr<CSimArchiver> m_archiver;   // null while nothing is archived
    SERVICE_STATUS_HANDLE m_statusHandle = nullptr;
    SERVICE_STATUS m_status = {};
    CRITICAL_SECTION m_lock;
    HANDLE m_wake = nullptr;
    std::deque<Request> m_requests;
};

} // namespace sim
