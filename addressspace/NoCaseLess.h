#pragma once
// The key order of the address space maps: wide strings compared without
// regard to letter case (_wcsicmp), so that names differing only in case are
// one key and iteration lists names in case-insensitive alphabetical order.
#include <cwchar>
#include <string>

struct NoCaseLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const noexcept
    {
        return _wcsicmp(a.c_str(), b.c_str()) < 0;
    }
};

// Equality under the same rule.
inline bool EqualNoCase(const std::wstring& a, const std::wstring& b) noexcept
{
    return _wcsicmp(a.c_str(), b.c_str()) == 0;
}
