// History to a workbook: the CSV's columns with typed cells (date-time
// cells for both times, numbers as number cells, Good a boolean), sheets
// continued under the same header, the format picked by ".xlsx" or the
// file type; and the history CSV writing texts a spreadsheet would run with
// a quote in front.
#include <gtest/gtest.h>

#include "common/ReplacingFile.h"
#include "common/Text.h"
#include "common/ZipReader.h"
#include "historian/HistoryCsvWriter.h"
#include "historian/HistoryExporter.h"
#include "historian/HistoryWorkbookWriter.h"
#include "support/TestSupport.h"

namespace {

FILETIME Utc(int second, int millisecond)
{
    SYSTEMTIME t = {2025, 3, 5, 14, 8, 0, static_cast<WORD>(second), static_cast<WORD>(millisecond)};
    FILETIME ft;
    ::SystemTimeToFileTime(&t, &ft);
    return ft;
}

CL::CHistorianValues Values()
{
    CL::CHistorianValues values;
    values.values.push_back(CL::CVariant::R8(1.5));
    values.values.push_back(CL::CVariant(std::wstring(L"=cmd|' /C calc'!A0")));
    values.values.push_back(CL::CVariant::I8(-5));
    for (int i = 0; i < 3; ++i)
        values.times.push_back(Utc(50 + i, 250));
    values.qualities = {192, 0, 216};
    return values;
}

std::string Part(const std::string& bytes, const char* name)
{
    CL::CZipReader zip(bytes);
    const CL::CZipReader::Entry* entry = zip.Find(name);
    return entry ? zip.Read(*entry, 1 << 26) : std::string("(missing)");
}

} // namespace

TEST(HistoryWorkbook, ValuesAreTypedCellsAndSheetsContinueUnderTheSameHeader)
{
    test::TempDir folder;
    const std::wstring path = folder.File(L"values.xlsx");
    {
        CL::CReplacingFile file(path, L"CreateFile (szFile)");
        CL::CHistoryWorkbookWriter writer(file, 2);
        writer.Write(L"Plant.Line1.Speed", Values());
        writer.Close();
        file.Commit();
    }
    const std::string bytes = test::ReadFileBytes(path);
    const std::string first = Part(bytes, "xl/worksheets/sheet1.xml");
    const std::string second = Part(bytes, "xl/worksheets/sheet2.xml");
    EXPECT_NE(Part(bytes, "xl/workbook.xml").find("<sheet name=\"Values (2)\""), std::string::npos);
    for (const std::string* sheet : {&first, &second}) {
        EXPECT_NE(sheet->find("<is><t>Time (local)</t></is>"), std::string::npos);
        EXPECT_NE(sheet->find("<is><t>Data type</t></is>"), std::string::npos);
        EXPECT_NE(sheet->find("state=\"frozen\""), std::string::npos);
    }
    // 08:00:50.250 UTC on 14 March 2025 as an OLE date, to the millisecond;
    // the value, the quality, Good, the type's shared string.
    EXPECT_NE(first.find("<c s=\"2\"><v>45730.333914930554</v></c><c><v>1.5</v></c><c><v>192</v></c>"
                         "<c t=\"b\"><v>1</v></c><c t=\"s\"><v>1</v></c></row>"),
              std::string::npos)
        << first;
    EXPECT_NE(first.find("<row r=\"2\"><c t=\"s\"><v>0</v></c><c s=\"2\">"), std::string::npos);
    EXPECT_NE(first.find("<c t=\"inlineStr\"><is><t>=cmd|' /C calc'!A0</t></is></c><c><v>0</v></c>"
                         "<c t=\"b\"><v>0</v></c>"),
              std::string::npos);
    EXPECT_EQ(first.find("<row r=\"4\""), std::string::npos);
    EXPECT_NE(second.find("<c><v>-5</v></c><c><v>216</v></c><c t=\"b\"><v>1</v></c>"), std::string::npos);
    EXPECT_NE(Part(bytes, "xl/sharedStrings.xml").find("<t>Plant.Line1.Speed</t>"), std::string::npos);
}

TEST(HistoryWorkbook, TheXlsxExtensionOrTheWorkbookFileTypeChoosesTheWorkbook)
{
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values.XLSX", 1), CL::ExportFormat::Workbook);
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values", CL::kExportFilterWorkbook), CL::ExportFormat::Workbook);
    EXPECT_EQ(CL::ExportFormatFor(L"C:\\x\\values.csv", CL::kExportFilterWorkbook), CL::ExportFormat::Csv);
    const std::wstring filter(CL::kExportFilter, std::size(CL::kExportFilter));
    EXPECT_NE(filter.find(L"Excel Workbook (*.xlsx)"), std::wstring::npos);
}

TEST(HistoryCsvFormulaInjection, TextsASpreadsheetWouldRunGetAQuoteNumbersStayAsTheyAre)
{
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"=1+2"), L"'=1+2");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"+49"), L"'+49");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"-x"), L"'-x");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"@SUM(A1)"), L"'@SUM(A1)");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"\tx"), L"'\tx");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"\rx"), L"'\rx");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L"a=b"), L"a=b");
    EXPECT_EQ(CL::CHistoryCsvWriter::InertText(L""), L"");

    test::TempDir folder;
    const std::wstring path = folder.File(L"values.csv");
    {
        CL::CReplacingFile file(path, L"CreateFile (szFile)");
        CL::CHistoryCsvWriter writer(file);
        writer.Write(L"=Item", Values());
        file.Commit();
    }
    const std::string csv = test::ReadFileBytes(path);
    EXPECT_NE(csv.find("'=Item,"), std::string::npos) << csv;
    EXPECT_NE(csv.find(",'=cmd|' /C calc'!A0,"), std::string::npos) << csv;
    EXPECT_NE(csv.find("Z,-5,216,1,VT_I8"), std::string::npos) << csv;
}
