#include "historian/HistoryWorkbookWriter.h"

#include <charconv>
#include <cmath>

#include "common/Util_Variant.h"

namespace CL {

namespace {

constexpr size_t kValuesPerBlock = 4096;
constexpr long long kExactLimit = 9007199254740992LL;          // 2^53
constexpr long long kCurrencyLimit = 1000000000000000LL;       // 15 digits
// Milliseconds from 1 January 1601 (FILETIME) to 30 December 1899 (OLE date).
constexpr long long kOleEpochMs = 109205LL * 86400000LL;

const wchar_t* const kHeader[] = {L"Item ID", L"Time (local)", L"Time (UTC)", L"Value",
                                  L"Quality", L"Good", L"Data type"};
const std::vector<double> kWidths = {28, 24, 24, 18, 9, 8, 14};

// The time as an OLE date, to the millisecond the history keeps.
double OleDate(const FILETIME& time)
{
    const long long ticks = static_cast<long long>((static_cast<unsigned long long>(time.dwHighDateTime) << 32) |
                                                   time.dwLowDateTime);
    return static_cast<double>(ticks / 10000 - kOleEpochMs) / 86400000.0;
}

std::string Integer(long long value)
{
    char digits[24];
    return std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

} // namespace

CHistoryWorkbookWriter::CHistoryWorkbookWriter(CReplacingFile& file, size_t valuesPerSheet)
    : m_writer(file), m_valuesPerSheet(valuesPerSheet)
{
    StartSheet();
}

void CHistoryWorkbookWriter::StartSheet()
{
    ++m_sheets;
    m_writer.BeginSheet(m_sheets == 1 ? std::wstring(L"Values") : L"Values (" + std::to_wstring(m_sheets) + L")",
                        kWidths, true);
    m_writer.BeginRow();
    for (const wchar_t* name : kHeader)
        m_writer.Text(name, CWorkbookWriter::kHeader);
    m_onSheet = 0;
}

void CHistoryWorkbookWriter::Write(const std::wstring& itemId, const CHistorianValues& values,
                                   const std::function<void(size_t)>& step)
{
    const size_t item = m_writer.Share(itemId);
    for (size_t i = 0; i < values.Size(); ++i) {
        if (m_onSheet == m_valuesPerSheet) {
            m_writer.EndSheet(true);
            StartSheet();
        }
        const VARIANT& value = values.values[i];
        auto type = m_typeNames.find(value.vt);
        if (type == m_typeNames.end())
            type = m_typeNames.emplace(value.vt, m_writer.Share(VarTypeToString(value.vt))).first;
        const WORD quality = values.qualities[i];
        m_writer.BeginRow();
        m_writer.SharedText(item);
        m_writer.DateTime(OleDate(m_localTimes.Local(values.times[i])));
        m_writer.DateTime(OleDate(values.times[i]));
        WriteValue(value);
        m_writer.NumberText(Integer(quality));
        m_writer.Boolean((quality & 0xC0) == 0xC0);
        m_writer.SharedText(type->second);
        ++m_onSheet;
        if (step && (i + 1) % kValuesPerBlock == 0)
            step(i + 1);
    }
}

// A number cell where the number is the value exactly, else the value's text.
void CHistoryWorkbookWriter::WriteValue(const VARIANT& value)
{
    switch (value.vt) {
    case VT_I1: m_writer.NumberText(Integer(value.cVal)); return;
    case VT_I2: m_writer.NumberText(Integer(value.iVal)); return;
    case VT_I4: m_writer.NumberText(Integer(value.lVal)); return;
    case VT_INT: m_writer.NumberText(Integer(value.intVal)); return;
    case VT_UI1: m_writer.NumberText(Integer(value.bVal)); return;
    case VT_UI2: m_writer.NumberText(Integer(value.uiVal)); return;
    case VT_UI4: m_writer.NumberText(Integer(value.ulVal)); return;
    case VT_UINT: m_writer.NumberText(Integer(value.uintVal)); return;
    case VT_I8:
        if (value.llVal >= -kExactLimit && value.llVal <= kExactLimit) {
            m_writer.NumberText(Integer(value.llVal));
            return;
        }
        break;
    case VT_UI8:
        if (value.ullVal <= static_cast<unsigned long long>(kExactLimit)) {
            m_writer.NumberText(Integer(static_cast<long long>(value.ullVal)));
            return;
        }
        break;
    case VT_R4:
        if (std::isfinite(value.fltVal)) {
            char digits[32];
            const auto end = std::to_chars(digits, digits + sizeof digits, value.fltVal).ptr;
            double wide = 0;
            std::from_chars(digits, end, wide);
            m_writer.Number(static_cast<float>(wide) == value.fltVal ? wide : value.fltVal);
            return;
        }
        break;
    case VT_R8:
        if (std::isfinite(value.dblVal)) {
            m_writer.Number(value.dblVal);
            return;
        }
        break;
    case VT_CY:
        if (value.cyVal.int64 > -kCurrencyLimit && value.cyVal.int64 < kCurrencyLimit) {
            m_writer.Number(static_cast<double>(value.cyVal.int64) / 10000.0);
            return;
        }
        break;
    default: break;
    }
    std::wstring text = VariantToString(value, kLocaleSystemDefault, kArraySeparator);
    if (text.size() > CWorkbookWriter::kMaxCellText)
        text.resize(CWorkbookWriter::kMaxCellText);
    m_writer.Text(text, CWorkbookWriter::kPlain);
}

void CHistoryWorkbookWriter::Close()
{
    m_writer.EndSheet(true);
    m_writer.Close();
}

} // namespace CL
