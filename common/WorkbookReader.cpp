#include "common/WorkbookReader.h"

#include <charconv>
#include <cmath>
#include <map>

#include "common/Exception.h"
#include "common/XmlEventParser.h"
#include "common/Text.h"

namespace CL {

namespace {

constexpr char kOfficeDocument[] = "/officeDocument";
constexpr char kCompoundFileSignature[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

[[noreturn]] void Refuse(const std::wstring& why)
{
    throw CException(E_INVALIDARG, why);
}

bool EndsWith(std::wstring_view text, std::wstring_view tail)
{
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

// A part name from a relationship's target: relative to the folder of the
// part that names it, or absolute from the package root.
std::string ResolveTarget(const std::string& sourcePart, const std::wstring& target)
{
    std::string path = ToUtf8(target);
    std::string base;
    if (!path.empty() && path[0] == '/') {
        path.erase(0, 1);
    } else {
        const size_t slash = sourcePart.rfind('/');
        base = slash == std::string::npos ? std::string() : sourcePart.substr(0, slash + 1);
    }
    std::vector<std::string> parts;
    std::string all = base + path;
    size_t start = 0;
    while (start <= all.size()) {
        const size_t end = all.find('/', start);
        const std::string piece = all.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (piece == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!piece.empty() && piece != ".") {
            parts.push_back(piece);
        }
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    std::string out;
    for (const std::string& piece : parts)
        out += (out.empty() ? "" : "/") + piece;
    return out;
}

// "_rels/<name>.rels" beside a part.
std::string RelationshipsPart(const std::string& part)
{
    const size_t slash = part.rfind('/');
    if (slash == std::string::npos)
        return "_rels/" + part + ".rels";
    return part.substr(0, slash + 1) + "_rels/" + part.substr(slash + 1) + ".rels";
}

size_t ParseIndex(std::wstring_view text, bool& ok)
{
    size_t value = 0;
    ok = !text.empty();
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9' || value > 100000000) {
            ok = false;
            return 0;
        }
        value = value * 10 + static_cast<size_t>(c - L'0');
    }
    return value;
}

// A cell reference ("AB12") split into its 0-based column and its row.
bool ParseReference(std::wstring_view reference, size_t& column, size_t& row)
{
    size_t i = 0;
    size_t letters = 0;
    column = 0;
    while (i < reference.size() && ((reference[i] >= L'A' && reference[i] <= L'Z') ||
                                     (reference[i] >= L'a' && reference[i] <= L'z'))) {
        const wchar_t c = reference[i] >= L'a' ? static_cast<wchar_t>(reference[i] - 32) : reference[i];
        column = column * 26 + static_cast<size_t>(c - L'A' + 1);
        ++i;
        if (++letters > 3)
            return false;
    }
    if (letters == 0 || column > 16384)
        return false;
    --column;
    bool ok = false;
    row = ParseIndex(reference.substr(i), ok);
    return ok && row >= 1;
}

// Collects text into a string that stops growing at the limit while it
// still counts the length.
struct CappedText {
    std::wstring text;
    size_t length = 0;
    void Add(std::wstring_view piece)
    {
        length += piece.size();
        if (text.size() < CWorkbookReader::kMaxTextKept)
            text.append(piece.substr(0, CWorkbookReader::kMaxTextKept - text.size()));
    }
    void Clear()
    {
        text.clear();
        length = 0;
    }
};

// ---- Handlers of the parts ----------------------------------------------

class RelationshipsHandler : public IXmlHandler {
public:
    explicit RelationshipsHandler(std::vector<std::tuple<std::wstring, std::wstring, std::wstring>>& out)
        : m_out(out)
    {
    }
    void StartElement(std::string_view name, const CXmlAttributes& attributes) override
    {
        if (name == "Relationship")
            m_out.emplace_back(std::wstring(attributes.Get("Id")),
                               std::wstring(attributes.Get("Type")),
                               std::wstring(attributes.Get("Target")));
    }
    void EndElement(std::string_view) override {}
    void Characters(std::wstring_view) override {}

private:
    std::vector<std::tuple<std::wstring, std::wstring, std::wstring>>& m_out;
};

class WorkbookHandler : public IXmlHandler {
public:
    void StartElement(std::string_view name, const CXmlAttributes& attributes) override
    {
        if (name == "workbookPr") {
            const std::wstring_view date1904 = attributes.Get("date1904");
            this->date1904 = date1904 == L"1" || date1904 == L"true";
        } else if (name == "sheet" && !found) {
            found = true;
            sheetName = attributes.Get("name");
            relationship = attributes.Get("id");
        }
    }
    void EndElement(std::string_view) override {}
    void Characters(std::wstring_view) override {}

    bool found = false;
    bool date1904 = false;
    std::wstring sheetName;
    std::wstring relationship;
};

class StylesHandler : public IXmlHandler {
public:
    void StartElement(std::string_view name, const CXmlAttributes& attributes) override
    {
        bool ok = false;
        if (name == "numFmt") {
            const size_t id = ParseIndex(attributes.Get("numFmtId"), ok);
            if (ok)
                formats[id] = attributes.Get("formatCode");
        } else if (name == "cellXfs") {
            m_inCellXfs = true;
        } else if (name == "xf" && m_inCellXfs) {
            const size_t id = ParseIndex(attributes.Get("numFmtId"), ok);
            xfFormats.push_back(ok ? id : 0);
        }
    }
    void EndElement(std::string_view name) override
    {
        if (name == "cellXfs")
            m_inCellXfs = false;
    }
    void Characters(std::wstring_view) override {}

    std::map<size_t, std::wstring> formats;
    std::vector<size_t> xfFormats;

private:
    bool m_inCellXfs = false;
};

// The text of a string item (<si> or <is>): its <t>, or the <t> of each rich
// text run, leaving out the phonetic runs (<rPh>).
class StringItemText {
public:
    void Start(std::string_view name)
    {
        if (name == "rPh")
            ++m_phonetic;
        else if (name == "t" && m_phonetic == 0)
            m_inText = true;
    }
    void End(std::string_view name)
    {
        if (name == "rPh" && m_phonetic > 0)
            --m_phonetic;
        else if (name == "t")
            m_inText = false;
    }
    void Characters(std::wstring_view text)
    {
        if (m_inText)
            value.Add(text);
    }
    void Clear()
    {
        value.Clear();
        m_inText = false;
        m_phonetic = 0;
    }
    CappedText value;

private:
    bool m_inText = false;
    int m_phonetic = 0;
};

class SharedStringsHandler : public IXmlHandler {
public:
    SharedStringsHandler(std::vector<std::wstring>& strings, std::vector<size_t>& lengths)
        : m_strings(strings), m_lengths(lengths)
    {
    }
    void StartElement(std::string_view name, const CXmlAttributes&) override
    {
        if (name == "si") {
            m_item.Clear();
            m_inItem = true;
        } else if (m_inItem) {
            m_item.Start(name);
        }
    }
    void EndElement(std::string_view name) override
    {
        if (name == "si" && m_inItem) {
            m_strings.push_back(CWorkbookReader::DecodeEscapes(m_item.value.text));
            m_lengths.push_back(m_item.value.length);
            m_inItem = false;
        } else if (m_inItem) {
            m_item.End(name);
        }
    }
    void Characters(std::wstring_view text) override { m_item.Characters(text); }

private:
    std::vector<std::wstring>& m_strings;
    std::vector<size_t>& m_lengths;
    StringItemText m_item;
    bool m_inItem = false;
};

// OLE date of an ISO 8601 date or date-time ("2024-03-01", "2024-03-01T12:00:00.5").
bool IsoDate(std::wstring_view text, double& date)
{
    SYSTEMTIME t = {};
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double seconds = 0;
    const std::string narrow = ToUtf8(std::wstring(text));
    const int fields = sscanf(narrow.c_str(), "%4u-%2u-%2uT%2u:%2u:%lf", &year, &month, &day, &hour, &minute, &seconds);
    if (fields != 3 && fields < 5)
        return false;
    t.wYear = static_cast<WORD>(year);
    t.wMonth = static_cast<WORD>(month);
    t.wDay = static_cast<WORD>(day);
    double dayPart = 0;
    if (!::SystemTimeToVariantTime(&t, &dayPart))
        return false;
    date = dayPart + (hour * 3600.0 + minute * 60.0 + seconds) / 86400.0;
    return true;
}

class SheetHandler : public IXmlHandler {
public:
    using RowCallback = std::function<void(size_t, std::span<const WorkbookCell>)>;
    SheetHandler(const RowCallback& onRow, const std::vector<bool>& dateStyles,
                 const std::vector<std::wstring>& shared, const std::vector<size_t>& sharedLengths, bool date1904)
        : m_onRow(onRow), m_dateStyles(dateStyles), m_shared(shared), m_sharedLengths(sharedLengths),
          m_date1904(date1904)
    {
    }

    void StartElement(std::string_view name, const CXmlAttributes& attributes) override
    {
        if (!m_inSheetData) {
            m_inSheetData = name == "sheetData";
            return;
        }
        if (name == "row") {
            StartRow(attributes);
        } else if (name == "c") {
            StartCell(attributes);
        } else if (m_inCell) {
            if (name == "v")
                m_inValue = true;
            else if (name == "f")
                m_formula = m_inFormula = true;
            else if (name == "is")
                m_inInline = true;
            else if (m_inInline)
                m_inline.Start(name);
        }
    }

    void EndElement(std::string_view name) override
    {
        if (!m_inSheetData)
            return;
        if (name == "sheetData") {
            EndRow();
            m_inSheetData = false;
        } else if (name == "row") {
            EndRow();
        } else if (name == "c") {
            EndCell();
        } else if (name == "v") {
            m_inValue = false;
        } else if (name == "f") {
            m_inFormula = false;
        } else if (name == "is") {
            m_inInline = false;
        } else if (m_inInline) {
            m_inline.End(name);
        }
    }

    void Characters(std::wstring_view text) override
    {
        if (m_inValue)
            m_value.Add(text);
        else if (m_inFormula && m_formulaText.size() < 16)
            m_formulaText.append(text);
        else if (m_inInline)
            m_inline.Characters(text);
    }

private:
    void StartRow(const CXmlAttributes& attributes)
    {
        EndRow();
        bool found = false;
        const std::wstring_view r = attributes.Get("r", &found);
        bool ok = false;
        const size_t number = found ? ParseIndex(r, ok) : 0;
        if (found && (!ok || number <= m_row || number > 1048576))
            Refuse(Format(L"The first sheet is damaged: a row is numbered \"%ls\" after row %zu.",
                          std::wstring(r).c_str(), m_row));
        m_row = found ? number : m_row + 1;
        m_inRow = true;
        m_width = 0;
        m_column = 0;
        m_hasContent = false;
    }

    void EndRow()
    {
        if (!m_inRow)
            return;
        m_inRow = false;
        if (m_hasContent)
            m_onRow(m_row, std::span<const WorkbookCell>(m_cells.data(), m_width));
    }

    void StartCell(const CXmlAttributes& attributes)
    {
        if (!m_inRow)
            StartRow(CXmlAttributes());
        bool found = false;
        const std::wstring_view reference = attributes.Get("r", &found);
        if (found) {
            size_t row = 0;
            if (!ParseReference(reference, m_column, row) || row != m_row)
                Refuse(Format(L"The first sheet is damaged: row %zu holds a cell \"%ls\".", m_row,
                              std::wstring(reference).c_str()));
        }
        if (m_column >= 16384)
            Refuse(Format(L"The first sheet is damaged: row %zu has more than 16,384 cells.", m_row));
        m_type = attributes.Get("t");
        bool ok = false;
        const size_t style = ParseIndex(attributes.Get("s"), ok);
        m_dateStyle = ok && style < m_dateStyles.size() && m_dateStyles[style];
        m_inCell = true;
        m_formula = m_inFormula = false;
        m_formulaText.clear();
        m_value.Clear();
        m_inline.Clear();
    }

    void EndCell()
    {
        if (!m_inCell)
            return;
        m_inCell = false;
        m_inValue = m_inInline = false;
        // The cell is filled in a scratch cell whose buffers are reused, and
        // swapped into the row's cells (which keep theirs from row to row).
        WorkbookCell& cell = m_cell;
        cell.kind = WorkbookCell::Kind::Empty;
        cell.text.clear();
        cell.length = 0;
        cell.date = false;
        cell.formula = m_formula;
        Fill(cell);
        // LibreOffice writes a boolean cell as the formula TRUE() or FALSE():
        // a constant, not a formula the user wrote.
        if (cell.kind == WorkbookCell::Kind::Boolean && (m_formulaText == L"TRUE()" || m_formulaText == L"FALSE()"))
            cell.formula = false;
        if (cell.kind != WorkbookCell::Kind::Empty || cell.formula) {
            if (m_cells.size() <= m_column)
                m_cells.resize(m_column + 1);
            for (size_t skipped = m_width; skipped < m_column; ++skipped) {
                m_cells[skipped].kind = WorkbookCell::Kind::Empty;
                m_cells[skipped].text.clear();
                m_cells[skipped].length = 0;
                m_cells[skipped].date = m_cells[skipped].formula = false;
            }
            std::swap(m_cells[m_column], cell);
            m_width = m_column + 1;
            m_hasContent = true;
        }
        ++m_column;
    }

    void Fill(WorkbookCell& cell)
    {
        using Kind = WorkbookCell::Kind;
        const std::wstring& v = m_value.text;
        if (m_type == L"inlineStr") {
            cell.kind = Kind::Text;
            CWorkbookReader::DecodeEscapes(m_inline.value.text, cell.text);
            cell.length = m_inline.value.length;
        } else if (m_type == L"s") {
            bool ok = false;
            const size_t index = ParseIndex(TrimWhiteSpace(v), ok);
            if (!ok || index >= m_shared.size()) {
                cell.kind = Kind::Error;
                cell.text = L"a shared string that the workbook lacks";
                return;
            }
            cell.kind = Kind::Text;
            cell.text.assign(m_shared[index]);
            cell.length = m_sharedLengths[index];
        } else if (m_type == L"str") {
            cell.kind = Kind::Text;
            CWorkbookReader::DecodeEscapes(v, cell.text);
            cell.length = m_value.length;
        } else if (m_type == L"b") {
            if (v.empty())
                return;
            cell.kind = Kind::Boolean;
            cell.text = v == L"1" || v == L"true" ? L"1" : L"0";
        } else if (m_type == L"e") {
            cell.kind = Kind::Error;
            cell.text = v;
        } else if (m_type == L"d") {
            double date = 0;
            if (v.empty())
                return;
            cell.kind = Kind::Number;
            cell.date = true;
            if (!IsoDate(v, date)) {
                cell.kind = Kind::Error;
                cell.text = L"a date that cannot be read (" + v + L")";
                return;
            }
            cell.text = std::to_wstring(date);
            char digits[64];
            const auto end = std::to_chars(digits, digits + sizeof digits, date).ptr;
            cell.text = FromUtf8(std::string_view(digits, static_cast<size_t>(end - digits)));
        } else {
            const std::wstring digits = TrimWhiteSpace(v);
            if (digits.empty())
                return;
            double number = 0;
            cell.kind = Kind::Number;
            cell.text = digits;
            cell.date = m_dateStyle;
            if (!CWorkbookReader::ParseNumber(digits, number)) {
                cell.kind = Kind::Error;
                cell.text = L"a number that cannot be read (" + digits + L")";
                return;
            }
            if (m_dateStyle && m_date1904) {
                char text[64];
                const auto end = std::to_chars(text, text + sizeof text, number + 1462.0).ptr;
                cell.text = FromUtf8(std::string_view(text, static_cast<size_t>(end - text)));
            }
        }
        if (cell.length == 0)
            cell.length = cell.text.size();
    }

    const RowCallback& m_onRow;
    const std::vector<bool>& m_dateStyles;
    const std::vector<std::wstring>& m_shared;
    const std::vector<size_t>& m_sharedLengths;
    bool m_date1904;

    bool m_inSheetData = false;
    bool m_inRow = false;
    bool m_inCell = false;
    bool m_inValue = false;
    bool m_inInline = false;
    bool m_formula = false;
    bool m_inFormula = false;
    bool m_dateStyle = false;
    bool m_hasContent = false;
    size_t m_row = 0;
    size_t m_column = 0;
    std::wstring m_type;
    std::wstring m_formulaText;
    CappedText m_value;
    StringItemText m_inline;
    std::vector<WorkbookCell> m_cells;  // the row's cells are the first m_width
    size_t m_width = 0;
    WorkbookCell m_cell;
};

} // namespace

CWorkbookReader::CWorkbookReader(std::string_view bytes) : m_zip((RefuseOtherFormats(bytes), bytes))
{
    std::string workbookPart = "xl/workbook.xml";
    for (const Relationship& r : ReadRelationships("")) {
        if (EndsWith(r.type, L"/officeDocument")) {
            workbookPart = ResolveTarget("", r.target);
            break;
        }
    }
    ReadWorkbook(workbookPart);
}

void CWorkbookReader::RefuseOtherFormats(std::string_view bytes)
{
    if (bytes.substr(0, 8) == std::string_view(kCompoundFileSignature, 8)) {
        // Both an encrypted workbook and an old binary one are compound files;
        // the encrypted one holds a stream named "EncryptedPackage".
        static const char kEncrypted[] = "E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e\0";
        if (bytes.find(std::string_view(kEncrypted, sizeof kEncrypted - 1)) != std::string_view::npos)
            Refuse(L"The workbook is encrypted (protected by a password). Save it without a password and import it "
                   L"again.");
        Refuse(L"The file is an old binary Excel workbook (.xls). Save it as an Excel Workbook (.xlsx) and import "
               L"that.");
    }
    if (bytes.substr(0, 2) != "PK")
        Refuse(L"The file is not an Excel workbook (.xlsx): it is not a zip archive.");
}

const CZipReader::Entry& CWorkbookReader::Part(const std::string& name) const
{
    const CZipReader::Entry* entry = m_zip.Find(name);
    if (!entry)
        Refuse(Format(L"The file is not a complete workbook: the part \"%ls\" is missing.", FromUtf8(name).c_str()));
    return *entry;
}

void CWorkbookReader::Parse(const std::string& part, uint64_t limit, IXmlHandler& handler) const
{
    const ComPtr<IStream> stream = m_zip.OpenStream(Part(part), limit);
    // The parser reads to the end of the part, so a damaged or oversized
    // part is noticed even after the root element's end.
    ParseXml(
        [&](char* buffer, size_t size) -> size_t {
            ULONG read = 0;
            if (FAILED(stream->Read(buffer, static_cast<ULONG>(size), &read))) {
                const std::wstring streamError = CZipReader::StreamError(stream.Get());
                Refuse(streamError.empty() ? Format(L"The part \"%ls\" of the workbook cannot be read.",
                                                    FromUtf8(part).c_str())
                                           : streamError);
            }
            return read;
        },
        handler, FromUtf8(part));
}

std::vector<CWorkbookReader::Relationship> CWorkbookReader::ReadRelationships(const std::string& partName) const
{
    const std::string relsPart = partName.empty() ? "_rels/.rels" : RelationshipsPart(partName);
    std::vector<Relationship> result;
    if (!m_zip.Find(relsPart))
        return result;
    std::vector<std::tuple<std::wstring, std::wstring, std::wstring>> raw;
    RelationshipsHandler handler(raw);
    Parse(relsPart, kSmallPartLimit, handler);
    for (auto& [id, type, target] : raw)
        result.push_back({std::move(id), std::move(type), std::move(target)});
    return result;
}

void CWorkbookReader::ReadWorkbook(const std::string& workbookPart)
{
    WorkbookHandler workbook;
    Parse(workbookPart, kSmallPartLimit, workbook);
    if (!workbook.found)
        Refuse(L"The workbook has no sheet.");
    m_sheetName = workbook.sheetName;
    m_date1904 = workbook.date1904;
    std::string stylesPart;
    std::string stringsPart;
    for (const Relationship& r : ReadRelationships(workbookPart)) {
        if (r.id == workbook.relationship)
            m_sheetPart = ResolveTarget(workbookPart, r.target);
        else if (EndsWith(r.type, L"/styles"))
            stylesPart = ResolveTarget(workbookPart, r.target);
        else if (EndsWith(r.type, L"/sharedStrings"))
            stringsPart = ResolveTarget(workbookPart, r.target);
    }
    if (m_sheetPart.empty())
        Refuse(Format(L"The workbook does not say where its sheet \"%ls\" is.", m_sheetName.c_str()));
    if (!stylesPart.empty() && m_zip.Find(stylesPart))
        ReadStyles(stylesPart);
    if (!stringsPart.empty() && m_zip.Find(stringsPart))
        ReadSharedStrings(stringsPart);
}

void CWorkbookReader::ReadStyles(const std::string& part)
{
    StylesHandler styles;
    Parse(part, kSmallPartLimit, styles);
    for (size_t id : styles.xfFormats) {
        // The built-in date and time formats, and custom codes that show a date or a time.
        bool date = (id >= 14 && id <= 22) || (id >= 45 && id <= 47);
        const auto custom = styles.formats.find(id);
        if (custom != styles.formats.end())
            date = IsDateFormat(custom->second);
        m_dateStyles.push_back(date);
    }
}

void CWorkbookReader::ReadSharedStrings(const std::string& part)
{
    SharedStringsHandler handler(m_sharedStrings, m_sharedLengths);
    Parse(part, kLargePartLimit, handler);
}

void CWorkbookReader::ReadFirstSheet(
    const std::function<void(size_t row, std::span<const WorkbookCell> cells)>& onRow)
{
    SheetHandler handler(onRow, m_dateStyles, m_sharedStrings, m_sharedLengths, m_date1904);
    Parse(m_sheetPart, kLargePartLimit, handler);
}

bool CWorkbookReader::ParseNumber(std::wstring_view digits, double& value)
{
    if (digits.empty() || digits.size() > 64)
        return false;
    char narrow[65];
    for (size_t i = 0; i < digits.size(); ++i) {
        if (digits[i] > 0x7F)
            return false;
        narrow[i] = static_cast<char>(digits[i]);
    }
    const char* first = narrow;
    const char* last = narrow + digits.size();
    if (*first == '+')
        ++first;
    const auto result = std::from_chars(first, last, value);
    return result.ec == std::errc() && result.ptr == last && std::isfinite(value);
}

std::wstring CWorkbookReader::DecodeEscapes(std::wstring_view text)
{
    std::wstring out;
    DecodeEscapes(text, out);
    return out;
}

void CWorkbookReader::DecodeEscapes(std::wstring_view text, std::wstring& out)
{
    if (text.find(L"_x") == std::wstring_view::npos) {
        out.assign(text);
        return;
    }
    auto hex = [](wchar_t c) -> int {
        if (c >= L'0' && c <= L'9')
            return c - L'0';
        if (c >= L'A' && c <= L'F')
            return c - L'A' + 10;
        if (c >= L'a' && c <= L'f')
            return c - L'a' + 10;
        return -1;
    };
    out.clear();
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'_' && i + 6 < text.size() && text[i + 1] == L'x' && text[i + 6] == L'_') {
            int code = 0;
            bool ok = true;
            for (size_t k = 2; k < 6; ++k) {
                const int h = hex(text[i + k]);
                ok = ok && h >= 0;
                code = code * 16 + h;
            }
            if (ok) {
                out += static_cast<wchar_t>(code);
                i += 6;
                continue;
            }
        }
        out += text[i];
    }
}

bool CWorkbookReader::IsDateFormat(std::wstring_view code)
{
    // Only the first section counts (positive numbers); text in quotes,
    // escaped characters and bracketed parts ([Red], [$-409]) are not
    // date letters, but elapsed times ([h], [mm], [ss]) are.
    bool quoted = false;
    for (size_t i = 0; i < code.size(); ++i) {
        const wchar_t c = code[i];
        if (quoted) {
            quoted = c != L'"';
            continue;
        }
        switch (c) {
        case L'"': quoted = true; break;
        case L'\\':
        case L'_':
        case L'*': ++i; break;
        case L';': return false;
        case L'[': {
            const size_t end = code.find(L']', i);
            if (end == std::wstring_view::npos)
                return false;
            const std::wstring_view inside = code.substr(i + 1, end - i - 1);
            if (!inside.empty() && (inside[0] == L'h' || inside[0] == L'H' || inside[0] == L'm' ||
                                    inside[0] == L'M' || inside[0] == L's' || inside[0] == L'S'))
                return true;
            i = end;
            break;
        }
        default:
            if (wcschr(L"yYmMdDhHsS", c) && c != L'\0')
                return true;
        }
    }
    return false;
}

} // namespace CL
