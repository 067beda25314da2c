#pragma once
// XML read as a stream of events (start of an element, its end, text), from
// a byte source that is read in pieces, so that a part of a hundred
// megabytes never becomes a DOM and is never held whole: the parser keeps
// only the piece it is working on (a whole tag, or a piece of a text).
//
// It reads what workbook writers produce: UTF-8 (or UTF-16 with a byte
// order mark) XML 1.0 with namespaces, comments, processing instructions,
// CDATA sections and character references, and checks well-formedness as it
// goes (tags that match, one root, quoted attributes, known entities, valid
// UTF-8, no control characters). A document type declaration is refused: no
// workbook part has one, and refusing it rules out entity expansion.
//
// Why not MSXML's SAX reader: under Wine its callbacks cost about a
// microsecond each, 4.7 s for the 4 million events of a 100,000-row sheet,
// six times the whole CSV import of the same rows; this parser reads the
// same sheet in a fraction of that (make bench prints the figures).
#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace CL {

// The attributes of one start tag, by local name (the namespace prefix is
// not part of the name, as workbook writers differ in the prefixes they
// use; namespace declarations are not attributes here).
class CXmlAttributes {
public:
    // The value of the attribute of that local name, references resolved and
    // white space normalized ("" when missing; found tells which). The view
    // lives until the next tag.
    std::wstring_view Get(std::string_view localName, bool* found = nullptr) const;

private:
    friend class CXmlEventParser;
    struct Attribute {
        std::string_view name;  // local name, in the parser's buffer
        std::wstring value;     // references resolved
    };
    std::vector<Attribute> m_items;
    size_t m_count = 0;
};

class IXmlHandler {
public:
    virtual ~IXmlHandler() = default;
    virtual void StartElement(std::string_view localName, const CXmlAttributes& attributes) = 0;
    virtual void EndElement(std::string_view localName) = 0;
    // Text as it comes, possibly in several pieces per element.
    virtual void Characters(std::wstring_view text) = 0;
};

class CXmlEventParser {
public:
    // Fills the buffer with up to size bytes and returns how many; 0 at the end.
    using Source = std::function<size_t(char* buffer, size_t size)>;

    CXmlEventParser(Source source, IXmlHandler& handler, std::wstring partName);

    // Parses the whole document. An exception thrown by the handler or the
    // source is thrown on; a document that is not well-formed throws a
    // CException naming the part, the line and what is wrong.
    void Parse();

private:
    // Offsets below are from m_pos, the start of the token being read.
    bool Fill();
    size_t Find(char c, size_t from);
    size_t FindText(std::string_view text, size_t from);
    char At(size_t offset);
    void Consume(size_t count);
    [[noreturn]] void Fail(const std::wstring& what, size_t offset = 0);

    void DetectEncoding();
    void ReadMarkup();
    void ReadText();
    size_t TextCut(size_t have) const;
    void TakeText(size_t length);
    void ReadStartTag();
    void ReadEndTag();
    void ReadDeclaration(std::string_view body);
    void Emit(std::string_view raw, bool references);
    void ResolveReferences(std::string_view raw, std::string& out, bool attribute);
    void CheckTextBytes(std::string_view raw, size_t offset);

    Source m_source;
    IXmlHandler& m_handler;
    std::wstring m_partName;
    std::string m_buffer;
    size_t m_pos = 0;
    bool m_end = false;
    size_t m_linesBefore = 0;  // line breaks in what was dropped from the buffer
    bool m_first = true;       // nothing read yet (the declaration may come)
    bool m_rootSeen = false;
    struct Span {
        size_t nameStart, nameEnd, valueStart, valueEnd;
    };
    std::vector<Span> m_spans;
    std::vector<std::string> m_open;
    CXmlAttributes m_attributes;
    std::string m_scratch;
    std::wstring m_wide;
};

// Parses the document the source gives, calling the handler.
void ParseXml(const CXmlEventParser::Source& source, IXmlHandler& handler, const std::wstring& partName);

} // namespace CL
