#include "common/XmlEventParser.h"

#include <algorithm>
#include <cstring>

#include "common/Exception.h"
#include "common/Text.h"

namespace CL {

namespace {

constexpr size_t kChunk = 1u << 20;
// Workbook parts nest a few levels; a part of nothing but start tags would
// otherwise fill memory with open elements.
constexpr size_t kMaxDepth = 1000;
// A tag of workbook XML has a few attributes; the duplicate check is
// quadratic and every attribute is kept until the tag's end.
constexpr size_t kMaxAttributes = 1000;

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The bytes a name may hold: ASCII letters, digits, "_:-." and every byte
// of a multi-byte UTF-8 character.
struct NameBytes {
    bool table[256] = {};
    constexpr NameBytes()
    {
        for (int c = 0; c < 256; ++c)
            table[c] = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
                       c == ':' || c == '-' || c == '.' || c >= 0x80;
    }
};
constexpr NameBytes kNameBytes;

bool IsNameByte(char c)
{
    return kNameBytes.table[static_cast<unsigned char>(c)];
}

bool IsNameStart(char c)
{
    return IsNameByte(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.';
}

std::string_view LocalName(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}


// UTF-8 to UTF-16 into out; false when the bytes are not valid UTF-8.
bool Widen(std::string_view utf8, std::wstring& out)
{
    out.resize(utf8.size());
    size_t n = 0;
    size_t i = 0;
    // Most workbook text is ASCII: copied without a call.
    while (i < utf8.size() && static_cast<unsigned char>(utf8[i]) < 0x80)
        out[n++] = static_cast<wchar_t>(utf8[i++]);
    if (i < utf8.size()) {
        const int wide = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data() + i,
                                               static_cast<int>(utf8.size() - i), out.data() + n,
                                               static_cast<int>(out.size() - n));
        if (wide <= 0)
            return false;
        n += static_cast<size_t>(wide);
    }
    out.resize(n);
    return true;
}

} // namespace

std::wstring_view CXmlAttributes::Get(std::string_view localName, bool* found) const
{
    for (size_t i = 0; i < m_count; ++i) {
        const Attribute& a = m_items[i];
        if (a.name != localName)
            continue;
        if (found)
            *found = true;
        return a.value;
    }
    if (found)
        *found = false;
    return {};
}

CXmlEventParser::CXmlEventParser(Source source, IXmlHandler& handler, std::wstring partName)
    : m_source(std::move(source)), m_handler(handler), m_partName(std::move(partName))
{
}

bool CXmlEventParser::Fill()
{
    if (m_end)
        return false;
    if (m_pos > 0) {
        m_linesBefore += static_cast<size_t>(std::count(m_buffer.begin(), m_buffer.begin() + m_pos, '\n'));
        m_buffer.erase(0, m_pos);
        m_pos = 0;
    }
    const size_t old = m_buffer.size();
    m_buffer.resize(old + kChunk);
    const size_t got = m_source(m_buffer.data() + old, kChunk);
    m_buffer.resize(old + got);
    if (got == 0)
        m_end = true;
    return got > 0;
}

size_t CXmlEventParser::Find(char c, size_t from)
{
    for (;;) {
        if (m_pos + from < m_buffer.size()) {
            const void* hit = std::memchr(m_buffer.data() + m_pos + from, c, m_buffer.size() - m_pos - from);
            if (hit)
                return static_cast<size_t>(static_cast<const char*>(hit) - m_buffer.data()) - m_pos;
            from = m_buffer.size() - m_pos;
        }
        if (!Fill())
            return std::string::npos;
    }
}

size_t CXmlEventParser::FindText(std::string_view text, size_t from)
{
    for (;;) {
        const size_t hit = m_buffer.find(text, m_pos + from);
        if (hit != std::string::npos)
            return hit - m_pos;
        const size_t have = m_buffer.size() - m_pos;
        from = std::max(from, have >= text.size() ? have - text.size() + 1 : 0);
        if (!Fill())
            return std::string::npos;
    }
}

char CXmlEventParser::At(size_t offset)
{
    while (m_pos + offset >= m_buffer.size()) {
        if (!Fill())
            return '\0';
    }
    return m_buffer[m_pos + offset];
}

void CXmlEventParser::Consume(size_t count)
{
    m_pos += count;
}

void CXmlEventParser::Fail(const std::wstring& what, size_t offset)
{
    const size_t end = std::min(m_buffer.size(), m_pos + offset);
    const size_t line =
        m_linesBefore + static_cast<size_t>(std::count(m_buffer.begin(), m_buffer.begin() + end, '\n')) + 1;
    throw CException(E_INVALIDARG, Format(L"The part \"%ls\" of the workbook is not well-formed XML (line %zu): %ls.",
                                          m_partName.c_str(), line, what.c_str()));
}

void CXmlEventParser::DetectEncoding()
{
    const char a = At(0);
    const char b = At(1);
    if (a == '\xEF' && b == '\xBB' && At(2) == '\xBF') {
        Consume(3);
        return;
    }
    const bool little = a == '\xFF' && b == '\xFE';
    const bool big = a == '\xFE' && b == '\xFF';
    if (!little && !big)
        return;
    // UTF-16 (rare in workbooks): the part is turned into UTF-8 at once.
    while (Fill()) {
    }
    std::wstring wide;
    wide.reserve((m_buffer.size() - 2) / 2);
    for (size_t i = 2; i + 1 < m_buffer.size(); i += 2) {
        const unsigned char lo = static_cast<unsigned char>(m_buffer[i + (big ? 1 : 0)]);
        const unsigned char hi = static_cast<unsigned char>(m_buffer[i + (big ? 0 : 1)]);
        wide += static_cast<wchar_t>(lo | (hi << 8));
    }
    std::string utf8;
    if (!wide.empty()) {
        const int size = ::WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(),
                                               static_cast<int>(wide.size()), nullptr, 0, nullptr, nullptr);
        if (size <= 0)
            Fail(L"the UTF-16 text is not valid");
        utf8.resize(static_cast<size_t>(size));
        ::WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), static_cast<int>(wide.size()), utf8.data(),
                              size, nullptr, nullptr);
    }
    m_buffer = std::move(utf8);
    m_pos = 0;
}

void CXmlEventParser::Parse()
{
    DetectEncoding();
    for (;;) {
        if (m_pos >= m_buffer.size() && !Fill())
            break;
        if (m_buffer[m_pos] == '<')
            ReadMarkup();
        else
            ReadText();
        m_first = false;
    }
    if (!m_open.empty())
        Fail(Format(L"the text ends inside the element <%ls>", FromUtf8(m_open.back()).c_str()));
    if (!m_rootSeen)
        Fail(L"there is no root element");
}

void CXmlEventParser::ReadMarkup()
{
    const char next = At(1);
    if (next == '?') {
        const size_t end = FindText("?>", 2);
        if (end == std::string::npos)
            Fail(L"a processing instruction is not closed");
        const std::string_view body(m_buffer.data() + m_pos + 2, end - 2);
        if (body.substr(0, 3) == "xml" && (body.size() == 3 || IsSpace(body[3]))) {
            if (!m_first)
                Fail(L"the XML declaration is not at the start");
            ReadDeclaration(body);
        }
        Consume(end + 2);
    } else if (next == '!') {
        if (At(2) == '-' && At(3) == '-') {
            const size_t end = FindText("-->", 4);
            if (end == std::string::npos)
                Fail(L"a comment is not closed");
            Consume(end + 3);
        } else if (At(2) == '[' && At(3) == 'C' && At(4) == 'D' && At(5) == 'A' && At(6) == 'T' && At(7) == 'A' &&
                   At(8) == '[') {
            if (m_open.empty())
                Fail(L"a CDATA section is outside the root element");
            const size_t end = FindText("]]>", 9);
            if (end == std::string::npos)
                Fail(L"a CDATA section is not closed");
            CheckTextBytes(std::string_view(m_buffer.data() + m_pos + 9, end - 9), 9);
            Emit(std::string_view(m_buffer.data() + m_pos + 9, end - 9), false);
            Consume(end + 3);
        } else {
            Fail(L"a document type declaration, which a workbook part never has, or other unknown markup");
        }
    } else if (next == '/') {
        ReadEndTag();
    } else {
        ReadStartTag();
    }
}

void CXmlEventParser::ReadDeclaration(std::string_view body)
{
    const size_t at = body.find("encoding");
    if (at == std::string_view::npos)
        return;
    size_t i = at + 8;
    while (i < body.size() && (IsSpace(body[i]) || body[i] == '='))
        ++i;
    if (i >= body.size() || (body[i] != '"' && body[i] != '\''))
        Fail(L"the XML declaration's encoding is not quoted");
    const size_t close = body.find(body[i], i + 1);
    if (close == std::string_view::npos)
        Fail(L"the XML declaration's encoding is not quoted");
    std::string name(body.substr(i + 1, close - i - 1));
    std::transform(name.begin(), name.end(), name.begin(), [](char c) { return static_cast<char>(toupper(c)); });
    if (name != "UTF-8" && name != "UTF8" && name != "UTF-16" && name != "US-ASCII" && name != "ASCII")
        Fail(Format(L"the part is encoded in %ls, which this program does not read (UTF-8 and UTF-16 it does)",
                    FromUtf8(name).c_str()));
}

void CXmlEventParser::ReadStartTag()
{
    if (!IsNameStart(At(1)))
        Fail(L"a '<' that does not start a tag");
    if (m_open.empty() && m_rootSeen)
        Fail(L"a second root element");
    size_t i = 1;
    while (IsNameByte(At(i)))
        ++i;
    const size_t nameEnd = i;
    // Offsets first: reading on may move the buffer.
    m_spans.clear();
    bool empty = false;
    for (;;) {
        const size_t spaceStart = i;
        while (IsSpace(At(i)))
            ++i;
        const char c = At(i);
        if (c == '>') {
            ++i;
            break;
        }
        if (c == '/') {
            if (At(i + 1) != '>')
                Fail(L"a '/' inside a tag", i);
            empty = true;
            i += 2;
            break;
        }
        if (c == '\0')
            Fail(L"the text ends inside a tag", i);
        if (i == spaceStart || !IsNameStart(c))
            Fail(L"an attribute is not written as name=\"value\"", i);
        if (m_spans.size() >= kMaxAttributes)
            Fail(L"a tag with more than 1,000 attributes", i);
        Span span;
        span.nameStart = i;
        while (IsNameByte(At(i)))
            ++i;
        span.nameEnd = i;
        while (IsSpace(At(i)))
            ++i;
        if (At(i) != '=')
            Fail(L"an attribute has no value", i);
        ++i;
        while (IsSpace(At(i)))
            ++i;
        const char quote = At(i);
        if (quote != '"' && quote != '\'')
            Fail(L"an attribute's value is not in quotes", i);
        const size_t close = Find(quote, i + 1);
        if (close == std::string::npos)
            Fail(L"the text ends inside an attribute's value", i);
        span.valueStart = i + 1;
        span.valueEnd = close;
        m_spans.push_back(span);
        i = close + 1;
    }
    // The whole tag is in the buffer now and stays there until the next Fill.
    const char* base = m_buffer.data() + m_pos;
    m_attributes.m_count = 0;
    for (const Span& span : m_spans) {
        const std::string_view name(base + span.nameStart, span.nameEnd - span.nameStart);
        const std::string_view raw(base + span.valueStart, span.valueEnd - span.valueStart);
        if (raw.find('<') != std::string_view::npos)
            Fail(L"a '<' inside an attribute's value", span.valueStart);
        if (name == "xmlns" || name.substr(0, 6) == "xmlns:")
            continue;
        const std::string_view local = LocalName(name);
        for (size_t j = 0; j < m_attributes.m_count; ++j) {
            if (m_attributes.m_items[j].name == local)
                Fail(Format(L"the attribute \"%ls\" is written twice", FromUtf8(std::string(local)).c_str()),
                     span.nameStart);
        }
        if (m_attributes.m_items.size() <= m_attributes.m_count)
            m_attributes.m_items.emplace_back();
        CXmlAttributes::Attribute& a = m_attributes.m_items[m_attributes.m_count++];
        a.name = local;
        std::string_view value = raw;
        if (raw.find_first_of("&\t\r\n") != std::string_view::npos) {
            m_scratch.clear();
            ResolveReferences(raw, m_scratch, true);
            value = m_scratch;
        }
        if (!Widen(value, a.value))
            Fail(L"an attribute's value is not valid UTF-8", span.valueStart);
    }
    m_rootSeen = true;
    const std::string_view local = LocalName(std::string_view(base + 1, nameEnd - 1));
    if (empty) {
        m_handler.StartElement(local, m_attributes);
        m_handler.EndElement(local);
    } else {
        if (m_open.size() >= kMaxDepth)
            Fail(L"elements nested more than 1,000 deep");
        m_open.emplace_back(base + 1, nameEnd - 1);
        m_handler.StartElement(local, m_attributes);
    }
    Consume(i);
}

void CXmlEventParser::ReadEndTag()
{
    const size_t end = Find('>', 2);
    if (end == std::string::npos)
        Fail(L"the text ends inside an end tag");
    std::string_view name(m_buffer.data() + m_pos + 2, end - 2);
    while (!name.empty() && IsSpace(name.back()))
        name.remove_suffix(1);
    if (m_open.empty())
        Fail(Format(L"the end tag </%ls> has no start tag", FromUtf8(std::string(name)).c_str()));
    if (name != m_open.back())
        Fail(Format(L"the end tag </%ls> does not match the start tag <%ls>", FromUtf8(std::string(name)).c_str(),
                    FromUtf8(m_open.back()).c_str()));
    m_open.pop_back();
    m_handler.EndElement(LocalName(name));
    Consume(end + 1);
}

void CXmlEventParser::ReadText()
{
    for (;;) {
        const size_t have = m_buffer.size() - m_pos;
        const void* hit = std::memchr(m_buffer.data() + m_pos, '<', have);
        if (hit) {
            TakeText(static_cast<size_t>(static_cast<const char*>(hit) - (m_buffer.data() + m_pos)));
            return;
        }
        // A long text goes to the handler in pieces, so that the buffer
        // never holds more than a piece of it.
        if (have >= kChunk) {
            const size_t cut = TextCut(have);
            if (cut > 0) {
                TakeText(cut);
                continue;
            }
        }
        if (!Fill()) {
            TakeText(have);
            return;
        }
    }
}

// The length of the first part of the text that can go on its own: not
// ending inside a UTF-8 character, a reference or a CR LF pair.
size_t CXmlEventParser::TextCut(size_t have) const
{
    const char* text = m_buffer.data() + m_pos;
    size_t cut = have - 1;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;
    const std::string_view head(text, cut);
    const size_t amp = head.rfind('&');
    if (amp != std::string_view::npos && head.find(';', amp) == std::string_view::npos)
        cut = amp;
    if (cut > 0 && text[cut - 1] == '\r')
        --cut;
    return cut;
}

void CXmlEventParser::TakeText(size_t length)
{
    const std::string_view raw(m_buffer.data() + m_pos, length);
    if (m_open.empty()) {
        // Outside the root only white space may stand.
        for (char c : raw) {
            if (!IsSpace(c))
                Fail(L"text outside the root element");
        }
    } else {
        CheckTextBytes(raw, 0);
        Emit(raw, true);
    }
    Consume(length);
}

void CXmlEventParser::CheckTextBytes(std::string_view raw, size_t offset)
{
    for (size_t i = 0; i < raw.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(raw[i]);
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            Fail(L"a control character that XML does not allow", offset + i);
    }
}

void CXmlEventParser::Emit(std::string_view raw, bool references)
{
    std::string_view text = raw;
    if ((references && raw.find('&') != std::string_view::npos) || raw.find('\r') != std::string_view::npos) {
        m_scratch.clear();
        if (references) {
            ResolveReferences(raw, m_scratch, false);
        } else {
            for (size_t i = 0; i < raw.size(); ++i) {
                if (raw[i] == '\r') {
                    m_scratch += '\n';
                    if (i + 1 < raw.size() && raw[i + 1] == '\n')
                        ++i;
                } else {
                    m_scratch += raw[i];
                }
            }
        }
        text = m_scratch;
    }
    if (text.empty())
        return;
    if (!Widen(text, m_wide))
        Fail(L"text that is not valid UTF-8");
    m_handler.Characters(m_wide);
}

// Resolves the character and the five predefined entity references; line
// breaks are normalized (CR LF and CR to LF, and in an attribute every
// white space character to a blank), as an XML processor does.
void CXmlEventParser::ResolveReferences(std::string_view raw, std::string& out, bool attribute)
{
    for (size_t i = 0; i < raw.size(); ++i) {
        const char c = raw[i];
        if (c == '\r') {
            if (i + 1 < raw.size() && raw[i + 1] == '\n')
                ++i;
            out += attribute ? ' ' : '\n';
            continue;
        }
        if (attribute && (c == '\n' || c == '\t')) {
            out += ' ';
            continue;
        }
        if (c != '&') {
            out += c;
            continue;
        }
        const size_t semicolon = raw.find(';', i + 1);
        if (semicolon == std::string_view::npos || semicolon - i > 12)
            Fail(L"an '&' that does not start a reference");
        const std::string_view name = raw.substr(i + 1, semicolon - i - 1);
        if (name == "lt")
            out += '<';
        else if (name == "gt")
            out += '>';
        else if (name == "amp")
            out += '&';
        else if (name == "quot")
            out += '"';
        else if (name == "apos")
            out += '\'';
        else if (name.size() >= 2 && name[0] == '#') {
            const bool hex = name[1] == 'x';
            const std::string_view digits = name.substr(hex ? 2 : 1);
            unsigned long code = 0;
            bool ok = !digits.empty();
            for (char d : digits) {
                int v = -1;
                if (d >= '0' && d <= '9')
                    v = d - '0';
                else if (hex && d >= 'a' && d <= 'f')
                    v = d - 'a' + 10;
                else if (hex && d >= 'A' && d <= 'F')
                    v = d - 'A' + 10;
                if (v < 0 || code > 0x10FFFF) {
                    ok = false;
                    break;
                }
                code = code * (hex ? 16 : 10) + static_cast<unsigned long>(v);
            }
            const bool allowed = code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
                                 (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
            if (!ok || !allowed)
                Fail(Format(L"the character reference \"&%ls;\" names no character XML allows",
                            FromUtf8(std::string(name)).c_str()));
            AppendUtf8(out, static_cast<char32_t>(code));
        } else {
            Fail(Format(L"the entity \"&%ls;\" is not defined", FromUtf8(std::string(name)).c_str()));
        }
        i = semicolon;
    }
}

void ParseXml(const CXmlEventParser::Source& source, IXmlHandler& handler, const std::wstring& partName)
{
    CXmlEventParser parser(source, handler, partName);
    parser.Parse();
}

} // namespace CL
