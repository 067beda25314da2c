#pragma once
// CItemFilter: the explorer's filter of item IDs. The typed text keeps the
// IDs that contain it; a text with '*' (any run of characters) or '?' (one
// character) is a pattern the whole ID must match. Letter case is ignored:
// both sides are compared in their upper-case form (FoldCase), which the
// explorer keeps per row so that a keystroke folds only the typed text.
#include <string>
#include <string_view>

namespace CL {

class CItemFilter {
public:
    explicit CItemFilter(std::wstring_view text);

    // The text in the form the comparison uses (upper case, invariant rules).
    static std::wstring FoldCase(std::wstring_view text);

    bool IsEmpty() const { return m_folded.empty(); }
    bool IsPattern() const { return m_pattern; }
    // Whether an ID, given in its folded form, passes the filter.
    bool Matches(std::wstring_view foldedId) const;

private:
    static bool MatchesPattern(std::wstring_view pattern, std::wstring_view text);

    std::wstring m_folded;
    bool m_pattern = false;
};

} // namespace CL
