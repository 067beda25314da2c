#include "SimService.h"

#include <objbase.h>

#include "SimArchivedItems.h"
#include "SimKnobs.h"
#include "common/CaughtException.h"
#include "common/Text.h"

namespace sim {

CSimService* CSimService::s_instance = nullptr;

CSimService::CSimService(std::wstring name, std::wstring archiveConnection, CSimReport& report)
    : m_name(std::move(name)),
      m_report(report),
      m_addressSpace(report),
      m_archiveConnection(std::move(archiveConnection))
{
    ::InitializeCriticalSection(&m_lock);
    m_wake = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    m_status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    m_status.dwCurrentState = SERVICE_START_PENDING;
}

CSimService::~CSimService()
{
    ::CloseHandle(m_wake);
    ::DeleteCriticalSection(&m_lock);
}

int CSimService::Run()
{
    s_instance = this;
    SERVICE_TABLE_ENTRYW table[] = {{m_name.data(), &CSimService::StaticServiceMain}, {nullptr, nullptr}};
    if (!::StartServiceCtrlDispatcherW(table)) {
        const DWORD error = ::GetLastError();
        m_report.Event(CL::FormatA("not started by the service control manager (error %lu)", error));
        return static_cast<int>(error);
    }
    return 0;
}

void WINAPI CSimService::StaticServiceMain(DWORD, LPWSTR*)
{
    s_instance->ServiceMain();
}

DWORD WINAPI CSimService::StaticHandler(DWORD control, DWORD, void*, void* context)
{
    return static_cast<CSimService*>(context)->OnControl(control);
}

void CSimService::ReportStatus(DWORD state, DWORD waitHint, DWORD checkPoint)
{
    ::EnterCriticalSection(&m_lock);
    m_status.dwCurrentState = state;
    m_status.dwWaitHint = waitHint;
    m_status.dwCheckPoint = checkPoint;
    m_status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    m_status.dwWin32ExitCode = NO_ERROR;
    ::SetServiceStatus(m_statusHandle, &m_status);
    ::LeaveCriticalSection(&m_lock);
}

void CSimService::Post(Request request)
{
    ::EnterCriticalSection(&m_lock);
    m_requests.push_back(request);
    ::LeaveCriticalSection(&m_lock);
    ::SetEvent(m_wake);
}

CSimService::Request CSimService::NextRequest()
{
    for (;;) {
        ::EnterCriticalSection(&m_lock);
        if (!m_requests.empty()) {
            const Request request = m_requests.front();
            m_requests.pop_front();
            ::LeaveCriticalSection(&m_lock);
            return request;
        }
        ::LeaveCriticalSection(&m_lock);
        ::WaitForSingleObject(m_wake, INFINITE);
    }
}

DWORD CSimService::OnControl(DWORD control)
{
    switch (control) {
    case SERVICE_CONTROL_STOP:
        m_report.Event("stop requested");
        ReportStatus(SERVICE_STOP_PENDING, ReadKnobs(m_report.Folder()).stopWaitHint, 1);
        Post(Request::Stop);
        return NO_ERROR;
    case SERVICE_CONTROL_INTERROGATE:
        return NO_ERROR;
    case 128:
        m_report.Event("control 128");
        Post(Request::Reload);
        return NO_ERROR;
    case 129:
        m_report.Event("control 129");
        if (ReadKnobs(m_report.Folder()).ignoreWriteRequest)
            m_report.Event("ignored 129");
        else
            Post(Request::Write);
        return NO_ERROR;
    default:
        return ERROR_CALL_NOT_IMPLEMENTED;
    }
}

void CSimService::Start()
{
    const SimKnobs knobs = ReadKnobs(m_report.Folder());
    ReportStatus(SERVICE_START_PENDING, knobs.startWaitHint, 1);
    m_report.Event("started " + CL::ToUtf8(m_name));
    ::Sleep(knobs.startDelay);
    StartArchiving();
    LoadAddressSpace();
    ReportStatus(SERVICE_RUNNING, 0, 0);
}

// The archiver runs when the settings name a database; a failure to start it
// is reported and the service runs on without archiving.
void CSimService::StartArchiving()
{
    if (m_archiveConnection.empty()) {
        m_report.Event("archiving off, no database in the settings");
        return;
    }
    try {
        auto archiver = std::make_unique<CSimArchiver>(m_report, m_archiveConnection);
        archiver->Start();
        m_archiver = std::move(archiver);
    } catch (...) {
        m_report.Event("archiving off, " + CL::CaughtExceptionLine());
    }
}

// Loads the exchange file; after a successful load the archiver takes the
// items marked for archiving from what is now held. Either way one archive
// run follows.
void CSimService::LoadAddressSpace()
{
    const bool loaded = m_addressSpace.Load();
    if (!m_archiver)
        return;
    if (loaded) {
        std::vector<SimArchivedItem> items;
        try {
            items = ReadArchivedItems(m_addressSpace.LoadedCopyPath());
            m_report.Event(CL::FormatA("archiving on, %u items", static_cast<unsigned>(items.size())));
        } catch (...) {
            m_report.Event("archiving on, 0 items: " + CL::CaughtExceptionLine());
        }
        m_archiver->SetItems(std::move(items));
    }
    m_archiver->RequestRun();
}

// Takes as long as the StopDelay knob says, reporting progress with the
// StopWaitHint knob, then reports the service stopped.
void CSimService::Stop()
{
    const SimKnobs knobs = ReadKnobs(m_report.Folder());
    const DWORD start = ::GetTickCount();
    DWORD checkPoint = 1;
    while (::GetTickCount() - start < knobs.stopDelay) {
        ::Sleep(100);
        ReportStatus(SERVICE_STOP_PENDING, knobs.stopWaitHint, ++checkPoint);
    }
    m_report.Event("stopped");
    ReportStatus(SERVICE_STOPPED, 0, 0);
}

void CSimService::ServiceMain()
{
    m_statusHandle = ::RegisterServiceCtrlHandlerExW(m_name.c_str(), &CSimService::StaticHandler, this);
    if (!m_statusHandle) {
        m_report.Event(CL::FormatA("RegisterServiceCtrlHandlerExW failed (error %lu)", ::GetLastError()));
        return;
    }
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    Start();
    for (;;) {
        switch (NextRequest()) {
        case Request::Reload:
            LoadAddressSpace();
            break;
        case Request::Write:
            ::Sleep(ReadKnobs(m_report.Folder()).writeDelay);
            m_addressSpace.Write();
            break;
        case Request::Stop:
            if (m_archiver) {
                DWORD checkPoint = 1;
                const DWORD waitHint = ReadKnobs(m_report.Folder()).stopWaitHint;
                m_archiver->Stop([&] { ReportStatus(SERVICE_STOP_PENDING, waitHint, ++checkPoint); });
                m_archiver.reset();
            }
            ::CoUninitialize();
            Stop();
            return;
        }
    }
}

} // namespace sim
