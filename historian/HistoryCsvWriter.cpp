#include "historian/HistoryCsvWriter.h"

#include "common/Csv.h"
#include "common/LocalTime.h"
#include "common/LocalTimeTexts.h"
#include "common/Text.h"
#include "common/Util_Variant.h"

namespace CL {

namespace {

constexpr size_t kValuesPerBlock = 4096;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

} // namespace

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
    const std::wstring itemField = DelimitedField(itemId, L',');
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
    text += m_localTimes.Text(values.times[i]);
    text += L',';
    text += UtcIsoText(values.times[i]);
    text += L',';
    AppendDelimitedField(text, VariantToString(value, kLocaleSystemDefault, kArraySeparator), L',');
    text += L',';
    text += std::to_wstring(quality);
    text += (quality & 0xC0) == 0xC0 ? L",1," : L",0,";
    AppendDelimitedField(text, type->second, L',');
    text += L"\r\n";
}

void CHistoryCsvWriter::Flush(std::wstring& text)
{
    if (text.empty())
        return;
    m_file.Write(ToUtf8(text));
    text.clear();
}

} // namespace CL
