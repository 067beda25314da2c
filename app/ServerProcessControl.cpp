#include "app/ServerProcessControl.h"

#include "common/ServiceControl.h"
#include "common/ProcessRun.h"

namespace CL {

bool CServerProcessControl::IsServiceRunning(const std::wstring& serviceName)
{
    return CL::IsServiceRunning(serviceName);
}

bool CServerProcessControl::StopServiceAndWait(const std::wstring& serviceName, DWORD timeoutMs)
{
    return CL::StopServiceAndWait(serviceName, L"", 0, timeoutMs) == kServiceDone;
}

bool CServerProcessControl::StartServiceAndWait(const std::wstring& serviceName, DWORD timeoutMs)
{
    return CL::StartServiceAndWait(serviceName, L"", 0, timeoutMs) == kServiceDone;
}

DWORD CServerProcessControl::RunAndWait(const std::wstring& commandLine)
{
    return RunProcessAndWait(commandLine);
}

} // namespace CL
