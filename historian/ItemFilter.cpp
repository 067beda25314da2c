#include "historian/ItemFilter.h"

#include <windows.h>

namespace CL {

CItemFilter::CItemFilter(std::wstring_view text)
    : m_folded(FoldCase(text)), m_pattern(text.find_first_of(L"*?") != std::wstring_view::npos)
{
}

std::wstring CItemFilter::FoldCase(std::wstring_view text)
{
    std::wstring folded(text);
    if (!folded.empty())
        ::LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.data(), static_cast<int>(text.size()), folded.data(),
                       static_cast<int>(folded.size()));
    return folded;
}

bool CItemFilter::Matches(std::wstring_view foldedId) const
{
    if (m_folded.empty())
        return true;
    if (!m_pattern)
        return foldedId.find(m_folded) != std::wstring_view::npos;
    return MatchesPattern(m_folded, foldedId);
}

// Wildcard match with one remembered '*': on a mismatch the last '*' takes
// one more character and matching goes on from there (linear for the usual
// patterns, never exponential).
bool CItemFilter::MatchesPattern(std::wstring_view pattern, std::wstring_view text)
{
    size_t p = 0;
    size_t t = 0;
    size_t star = std::wstring_view::npos;
    size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            starText = t;
        } else if (star != std::wstring_view::npos) {
            p = star + 1;
            t = ++starText;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == L'*')
        ++p;
    return p == pattern.size();
}

} // namespace CL
