// The event parser that reads workbook parts: what it hands the handler
// (local names, attributes, text with references resolved and line breaks
// normalized), that it gives the same events whatever pieces the source
// delivers, and that it refuses what is not well-formed XML with the line.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "common/Exception.h"
#include "common/Text.h"
#include "common/XmlEventParser.h"

namespace {

// Writes the events as one line of text: <name a=v>, text in brackets, </name>.
class Recorder : public CL::IXmlHandler {
public:
    void StartElement(std::string_view name, const CL::CXmlAttributes& attributes) override
    {
        m_text += std::wstring(L"<") + CL::FromUtf8(std::string(name));
        for (const char* attribute : {"a", "b", "id", "space"}) {
            bool found = false;
            const std::wstring_view value = attributes.Get(attribute, &found);
            if (found)
                m_text += std::wstring(L" ") + CL::FromUtf8(attribute) + L"=" + std::wstring(value);
        }
        m_text += L">";
    }
    void EndElement(std::string_view name) override { m_text += L"</" + CL::FromUtf8(std::string(name)) + L">"; }
    void Characters(std::wstring_view text) override { m_text += L"[" + std::wstring(text) + L"]"; }

    // Text pieces of one element are joined: how a source cuts the text
    // may change the pieces, never the text.
    std::wstring Joined() const
    {
        std::wstring out = m_text;
        for (size_t at; (at = out.find(L"][")) != std::wstring::npos;)
            out.erase(at, 2);
        return out;
    }

private:
    std::wstring m_text;
};

// A source that gives the bytes at most `piece` at a time.
CL::CXmlEventParser::Source PiecesOf(const std::string& bytes, size_t piece)
{
    auto at = std::make_shared<size_t>(0);
    return [&bytes, piece, at](char* buffer, size_t size) {
        const size_t n = std::min({size, piece, bytes.size() - *at});
        std::memcpy(buffer, bytes.data() + *at, n);
        *at += n;
        return n;
    };
}

std::wstring Events(const std::string& xml, size_t piece = 1 << 20)
{
    Recorder recorder;
    CL::ParseXml(PiecesOf(xml, piece), recorder, L"xl/worksheets/sheet1.xml");
    return recorder.Joined();
}

std::wstring Refusal(const std::string& xml)
{
    try {
        Events(xml);
    } catch (const CL::CException& e) {
        return e.Text();
    }
    return L"(accepted)";
}

const char kSheet[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n"
    "<!-- written by hand -->\n"
    "<x:worksheet xmlns:x=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
    "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
    "<x:row a='1' b=\"two &amp; &quot;three&quot;\"><x:c r:id=\"&#x41;&#66;\"/>"
    "<x:t>a &lt;b&gt; &#x20AC; \xE2\x82\xAC<![CDATA[<not a tag> & ]]>end</x:t></x:row>"
    "<?pi ignored?></x:worksheet>\n";

} // namespace

TEST(XmlEventParser, ElementsComeByLocalNameWithAttributesAndTextResolved)
{
    EXPECT_EQ(Events(kSheet), L"<worksheet><row a=1 b=two & \"three\"><c id=AB></c>"
                              L"<t>[a <b> \u20AC \u20AC<not a tag> & end]</t></row></worksheet>");
}

TEST(XmlEventParser, TheSameEventsWhateverPiecesTheSourceGives)
{
    const std::wstring whole = Events(kSheet);
    for (size_t piece : {1, 2, 3, 7, 64})
        EXPECT_EQ(Events(kSheet, piece), whole) << "pieces of " << piece << " bytes";
}

TEST(XmlEventParser, LineBreaksAreNormalizedInTextAndAttributes)
{
    EXPECT_EQ(Events("<r a=\"1\r\n2\t3\">x\r\ny\rz&#13;</r>"), L"<r a=1 2 3>[x\ny\nz\r]</r>");
}

TEST(XmlEventParser, AByteOrderMarkAndUtf16AreRead)
{
    EXPECT_EQ(Events("\xEF\xBB\xBF<r>\xC3\xA4</r>"), L"<r>[\u00E4]</r>");
    const std::wstring text = L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><r a=\"\u00E4\">\u20AC</r>";
    std::string little = "\xFF\xFE";
    for (wchar_t c : text) {
        little += static_cast<char>(c & 0xFF);
        little += static_cast<char>(c >> 8);
    }
    EXPECT_EQ(Events(little), L"<r a=\u00E4>[\u20AC]</r>");
}

TEST(XmlEventParser, WhatIsNotWellFormedIsRefusedWithThePartAndTheLine)
{
    const std::wstring mismatch = Refusal("<a>\n<b>\n</a></b>");
    EXPECT_NE(mismatch.find(L"The part \"xl/worksheets/sheet1.xml\" of the workbook is not well-formed XML (line 3)"),
              std::wstring::npos)
        << mismatch;
    EXPECT_NE(mismatch.find(L"</a> does not match the start tag <b>"), std::wstring::npos) << mismatch;

    const struct {
        const char* xml;
        const wchar_t* what;
    } cases[] = {
        {"<a><b></b>", L"ends inside the element <a>"},
        {"", L"no root element"},
        {"<a/><b/>", L"a second root element"},
        {"<a>x</a>y", L"text outside the root element"},
        {"<a b=1/>", L"not in quotes"},
        {"<a b=\"1\" b=\"2\"/>", L"written twice"},
        {"<a b=\"<\"/>", L"'<' inside an attribute"},
        {"<a>&nbsp;</a>", L"\"&nbsp;\" is not defined"},
        {"<a>&#0;</a>", L"names no character"},
        {"<a>AT&T</a>", L"does not start a reference"},
        {"<a>\x01</a>", L"control character"},
        {"<a>\xC3\x28</a>", L"not valid UTF-8"},
        {"<!DOCTYPE a [<!ENTITY x \"y\">]><a>&x;</a>", L"document type declaration"},
        {"<a><!-- open", L"comment is not closed"},
        {"<a><![CDATA[x", L"CDATA section is not closed"},
        {"<a b=\"1", L"ends inside an attribute"},
        {"<?xml version=\"1.0\" encoding=\"windows-1252\"?><a/>", L"encoded in WINDOWS-1252"},
        {"<a></a><?xml version=\"1.0\"?>", L"declaration is not at the start"},
        {"<a>< b/></a>", L"does not start a tag"},
    };
    std::string deep;
    for (int i = 0; i < 1001; ++i)
        deep += "<a>";
    const std::wstring tooDeep = Refusal(deep);
    std::string crowded = "<a";
    for (int i = 0; i < 1001; ++i)
        crowded += " a" + std::to_string(i) + "=\"\"";
    const std::wstring tooMany = Refusal(crowded + "/>");
    EXPECT_NE(tooMany.find(L"more than 1,000 attributes"), std::wstring::npos) << CL::Narrow(tooMany);
    EXPECT_NE(tooDeep.find(L"nested more than 1,000 deep"), std::wstring::npos) << CL::Narrow(tooDeep);
    for (const auto& c : cases) {
        const std::wstring text = Refusal(c.xml);
        EXPECT_NE(text.find(c.what), std::wstring::npos) << c.xml << " gave: " << CL::Narrow(text);
    }
}

TEST(XmlEventParser, AHandlersExceptionStopsTheParseAndIsThrownOn)
{
    class Stopper : public CL::IXmlHandler {
    public:
        void StartElement(std::string_view name, const CL::CXmlAttributes&) override
        {
            ++started;
            if (name == "stop")
                throw CL::CException(E_ABORT, L"stopped here");
        }
        void EndElement(std::string_view) override {}
        void Characters(std::wstring_view) override {}
        int started = 0;
    } stopper;
    const std::string xml = "<a><b/><stop/><c/></a>";
    try {
        CL::ParseXml(PiecesOf(xml, 1 << 20), stopper, L"part");
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(e.Source(), L"stopped here");
    }
    EXPECT_EQ(stopper.started, 3);
}

TEST(XmlEventParser, ALongTextAcrossManyPiecesComesWhole)
{
    std::string xml = "<a>";
    std::string text;
    for (int i = 0; i < 300000; ++i)
        text += static_cast<char>('a' + i % 26);
    xml += text + "&amp;</a>";
    Recorder recorder;
    CL::ParseXml(PiecesOf(xml, 4096), recorder, L"part");
    EXPECT_EQ(recorder.Joined(), L"<a>[" + CL::FromUtf8(text) + L"&]</a>");
}

TEST(XmlEventParser, ATextLongerThanTheBufferComesInPiecesThatCutNoCharacterOrReference)
{
    // Three megabytes of text made of a two-byte character, a reference and
    // a CR LF pair, which a cut at any byte would break.
    std::string unit = "\xC3\xA4&amp;\r\nx";
    std::wstring expected;
    std::string text;
    while (text.size() < (3u << 20)) {
        text += unit;
        expected += L"\u00E4&\nx";
    }
    class Pieces : public CL::IXmlHandler {
    public:
        void StartElement(std::string_view, const CL::CXmlAttributes&) override {}
        void EndElement(std::string_view) override {}
        void Characters(std::wstring_view text) override
        {
            joined += text;
            ++count;
            longest = std::max(longest, text.size());
        }
        std::wstring joined;
        size_t count = 0;
        size_t longest = 0;
    } pieces;
    const std::string xml = "<a>" + text + "</a>";
    CL::ParseXml(PiecesOf(xml, 1 << 20), pieces, L"part");
    EXPECT_EQ(pieces.joined, expected);
    EXPECT_GT(pieces.count, 2u) << "the text came in pieces";
    EXPECT_LT(pieces.longest, 2u << 20) << "no piece is as long as the text";
}
