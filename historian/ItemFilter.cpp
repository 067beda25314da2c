#include "historian/ItemFilter.h"

#include <windows.h>

#include "common/Wildcard.h"

namespace CL {

CItemFilter::CItemFilter(std::wstring_view text)
    : m_folded(FoldCase(text)), m_pattern(IsWildcardPattern(text))
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

bool CItemFilter::MatchesPattern(std::wstring_view pattern, std::wstring_view text)
{
    return WildcardMatch(pattern, text);
}

} // namespace CL
