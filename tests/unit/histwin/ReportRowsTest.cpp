// The rows of the historian windows and their comparison rules: the
// historical data rows compare every column as text (the time column
// through a digit key that must give the text's order), the explorer rows
// compare parsed times, numbers and code units.
#include <gtest/gtest.h>

#include <vector>

#include "common/LocalTime.h"
#include "common/Util_Variant.h"
#include "historian/DBExplorerRows.h"
#include "historian/HistDataRows.h"

namespace {

FILETIME FileTime(DATE date)
{
    const SYSTEMTIME st = CL::DateToSystemTime(date);
    FILETIME ft;
    ::SystemTimeToFileTime(&st, &ft);
    return ft;
}

CL::CHistorianValues Values(const std::vector<DATE>& times, const std::vector<CL::CVariant>& values,
                            const std::vector<WORD>& qualities)
{
    CL::CHistorianValues out;
    for (size_t i = 0; i < times.size(); ++i) {
        out.values.push_back(values[i]);
        out.times.push_back(FileTime(times[i]));
        out.qualities.push_back(qualities[i]);
    }
    return out;
}

} // namespace

TEST(HistDataRows, QualityIsGoodOnlyWithBothTopBitsOfTheLowByte)
{
    EXPECT_STREQ(CL::CHistDataRows::QualityText(0xC0), L"GOOD");
    EXPECT_STREQ(CL::CHistDataRows::QualityText(0xD8), L"GOOD");
    EXPECT_STREQ(CL::CHistDataRows::QualityText(0x40), L"NOT GOOD");
    EXPECT_STREQ(CL::CHistDataRows::QualityText(0x80), L"NOT GOOD");
    EXPECT_STREQ(CL::CHistDataRows::QualityText(0x00), L"NOT GOOD");
    EXPECT_STREQ(CL::CHistDataRows::QualityText(0xFF00), L"NOT GOOD");
}

TEST(HistDataRows, TimeOrderIsTheOrderOfTheTimeTexts)
{
    // Times across days, months, years and milliseconds, where text order
    // and time order differ.
    std::vector<DATE> times;
    for (double t : {45000.0, 45001.5, 45017.25, 45031.999, 44000.1, 46000.0, 45000.0 + 1.0 / 86400000.0,
                     45000.0 + 999.0 / 86400000.0, 2.0, 73000.5, 45366.75})
        times.push_back(t);
    std::vector<CL::CVariant> values(times.size(), CL::CVariant::I4(1));
    CL::CHistDataRows rows;
    rows.Assign(Values(times, values, std::vector<WORD>(times.size(), 192)));
    for (size_t a = 0; a < rows.RowCount(); ++a)
        for (size_t b = 0; b < rows.RowCount(); ++b)
            EXPECT_EQ(rows.Less(a, b, CL::CHistDataRows::kTime),
                      rows.CellText(a, CL::CHistDataRows::kTime) < rows.CellText(b, CL::CHistDataRows::kTime))
                << a << " " << b;
}

TEST(HistDataRows, ValueTypeAndQualityCompareAsCodeUnits)
{
    const std::vector<DATE> times(4, 45000.0);
    CL::CHistDataRows rows;
    rows.Assign(Values(times, {CL::CVariant::I4(9), CL::CVariant::I4(10), CL::CVariant(L"a"), CL::CVariant(L"B")},
                       {192, 0, 192, 64}));
    EXPECT_TRUE(rows.Less(1, 0, CL::CHistDataRows::kValue));    // "10" < "9"
    EXPECT_TRUE(rows.Less(3, 2, CL::CHistDataRows::kValue));    // "B" < "a"
    EXPECT_FALSE(rows.Less(0, 0, CL::CHistDataRows::kValue));
    EXPECT_TRUE(rows.Less(2, 0, CL::CHistDataRows::kType));     // "VT_BSTR" < "VT_I4"
    EXPECT_TRUE(rows.Less(0, 1, CL::CHistDataRows::kQuality));  // "GOOD" < "NOT GOOD"
}

TEST(DBExplorerRows, CountsCompareAsNumbersAndIdsAsCodeUnits)
{
    CL::CDBExplorerRows rows;
    rows.Assign({{L"b", 45000.0, 45001.0, 10}, {L"a", 45000.0, 45001.0, 9}, {L"B", 45000.0, 45001.0, 100}});
    EXPECT_EQ(rows.CellText(0, CL::CDBExplorerRows::kCount), L"10");
    EXPECT_TRUE(rows.Less(1, 0, CL::CDBExplorerRows::kCount));   // 9 < 10
    EXPECT_TRUE(rows.Less(0, 2, CL::CDBExplorerRows::kCount));   // 10 < 100
    EXPECT_TRUE(rows.Less(2, 1, CL::CDBExplorerRows::kItemId));  // "B" < "a"
    EXPECT_FALSE(rows.Less(1, 1, CL::CDBExplorerRows::kItemId));
}

TEST(DBExplorerRows, TimesAreLocalTextsAndCompareAsDates)
{
    // 02.04.2023 sorts before 15.03.2023 as text, after it as a date.
    CL::CDBExplorerRows rows;
    rows.Assign({{L"april", 45018.5, 45018.5, 1}, {L"march", 45000.25, 45000.25, 1}});
    EXPECT_EQ(rows.CellText(1, CL::CDBExplorerRows::kEarliest), CL::DateToString(CL::UtcToLocalDate(45000.25)));
    EXPECT_TRUE(rows.Less(1, 0, CL::CDBExplorerRows::kEarliest));
    EXPECT_TRUE(rows.Less(1, 0, CL::CDBExplorerRows::kLatest));
    EXPECT_EQ(CL::DateToString(rows.Earliest(1)), rows.CellText(1, CL::CDBExplorerRows::kEarliest));
}

TEST(DBExplorerRows, CountTextReadsAsUnsignedDecimal)
{
    EXPECT_EQ(CL::CDBExplorerRows::ParseCount(L"0"), 0u);
    EXPECT_EQ(CL::CDBExplorerRows::ParseCount(L"4294967296"), 4294967296ull);
    EXPECT_EQ(CL::CDBExplorerRows::ParseCount(L""), 0u);
}
