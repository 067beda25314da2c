#include "common/LocalTime.h"

#include <oleauto.h>

#include <cwchar>

#include "common/Exception.h"
#include "common/Util_Variant.h"

namespace CL {

namespace {

constexpr double kMillisecondsPerDay = 86400000.0;

using FileTimeShift = BOOL(WINAPI*)(const FILETIME*, LPFILETIME);

// Calendar fields, file time, shifted file time, calendar fields, OLE date.
DATE ShiftDate(DATE date, FileTimeShift shift, const wchar_t* shiftSource)
{
    const SYSTEMTIME fields = DateToSystemTime(date);
    FILETIME fileTime;
    if (!::SystemTimeToFileTime(&fields, &fileTime))
        ThrowLastError(L"SystemTimeToFileTime (&st, &ft)");
    FILETIME shifted;
    if (!shift(&fileTime, &shifted))
        ThrowLastError(shiftSource);
    SYSTEMTIME result;
    if (!::FileTimeToSystemTime(&shifted, &result))
        ThrowLastError(L"FileTimeToSystemTime (&ft, &st)");
    return SystemTimeToDate(result);
}

SYSTEMTIME FileTimeFields(const FILETIME& fileTime)
{
    SYSTEMTIME fields;
    if (!::FileTimeToSystemTime(&fileTime, &fields))
        ThrowLastError(L"FileTimeToSystemTime (&ft, &st)");
    return fields;
}

std::wstring FieldsText(const SYSTEMTIME& t, const wchar_t* format)
{
    wchar_t text[64];
    std::swprintf(text, 64, format, t.wDay, t.wMonth, t.wYear, t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
    return text;
}

// Reads an unsigned decimal number at pos (at least one digit).
unsigned ReadNumber(std::wstring_view text, size_t& pos)
{
    const size_t start = pos;
    unsigned long long value = 0;
    while (pos < text.size() && text[pos] >= L'0' && text[pos] <= L'9') {
        value = value * 10 + static_cast<unsigned>(text[pos] - L'0');
        if (value > 0xFFFF)
            throw CException(E_INVALIDARG, L"ParseTimeText (text)");
        ++pos;
    }
    if (pos == start)
        throw CException(E_INVALIDARG, L"ParseTimeText (text)");
    return static_cast<unsigned>(value);
}

void SkipSeparator(std::wstring_view text, size_t& pos, size_t count)
{
    if (text.size() - pos < count)
        throw CException(E_INVALIDARG, L"ParseTimeText (text)");
    pos += count;
}

} // namespace

DATE UtcToLocalDate(DATE utc)
{
    return ShiftDate(utc, &::FileTimeToLocalFileTime, L"FileTimeToLocalFileTime (&ft, &ftLocal)");
}

DATE LocalToUtcDate(DATE local)
{
    return ShiftDate(local, &::LocalFileTimeToFileTime, L"LocalFileTimeToFileTime (&ftLocal, &ft)");
}

DATE NowUtcDate()
{
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    DATE date = 0.0;
    if (::SystemTimeToVariantTime(&now, &date))
        date += now.wMilliseconds / kMillisecondsPerDay;
    return date;
}

DATE NowLocalDate()
{
    return UtcToLocalDate(NowUtcDate());
}

std::wstring LocalTimeText(const FILETIME& utc)
{
    FILETIME local;
    if (!::FileTimeToLocalFileTime(&utc, &local))
        ThrowLastError(L"FileTimeToLocalFileTime (&ft, &ftLocal)");
    return LocalFileTimeText(local);
}

std::wstring LocalFileTimeText(const FILETIME& local)
{
    return FieldsText(FileTimeFields(local), L"%02u:%02u:%04u - %02u:%02u:%02u:%03u");
}

std::wstring UtcExportText(const FILETIME& utc)
{
    return FieldsText(FileTimeFields(utc), L"%02u:%02u:%04u %02u:%02u:%02u:%03u");
}

std::wstring UtcIsoText(const FILETIME& utc)
{
    const SYSTEMTIME t = FileTimeFields(utc);
    wchar_t text[64];
    std::swprintf(text, 64, L"%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute,
                  t.wSecond, t.wMilliseconds);
    return text;
}

DATE ParseTimeText(std::wstring_view text)
{
    // Fields in text order and the separator length after each.
    static constexpr size_t kSeparatorAfter[] = {1, 1, 3, 1, 1, 1, 0};
    unsigned fields[7] = {};
    size_t pos = 0;
    for (size_t i = 0; i < 7; ++i) {
        fields[i] = ReadNumber(text, pos);
        if (kSeparatorAfter[i])
            SkipSeparator(text, pos, kSeparatorAfter[i]);
    }
    SYSTEMTIME st{};
    st.wDay = static_cast<WORD>(fields[0]);
    st.wMonth = static_cast<WORD>(fields[1]);
    st.wYear = static_cast<WORD>(fields[2]);
    st.wHour = static_cast<WORD>(fields[3]);
    st.wMinute = static_cast<WORD>(fields[4]);
    st.wSecond = static_cast<WORD>(fields[5]);
    DATE date = 0.0;
    if (!::SystemTimeToVariantTime(&st, &date))
        throw CException(E_INVALIDARG, L"SystemTimeToVariantTime (&st, &date)");
    return date + fields[6] / kMillisecondsPerDay;
}

} // namespace CL
