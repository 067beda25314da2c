#include "TextMutator.h"

#include <algorithm>

namespace fuzz {

namespace {

const char* const kOddValues[] = {
    "", " ", "abc", "-1", "0", "1", "-0", "+7", "1e309", "-1e309", "1e-320", "NaN", "INF", "-INF", "0x10",
    "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296", "65535", "65536",
    "-65536", "9223372036854775807", "9223372036854775808", "-9223372036854775809", "18446744073709551616",
    "99999999999999999999999999999999", "1.7976931348623157e308", "3.4e39", "True", "False", "true", "-1.5",
    "12,5", "1 000", "\t5\t", "{00000000-0000-0000-0000-000000000000}", "{ZZZZZZZZ-0000-0000-0000-000000000000}",
    "{", "8192", "8195", "24", "12", "13", "9", "72", "0xFFFF", "&amp;", "&#0;", "&#xD800;", "&#1114112;",
    "&lt;Branch&gt;", "01.02.2024 - 13:45:30", "31.02.2024", "30.12.1899", "-657435", "2958466"};

// Where the value of the attribute that starts at `eq` (its '=') ends; npos
// when the quote does not close.
size_t QuotedEnd(const std::string& text, size_t eq)
{
    if (eq + 1 >= text.size() || (text[eq + 1] != '"' && text[eq + 1] != '\''))
        return std::string::npos;
    return text.find(text[eq + 1], eq + 2);
}

// The '=' of a random attribute `name="value"`, or npos.
size_t RandomAttribute(const std::string& text, CFuzzRandom& random)
{
    std::vector<size_t> found;
    for (size_t at = text.find("=\""); at != std::string::npos && found.size() < 4096; at = text.find("=\"", at + 2))
        found.push_back(at);
    return found.empty() ? std::string::npos : found[random.Below(found.size())];
}

// The start of the attribute's name (the blank before it + 1).
size_t AttributeStart(const std::string& text, size_t eq)
{
    size_t start = eq;
    while (start > 0 && text[start - 1] != ' ' && text[start - 1] != '<' && text[start - 1] != '\n')
        --start;
    return start;
}

// A random tag's span [begin, end) from '<' to the matching '>' of its
// element when it is simple (self-closing, or closed by the next "</").
bool RandomElement(const std::string& text, CFuzzRandom& random, size_t& begin, size_t& end)
{
    std::vector<size_t> tags;
    for (size_t at = text.find('<'); at != std::string::npos && tags.size() < 4096; at = text.find('<', at + 1))
        if (at + 1 < text.size() && text[at + 1] != '/')
            tags.push_back(at);
    if (tags.empty())
        return false;
    begin = tags[random.Below(tags.size())];
    const size_t close = text.find('>', begin);
    if (close == std::string::npos)
        return false;
    if (text[close - 1] == '/') {
        end = close + 1;
        return true;
    }
    const size_t closing = text.find("</", close);
    const size_t closingEnd = closing == std::string::npos ? std::string::npos : text.find('>', closing);
    end = closingEnd == std::string::npos ? text.size() : closingEnd + 1;
    return true;
}

} // namespace

CTextMutator::CTextMutator(std::vector<std::string> tokens) : m_tokens(std::move(tokens)) {}

// Mutations compound (a nesting widened to UTF-16, then duplicated two
// hundred times): one that would take the input past this size is undone,
// so that a slow input means a slow loader, not a file of a hundred MB.
constexpr size_t kLargestInput = 2 * 1024 * 1024;

std::string CTextMutator::Mutate(const std::string& text, CFuzzRandom& random) const
{
    std::string mutated = text;
    const size_t count = 1 + random.Below(3);
    for (size_t i = 0; i < count; ++i) {
        std::string before = mutated;
        MutateOnce(mutated, random);
        if (mutated.size() > kLargestInput)
            mutated.swap(before);
    }
    return mutated;
}

void CTextMutator::MutateOnce(std::string& text, CFuzzRandom& random) const
{
    switch (random.Below(16)) {
    case 0: Truncate(text, random); break;
    case 1: DeleteAttribute(text, random); break;
    case 2: DuplicateAttribute(text, random); break;
    case 3: DeleteElement(text, random); break;
    case 4: DuplicateElement(text, random); break;
    case 5:
    case 6: ReplaceValue(text, random); break;
    case 7: Nest(text, random); break;
    case 8: InvalidUtf8(text, random); break;
    case 9: Utf16(text, random); break;
    case 10: LongValue(text, random); break;
    case 11: Nul(text, random); break;
    case 12: FlipBytes(text, random); break;
    case 13: Splice(text, random); break;
    default: InsertToken(text, random); break;
    }
}

void CTextMutator::Truncate(std::string& text, CFuzzRandom& random) const
{
    text.resize(random.Below(text.size() + 1));
}

void CTextMutator::DeleteAttribute(std::string& text, CFuzzRandom& random) const
{
    const size_t eq = RandomAttribute(text, random);
    const size_t end = eq == std::string::npos ? eq : QuotedEnd(text, eq);
    if (end == std::string::npos)
        return FlipBytes(text, random);
    const size_t start = AttributeStart(text, eq);
    text.erase(start, end + 1 - start);
}

void CTextMutator::DuplicateAttribute(std::string& text, CFuzzRandom& random) const
{
    const size_t eq = RandomAttribute(text, random);
    const size_t end = eq == std::string::npos ? eq : QuotedEnd(text, eq);
    if (end == std::string::npos)
        return Splice(text, random);
    const size_t start = AttributeStart(text, eq);
    text.insert(end + 1, " " + text.substr(start, end + 1 - start));
}

void CTextMutator::DeleteElement(std::string& text, CFuzzRandom& random) const
{
    size_t begin = 0, end = 0;
    if (!RandomElement(text, random, begin, end))
        return Truncate(text, random);
    text.erase(begin, end - begin);
}

void CTextMutator::DuplicateElement(std::string& text, CFuzzRandom& random) const
{
    size_t begin = 0, end = 0;
    if (!RandomElement(text, random, begin, end))
        return Splice(text, random);
    const std::string element = text.substr(begin, end - begin);
    const size_t copies = random.OneIn(8) ? 1 + random.Below(200) : 1;
    std::string repeated;
    for (size_t i = 0; i < copies; ++i)
        repeated += element;
    text.insert(random.OneIn(2) ? end : begin, repeated);
}

void CTextMutator::ReplaceValue(std::string& text, CFuzzRandom& random) const
{
    const size_t eq = RandomAttribute(text, random);
    const size_t end = eq == std::string::npos ? eq : QuotedEnd(text, eq);
    if (end == std::string::npos)
        return InsertToken(text, random);
    text.replace(eq + 2, end - eq - 2, OddValue(random));
}

void CTextMutator::Nest(std::string& text, CFuzzRandom& random) const
{
    static const size_t kDepths[] = {2, 50, 300, 1000, 5000, 20000};
    const size_t depth = kDepths[random.Below(std::size(kDepths))];
    const bool items = random.OneIn(4);
    std::string open, close;
    for (size_t i = 0; i < depth; ++i) {
        open += items ? "<Item Name=\"n\" CanonicalDataType=\"3\">" : "<Branch Name=\"d\">";
        close += items ? "</Item>" : "</Branch>";
    }
    size_t at = text.find('>');
    at = at == std::string::npos ? random.Below(text.size() + 1) : at + 1;
    if (random.OneIn(3))
        at = random.Below(text.size() + 1);
    text.insert(at, open + (random.OneIn(4) ? std::string() : close));
}

void CTextMutator::InvalidUtf8(std::string& text, CFuzzRandom& random) const
{
    static const char* const kBad[] = {"\x80", "\xC0\xAF", "\xC3", "\xE2\x82", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                       "\xFF\xFE", "\xEF\xBB\xBF", "\xF8\x88\x80\x80\x80", "\xFE"};
    text.insert(random.Below(text.size() + 1), kBad[random.Below(std::size(kBad))]);
}

// The text as UTF-16LE (Latin bytes widened) with or without a byte order
// mark, sometimes with an odd length or a lone surrogate.
void CTextMutator::Utf16(std::string& text, CFuzzRandom& random) const
{
    std::string wide = random.OneIn(3) ? std::string() : std::string("\xFF\xFE");
    for (char c : text) {
        wide += c;
        wide += '\0';
    }
    switch (random.Below(4)) {
    case 0: wide.resize(wide.size() - std::min(wide.size(), random.Below(2))); break;
    case 1: wide.insert(random.Below(wide.size() / 2) * 2, std::string("\x00\xD8", 2)); break;
    case 2: wide.insert(random.Below(wide.size() / 2) * 2, std::string("\x00\xDC\x00\xD8", 4)); break;
    default: break;
    }
    text = wide;
}

void CTextMutator::LongValue(std::string& text, CFuzzRandom& random) const
{
    static const size_t kLengths[] = {256, 261, 2049, 65536, 300000};
    const std::string value(kLengths[random.Below(std::size(kLengths))], "xA9.,\"<"[random.Below(7)]);
    const size_t eq = RandomAttribute(text, random);
    const size_t end = eq == std::string::npos ? eq : QuotedEnd(text, eq);
    if (end == std::string::npos) {
        text.insert(random.Below(text.size() + 1), value);
        return;
    }
    text.replace(eq + 2, end - eq - 2, value);
}

void CTextMutator::Nul(std::string& text, CFuzzRandom& random) const
{
    text.insert(random.Below(text.size() + 1), std::string(1 + random.Below(3), '\0'));
}

void CTextMutator::FlipBytes(std::string& text, CFuzzRandom& random) const
{
    if (text.empty())
        return;
    const size_t flips = 1 + random.Below(8);
    for (size_t i = 0; i < flips; ++i)
        text[random.Below(text.size())] ^= static_cast<char>(1u << random.Below(8));
}

void CTextMutator::Splice(std::string& text, CFuzzRandom& random) const
{
    if (text.empty())
        return;
    const size_t from = random.Below(text.size());
    const size_t length = random.Below(text.size() - from) + 1;
    text.insert(random.Below(text.size() + 1), text.substr(from, length));
}

void CTextMutator::InsertToken(std::string& text, CFuzzRandom& random) const
{
    const std::string token = m_tokens.empty() || random.OneIn(3) ? OddValue(random)
                                                                  : m_tokens[random.Below(m_tokens.size())];
    text.insert(random.Below(text.size() + 1), token);
}

std::string CTextMutator::OddValue(CFuzzRandom& random) const
{
    if (!m_tokens.empty() && random.OneIn(4))
        return m_tokens[random.Below(m_tokens.size())];
    return kOddValues[random.Below(std::size(kOddValues))];
}

} // namespace fuzz
