#include "common/EventLogSink.h"

#include <windows.h>

namespace CL {

bool CWindowsEventLog::Report(const std::wstring& text)
{
    const HANDLE source = ::RegisterEventSourceW(nullptr, m_source.c_str());
    if (!source)
        return false;
    const wchar_t* strings[] = {text.c_str()};
    // Event id 1: "a change made by the control panel" (no message file is
    // registered, so viewers show the string itself).
    const BOOL reported = ::ReportEventW(source, EVENTLOG_INFORMATION_TYPE, 0, 1, nullptr, 1, 0, strings, nullptr);
    ::DeregisterEventSource(source);
    return reported != FALSE;
}

} // namespace CL
