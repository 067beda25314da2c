#include "common/Text.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <vector>

namespace CL {

namespace {

std::wstring VFormat(const wchar_t* format, va_list args)
{
    std::vector<wchar_t> buffer(256);
    for (;;) {
        va_list copy;
        va_copy(copy, args);
        const int n = std::vswprintf(buffer.data(), buffer.size(), format, copy);
        va_end(copy);
        if (n >= 0 && static_cast<size_t>(n) < buffer.size())
            return std::wstring(buffer.data(), static_cast<size_t>(n));
        if (buffer.size() > (1u << 26))
            return std::wstring();
        buffer.resize(buffer.size() * 4);
    }
}

std::string Convert(UINT codePage, std::wstring_view text)
{
    if (text.empty())
        return std::string();
    const int n = ::WideCharToMultiByte(codePage, 0, text.data(), static_cast<int>(text.size()),
                                        nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(n), '\0');
    ::WideCharToMultiByte(codePage, 0, text.data(), static_cast<int>(text.size()), out.data(), n,
                          nullptr, nullptr);
    return out;
}

std::wstring Convert(UINT codePage, std::string_view text)
{
    if (text.empty())
        return std::wstring();
    const int n = ::MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()),
                                        nullptr, 0);
    std::wstring out(static_cast<size_t>(n), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), out.data(), n);
    return out;
}

} // namespace

std::wstring Format(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    std::wstring text = VFormat(format, args);
    va_end(args);
    return text;
}

std::string FormatA(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (n > 0) {
        text.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(text.data(), text.size(), format, args);
        text.resize(static_cast<size_t>(n));
    }
    va_end(args);
    return text;
}

std::string Narrow(std::wstring_view text) { return Convert(CP_ACP, text); }
std::wstring Widen(std::string_view text) { return Convert(CP_ACP, text); }
std::string ToUtf8(std::wstring_view text) { return Convert(CP_UTF8, text); }

void AppendUtf8(std::string& out, char32_t code)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}
std::wstring FromUtf8(std::string_view text) { return Convert(CP_UTF8, text); }

std::wstring TrimWhiteSpace(std::wstring text)
{
    while (!text.empty() && std::iswspace(static_cast<wint_t>(text.back())))
        text.pop_back();
    size_t start = 0;
    while (start < text.size() && std::iswspace(static_cast<wint_t>(text[start])))
        ++start;
    return text.substr(start);
}

bool EqualsNoCase(std::wstring_view a, std::wstring_view b)
{
    if (a.size() != b.size())
        return false;
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                  static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

} // namespace CL
