#include "historian/HistDataRows.h"

#include "common/LocalTime.h"
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
    for (size_t i = 0; i < values.Size(); ++i) {
        const VARTYPE vt = values.values[i].vt;
        auto type = m_typeNames.find(vt);
        if (type == m_typeNames.end())
            type = m_typeNames.emplace(vt, VarTypeToString(vt)).first;
        const bool good = (values.qualities[i] & 0xC0) == 0xC0;
        m_rows.push_back({VariantToString(values.values[i], kLocaleSystemDefault, kArraySeparator),
                          LocalTimeText(values.times[i]), &type->second, good ? &m_good : &m_notGood});
    }
}

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
    // std::wstring compares wchar_t, an unsigned 16-bit code unit here.
    return Text(m_rows[a], column).compare(Text(m_rows[b], column)) < 0;
}

} // namespace CL
