#include "addressspace/NameNumbering.h"

#include <cwctype>

namespace {

// The name split into its stem and trailing decimal number; number is -1
// when it ends without digits (or with more than fit).
struct Numbered {
    std::wstring stem;
    long long number = -1;
    size_t width = 0;   // digits kept with leading zeros ("007": 3)
};

std::wstring Digits(long long number, size_t width)
{
    std::wstring text = std::to_wstring(number);
    if (text.size() < width)
        text.insert(0, width - text.size(), L'0');
    return text;
}

Numbered Split(const std::wstring& name)
{
    size_t digits = name.size();
    while (digits > 0 && std::iswdigit(name[digits - 1]))
        --digits;
    const size_t length = name.size() - digits;
    if (length == 0 || length > 15)
        return {name, -1};
    const std::wstring number = name.substr(digits);
    return {name.substr(0, digits), std::stoll(number), number[0] == L'0' ? number.size() : 0};
}

} // namespace

std::wstring CNameNumbering::NextFree(const std::wstring& name, const Taken& taken)
{
    if (!taken(name))
        return name;
    std::wstring stem = name + L"_";
    long long number = 2;
    const Numbered split = Split(name);
    if (split.number >= 0 && !split.stem.empty() && split.stem.back() == L'_') {
        stem = split.stem;
        number = split.number + 1;
    }
    for (;; ++number) {
        std::wstring candidate = stem + std::to_wstring(number);
        if (!taken(candidate))
            return candidate;
    }
}

std::vector<std::wstring> CNameNumbering::CountOn(const std::wstring& name, size_t count, const Taken& taken)
{
    const Numbered split = Split(name);
    const std::wstring stem = split.number >= 0 ? split.stem : name + L"_";
    long long number = split.number >= 0 ? split.number + 1 : 1;
    std::vector<std::wstring> names;
    names.reserve(count);
    for (; names.size() < count; ++number) {
        std::wstring candidate = stem + Digits(number, split.width);
        if (!taken(candidate))
            names.push_back(std::move(candidate));
    }
    return names;
}
