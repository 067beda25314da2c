#include "common/WorkbookWriter.h"

#include <charconv>
#include <cmath>

#include "common/Exception.h"
#include "common/Text.h"

namespace CL {

namespace {

constexpr size_t kFlushSize = 1 << 16;
constexpr char kXmlDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n";
constexpr char kMainNamespace[] = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr char kRelationshipNamespace[] = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr char kPackageRelationships[] = "http://schemas.openxmlformats.org/package/2006/relationships";

constexpr char kStylesXml[] =
    "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
    "<numFmts count=\"1\"><numFmt numFmtId=\"164\" formatCode=\"yyyy\\-mm\\-dd\\ hh:mm:ss.000\"/></numFmts>"
    "<fonts count=\"2\">"
    "<font><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/></font>"
    "<font><b/><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/></font>"
    "</fonts>"
    "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
    "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
    "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
    "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs>"
    "<cellXfs count=\"4\">"
    "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/>"
    "<xf numFmtId=\"0\" fontId=\"1\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyFont=\"1\"/>"
    "<xf numFmtId=\"164\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>"
    "<xf numFmtId=\"49\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"/>"
    "</cellXfs>"
    "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles>"
    "</styleSheet>";

const char* const kStyleAttribute[] = {"", " s=\"1\"", " s=\"2\"", " s=\"3\""};

// "A", "B", ... "Z", "AA", ...
std::string ColumnName(size_t index)
{
    std::string name;
    ++index;
    while (index > 0) {
        const size_t rest = (index - 1) % 26;
        name.insert(name.begin(), static_cast<char>('A' + rest));
        index = (index - 1) / 26;
    }
    return name;
}

void AppendAttributeText(std::string& out, const std::wstring& text)
{
    for (char c : ToUtf8(text)) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        default: out += c;
        }
    }
}

bool IsHex(wchar_t c)
{
    return (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'F') || (c >= L'a' && c <= L'f');
}

void AppendCodeEscape(std::string& out, unsigned code)
{
    char hex[8];
    snprintf(hex, sizeof hex, "%04X", code & 0xFFFF);
    out += "_x";
    out += hex;
    out += '_';
}


// Whether the text needs xml:space="preserve": blanks at either end or a
// line break, which a reader would otherwise be free to drop.
bool NeedsPreserve(std::wstring_view text)
{
    if (text.empty())
        return false;
    auto blank = [](wchar_t c) { return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r'; };
    return blank(text.front()) || blank(text.back()) || text.find_first_of(L"\r\n\t") != std::wstring_view::npos;
}

} // namespace

CWorkbookWriter::CWorkbookWriter(CReplacingFile& file) : m_file(file), m_zip(file)
{
    m_buffer.reserve(kFlushSize * 2);
}

CWorkbookWriter::~CWorkbookWriter() = default;

std::string CWorkbookWriter::NumberDigits(double value)
{
    char digits[64];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    std::string text(digits, result.ptr);
    // The shortest form of to_chars, in the notation spreadsheets write:
    // plain digits below 1E+21, an upper-case exponent above.
    const size_t e = text.find('e');
    if (e == std::string::npos)
        return text;
    const int exponent = std::stoi(text.substr(e + 1));
    std::string mantissa = text.substr(0, e);
    const bool negative = mantissa[0] == '-';
    if (negative)
        mantissa.erase(0, 1);
    std::string digitsOnly;
    for (char c : mantissa)
        if (c != '.')
            digitsOnly += c;
    std::string out;
    if (exponent >= 0 && exponent < 21) {
        out = digitsOnly;
        if (static_cast<int>(out.size()) <= exponent)
            out.append(static_cast<size_t>(exponent) + 1 - out.size(), '0');
        else
            out.insert(static_cast<size_t>(exponent) + 1, ".");
    } else if (exponent < 0 && exponent >= -6) {
        out = "0." + std::string(static_cast<size_t>(-exponent - 1), '0') + digitsOnly;
    } else {
        out = mantissa + "E" + (exponent < 0 ? "-" : "+") + std::to_string(std::abs(exponent));
    }
    return negative ? "-" + out : out;
}

void CWorkbookWriter::WritePart(const std::string& name, const std::string& xml)
{
    m_zip.BeginEntry(name);
    m_zip.Write(kXmlDeclaration);
    m_zip.Write(xml);
    m_zip.EndEntry();
}

void CWorkbookWriter::FlushIfFull()
{
    if (m_buffer.size() >= kFlushSize) {
        m_zip.Write(m_buffer);
        m_buffer.clear();
    }
}

void CWorkbookWriter::BeginSheet(const std::wstring& name, const std::vector<double>& widths, bool frozenHeader)
{
    if (m_inSheet)
        EndSheet(false);
    m_sheets.push_back({name, widths.size(), 0, false});
    m_zip.BeginEntry("xl/worksheets/sheet" + std::to_string(m_sheets.size()) + ".xml");
    m_buffer = kXmlDeclaration;
    m_buffer += "<worksheet xmlns=\"";
    m_buffer += kMainNamespace;
    m_buffer += "\" xmlns:r=\"";
    m_buffer += kRelationshipNamespace;
    m_buffer += "\"><sheetViews><sheetView workbookViewId=\"0\"";
    if (m_sheets.size() == 1)
        m_buffer += " tabSelected=\"1\"";
    m_buffer += ">";
    if (frozenHeader)
        m_buffer += "<pane ySplit=\"1\" topLeftCell=\"A2\" activePane=\"bottomLeft\" state=\"frozen\"/>"
                    "<selection pane=\"bottomLeft\" activeCell=\"A2\" sqref=\"A2\"/>";
    m_buffer += "</sheetView></sheetViews><sheetFormatPr defaultRowHeight=\"15\"/>";
    if (!widths.empty()) {
        m_buffer += "<cols>";
        for (size_t i = 0; i < widths.size(); ++i) {
            const std::string n = std::to_string(i + 1);
            m_buffer += "<col min=\"" + n + "\" max=\"" + n + "\" width=\"" + NumberDigits(widths[i]) +
                        "\" customWidth=\"1\"/>";
        }
        m_buffer += "</cols>";
    }
    m_buffer += "<sheetData>";
    m_inSheet = true;
    m_rows = 0;
}

void CWorkbookWriter::EndSheet(bool autoFilter)
{
    if (!m_inSheet)
        return;
    if (m_inRow)
        EndRow();
    m_buffer += "</sheetData>";
    Sheet& sheet = m_sheets.back();
    sheet.rows = m_rows;
    sheet.autoFilter = autoFilter && sheet.columns > 0 && m_rows > 0;
    if (sheet.autoFilter)
        m_buffer += "<autoFilter ref=\"A1:" + ColumnName(sheet.columns - 1) + std::to_string(m_rows) + "\"/>";
    m_buffer += "</worksheet>";
    m_zip.Write(m_buffer);
    m_buffer.clear();
    m_zip.EndEntry();
    m_inSheet = false;
}

void CWorkbookWriter::BeginRow()
{
    if (!m_inSheet)
        throw CException(E_UNEXPECTED, L"CWorkbookWriter::BeginRow outside a sheet");
    if (m_inRow)
        EndRow();
    if (m_rows >= kMaxRows)
        throw CException(E_FAIL, L"A sheet holds at most 1,048,576 rows.");
    ++m_rows;
    char digits[24];
    m_rowDigits.assign(digits, std::to_chars(digits, digits + sizeof digits, m_rows).ptr);
    m_buffer += "<row r=\"";
    m_buffer += m_rowDigits;
    m_buffer += "\">";
    m_inRow = true;
    m_column = 0;
    m_gap = false;
}

void CWorkbookWriter::EndRow()
{
    if (!m_inRow)
        return;
    m_buffer += "</row>";
    m_inRow = false;
    FlushIfFull();
}

void CWorkbookWriter::Skip()
{
    ++m_column;
    m_gap = true;
}

void CWorkbookWriter::CellStart(const char* type, Style style)
{
    if (!m_inRow)
        throw CException(E_UNEXPECTED, L"CWorkbookWriter cell outside a row");
    m_buffer += "<c";
    // The reference is optional: readers count the cells of a row. It is
    // written after a skipped cell only, which keeps the sheet small.
    if (m_gap) {
        m_buffer += " r=\"";
        m_buffer += ColumnName(m_column);
        m_buffer += m_rowDigits;
        m_buffer += '"';
        m_gap = false;
    }
    m_buffer += kStyleAttribute[style];
    if (*type) {
        m_buffer += " t=\"";
        m_buffer += type;
        m_buffer += '"';
    }
    m_buffer += '>';
    ++m_column;
}

// The text as UTF-8 element content: markup characters as entities, and as
// _xHHHH_ what XML cannot carry or would change (control characters, the
// carriage return that XML parsers turn into a line feed, a lone surrogate),
// and the "_" of a text that looks like such an escape itself.
void CWorkbookWriter::AppendEscaped(std::wstring_view text)
{
    for (size_t i = 0; i < text.size(); ++i) {
        // A run of plain ASCII goes in at once.
        size_t run = i;
        while (run < text.size() && text[run] >= 0x20 && text[run] < 0x7F && text[run] != L'&' && text[run] != L'<' &&
               text[run] != L'>' && text[run] != L'_')
            ++run;
        if (run > i) {
            const size_t at = m_buffer.size();
            m_buffer.resize(at + (run - i));
            for (size_t k = i; k < run; ++k)
                m_buffer[at + (k - i)] = static_cast<char>(text[k]);
            i = run - 1;
            continue;
        }
        const wchar_t c = text[i];
        switch (c) {
        case L'&': m_buffer += "&amp;"; continue;
        case L'<': m_buffer += "&lt;"; continue;
        case L'>': m_buffer += "&gt;"; continue;
        case L'\t':
        case L'\n': m_buffer += static_cast<char>(c); continue;
        case L'_':
            if (i + 6 < text.size() && text[i + 1] == L'x' && IsHex(text[i + 2]) && IsHex(text[i + 3]) &&
                IsHex(text[i + 4]) && IsHex(text[i + 5]) && text[i + 6] == L'_')
                AppendCodeEscape(m_buffer, L'_');
            else
                m_buffer += '_';
            continue;
        default: break;
        }
        if (c < 0x20 || c == 0xFFFE || c == 0xFFFF) {
            AppendCodeEscape(m_buffer, c);
        } else if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                   text[i + 1] <= 0xDFFF) {
            AppendUtf8(m_buffer, 0x10000 + ((static_cast<char32_t>(c) - 0xD800) << 10) + (text[i + 1] - 0xDC00));
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            AppendCodeEscape(m_buffer, c);
        } else {
            AppendUtf8(m_buffer, c);
        }
    }
}

void CWorkbookWriter::Text(std::wstring_view text, Style style)
{
    CellStart("inlineStr", style);
    m_buffer += NeedsPreserve(text) ? "<is><t xml:space=\"preserve\">" : "<is><t>";
    AppendEscaped(text);
    m_buffer += "</t></is></c>";
}

size_t CWorkbookWriter::Share(const std::wstring& text)
{
    auto found = m_shared.find(text);
    if (found == m_shared.end()) {
        found = m_shared.emplace(text, m_sharedOrder.size()).first;
        m_sharedOrder.push_back(&found->first);
    }
    return found->second;
}

void CWorkbookWriter::SharedText(const std::wstring& text, Style style)
{
    SharedText(Share(text), style);
}

void CWorkbookWriter::SharedText(size_t index, Style style)
{
    ++m_sharedUses;
    CellStart("s", style);
    m_buffer += "<v>";
    char digits[24];
    m_buffer.append(digits, std::to_chars(digits, digits + sizeof digits, index).ptr);
    m_buffer += "</v></c>";
}

void CWorkbookWriter::Number(double value, Style style)
{
    if (!std::isfinite(value))
        throw CException(E_INVALIDARG, L"A number cell cannot hold an infinite value or NaN.");
    // Most numbers need no exponent: their shortest digits go in as they are.
    char digits[64];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    const std::string_view shortest(digits, static_cast<size_t>(end - digits));
    if (shortest.find('e') == std::string_view::npos)
        NumberText(shortest, style);
    else
        NumberText(NumberDigits(value), style);
}

void CWorkbookWriter::NumberText(std::string_view digits, Style style)
{
    CellStart("", style);
    m_buffer += "<v>";
    m_buffer += digits;
    m_buffer += "</v></c>";
}

void CWorkbookWriter::Boolean(bool value)
{
    CellStart("b", kPlain);
    m_buffer += value ? "<v>1</v></c>" : "<v>0</v></c>";
}

void CWorkbookWriter::DateTime(double oleDate)
{
    Number(oleDate, kDateTime);
}

std::string CWorkbookWriter::WorkbookXml() const
{
    std::string xml = "<workbook xmlns=\"";
    xml += kMainNamespace;
    xml += "\" xmlns:r=\"";
    xml += kRelationshipNamespace;
    xml += "\"><bookViews><workbookView/></bookViews><sheets>";
    for (size_t i = 0; i < m_sheets.size(); ++i) {
        xml += "<sheet name=\"";
        AppendAttributeText(xml, m_sheets[i].name);
        xml += "\" sheetId=\"" + std::to_string(i + 1) + "\" r:id=\"rId" + std::to_string(i + 1) + "\"/>";
    }
    xml += "</sheets>";
    std::string names;
    for (size_t i = 0; i < m_sheets.size(); ++i) {
        const Sheet& sheet = m_sheets[i];
        if (!sheet.autoFilter)
            continue;
        std::wstring quoted;
        for (wchar_t c : sheet.name)
            quoted += c == L'\'' ? std::wstring(L"''") : std::wstring(1, c);
        names += "<definedName name=\"_xlnm._FilterDatabase\" localSheetId=\"" + std::to_string(i) +
                 "\" hidden=\"1\">";
        AppendAttributeText(names, L"'" + quoted + L"'");
        names += "!$A$1:$" + ColumnName(sheet.columns - 1) + "$" + std::to_string(sheet.rows) + "</definedName>";
    }
    if (!names.empty())
        xml += "<definedNames>" + names + "</definedNames>";
    xml += "</workbook>";
    return xml;
}

std::string CWorkbookWriter::RelationshipsXml() const
{
    std::string xml = "<Relationships xmlns=\"";
    xml += kPackageRelationships;
    xml += "\">";
    for (size_t i = 0; i < m_sheets.size(); ++i) {
        xml += "<Relationship Id=\"rId" + std::to_string(i + 1) + "\" Type=\"" + kRelationshipNamespace +
               "/worksheet\" Target=\"worksheets/sheet" + std::to_string(i + 1) + ".xml\"/>";
    }
    xml += "<Relationship Id=\"rIdStyles\" Type=\"" + std::string(kRelationshipNamespace) +
           "/styles\" Target=\"styles.xml\"/>";
    if (!m_sharedOrder.empty())
        xml += "<Relationship Id=\"rIdStrings\" Type=\"" + std::string(kRelationshipNamespace) +
               "/sharedStrings\" Target=\"sharedStrings.xml\"/>";
    xml += "</Relationships>";
    return xml;
}

std::string CWorkbookWriter::ContentTypesXml() const
{
    std::string xml =
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
        "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
        "<Override PartName=\"/xl/workbook.xml\" "
        "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
        "<Override PartName=\"/xl/styles.xml\" "
        "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>";
    for (size_t i = 0; i < m_sheets.size(); ++i)
        xml += "<Override PartName=\"/xl/worksheets/sheet" + std::to_string(i + 1) +
               ".xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>";
    if (!m_sharedOrder.empty())
        xml += "<Override PartName=\"/xl/sharedStrings.xml\" "
               "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sharedStrings+xml\"/>";
    xml += "</Types>";
    return xml;
}

std::string CWorkbookWriter::SharedStringsXml() const
{
    std::string xml = "<sst xmlns=\"";
    xml += kMainNamespace;
    xml += "\" count=\"" + std::to_string(m_sharedUses) + "\" uniqueCount=\"" + std::to_string(m_sharedOrder.size()) +
           "\">";
    return xml;
}

void CWorkbookWriter::Close()
{
    EndSheet(false);
    if (m_sheets.empty())
        throw CException(E_UNEXPECTED, L"A workbook needs at least one sheet.");
    if (!m_sharedOrder.empty()) {
        m_zip.BeginEntry("xl/sharedStrings.xml");
        m_buffer = kXmlDeclaration + SharedStringsXml();
        for (const std::wstring* text : m_sharedOrder) {
            m_buffer += NeedsPreserve(*text) ? "<si><t xml:space=\"preserve\">" : "<si><t>";
            AppendEscaped(*text);
            m_buffer += "</t></si>";
            FlushIfFull();
        }
        m_buffer += "</sst>";
        m_zip.Write(m_buffer);
        m_buffer.clear();
        m_zip.EndEntry();
    }
    WritePart("xl/styles.xml", kStylesXml);
    WritePart("xl/workbook.xml", WorkbookXml());
    WritePart("xl/_rels/workbook.xml.rels", RelationshipsXml());
    WritePart("_rels/.rels", std::string("<Relationships xmlns=\"") + kPackageRelationships +
                                 "\"><Relationship Id=\"rId1\" Type=\"" + kRelationshipNamespace +
                                 "/officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>");
    WritePart("[Content_Types].xml", ContentTypesXml());
    m_zip.Close();
}

} // namespace CL
