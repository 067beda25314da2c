#include "SimService.h"

#include <objbase.h>

#include "SimKnobs.h"
#include "common/Text.h"

namespace sim {

CSimService* CSimService::s_instance = nullptr;

CSimService::CSimService(std::wstring name, CSimReport& report)
    : m_name(std::move(name)), m_report(report), m_addressSpace(report)
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
    m_addressSpace.Load();
    ReportStatus(SERVICE_RUNNING, 0, 0);
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
            m_addressSpace.Load();
            break;
        case Request::Write:
            ::Sleep(ReadKnobs(m_report.Folder()).writeDelay);
            m_addressSpace.Write();
            break;
        case Request::Stop:
            ::CoUninitialize();
            Stop();
            return;
        }
    }
}

} // namespace sim
