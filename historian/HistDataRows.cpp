#include "historian/HistDataRows.h"

#include "common/LocalTime.h"
#include "common/LocalTimeTexts.h"
#include "common/Util_Variant.h"

namespace CL {

const wchar_t* CHistDataRows::QualityText(WORD quality)
{
    return (quality & 0xC0) == 0xC0 ? L"GOOD" : L"NOT GOOD";
}

void CHistDataRows::Assign(const CHistorianValues& values)
{
    m_rows.clear();
    m_rows.reserve(values.Size());
    CLocalTimeTexts localTimes;
    for (size_t i = 0; i < values.Size(); ++i) {
        const VARTYPE vt = values.values[i].vt;
        auto type = m_typeNames.find(vt);
        if (type == m_typeNames.end())
            type = m_typeNames.emplace(vt, VarTypeToString(vt)).first;
        const bool good = (values.qualities[i] & 0xC0) == 0xC0;
        std::wstring time = localTimes.Text(values.times[i]);
        const uint64_t timeKey = DigitKey(time);
        m_rows.push_back({VariantToString(values.values[i], kLocaleSystemDefault, kArraySeparator), std::move(time),
                          &type->second, good ? &m_good : &m_notGood, timeKey});
    }
}

uint64_t CHistDataRows::DigitKey(const std::wstring& text)
{
    uint64_t key = 0;
    for (wchar_t c : text)
        if (c >= L'0' && c <= L'9')
            key = key * 10 + static_cast<unsigned>(c - L'0');
    return key;
}

namespace {

// Code-unit order, compared in place (the texts are short and share long
// prefixes, so a call per comparison would cost more than the comparison).
bool CodeUnitLess(const std::wstring& a, const std::wstring& b)
{
    const size_t n = a.size() < b.size() ? a.size() : b.size();
    const wchar_t* x = a.data();
    const wchar_t* y = b.data();
    for (size_t i = 0; i < n; ++i)
        if (x[i] != y[i])
            return static_cast<unsigned short>(x[i]) < static_cast<unsigned short>(y[i]);
    return a.size() < b.size();
}

} // namespace

const std::wstring& CHistDataRows::Text(const Row& row, int column) const
{
    switch (column) {
    case kValue:
        return row.value;
    case kTime:
        return row.time;
    case kType:
        return *row.type;
    default:
        return *row.quality;
    }
}

std::wstring CHistDataRows::CellText(size_t row, int column) const
{
    return Text(m_rows.at(row), column);
}

bool CHistDataRows::Less(size_t a, size_t b, int column) const
{
    if (column == kTime)
        return m_rows[a].timeKey < m_rows[b].timeKey;
    return CodeUnitLess(Text(m_rows[a], column), Text(m_rows[b], column));
}

} // namespace CL
