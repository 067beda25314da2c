#include "addressspace/AddressSpaceWorkbook.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <span>

#include "common/Exception.h"
#include "common/FileBytes.h"
#include "common/ReplacingFile.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/WorkbookReader.h"
#include "common/WorkbookWriter.h"

namespace CL {

const wchar_t kWorkbookSheetName[] = L"Address space";

namespace {

enum Column { kPath, kType, kValue, kReadable, kWritable, kArchive, kScanRate, kColumnCount };

constexpr LONGLONG kExactLimit = 9007199254740992LL;   // 2^53: the integers a double holds exactly
constexpr LONGLONG kCurrencyLimit = 1000000000000000LL;  // 10^15 units of 1/10000: 15 digits
// From 1 March 1900 on, spreadsheets and OLE dates count the same days.
constexpr double kFirstSharedDate = 61.0;
constexpr double kLastDate = 2958466.0;                  // 1 January 10000
constexpr double kMaxColumnWidth = 60.0;
constexpr size_t kSpreadsheetDigits = 15;

using Style = CWorkbookWriter::Style;

// ---- Export -----------------------------------------------------------------

// The longest line of a text.
size_t TextWidth(std::wstring_view text)
{
    size_t longest = 0, line = 0;
    for (wchar_t c : text) {
        line = c == L'\n' ? 0 : line + 1;
        longest = std::max(longest, line);
    }
    return longest;
}

// One cell of a row before it is written: its kind and its content.
struct OutCell {
    enum class Kind { Empty, Text, Number, Boolean, Date } kind = Kind::Empty;
    std::wstring text;   // Text
    std::string digits;  // Number
    double date = 0;     // Date
    bool flag = false;   // Boolean

    size_t Width() const
    {
        switch (kind) {
        case Kind::Text: return TextWidth(text);
        case Kind::Number: return digits.size();
        case Kind::Boolean: return 5;
        case Kind::Date: return 23;
        default: return 0;
        }
    }
};

OutCell TextCell(std::wstring text)
{
    OutCell cell;
    cell.kind = text.empty() ? OutCell::Kind::Empty : OutCell::Kind::Text;
    cell.text = std::move(text);
    return cell;
}

OutCell NumberCell(std::string digits)
{
    OutCell cell;
    cell.kind = OutCell::Kind::Number;
    cell.digits = std::move(digits);
    return cell;
}

std::string IntegerDigits(long long value)
{
    return std::to_string(value);
}

// The currency's exact decimal text: units of 1/10000, trailing zeros cut.
std::string CurrencyDigits(LONGLONG units)
{
    const bool negative = units < 0;
    const unsigned long long magnitude =
        negative ? 0ull - static_cast<unsigned long long>(units) : static_cast<unsigned long long>(units);
    std::string text = std::to_string(magnitude / 10000);
    std::string fraction = std::to_string(magnitude % 10000);
    fraction.insert(0, 4 - fraction.size(), '0');
    while (!fraction.empty() && fraction.back() == '0')
        fraction.pop_back();
    if (!fraction.empty())
        text += "." + fraction;
    return negative ? "-" + text : text;
}

// The significant digits of a number's text ("0.00125" has 3).
size_t SignificantDigits(const std::string& digits)
{
    const std::string mantissa = digits.substr(0, digits.find('E'));
    size_t first = mantissa.find_first_of("123456789");
    if (first == std::string::npos)
        return 1;
    size_t last = mantissa.find_last_of("123456789");
    size_t count = 0;
    for (size_t i = first; i <= last; ++i)
        count += mantissa[i] >= '0' && mantissa[i] <= '9';
    return count;
}

// The float's shortest text, as a number cell carries it; empty when no
// decimal text both reads as a double and gives the float back.
std::string FloatDigits(float value)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    double wide = 0;
    std::from_chars(digits, end, wide);
    if (static_cast<float>(wide) != value)
        wide = value;
    return CWorkbookWriter::NumberDigits(wide);
}

// The value's cell: typed where the type's value survives a number,
// boolean or date cell, else the value's text.
OutCell ValueCell(const VARIANT& value)
{
    const auto asText = [&] { return TextCell(VariantToString(value, kLocaleSystemDefault, kArraySeparator)); };
    if (value.vt & VT_ARRAY)
        return asText();
    switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL: return OutCell();
    case VT_BSTR: return TextCell(value.bstrVal ? std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal))
                                                : std::wstring());
    case VT_BOOL: {
        OutCell cell;
        cell.kind = OutCell::Kind::Boolean;
        cell.flag = value.boolVal != VARIANT_FALSE;
        return cell;
    }
    case VT_I1: return NumberCell(IntegerDigits(value.cVal));
    case VT_I2: return NumberCell(IntegerDigits(value.iVal));
    case VT_I4: return NumberCell(IntegerDigits(value.lVal));
    case VT_INT: return NumberCell(IntegerDigits(value.intVal));
    case VT_UI1: return NumberCell(IntegerDigits(value.bVal));
    case VT_UI2: return NumberCell(IntegerDigits(value.uiVal));
    case VT_UI4: return NumberCell(IntegerDigits(value.ulVal));
    case VT_UINT: return NumberCell(IntegerDigits(value.uintVal));
    case VT_I8:
        if (value.llVal >= -kExactLimit && value.llVal <= kExactLimit &&
            SignificantDigits(IntegerDigits(value.llVal)) <= kSpreadsheetDigits)
            return NumberCell(IntegerDigits(value.llVal));
        return TextCell(std::to_wstring(value.llVal));
    case VT_UI8:
        if (value.ullVal <= static_cast<ULONGLONG>(kExactLimit) &&
            SignificantDigits(std::to_string(value.ullVal)) <= kSpreadsheetDigits)
            return NumberCell(std::to_string(value.ullVal));
        return TextCell(std::to_wstring(value.ullVal));
    case VT_R4:
        if (std::isfinite(value.fltVal) && !(value.fltVal == 0 && std::signbit(value.fltVal)))
            return NumberCell(FloatDigits(value.fltVal));
        return asText();
    case VT_R8: {
        if (!std::isfinite(value.dblVal) || (value.dblVal == 0 && std::signbit(value.dblVal)))
            return asText();
        // Spreadsheets keep 15 significant digits (LibreOffice writes no
        // more): a double that needs 16 or 17 is a text cell of its digits.
        std::string digits = CWorkbookWriter::NumberDigits(value.dblVal);
        if (SignificantDigits(digits) <= kSpreadsheetDigits)
            return NumberCell(std::move(digits));
        return TextCell(FromUtf8(digits));
    }
    case VT_CY:
        if (value.cyVal.int64 > -kCurrencyLimit && value.cyVal.int64 < kCurrencyLimit)
            return NumberCell(CurrencyDigits(value.cyVal.int64));
        return asText();
    case VT_DATE:
        if (value.date >= kFirstSharedDate && value.date < kLastDate) {
            OutCell cell;
            cell.kind = OutCell::Kind::Date;
            cell.date = value.date;
            return cell;
        }
        return asText();
    default: return asText();
    }
}

// Calls visit(item, path) for every item in export order (a branch's items,
// then its branches), the path built in one buffer as the walk goes.
template <typename Visit>
void ForEachItem(const COPCServerAddressSpaceBranch& branch, std::wstring& path, Visit&& visit)
{
    const size_t base = path.size();
    for (const CSmartPtr<COPCItem>& item : branch.Items()) {
        AppendItemPathName(path, item->Name());
        visit(*item, path);
        path.resize(base);
    }
    for (const CSmartPtr<COPCServerAddressSpaceBranch>& child : branch.Branches()) {
        AppendItemPathName(path, child->Name());
        ForEachItem(*child, path, visit);
        path.resize(base);
    }
}

// The value's cell; a text longer than a cell holds is refused, as a
// spreadsheet would cut it.
OutCell CheckedValueCell(const COPCItem& item, const std::wstring& path)
{
    OutCell cell = ValueCell(item.Value());
    if (cell.kind == OutCell::Kind::Text && cell.text.size() > CWorkbookWriter::kMaxCellText)
        throw CException(E_INVALIDARG,
                         Format(L"The value of \"%ls\" has %zu characters, more than a workbook cell holds "
                                L"(32,767): a spreadsheet would cut it. Export CSV keeps it whole.",
                                path.c_str(), cell.text.size()));
    return cell;
}

// The columns' widths in characters: the longest content of each column
// (and its header), within the limit. Every value is checked on the way,
// so that nothing is written for an address space that cannot be.
std::vector<double> ColumnWidths(const COPCServerAddressSpace& space)
{
    std::array<size_t, kColumnCount> widest = {};
    for (int c = 0; c < kColumnCount; ++c)
        widest[static_cast<size_t>(c)] = wcslen(kCsvColumns[c]) + 1;   // + room for the filter button
    std::wstring path;
    ForEachItem(*space.RootBranch(), path, [&](const COPCItem& item, const std::wstring& itemPath) {
        widest[kPath] = std::max(widest[kPath], TextWidth(itemPath));
        widest[kType] = std::max(widest[kType], VarTypeToString(item.CanonicalDataType()).size());
        widest[kValue] = std::max(widest[kValue], CheckedValueCell(item, itemPath).Width());
        widest[kScanRate] = std::max(widest[kScanRate], std::to_string(item.ScanRate()).size());
    });
    std::vector<double> widths;
    for (size_t width : widest)
        widths.push_back(std::min(static_cast<double>(width + 2), kMaxColumnWidth));
    return widths;
}

void WriteCell(CWorkbookWriter& writer, const OutCell& cell)
{
    switch (cell.kind) {
    case OutCell::Kind::Empty: writer.Skip(); break;
    case OutCell::Kind::Text: writer.Text(cell.text, CWorkbookWriter::kText); break;
    case OutCell::Kind::Number: writer.NumberText(cell.digits); break;
    case OutCell::Kind::Boolean: writer.Boolean(cell.flag); break;
    case OutCell::Kind::Date: writer.DateTime(cell.date); break;
    }
}

// ---- Import -----------------------------------------------------------------

const wchar_t* ColumnName(int column)
{
    return kCsvColumns[column];
}

bool IsIntegerDigits(std::wstring_view digits)
{
    size_t i = !digits.empty() && (digits[0] == L'-' || digits[0] == L'+') ? 1 : 0;
    if (i == digits.size())
        return false;
    for (; i < digits.size(); ++i)
        if (digits[i] < L'0' || digits[i] > L'9')
            return false;
    return true;
}

std::wstring DateText(double serial)
{
    try {
        return DateToString(serial);
    } catch (const CException&) {
        return FromUtf8(CWorkbookWriter::NumberDigits(serial));
    }
}

// An OLE date from a spreadsheet's day number: the same from 1 March 1900
// on; before it the spreadsheet counts a 29 February 1900 that never was.
// Rounded to the millisecond: spreadsheets keep times to the millisecond at
// most (LibreOffice writes 15 digits), the program's date texts show as much.
double OleDate(double serial)
{
    const double days = serial >= 1 && serial < 60 ? serial + 1 : serial;
    return std::round(days * 86400000.0) / 86400000.0;
}

// The text a cell gives a column read as text (Path, Data type, flags,
// scan rate, a text value): numbers as their shortest text, booleans as
// TRUE/FALSE, dates as the program's date text.
void CellText(const WorkbookCell& cell, std::wstring& out)
{
    switch (cell.kind) {
    case WorkbookCell::Kind::Text: out.assign(cell.text); return;
    case WorkbookCell::Kind::Boolean: out.assign(cell.text == L"1" ? L"TRUE" : L"FALSE"); return;
    case WorkbookCell::Kind::Number: {
        double number = 0;
        CWorkbookReader::ParseNumber(cell.text, number);
        if (cell.date)
            out = DateText(OleDate(number));
        else if (IsIntegerDigits(cell.text) && cell.text.size() <= 15)
            out.assign(std::wstring_view(cell.text).substr(cell.text[0] == L'+' ? 1 : 0));
        else
            out = FromUtf8(CWorkbookWriter::NumberDigits(number));
        return;
    }
    default: out.clear(); return;
    }
}

std::wstring CellText(const WorkbookCell& cell)
{
    std::wstring text;
    CellText(cell, text);
    return text;
}

// An integer value of the type from a number cell's digits: exact for
// digits that are a whole number, else through the double, which must be
// whole.
std::optional<CVariant> IntegerValue(const std::wstring& digits, VARTYPE type, std::wstring& reason)
{
    CVariant wide;
    const std::string narrow = ToUtf8(digits[0] == L'+' ? digits.substr(1) : digits);
    long long signedValue = 0;
    unsigned long long unsignedValue = 0;
    if (IsIntegerDigits(digits) &&
        std::from_chars(narrow.data(), narrow.data() + narrow.size(), signedValue).ec == std::errc()) {
        wide = CVariant::I8(signedValue);
    } else if (IsIntegerDigits(digits) &&
               std::from_chars(narrow.data(), narrow.data() + narrow.size(), unsignedValue).ec == std::errc()) {
        wide.vt = VT_UI8;
        wide.ullVal = unsignedValue;
    } else {
        double number = 0;
        CWorkbookReader::ParseNumber(digits, number);
        if (number != std::floor(number) || std::fabs(number) > 1.8446744073709552e19) {
            reason = Format(L"the value %ls is not a whole number of %ls", digits.c_str(),
                            VarTypeToString(type).c_str());
            return std::nullopt;
        }
        if (number < 0) {
            if (number < -9.2233720368547758e18) {
                reason = Format(L"the value %ls is out of the range of %ls", digits.c_str(),
                                VarTypeToString(type).c_str());
                return std::nullopt;
            }
            wide = CVariant::I8(static_cast<long long>(number));
        } else {
            wide.vt = VT_UI8;
            wide.ullVal = number >= 1.8446744073709552e19 ? ~0ull : static_cast<unsigned long long>(number);
        }
    }
    CVariant result;
    if (FAILED(EnhVariantChangeType(&result, &wide, kLocaleInvariant, kConversionFlags, type))) {
        reason = Format(L"the value %ls is out of the range of %ls", digits.c_str(), VarTypeToString(type).c_str());
        return std::nullopt;
    }
    return result;
}

// A scalar value of the type from a number cell; nullopt with the reason
// when the number does not fit the type.
std::optional<CVariant> NumberValue(const WorkbookCell& cell, VARTYPE type, std::wstring& reason)
{
    double number = 0;
    CWorkbookReader::ParseNumber(cell.text, number);
    switch (type) {
    case VT_I1: case VT_I2: case VT_I4: case VT_I8: case VT_INT:
    case VT_UI1: case VT_UI2: case VT_UI4: case VT_UI8: case VT_UINT:
        return IntegerValue(cell.text, type, reason);
    case VT_R4: {
        const float single = static_cast<float>(number);
        if (!std::isfinite(single)) {
            reason = Format(L"the value %ls is out of the range of VT_R4", cell.text.c_str());
            return std::nullopt;
        }
        return CVariant::R4(single);
    }
    case VT_R8: return CVariant::R8(number);
    case VT_CY: {
        CVariant value;
        value.vt = VT_CY;
        if (FAILED(::VarCyFromR8(number, &value.cyVal))) {
            reason = Format(L"the value %ls is out of the range of VT_CY", cell.text.c_str());
            return std::nullopt;
        }
        return value;
    }
    case VT_DATE: {
        CVariant value;
        value.vt = VT_DATE;
        value.date = OleDate(number);
        return value;
    }
    case VT_BOOL:
        if (number == 0 || number == 1 || number == -1)
            return CVariant::Bool(number != 0);
        reason = Format(L"the value %ls is not a boolean (1 or 0)", cell.text.c_str());
        return std::nullopt;
    default: return std::nullopt;
    }
}

// A currency from its decimal text ("-922337203685477.5808", a decimal
// comma taken too), exactly: the system's conversion goes through a double
// and fails at the type's ends.
std::optional<CVariant> ExactCurrency(std::wstring_view text)
{
    const std::wstring trimmed = TrimWhiteSpace(std::wstring(text));
    std::wstring_view digits = trimmed;
    const bool negative = !digits.empty() && digits[0] == L'-';
    if (negative || (!digits.empty() && digits[0] == L'+'))
        digits.remove_prefix(1);
    unsigned long long units = 0;
    int decimals = -1;
    bool any = false;
    for (wchar_t c : digits) {
        if ((c == L'.' || c == L',') && decimals < 0) {
            decimals = 0;
            continue;
        }
        if (c < L'0' || c > L'9' || decimals >= 4 || units > 922337203685477580ull)
            return std::nullopt;
        units = units * 10 + static_cast<unsigned>(c - L'0');
        any = true;
        if (decimals >= 0)
            ++decimals;
    }
    for (int i = std::max(decimals, 0); i < 4; ++i) {
        if (units > 922337203685477580ull)
            return std::nullopt;
        units *= 10;
    }
    if (!any || units > (negative ? 9223372036854775808ull : 9223372036854775807ull))
        return std::nullopt;
    CVariant value;
    value.vt = VT_CY;
    value.cyVal.int64 = negative ? static_cast<LONGLONG>(0ull - units) : static_cast<LONGLONG>(units);
    return value;
}

class PlanBuilder {
public:
    PlanBuilder(CsvImportPlan& plan, const CsvItemDefaults& defaults) : m_plan(plan), m_defaults(defaults) {}

    void Row(size_t number, std::span<const WorkbookCell> cells)
    {
        if (!m_header) {
            std::vector<std::wstring> names;
            for (const WorkbookCell& cell : cells)
                names.push_back(CellText(cell));
            m_map = MapCsvColumns(names, L"The workbook's first sheet", L"header row (its first row with content)");
            m_header = true;
            return;
        }
        CsvItem item;
        item.line = number;
        std::wstring note;
        const std::wstring reason = ReadRow(cells, item, note);
        if (!reason.empty()) {
            m_plan.rejected.push_back({number, reason});
            return;
        }
        if (!note.empty())
            m_plan.notes.push_back({number, note});
        m_plan.items.push_back(std::move(item));
    }

    bool HasHeader() const { return m_header; }

private:
    const WorkbookCell* Cell(std::span<const WorkbookCell> cells, int column) const
    {
        const int i = m_map.index[column];
        return i >= 0 && static_cast<size_t>(i) < cells.size() ? &cells[static_cast<size_t>(i)] : nullptr;
    }

    std::wstring ReadRow(std::span<const WorkbookCell> cells, CsvItem& item, std::wstring& note)
    {
        // The fields' strings are kept from row to row, as the CSV reader keeps its.
        std::vector<std::wstring>& fields = m_fields;
        fields.resize(cells.size());
        for (std::wstring& field : fields)
            field.clear();
        std::vector<std::wstring> formulas;
        for (int column = 0; column < kColumnCount; ++column) {
            const WorkbookCell* cell = Cell(cells, column);
            if (!cell)
                continue;
            if (cell->kind == WorkbookCell::Kind::Error)
                return cell->formula ? Format(L"the %ls cell holds a formula whose result is the error %ls",
                                              ColumnName(column), cell->text.c_str())
                                     : Format(L"the %ls cell holds %ls", ColumnName(column),
                                              cell->text.rfind(L"#", 0) == 0
                                                  ? (L"the error " + cell->text).c_str()
                                                  : cell->text.c_str());
            if (cell->kind == WorkbookCell::Kind::Empty && cell->formula)
                return Format(L"the %ls cell holds a formula without a stored result", ColumnName(column));
            if (cell->length > CWorkbookWriter::kMaxCellText)
                return Format(L"the %ls cell holds %zu characters, more than a cell holds (32,767)",
                              ColumnName(column), cell->length);
            if (cell->formula)
                formulas.push_back(ColumnName(column));
            CellText(*cell, fields[static_cast<size_t>(m_map.index[column])]);
        }
        const WorkbookCell* value = Cell(cells, kValue);
        const bool typed = value && (value->kind == WorkbookCell::Kind::Number ||
                                     (value->kind == WorkbookCell::Kind::Boolean));
        if (typed)
            fields[static_cast<size_t>(m_map.index[kValue])].clear();
        std::wstring reason = ReadCsvFields(fields, m_map, m_defaults, true, item);
        // A currency text is read exactly: the system's conversion fails at the type's ends.
        std::optional<CVariant> currency;
        if (value && value->kind == WorkbookCell::Kind::Text && item.dataType == VT_CY &&
            (currency = ExactCurrency(value->text))) {
            fields[static_cast<size_t>(m_map.index[kValue])].clear();
            reason = ReadCsvFields(fields, m_map, m_defaults, true, item);
            item.value = std::move(*currency);
        }
        if (!reason.empty())
            return reason;
        if (typed) {
            reason = TypedValue(*value, item);
            if (!reason.empty())
                return reason;
        }
        if (!formulas.empty()) {
            std::wstring list;
            for (const std::wstring& name : formulas)
                list += (list.empty() ? L"" : L", ") + name;
            note = Format(L"taken; the %ls cell(s) held a formula: the stored result was taken", list.c_str());
        }
        return std::wstring();
    }

    // The value of a number or boolean cell for the item's type: a number
    // of the type where it fits, else the cell's text read as Import CSV
    // reads text.
    std::wstring TypedValue(const WorkbookCell& cell, CsvItem& item)
    {
        const VARTYPE type = item.dataType;
        if (cell.kind == WorkbookCell::Kind::Boolean && type == VT_BOOL) {
            item.value = CVariant::Bool(cell.text == L"1");
            return std::wstring();
        }
        if (cell.kind == WorkbookCell::Kind::Number && type != VT_BSTR && !(type & VT_ARRAY)) {
            std::wstring reason;
            if (std::optional<CVariant> value = NumberValue(cell, type, reason)) {
                item.value = std::move(*value);
                return std::wstring();
            }
            if (!reason.empty())
                return reason;
        }
        std::vector<std::wstring> fields(static_cast<size_t>(m_map.index[kValue]) + 1);
        std::wstring text = CellText(cell);
        if (cell.kind == WorkbookCell::Kind::Number && !cell.date && type != VT_BSTR) {
            // The text goes through the system's conversion: a decimal point
            // becomes the system's decimal mark.
            for (wchar_t& c : text)
                if (c == L'.')
                    c = L',';
        }
        fields.back() = text;
        CsvColumnMap valueOnly;
        valueOnly.index[kPath] = -1;
        valueOnly.index[kValue] = m_map.index[kValue];
        CsvItem probe;
        probe.name = item.name;
        CsvItemDefaults defaults = m_defaults;
        defaults.dataType = type;
        const std::wstring reason = ReadValueOnly(fields, valueOnly, defaults, probe);
        if (!reason.empty())
            return reason;
        item.value = std::move(probe.value);
        return std::wstring();
    }

    // The value column alone through the CSV reading (a stand-in path).
    static std::wstring ReadValueOnly(std::vector<std::wstring> fields, CsvColumnMap map,
                                      const CsvItemDefaults& defaults, CsvItem& item)
    {
        fields.push_back(L"x");
        map.index[kPath] = static_cast<int>(fields.size() - 1);
        return ReadCsvFields(fields, map, defaults, true, item);
    }

    CsvImportPlan& m_plan;
    const CsvItemDefaults& m_defaults;
    CsvColumnMap m_map;
    bool m_header = false;
    std::vector<std::wstring> m_fields;
};

} // namespace

void ExportAddressSpaceWorkbook(const COPCServerAddressSpace& space, const std::wstring& path)
{
    // Two walks, no row kept: the first finds the columns' widths (which
    // come before the rows in the sheet), the second writes the rows.
    const std::vector<double> widths = ColumnWidths(space);
    CReplacingFile file(path, L"CreateFile (szFile)");
    CWorkbookWriter writer(file);
    writer.BeginSheet(kWorkbookSheetName, widths, true);
    writer.BeginRow();
    for (const wchar_t* name : kCsvColumns)
        writer.Text(name, CWorkbookWriter::kHeader);
    std::wstring itemPath;
    ForEachItem(*space.RootBranch(), itemPath, [&](const COPCItem& item, const std::wstring& itemPathNow) {
        writer.BeginRow();
        writer.Text(itemPathNow, CWorkbookWriter::kText);
        WriteCell(writer, TextCell(VarTypeToString(item.CanonicalDataType())));
        WriteCell(writer, ValueCell(item.Value()));
        writer.NumberText(item.Readable() ? "1" : "0");
        writer.NumberText(item.Writable() ? "1" : "0");
        writer.NumberText(item.Archive() ? "1" : "0");
        char digits[16];
        const char* end = std::to_chars(digits, digits + sizeof digits, item.ScanRate()).ptr;
        writer.NumberText(std::string_view(digits, static_cast<size_t>(end - digits)));
    });
    writer.EndSheet(true);
    writer.Close();
    file.Commit();
}

CsvImportPlan ReadAddressSpaceWorkbook(std::string_view bytes, const CsvItemDefaults& defaults)
{
    CWorkbookReader reader(bytes);
    CsvImportPlan plan;
    plan.workbook = true;
    PlanBuilder builder(plan, defaults);
    reader.ReadFirstSheet([&](size_t row, std::span<const WorkbookCell> cells) { builder.Row(row, cells); });
    if (!builder.HasHeader())
        throw CException(E_INVALIDARG,
                         L"The workbook's first sheet is empty: its first row must name the columns (Path, ...).");
    return plan;
}

CsvImportPlan LoadAddressSpaceWorkbook(const std::wstring& path, COPCServerAddressSpace& into,
                                       const CsvItemDefaults& defaults)
{
    const std::string bytes = ReadWholeFile(path);
    CsvImportPlan plan = ReadAddressSpaceWorkbook(bytes, defaults);
    ApplyCsvImport(plan, into, true);
    return plan;
}

} // namespace CL
