#pragma once
// Control of the server's Windows service: whether it runs, starting it and
// waiting, stopping it (its running dependents first) and waiting, and
// sending it user control codes. Each call opens and closes its own handles
// through CurrentServiceManager(). Every failure throws CL::CException with
// the converted last error and the source text of the failed step.
#include <windows.h>

#include <string>

namespace CL {

// Result of StartServiceAndWait / StopServiceAndWait.
inline constexpr DWORD kServiceDone = 0;      // running / stopped (or not installed)
inline constexpr DWORD kServiceNotYet = 1;    // the time-out passed, or no wait was asked

// The user control codes the server understands.
inline constexpr DWORD kControlReloadAddressSpace = 128;
inline constexpr DWORD kControlWriteAddressSpace = 129;

// The error of a dependent service that did not stop in time.
inline constexpr HRESULT kServiceTimeoutError = static_cast<HRESULT>(0x800705B4ul);

// An empty machine name means the local machine.
bool IsServiceRunning(const std::wstring& name, const std::wstring& machine = L"");

// noWaitThreadId: when it equals the calling thread's id the call returns 1
// right after the request, without waiting (callers pass 0: always wait).
DWORD StartServiceAndWait(const std::wstring& name, const std::wstring& machine, DWORD noWaitThreadId,
                          DWORD timeoutMs);
DWORD StopServiceAndWait(const std::wstring& name, const std::wstring& machine, DWORD noWaitThreadId,
                         DWORD timeoutMs);

void ControlServiceCode(const std::wstring& name, DWORD code, const std::wstring& machine = L"");

} // namespace CL
