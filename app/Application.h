#pragma once
// The control panel's start-up, message loop and shut-down.
#include <windows.h>

#include <string>

namespace CL {

inline constexpr wchar_t kAlreadyRunningText[] = L"The application is already running, see systray.";
inline constexpr wchar_t kAlreadyRunningTitle[] = L"Start";

// The name of the instance mutex: the service name followed by "Mutex".
std::wstring InstanceMutexName(const std::wstring& serviceName);

// Runs the whole program; returns the process exit code.
int RunControlPanel(HINSTANCE instance);

} // namespace CL
