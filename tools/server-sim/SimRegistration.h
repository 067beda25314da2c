#pragma once
// Registering the simulator as a Windows service and removing it again. Used
// by the simulator's own --register-service/--delete-service command lines
// (the demo) and compiled into the tests' support library.
#include <windows.h>

#include <string>

namespace sim {

// Creates an own-process, demand-start service running exePath (quoted) under
// the given name; an existing service of that name is pointed at exePath
// instead. Returns ERROR_SUCCESS or the Win32 error.
DWORD RegisterSimulatorService(const std::wstring& name, const std::wstring& exePath,
                               const std::wstring& displayName);

// Stops the service (waiting up to timeoutMs for it to stop) and deletes it.
// A service that does not exist is no error. Returns ERROR_SUCCESS or the
// Win32 error.
DWORD DeleteSimulatorService(const std::wstring& name, DWORD timeoutMs);

// The current state of the service (SERVICE_RUNNING, ...), 0 when it does not
// exist or cannot be queried.
DWORD QuerySimulatorServiceState(const std::wstring& name);

} // namespace sim
