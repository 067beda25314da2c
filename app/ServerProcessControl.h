#pragma once
// CServerProcessControl: the options dialog's view of the server (service
// state, stop, start, running the server executable), served by the
// service control of this program and the process runner.
#include "config/ServerControlPart.h"

namespace CL {

class CServerProcessControl final : public IServerControl {
public:
    bool IsServiceRunning(const std::wstring& serviceName) override;
    bool StopServiceAndWait(const std::wstring& serviceName, DWORD timeoutMs) override;
    bool StartServiceAndWait(const std::wstring& serviceName, DWORD timeoutMs) override;
    DWORD RunAndWait(const std::wstring& commandLine) override;
};

} // namespace CL
