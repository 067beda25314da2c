#pragma once
// CHistDataRows: the rows of the historical data window, one per value read,
// with the four texts the list shows: "Value", "Time (UTC)" (the time stamp
// in local time, the header notwithstanding), "Var. type" and "Quality".
// Every column sorts by its text as unsigned 16-bit code units: "10" comes
// before "9" and times sort by their day field first.
#include <windows.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/historian/HistorianValues.h"
#include "common/ui/ReportList.h"

namespace CL {

class CHistDataRows : public IReportRows {
public:
    enum Column { kValue = 0, kTime = 1, kType = 2, kQuality = 3, kColumnCount = 4 };

    // "GOOD" when both top bits of the quality's low byte are set, else
    // "NOT GOOD".
    static const wchar_t* QualityText(WORD quality);

    CHistDataRows() = default;
    CHistDataRows(const CHistDataRows&) = delete;
    CHistDataRows& operator=(const CHistDataRows&) = delete;

    // Replaces the rows with one per value, in the order delivered. Throws
    // CException when a value or a time stamp has no text.
    void Assign(const CHistorianValues& values);
    void Clear() { m_rows.clear(); }

    size_t RowCount() const override { return m_rows.size(); }
    std::wstring CellText(size_t row, int column) const override;
    // Every column compares its texts, through Less without copying them.
    bool ComparesByText(int /*column*/) const override { return false; }
    bool Less(size_t a, size_t b, int column) const override;

private:
    struct Row {
        std::wstring value;
        std::wstring time;
        const std::wstring* type;      // one name per variant type, in m_typeNames
        const std::wstring* quality;   // m_good or m_notGood
        uint64_t timeKey;              // the time text's digits as one number
    };
    // The digits of a time text read as one decimal number. Every time text
    // has the same fixed-width layout, so two keys compare as their texts do.
    static uint64_t DigitKey(const std::wstring& text);
    const std::wstring& Text(const Row& row, int column) const;

    std::vector<Row> m_rows;
    std::map<VARTYPE, std::wstring> m_typeNames;   // nodes do not move
    std::wstring m_good = L"GOOD";
    std::wstring m_notGood = L"NOT GOOD";
};

} // namespace CL
