#include "historian/HistoryCsvWriter.h"

#include <initializer_list>

#include "common/Csv.h"
#include "common/LocalTimeTexts.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

namespace CL {

namespace {

constexpr size_t kValuesPerBlock = 4096;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

// Appends the number in decimal with at least width digits (zeros in
// front), as "%0<width>u" writes it.
void AppendDigits(std::wstring& text, unsigned number, size_t width)
{
    wchar_t digits[16];
    size_t count = 0;
    do {
        digits[count++] = static_cast<wchar_t>(L'0' + number % 10);
        number /= 10;
    } while (number != 0);
    for (; count < width; ++count)
        digits[count] = L'0';
    while (count > 0)
        text += digits[--count];
}

// One field of a time text: its number, its digits at least, the text after it.
struct TimeField {
    unsigned number;
    size_t width;
    const wchar_t* after;
};

void AppendFields(std::wstring& text, std::initializer_list<TimeField> fields)
{
    for (const TimeField& field : fields) {
        AppendDigits(text, field.number, field.width);
        text += field.after;
    }
}

// Whether the value is a number (scalar numeric types): its text is a
// number, not text a spreadsheet could run.
bool IsNumber(VARTYPE vt)
{
    switch (vt) {
    case VT_I1: case VT_I2: case VT_I4: case VT_I8: case VT_INT:
    case VT_UI1: case VT_UI2: case VT_UI4: case VT_UI8: case VT_UINT:
    case VT_R4: case VT_R8: case VT_CY: case VT_DECIMAL:
        return true;
    default:
        return false;
    }
}

} // namespace

std::wstring CHistoryCsvWriter::InertText(std::wstring text)
{
    if (!text.empty() && wcschr(L"=+-@\t\r", text[0]) && text[0] != L'\0')
        text.insert(text.begin(), L'\'');
    return text;
}

const wchar_t* CHistoryCsvWriter::Header()
{
    return L"Item ID,Time (local),Time (UTC),Value,Quality,Good,Data type\r\n";
}

CHistoryCsvWriter::CHistoryCsvWriter(CReplacingFile& file) : m_file(file)
{
    m_file.Write(kByteOrderMark);
    m_file.Write(ToUtf8(Header()));
}

void CHistoryCsvWriter::Write(const std::wstring& itemId, const CHistorianValues& values,
                              const std::function<void(size_t)>& step)
{
    const std::wstring itemField = DelimitedField(InertText(itemId), L',');
    std::wstring text;
    for (size_t i = 0; i < values.Size(); ++i) {
        AppendRecord(text, itemField, values, i);
        if ((i + 1) % kValuesPerBlock == 0) {
            Flush(text);
            if (step)
                step(i + 1);
        }
    }
    Flush(text);
}

void CHistoryCsvWriter::AppendRecord(std::wstring& text, const std::wstring& itemField,
                                     const CHistorianValues& values, size_t i)
{
    const VARIANT& value = values.values[i];
    auto type = m_typeNames.find(value.vt);
    if (type == m_typeNames.end())
        type = m_typeNames.emplace(value.vt, VarTypeToString(value.vt)).first;
    const WORD quality = values.qualities[i];
    text += itemField;
    text += L',';
    AppendTimes(text, values.times[i]);
    std::wstring valueText = VariantToString(value, kLocaleSystemDefault, kArraySeparator);
    if (!IsNumber(value.vt))
        valueText = InertText(std::move(valueText));
    AppendDelimitedField(text, valueText, L',');
    text += L',';
    AppendDigits(text, quality, 1);
    text += (quality & 0xC0) == 0xC0 ? L",1," : L",0,";
    AppendDelimitedField(text, type->second, L',');
    text += L"\r\n";
}

// The local time as the list shows it (LocalFileTimeText) and the UTC time
// in ISO 8601 (UtcIsoText), each followed by a comma, written digit by digit:
// the formatting functions cost more than the whole rest of a record.
void CHistoryCsvWriter::AppendTimes(std::wstring& text, const FILETIME& utc)
{
    const SYSTEMTIME& local = m_localFields.Fields(m_localTimes.Local(utc));
    AppendFields(text, {{local.wDay, 2, L":"},
                        {local.wMonth, 2, L":"},
                        {local.wYear, 4, L" - "},
                        {local.wHour, 2, L":"},
                        {local.wMinute, 2, L":"},
                        {local.wSecond, 2, L":"},
                        {local.wMilliseconds, 3, L","}});
    const SYSTEMTIME& t = m_utcFields.Fields(utc);
    AppendFields(text, {{t.wYear, 4, L"-"},
                        {t.wMonth, 2, L"-"},
                        {t.wDay, 2, L"T"},
                        {t.wHour, 2, L":"},
                        {t.wMinute, 2, L":"},
                        {t.wSecond, 2, L"."},
                        {t.wMilliseconds, 3, L"Z,"}});
}

void CHistoryCsvWriter::Flush(std::wstring& text)
{
    if (text.empty())
        return;
    m_file.Write(ToUtf8(text));
    text.clear();
}

} // namespace CL
