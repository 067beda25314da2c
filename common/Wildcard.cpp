#include "common/Wildcard.h"

namespace CL {

// The usual matcher that remembers the last '*' and, on a mismatch, lets it
// take one more character and goes on from there: linear for the usual
// patterns, no recursion, never exponential.
bool WildcardMatch(std::wstring_view pattern, std::wstring_view text)
{
    size_t p = 0;
    size_t t = 0;
    size_t star = std::wstring_view::npos;
    size_t resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            resume = t;
        } else if (star != std::wstring_view::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == L'*')
        ++p;
    return p == pattern.size();
}

bool IsWildcardPattern(std::wstring_view text)
{
    return text.find_first_of(L"*?") != std::wstring_view::npos;
}

} // namespace CL
