#include "common/LocalTimeTexts.h"

#include "common/Exception.h"
#include "common/LocalTime.h"

namespace CL {

namespace {

LONGLONG Ticks(const FILETIME& time)
{
    return static_cast<LONGLONG>((static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
}

} // namespace

std::wstring CLocalTimeTexts::Text(const FILETIME& utc)
{
    return LocalFileTimeText(Local(utc));
}

FILETIME CLocalTimeTexts::Local(const FILETIME& utc)
{
    if (!m_known) {
        FILETIME local;
        if (!::FileTimeToLocalFileTime(&utc, &local))
            ThrowLastError(L"FileTimeToLocalFileTime (&ft, &ftLocal)");
        m_offset = Ticks(local) - Ticks(utc);
        m_known = true;
    }
    const ULONGLONG ticks = static_cast<ULONGLONG>(Ticks(utc) + m_offset);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

} // namespace CL
