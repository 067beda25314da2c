// RFC 4180 fields and records: quoting on writing, and the reader's records,
// their start lines and its refusal of malformed quotes.
#include <gtest/gtest.h>

#include "common/Csv.h"

using CL::CCsvReader;
using CL::CsvRow;

namespace {

std::vector<CsvRow> ReadAll(std::wstring_view text)
{
    std::vector<CsvRow> rows;
    CCsvReader reader(text);
    CsvRow row;
    while (reader.Next(row))
        rows.push_back(row);
    return rows;
}

} // namespace

TEST(Csv, PlainFieldIsWrittenAsItStands)
{
    EXPECT_EQ(CL::CsvField(L"Plant Speed"), L"Plant Speed");
    EXPECT_EQ(CL::CsvField(L""), L"");
}

TEST(Csv, FieldWithCommaQuoteOrLineBreakIsQuotedWithItsQuotesDoubled)
{
    EXPECT_EQ(CL::CsvField(L"a,b"), L"\"a,b\"");
    EXPECT_EQ(CL::CsvField(L"say \"hi\""), L"\"say \"\"hi\"\"\"");
    EXPECT_EQ(CL::CsvField(L"1\r\n2"), L"\"1\r\n2\"");
    EXPECT_EQ(CL::CsvField(L"x\ny"), L"\"x\ny\"");
}

TEST(Csv, RecordJoinsFieldsWithCommasAndEndsWithCrLf)
{
    EXPECT_EQ(CL::CsvRecord({L"a", L"b,c", L""}), L"a,\"b,c\",\r\n");
}

TEST(Csv, ReaderSplitsRecordsAtCrLfAndAtALoneLf)
{
    const auto rows = ReadAll(L"a,b\r\nc,d\ne,f");
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].fields, (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_EQ(rows[1].fields, (std::vector<std::wstring>{L"c", L"d"}));
    EXPECT_EQ(rows[2].fields, (std::vector<std::wstring>{L"e", L"f"}));
    EXPECT_EQ(rows[2].line, 3u);
}

TEST(Csv, QuotedFieldSpansLinesAndTheNextRecordCountsThem)
{
    const auto rows = ReadAll(L"\"1\r\n2\r\n3\",x\r\nnext,y\r\n");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].fields[0], L"1\r\n2\r\n3");
    EXPECT_EQ(rows[0].line, 1u);
    EXPECT_EQ(rows[1].fields[0], L"next");
    EXPECT_EQ(rows[1].line, 4u);
}

TEST(Csv, DoubledQuotesInsideQuotesAreOneQuote)
{
    const auto rows = ReadAll(L"\"a \"\"b\"\" c\",\"\"\r\n");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].fields, (std::vector<std::wstring>{L"a \"b\" c", L""}));
    EXPECT_TRUE(rows[0].error.empty());
}

TEST(Csv, EmptyFieldsAndATrailingCommaGiveEmptyFields)
{
    const auto rows = ReadAll(L",,\r\n");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].fields, (std::vector<std::wstring>{L"", L"", L""}));
}

TEST(Csv, QuoteInsideAnUnquotedFieldIsMalformedAndReadingGoesOnAtTheNextLine)
{
    const auto rows = ReadAll(L"ab\"c,d\r\ngood,row\r\n");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_FALSE(rows[0].error.empty());
    EXPECT_TRUE(rows[1].error.empty());
    EXPECT_EQ(rows[1].fields[0], L"good");
    EXPECT_EQ(rows[1].line, 2u);
}

TEST(Csv, TextAfterAClosingQuoteIsMalformed)
{
    const auto rows = ReadAll(L"\"ab\"c,d\r\nok\r\n");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_NE(rows[0].error.find(L"closing quote"), std::wstring::npos);
    EXPECT_EQ(rows[1].fields[0], L"ok");
}

TEST(Csv, QuoteNeverClosedIsMalformedAndEndsTheText)
{
    const auto rows = ReadAll(L"a,b\r\n\"open,c\r\nd,e\r\n");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_TRUE(rows[0].error.empty());
    EXPECT_NE(rows[1].error.find(L"never closed"), std::wstring::npos);
    EXPECT_EQ(rows[1].line, 2u);
}

TEST(Csv, TabSeparatedRecordQuotesOnlyFieldsWithTabsQuotesOrLineBreaks)
{
    EXPECT_EQ(CL::DelimitedRecord({L"a,b", L"x\ty", L"say \"hi\"", L"l1\r\nl2", L""}, L'\t'),
              L"a,b\t\"x\ty\"\t\"say \"\"hi\"\"\"\t\"l1\r\nl2\"\t\r\n");
    EXPECT_EQ(CL::DelimitedField(L"plain", L'\t'), L"plain");
}

TEST(CsvSeparator, TheHeaderLineDecidesBetweenCommaSemicolonAndTab)
{
    EXPECT_EQ(CL::DetectCsvSeparator(L"Path,Data type,Value\r\nA;B;C;D;E\r\n"), L',');
    EXPECT_EQ(CL::DetectCsvSeparator(L"Path;Data type;Value\r\nA,1\r\n"), L';');
    EXPECT_EQ(CL::DetectCsvSeparator(L"Path\tData type\tValue\r\n"), L'\t');
    EXPECT_EQ(CL::DetectCsvSeparator(L"\"A;B;C\",Path\r\n"), L',') << "separators inside quotes do not count";
    EXPECT_EQ(CL::DetectCsvSeparator(L"Path\r\n"), L',');
    EXPECT_EQ(CL::DetectCsvSeparator(L""), L',');
}

TEST(CsvSeparator, TheReaderSplitsAtTheSeparatorItIsGiven)
{
    CL::CCsvReader reader(L"a;\"b;c\";1,5\r\n", L';');
    CL::CsvRow row;
    ASSERT_TRUE(reader.Next(row));
    EXPECT_EQ(row.fields, (std::vector<std::wstring>{L"a", L"b;c", L"1,5"}));
}
