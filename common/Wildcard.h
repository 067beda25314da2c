#pragma once
// Matching of a text against a pattern with '*' (any run of characters,
// also none) and '?' (any one character). The comparison is exact: callers
// that ignore letter case fold both sides first.
#include <string_view>

namespace CL {

// True when the pattern matches the whole text.
bool WildcardMatch(std::wstring_view pattern, std::wstring_view text);

// True when the text holds '*' or '?', i.e. is meant as a pattern.
bool IsWildcardPattern(std::wstring_view text);

} // namespace CL
