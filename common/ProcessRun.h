#pragma once
// Running a program and waiting for it to end.
#include <windows.h>

#include <string>

namespace CL {

// Creates a process from the command line (no separate application name,
// default security, no inherited handles, default creation flags,
// environment and current folder), waits without limit for its end and
// returns its exit code. A process that cannot be created or whose exit code
// cannot be read throws CException with the platform status.
DWORD RunProcessAndWait(const std::wstring& commandLine);

} // namespace CL
