#pragma once
// What the options dialog needs of the server around a settings change:
// the state of its service, stopping and starting the service with a time-out,
// and running the server executable's command lines and waiting for them.
// Declared here and implemented by the application shell, so that config/
// does not depend on it.
#include <windows.h>

#include <string>

namespace CL {

class IServerControl {
public:
    virtual ~IServerControl() = default;

    // Whether the service of this name is running (false when it does not exist).
    virtual bool IsServiceRunning(const std::wstring& serviceName) = 0;
    // Stops the service (its running dependents first) and waits; true when
    // it stopped within the time-out (or does not exist). Failures throw.
    virtual bool StopServiceAndWait(const std::wstring& serviceName, DWORD timeoutMs) = 0;
    // Starts the service and waits; true when it runs within the time-out.
    // Failures throw.
    virtual bool StartServiceAndWait(const std::wstring& serviceName, DWORD timeoutMs) = 0;
    // Runs a command line (program path first) and waits for its end without
    // limit; returns its exit code. Failures throw.
    virtual DWORD RunAndWait(const std::wstring& commandLine) = 0;
};

} // namespace CL
