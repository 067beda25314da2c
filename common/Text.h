#pragma once
// Small text helpers: printf-style formatting into std::string/std::wstring
// and conversions between wide text and the ANSI code page.
#include <string>
#include <string_view>

namespace CL {

std::wstring Format(const wchar_t* format, ...);
std::string FormatA(const char* format, ...);

// Wide text to the ANSI code page (the log is 8-bit text) and back.
std::string Narrow(std::wstring_view text);
std::wstring Widen(std::string_view text);
// Wide text to UTF-8 and back.
std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);
// Appends one Unicode code point (at most U+10FFFF) as UTF-8.
void AppendUtf8(std::string& out, char32_t code);

// Removes wide-character white space (iswspace) at the end, then at the start.
std::wstring TrimWhiteSpace(std::wstring text);

// Case-insensitive equality of whole wide strings.
bool EqualsNoCase(std::wstring_view a, std::wstring_view b);

} // namespace CL
