#include "common/Exception.h"

#include <cstdio>
#include <cwchar>

#include "common/Text.h"

namespace CL {

HRESULT HResultFromWin32(long error)
{
    if (error > 0)
        return static_cast<HRESULT>((static_cast<unsigned long>(error) & 0xFFFFul) | 0x80070000ul);
    return static_cast<HRESULT>(error);
}

HRESULT LastErrorAsHResult()
{
    return HResultFromWin32(static_cast<long>(::GetLastError()));
}

std::wstring SystemMessage(HRESULT error)
{
    wchar_t* buffer = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(error), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
        reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    std::wstring text;
    if (length != 0 && buffer != nullptr)
        text.assign(buffer, length);
    if (buffer != nullptr)
        ::LocalFree(buffer);
    return text;
}

CException::CException(HRESULT error, std::wstring source)
    : m_source(std::move(source)), m_error(error), m_message(SystemMessage(error))
{
}

CException::CException(const CException& other)
    : m_source(other.m_source), m_error(other.m_error), m_message(other.m_message)
{
}

void CException::Print() const
{
    std::fputs(Narrow(L"\n" + Text()).c_str(), stdout);
}

std::wstring CException::Text() const
{
    return Format(L"Exception CException: Error=0x%X(%ls) Source='%ls'",
                  static_cast<unsigned>(m_error), m_message.c_str(), m_source.c_str());
}

void ThrowLastError(const wchar_t* source)
{
    throw CException(LastErrorAsHResult(), source);
}

} // namespace CL
