#pragma once
// The ServiceName of the settings record at the moment of the call: what the
// program hands the address space exchange, for tests that build their own
// exchange over a file of their own.
#include <string>

#include "config/Settings.h"

namespace test {

inline std::wstring SettingsServiceName()
{
    return g_Settings.ServiceName;
}

} // namespace test
