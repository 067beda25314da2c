#pragma once
// CL::CException: the program's own exception. It carries the failing
// operation as source text, the HRESULT, and the system's text for it.
#include <windows.h>
#include <string>

namespace CL {

// The one rule that turns a Win32 error (GetLastError) into an HRESULT:
// positive values get the Win32 facility, 0 and negative values stay as
// they are (they already are HRESULTs or success).
HRESULT HResultFromWin32(long error);

// HResultFromWin32(GetLastError()).
HRESULT LastErrorAsHResult();

// The system's message text for a code (FormatMessageW, language neutral),
// whole, with its trailing line break; empty when the system has none.
std::wstring SystemMessage(HRESULT error);

class CException {
public:
    CException(HRESULT error, std::wstring source);
    CException(const CException& other);
    CException& operator=(const CException& other) = default;

    // Writes "\n" followed by Text() to standard output.
    virtual void Print() const;
    // "Exception CException: Error=0x%X(%s) Source='%s'".
    virtual std::wstring Text() const;
    virtual ~CException() = default;

    HRESULT Error() const { return m_error; }
    const std::wstring& Source() const { return m_source; }
    const std::wstring& Message() const { return m_message; }

private:
    std::wstring m_source;
    HRESULT m_error;
    std::wstring m_message;
};

// Throws CException(LastErrorAsHResult(), source).
[[noreturn]] void ThrowLastError(const wchar_t* source);

} // namespace CL
