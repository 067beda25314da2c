#include "config/NumberText.h"

#include <cerrno>
#include <climits>
#include <cwchar>
#include <cwctype>

namespace CL {

bool ParseSignedDecimal(const std::wstring& text, long& value)
{
    const wchar_t* begin = text.c_str();
    while (std::iswspace(*begin))
        ++begin;
    if (*begin == L'\0')
        return false;
    const wchar_t* digits = (*begin == L'+' || *begin == L'-') ? begin + 1 : begin;
    if (!std::iswdigit(*digits))
        return false;   // wcstol would also take "0x" and inner blanks
    wchar_t* end = nullptr;
    errno = 0;
    const long long parsed = std::wcstoll(begin, &end, 10);
    if (errno == ERANGE || parsed < LONG_MIN || parsed > LONG_MAX)
        return false;
    while (std::iswspace(*end))
        ++end;
    if (*end != L'\0')
        return false;
    value = static_cast<long>(parsed);
    return true;
}

} // namespace CL
