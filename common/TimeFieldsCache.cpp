#include "common/TimeFieldsCache.h"

#include "common/Exception.h"

namespace CL {

namespace {

constexpr ULONGLONG kTicksPerMillisecond = 10000;
constexpr ULONGLONG kTicksPerSecond = 1000 * kTicksPerMillisecond;
constexpr ULONGLONG kTicksPerDay = 86400 * kTicksPerSecond;

} // namespace

const SYSTEMTIME& CTimeFieldsCache::Fields(const FILETIME& time)
{
    const ULONGLONG ticks = (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    const ULONGLONG day = ticks / kTicksPerDay;
    if (!m_known || day != m_day) {
        if (!::FileTimeToSystemTime(&time, &m_fields))
            ThrowLastError(L"FileTimeToSystemTime (&ft, &st)");
        m_day = day;
        m_known = true;
        return m_fields;
    }
    const ULONGLONG ofDay = ticks % kTicksPerDay;
    const ULONGLONG seconds = ofDay / kTicksPerSecond;
    m_fields.wHour = static_cast<WORD>(seconds / 3600);
    m_fields.wMinute = static_cast<WORD>(seconds / 60 % 60);
    m_fields.wSecond = static_cast<WORD>(seconds % 60);
    m_fields.wMilliseconds = static_cast<WORD>(ofDay % kTicksPerSecond / kTicksPerMillisecond);
    return m_fields;
}

} // namespace CL
