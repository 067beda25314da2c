#pragma once
// The change journal's entries for the server's service started or stopped
// from the tray menu, with whether it reached that state in time.
#include <windows.h>

#include <string>

namespace CL {

// result: what StartServiceAndWait / StopServiceAndWait returned (0: the
// state was reached; 1: the time-out passed first).
void JournalServiceStarted(const std::wstring& serviceName, DWORD result) noexcept;
void JournalServiceStopped(const std::wstring& serviceName, DWORD result) noexcept;

} // namespace CL
