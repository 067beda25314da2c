#pragma once
// Mutations of a text file as a careless editor, a broken disk or a hostile
// sender would make them: truncation, attributes and elements deleted or
// duplicated, values of the wrong type, huge and negative numbers, deep
// nesting, invalid UTF-8 and UTF-16, very long names and values, embedded
// NUL bytes, byte flips and splices. The markup-aware mutations look for
// `name="value"` attributes and `<...>` tags; on other text (CSV) they fall
// back to the byte-level ones.
#include <string>
#include <vector>

#include "FuzzRandom.h"

namespace fuzz {

class CTextMutator {
public:
    // tokens: text the format gives a meaning (type names, separators, ...),
    // used as values of the wrong type and as insertions.
    explicit CTextMutator(std::vector<std::string> tokens);

    // One to three mutations of `text` (none that takes it past 2 MB).
    std::string Mutate(const std::string& text, CFuzzRandom& random) const;

private:
    void MutateOnce(std::string& text, CFuzzRandom& random) const;
    void Truncate(std::string& text, CFuzzRandom& random) const;
    void DeleteAttribute(std::string& text, CFuzzRandom& random) const;
    void DuplicateAttribute(std::string& text, CFuzzRandom& random) const;
    void DeleteElement(std::string& text, CFuzzRandom& random) const;
    void DuplicateElement(std::string& text, CFuzzRandom& random) const;
    void ReplaceValue(std::string& text, CFuzzRandom& random) const;
    void Nest(std::string& text, CFuzzRandom& random) const;
    void InvalidUtf8(std::string& text, CFuzzRandom& random) const;
    void Utf16(std::string& text, CFuzzRandom& random) const;
    void LongValue(std::string& text, CFuzzRandom& random) const;
    void Nul(std::string& text, CFuzzRandom& random) const;
    void FlipBytes(std::string& text, CFuzzRandom& random) const;
    void Splice(std::string& text, CFuzzRandom& random) const;
    void InsertToken(std::string& text, CFuzzRandom& random) const;

    // A value of the wrong type, a number at or past a limit, or a token.
    std::string OddValue(CFuzzRandom& random) const;

    std::vector<std::string> m_tokens;
};

} // namespace fuzz
