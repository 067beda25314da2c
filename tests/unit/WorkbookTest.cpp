// Workbooks (.xlsx): the zip container both ways, the streamed writer's
// typed cells, the reader's cell kinds (shared, inline and rich strings,
// numbers, booleans, dates, errors, formulas), the address space export and
// import with the values spreadsheets are known to change, and the refusal
// of files that are no workbooks or are damaged.
#include <gtest/gtest.h>

#include <windows.h>

#include <zlib.h>

#include <chrono>
#include <span>
#include <string>

#include "AddressSpaceCorpus.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "common/Exception.h"
#include "common/FileBytes.h"
#include "common/ReplacingFile.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/WorkbookReader.h"
#include "common/WorkbookWriter.h"
#include "common/ZipReader.h"
#include "common/ZipWriter.h"
#include "support/ComApartment.h"

using SpacePtr = CL::CSmartPtr<COPCServerAddressSpace>;

namespace {

std::wstring TempFile(const wchar_t* name)
{
    wchar_t folder[MAX_PATH];
    ::GetTempPathW(MAX_PATH, folder);
    return std::wstring(folder) + L"morvane-wb-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + name;
}

// A zip archive of the given parts, written by the program's zip writer.
std::string Zip(const std::vector<std::pair<std::string, std::string>>& parts)
{
    const std::wstring path = TempFile(L"parts.zip");
    {
        CL::CReplacingFile file(path, L"test");
        CL::CZipWriter zip(file);
        for (const auto& [name, bytes] : parts) {
            zip.BeginEntry(name);
            zip.Write(bytes);
        }
        zip.Close();
        file.Commit();
    }
    std::string bytes = CL::ReadWholeFile(path);
    ::DeleteFileW(path.c_str());
    return bytes;
}

const char kRels[] =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
    "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
    "officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>";
const char kWorkbook[] =
    "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
    "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
    "<sheets><sheet name=\"Items\" sheetId=\"1\" r:id=\"rId7\"/><sheet name=\"Other\" sheetId=\"2\" r:id=\"rId8\"/>"
    "</sheets></workbook>";
const char kWorkbookRels[] =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
    "<Relationship Id=\"rId8\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" "
    "Target=\"worksheets/other.xml\"/>"
    "<Relationship Id=\"rId7\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" "
    "Target=\"/xl/worksheets/first.xml\"/>"
    "<Relationship Id=\"rId3\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
    "sharedStrings\" Target=\"sharedStrings.xml\"/>"
    "<Relationship Id=\"rId4\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles\" "
    "Target=\"styles.xml\"/></Relationships>";
const char kStyles[] =
    "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
    "<numFmts count=\"1\"><numFmt numFmtId=\"170\" formatCode=\"[$-407]dd/mm/yyyy\\ hh:mm\"/></numFmts>"
    "<cellStyleXfs count=\"1\"><xf numFmtId=\"14\"/></cellStyleXfs>"
    "<cellXfs count=\"4\"><xf numFmtId=\"0\"/><xf numFmtId=\"14\"/><xf numFmtId=\"170\"/><xf numFmtId=\"4\"/></cellXfs>"
    "</styleSheet>";
const char kSharedStrings[] =
    "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" count=\"6\" uniqueCount=\"6\">"
    "<si><t>Value</t></si><si><t>Path</t></si><si><t>Data type</t></si>"
    "<si><r><rPr><b/></rPr><t>Rich</t></r><r><t xml:space=\"preserve\"> text</t></r>"
    "<rPh sb=\"0\" eb=\"1\"><t>PHONETIC</t></rPh></si>"
    "<si><t>line_x000D_\nbreak</t></si><si><t>VT_BSTR</t></si></sst>";

// A workbook as another writer makes it: shared strings, a second sheet,
// columns in another order, cells without references, formulas.
std::string ForeignWorkbook(const std::string& sheetData)
{
    const std::string sheet = "<x:worksheet xmlns:x=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
                              "<x:sheetData>" + sheetData + "</x:sheetData></x:worksheet>";
    return Zip({{"[Content_Types].xml", "<Types/>"},
                {"_rels/.rels", kRels},
                {"xl/workbook.xml", kWorkbook},
                {"xl/_rels/workbook.xml.rels", kWorkbookRels},
                {"xl/styles.xml", kStyles},
                {"xl/sharedStrings.xml", kSharedStrings},
                {"xl/worksheets/other.xml", "<worksheet/>"},
                {"xl/worksheets/first.xml", sheet}});
}

const char kForeignHeader[] = "<x:row r=\"2\"><x:c r=\"B2\" t=\"s\"><x:v>0</x:v></x:c><x:c r=\"C2\" t=\"s\"><x:v>1</x:v>"
                              "</x:c><x:c t=\"s\"><x:v>2</x:v></x:c></x:row>";

std::vector<std::pair<size_t, std::vector<CL::WorkbookCell>>> ReadRows(const std::string& bytes)
{
    CL::CWorkbookReader reader(bytes);
    std::vector<std::pair<size_t, std::vector<CL::WorkbookCell>>> rows;
    reader.ReadFirstSheet([&](size_t row, std::span<const CL::WorkbookCell> cells) {
        rows.emplace_back(row, std::vector<CL::WorkbookCell>(cells.begin(), cells.end()));
    });
    return rows;
}

std::string ExportedBytes(const COPCServerAddressSpace& space)
{
    const std::wstring path = TempFile(L"space.xlsx");
    CL::ExportAddressSpaceWorkbook(space, path);
    std::string bytes = CL::ReadWholeFile(path);
    ::DeleteFileW(path.c_str());
    return bytes;
}

std::string Part(const std::string& workbook, const char* name)
{
    CL::CZipReader zip(workbook);
    const CL::CZipReader::Entry* entry = zip.Find(name);
    if (!entry)
        return {};
    return zip.Read(*entry, 1 << 28);
}

std::wstring RefusalOf(const std::string& bytes)
{
    try {
        CL::ReadAddressSpaceWorkbook(bytes);
    } catch (const CL::CException& e) {
        return e.Source();
    } catch (const std::exception& e) {
        return L"std::exception " + CL::FromUtf8(e.what());
    }
    return L"(accepted)";
}

SpacePtr Imported(const std::string& bytes, CL::CsvImportPlan* planOut = nullptr)
{
    SpacePtr space = SpacePtr::Make();
    CL::CsvImportPlan plan = CL::ReadAddressSpaceWorkbook(bytes);
    for (const auto& rejected : plan.rejected)
        ADD_FAILURE() << "row " << rejected.line << ": " << CL::Narrow(rejected.reason);
    CL::ApplyCsvImport(plan, *space, false);
    if (planOut)
        *planOut = std::move(plan);
    return space;
}

// MSXML's SAX reader lives in the apartment the program enters at start-up.
class WithCom : public ::testing::Test {
    test::ComApartment m_com;
};

} // namespace

class WorkbookExport : public WithCom {};
class WorkbookReader : public WithCom {};
class WorkbookImport : public WithCom {};

TEST(ZipArchive, EntriesWrittenAsAStreamReadBackWithTheirNamesAndBytes)
{
    std::string big(3 << 20, '\0');
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>((i * 7919) >> 5);
    const std::string bytes = Zip({{"a.txt", "hello"}, {"dir/empty", ""}, {"dir/big.bin", big}});
    CL::CZipReader zip(bytes);
    ASSERT_EQ(zip.Entries().size(), 3u);
    EXPECT_EQ(zip.Read(*zip.Find("A.TXT"), 100), "hello");
    EXPECT_EQ(zip.Read(*zip.Find("dir/empty"), 100), "");
    EXPECT_EQ(zip.Read(*zip.Find("dir/big.bin"), 1 << 23), big);
    EXPECT_EQ(zip.Find("missing"), nullptr);
}

TEST(ZipArchive, APartThatUnpacksPastTheLimitIsRefusedAsAZipBomb)
{
    const std::string bytes = Zip({{"bomb", std::string(8 << 20, 'A')}});
    CL::CZipReader zip(bytes);
    EXPECT_LT(bytes.size(), 40000u);
    try {
        zip.Read(*zip.Find("bomb"), 1 << 20);
        FAIL() << "inflated past the limit";
    } catch (const CL::CException& e) {
        EXPECT_NE(e.Source().find(L"zip bomb"), std::wstring::npos) << CL::Narrow(e.Source());
    }
}

TEST(ZipArchive, ADamagedOrTruncatedArchiveIsRefusedWithAReason)
{
    std::string bytes = Zip({{"part.xml", std::string(5000, 'x') + "<end/>"}});
    std::string flipped = bytes;
    flipped[60] = static_cast<char>(flipped[60] ^ 0x55);
    CL::CZipReader damaged(flipped);
    EXPECT_THROW(damaged.Read(*damaged.Find("part.xml"), 1 << 20), CL::CException);
    EXPECT_THROW(CL::CZipReader(std::string_view(bytes).substr(0, bytes.size() / 2)), CL::CException);
    EXPECT_THROW(CL::CZipReader(std::string_view("PK\x03\x04 not much")), CL::CException);
}

TEST(WorkbookWriter, NumbersAreWrittenWithTheirShortestExactDigits)
{
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(0.1), "0.1");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(100000), "100000");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(1e20), "100000000000000000000");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(1e21), "1E+21");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(-2.5e-7), "-2.5E-7");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(0.000125), "0.000125");
    EXPECT_EQ(CL::CWorkbookWriter::NumberDigits(-3), "-3");
}

TEST_F(WorkbookExport, TheSheetIsNamedHasABoldFrozenFilteredHeaderAndColumnWidths)
{
    const std::string bytes = ExportedBytes(*ValueCorpusSpace());
    const std::string workbook = Part(bytes, "xl/workbook.xml");
    EXPECT_NE(workbook.find("<sheet name=\"Address space\""), std::string::npos);
    EXPECT_NE(workbook.find("_xlnm._FilterDatabase"), std::string::npos);
    const std::string sheet = Part(bytes, "xl/worksheets/sheet1.xml");
    EXPECT_NE(sheet.find("state=\"frozen\""), std::string::npos);
    EXPECT_NE(sheet.find("<autoFilter ref=\"A1:G"), std::string::npos);
    EXPECT_NE(sheet.find("<col min=\"1\" max=\"1\" width=\""), std::string::npos);
    EXPECT_NE(sheet.find("<row r=\"1\"><c s=\"1\" t=\"inlineStr\"><is><t>Path</t></is></c>"), std::string::npos);
    EXPECT_NE(sheet.find("<is><t>Scan rate</t></is>"), std::string::npos);
    EXPECT_NE(Part(bytes, "xl/styles.xml").find("<b/>"), std::string::npos);
    EXPECT_NE(Part(bytes, "[Content_Types].xml").find("spreadsheetml.sheet.main+xml"), std::string::npos);
}

TEST_F(WorkbookExport, TextStaysTextAndNumbersAreNumbersOnlyWhereTheyKeepTheirValue)
{
    const std::string sheet = Part(ExportedBytes(*ValueCorpusSpace()), "xl/worksheets/sheet1.xml");
    // Text values never become formulas or numbers.
    EXPECT_NE(sheet.find("t=\"inlineStr\"><is><t>=1+2</t></is>"), std::string::npos);
    EXPECT_NE(sheet.find("t=\"inlineStr\"><is><t>007</t></is>"), std::string::npos);
    EXPECT_EQ(sheet.find("<f>"), std::string::npos);
    EXPECT_NE(sheet.find("<t xml:space=\"preserve\">  two blanks at either end  </t>"), std::string::npos);
    EXPECT_NE(sheet.find("first line_x000D_\nsecond line_x000D_\n"), std::string::npos);
    EXPECT_NE(sheet.find("_x005F_x000D_ is not a CR"), std::string::npos);
    // Beyond 2^53, or past the 15 digits spreadsheets keep, an integer is
    // text; within them a number.
    EXPECT_NE(sheet.find("t=\"inlineStr\"><is><t>9007199254740993</t>"), std::string::npos);
    EXPECT_NE(sheet.find("t=\"inlineStr\"><is><t>18446744073709551615</t>"), std::string::npos);
    EXPECT_NE(sheet.find("t=\"inlineStr\"><is><t>-9007199254740992</t>"), std::string::npos);
    EXPECT_NE(sheet.find("><v>4294967295</v>"), std::string::npos);
    // Booleans and dates have their own cell types.
    EXPECT_NE(sheet.find("t=\"b\"><v>1</v>"), std::string::npos);
    EXPECT_NE(sheet.find("s=\"2\"><v>45323.57327688657</v>"), std::string::npos);
    // A double that needs more than the 15 digits spreadsheets keep is text.
    EXPECT_NE(sheet.find("t=\"inlineStr\"><is><t>0.30000000000000004</t>"), std::string::npos);
    EXPECT_NE(sheet.find("><v>-2.5E-7</v>"), std::string::npos);
    EXPECT_NE(sheet.find("><v>0.1</v>"), std::string::npos);   // VT_R4 0.1 as its shortest text
}

TEST_F(WorkbookExport, ExportThenImportGivesTheSameAddressSpaceExactly)
{
    const SpacePtr original = ValueCorpusSpace();
    const SpacePtr back = Imported(ExportedBytes(*original));
    EXPECT_EQ(CL::Narrow(CompareAddressSpaces(*original, *back)), "");
}

TEST_F(WorkbookExport, AValueLongerThanACellHoldsIsRefusedByName)
{
    SpacePtr space = SpacePtr::Make();
    auto item = CL::CSmartPtr<COPCItem>::Make(DWORD(3), DWORD(1000), false, WORD(192), VARTYPE(VT_BSTR), nullptr);
    item->Rename(L"Long");
    item->SetValue(CL::CVariant(std::wstring(40000, L'x')));
    space->RootBranch()->AddItem(item);
    try {
        ExportedBytes(*space);
        FAIL() << "exported";
    } catch (const CL::CException& e) {
        EXPECT_NE(e.Source().find(L"\"Long\" has 40000 characters"), std::wstring::npos) << CL::Narrow(e.Source());
    }
}

TEST_F(WorkbookReader, CellsOfEveryKindComeBackWithTheirTypes)
{
    const std::string bytes = ForeignWorkbook(
        std::string(kForeignHeader) +
        "<x:row r=\"3\"><x:c r=\"B3\" t=\"s\"><x:v>3</x:v></x:c><x:c r=\"D3\" t=\"inlineStr\"><x:is><x:t>in</x:t>"
        "</x:is></x:c><x:c r=\"E3\" t=\"b\"><x:v>1</x:v></x:c><x:c r=\"F3\" s=\"1\"><x:v>45000.5</x:v></x:c>"
        "<x:c r=\"G3\" s=\"2\"><x:v>45001</x:v></x:c><x:c r=\"H3\" s=\"3\"><x:v>1.5E+3</x:v></x:c>"
        "<x:c r=\"I3\" t=\"e\"><x:v>#N/A</x:v></x:c><x:c r=\"J3\"><x:f>1+2</x:f><x:v>3</x:v></x:c>"
        "<x:c r=\"K3\" t=\"str\"><x:f>A1</x:f><x:v>text result</x:v></x:c><x:c r=\"L3\" t=\"d\"><x:v>2024-03-01T12:00:00</x:v></x:c>"
        "<x:c r=\"M3\" t=\"s\"><x:v>4</x:v></x:c></x:row>"
        "<x:row r=\"5\"/><x:row r=\"7\"><x:c r=\"A7\" s=\"3\"/></x:row>");
    const auto rows = ReadRows(bytes);
    ASSERT_EQ(rows.size(), 2u);   // empty rows are not reported
    EXPECT_EQ(rows[0].first, 2u);
    EXPECT_EQ(rows[1].first, 3u);
    const auto& c = rows[1].second;
    using Kind = CL::WorkbookCell::Kind;
    ASSERT_EQ(c.size(), 13u);
    EXPECT_EQ(c[0].kind, Kind::Empty);
    EXPECT_EQ(c[1].kind, Kind::Text);
    EXPECT_EQ(c[1].text, L"Rich text");   // runs joined, phonetic run left out
    EXPECT_EQ(c[3].text, L"in");
    EXPECT_EQ(c[4].kind, Kind::Boolean);
    EXPECT_TRUE(c[5].date);
    EXPECT_EQ(c[5].text, L"45000.5");
    EXPECT_TRUE(c[6].date);
    EXPECT_FALSE(c[7].date);
    EXPECT_EQ(c[7].text, L"1.5E+3");
    EXPECT_EQ(c[8].kind, Kind::Error);
    EXPECT_EQ(c[8].text, L"#N/A");
    EXPECT_TRUE(c[9].formula);
    EXPECT_EQ(c[9].text, L"3");
    EXPECT_EQ(c[10].text, L"text result");
    EXPECT_TRUE(c[11].date);
    EXPECT_EQ(c[11].text, L"45352.5");
    EXPECT_EQ(c[12].text, L"line\r\nbreak");
}

TEST_F(WorkbookReader, DateFormatsAreTellingDatesAndTimesFromNumbers)
{
    EXPECT_TRUE(CL::CWorkbookReader::IsDateFormat(L"yyyy-mm-dd hh:mm:ss.000"));
    EXPECT_TRUE(CL::CWorkbookReader::IsDateFormat(L"[$-407]DD.MM.YYYY"));
    EXPECT_TRUE(CL::CWorkbookReader::IsDateFormat(L"[h]:mm"));
    EXPECT_FALSE(CL::CWorkbookReader::IsDateFormat(L"0.00E+00"));
    EXPECT_FALSE(CL::CWorkbookReader::IsDateFormat(L"#,##0.00 \"days\""));
    EXPECT_FALSE(CL::CWorkbookReader::IsDateFormat(L"[Red]0.00"));
    EXPECT_FALSE(CL::CWorkbookReader::IsDateFormat(L"General"));
}

TEST_F(WorkbookImport, ColumnsInAnyOrderFormulasNotedNumbersInTextColumnsAndBadRowsReported)
{
    const std::string bytes = ForeignWorkbook(
        std::string(kForeignHeader) +
        // Value as a formula's stored result; a number in the Path column.
        "<x:row r=\"3\"><x:c r=\"B3\"><x:f>SUM(1,2)</x:f><x:v>3</x:v></x:c><x:c r=\"C3\"><x:v>7</x:v></x:c>"
        "<x:c r=\"D3\" t=\"inlineStr\"><x:is><x:t>VT_I4</x:t></x:is></x:c></x:row>"
        // A number cell in a text column: its shortest text.
        "<x:row r=\"4\"><x:c r=\"B4\"><x:v>1.50</x:v></x:c><x:c r=\"C4\" t=\"inlineStr\"><x:is><x:t>Text</x:t></x:is>"
        "</x:c><x:c r=\"D4\" t=\"s\"><x:v>5</x:v></x:c></x:row>"
        // A text cell with a decimal comma in a number column.
        "<x:row r=\"5\"><x:c r=\"B5\" t=\"inlineStr\"><x:is><x:t>2,5</x:t></x:is></x:c><x:c r=\"C5\" t=\"inlineStr\">"
        "<x:is><x:t>Comma</x:t></x:is></x:c><x:c r=\"D5\" t=\"inlineStr\"><x:is><x:t>VT_R8</x:t></x:is></x:c></x:row>"
        // Bad rows: an error cell, a fraction for an integer, a formula without result, an unknown type.
        "<x:row r=\"6\"><x:c r=\"B6\" t=\"e\"><x:v>#DIV/0!</x:v></x:c><x:c r=\"C6\" t=\"inlineStr\"><x:is><x:t>E</x:t>"
        "</x:is></x:c><x:c r=\"D6\" t=\"inlineStr\"><x:is><x:t>VT_R8</x:t></x:is></x:c></x:row>"
        "<x:row r=\"7\"><x:c r=\"B7\"><x:v>1.5</x:v></x:c><x:c r=\"C7\" t=\"inlineStr\"><x:is><x:t>F</x:t></x:is></x:c>"
        "<x:c r=\"D7\" t=\"inlineStr\"><x:is><x:t>VT_UI1</x:t></x:is></x:c></x:row>"
        "<x:row r=\"8\"><x:c r=\"B8\"><x:f>A1</x:f></x:c><x:c r=\"C8\" t=\"inlineStr\"><x:is><x:t>G</x:t></x:is></x:c>"
        "</x:row>"
        "<x:row r=\"9\"><x:c r=\"C9\" t=\"inlineStr\"><x:is><x:t>H</x:t></x:is></x:c><x:c r=\"D9\" t=\"inlineStr\">"
        "<x:is><x:t>VT_NOPE</x:t></x:is></x:c></x:row>"
        "<x:row r=\"10\"><x:c r=\"B10\"><x:v>300</x:v></x:c><x:c r=\"C10\" t=\"inlineStr\"><x:is><x:t>I</x:t></x:is>"
        "</x:c><x:c r=\"D10\" t=\"inlineStr\"><x:is><x:t>VT_UI1</x:t></x:is></x:c></x:row>");
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceWorkbook(bytes);
    EXPECT_TRUE(plan.workbook);
    ASSERT_EQ(plan.items.size(), 3u);
    EXPECT_EQ(plan.items[0].name, L"7");
    EXPECT_EQ(plan.items[0].value.vt, VT_I4);
    EXPECT_EQ(plan.items[0].value.lVal, 3);
    EXPECT_EQ(plan.items[1].value.vt, VT_BSTR);
    EXPECT_STREQ(plan.items[1].value.bstrVal, L"1.5");
    EXPECT_EQ(plan.items[2].value.vt, VT_R8);
    EXPECT_EQ(plan.items[2].value.dblVal, 2.5);
    ASSERT_EQ(plan.notes.size(), 1u);
    EXPECT_EQ(plan.notes[0].line, 3u);
    EXPECT_NE(plan.notes[0].reason.find(L"formula"), std::wstring::npos);
    ASSERT_EQ(plan.rejected.size(), 5u);
    EXPECT_EQ(plan.rejected[0].line, 6u);
    EXPECT_NE(plan.rejected[0].reason.find(L"#DIV/0!"), std::wstring::npos);
    EXPECT_NE(plan.rejected[1].reason.find(L"not a whole number"), std::wstring::npos);
    EXPECT_NE(plan.rejected[2].reason.find(L"without a stored result"), std::wstring::npos);
    EXPECT_NE(plan.rejected[3].reason.find(L"unknown data type"), std::wstring::npos);
    EXPECT_NE(plan.rejected[4].reason.find(L"out of the range"), std::wstring::npos);
}

TEST_F(WorkbookImport, FilesThatAreNoWorkbooksAreRefusedWithWhatTheyAre)
{
    std::string xls("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    xls += std::string(2000, '\0');
    EXPECT_NE(RefusalOf(xls).find(L"old binary Excel workbook (.xls)"), std::wstring::npos);
    std::string encrypted = xls;
    const char name[] = "E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e\0";
    encrypted.replace(600, sizeof name - 1, name, sizeof name - 1);
    EXPECT_NE(RefusalOf(encrypted).find(L"encrypted"), std::wstring::npos);
    EXPECT_NE(RefusalOf("Path,Value\r\nA,1\r\n").find(L"not a zip archive"), std::wstring::npos);
    const std::string good = ExportedBytes(*ValueCorpusSpace());
    EXPECT_NE(RefusalOf(good.substr(0, good.size() - 100)).find(L"truncated"), std::wstring::npos);
    EXPECT_NE(RefusalOf(Zip({{"a.xml", "<a/>"}})).find(L"is missing"), std::wstring::npos);
    std::string damaged = good;
    for (size_t i = 200; i < 260; ++i)
        damaged[i] = static_cast<char>(damaged[i] ^ 0x5A);
    EXPECT_NE(RefusalOf(damaged), L"(accepted)");
}

TEST_F(WorkbookImport, AZipBombSheetIsRefusedQuickly)
{
    // A sheet of 200 MB of empty rows packed as tightly as deflate packs:
    // the part that holds it is about 200 KB.
    std::string rows(200u << 20, ' ');
    rows.replace(0, 11, "<worksheet>");
    for (size_t i = 16; i + 6 <= rows.size(); i += 6)
        rows.replace(i, 6, "<row/>");
    uLongf packedSize = compressBound(static_cast<uLong>(rows.size()));
    std::string packed(packedSize, '\0');
    ASSERT_EQ(compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize,
                        reinterpret_cast<const Bytef*>(rows.data()), static_cast<uLong>(rows.size()), 9), Z_OK);
    // Raw deflate data: zlib's two-byte header and four-byte checksum off.
    packed = packed.substr(2, packedSize - 6);
    const uint32_t crc = static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(rows.data()),
                                                     static_cast<uInt>(rows.size())));
    std::string good = ForeignWorkbook("");
    // The bomb goes in front of the workbook's own sheet, under its name.
    CL::CZipReader zip(good);
    const CL::CZipReader::Entry* sheet = zip.Find("xl/worksheets/first.xml");
    ASSERT_TRUE(sheet);
    auto put32 = [](std::string& s, size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i)
            s[at + i] = static_cast<char>(v >> (8 * i));
    };
    std::string bomb = good;
    const size_t local = sheet->offset;
    const size_t dataAt = local + 30 + static_cast<uint8_t>(good[local + 26]) + static_cast<uint8_t>(good[local + 28]);
    bomb.replace(dataAt, sheet->compressed, packed);
    // Sizes and checksum in the central directory (the local header defers to it).
    const size_t shift = packed.size() - sheet->compressed;
    const size_t end = bomb.rfind("PK\x05\x06");
    const uint32_t directory = static_cast<uint8_t>(bomb[end + 16]) | (static_cast<uint8_t>(bomb[end + 17]) << 8) |
                               (static_cast<uint8_t>(bomb[end + 18]) << 16) |
                               (static_cast<uint32_t>(static_cast<uint8_t>(bomb[end + 19])) << 24);
    put32(bomb, end + 16, static_cast<uint32_t>(directory + shift));
    size_t at = directory + shift;
    while (bomb.compare(at, 4, "PK\x01\x02") == 0) {
        const size_t nameLength = static_cast<uint8_t>(bomb[at + 28]) | (static_cast<uint8_t>(bomb[at + 29]) << 8);
        const size_t extra = static_cast<uint8_t>(bomb[at + 30]) | (static_cast<uint8_t>(bomb[at + 32]) << 8);
        const std::string name = bomb.substr(at + 46, nameLength);
        uint32_t offset = static_cast<uint8_t>(bomb[at + 42]) | (static_cast<uint8_t>(bomb[at + 43]) << 8) |
                          (static_cast<uint8_t>(bomb[at + 44]) << 16) |
                          (static_cast<uint32_t>(static_cast<uint8_t>(bomb[at + 45])) << 24);
        if (name == "xl/worksheets/first.xml") {
            put32(bomb, at + 16, crc);
            put32(bomb, at + 20, static_cast<uint32_t>(packed.size()));
            put32(bomb, at + 24, static_cast<uint32_t>(rows.size()));
        } else if (offset > local) {
            put32(bomb, at + 42, static_cast<uint32_t>(offset + shift));
        }
        at += 46 + nameLength + extra;
    }
    EXPECT_LT(bomb.size(), 1u << 20);
    const auto start = std::chrono::steady_clock::now();
    const std::wstring refusal = RefusalOf(bomb);
    EXPECT_NE(refusal.find(L"zip bomb"), std::wstring::npos) << CL::Narrow(refusal);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(WorkbookImport, AMillionEmptyRowsAndATenMegabyteCellEndInAReport)
{
    std::string rows;
    for (int i = 3; i < 1000003; ++i)
        rows += "<x:row r=\"" + std::to_string(i) + "\"/>";
    rows += "<x:row r=\"1000004\"><x:c r=\"C1000004\" t=\"inlineStr\"><x:is><x:t>Huge</x:t></x:is></x:c>"
            "<x:c r=\"B1000004\" t=\"inlineStr\"><x:is><x:t>" + std::string(10 << 20, 'x') +
            "</x:t></x:is></x:c></x:row>";
    const auto start = std::chrono::steady_clock::now();
    const CL::CsvImportPlan plan = CL::ReadAddressSpaceWorkbook(ForeignWorkbook(kForeignHeader + rows));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    EXPECT_TRUE(plan.items.empty());
    ASSERT_EQ(plan.rejected.size(), 1u);
    EXPECT_EQ(plan.rejected[0].line, 1000004u);
    EXPECT_NE(plan.rejected[0].reason.find(L"10485760 characters"), std::wstring::npos);
}

TEST_F(WorkbookImport, AnEmptySheetOrOneWithoutPathIsRefusedWhole)
{
    EXPECT_NE(RefusalOf(ForeignWorkbook("")).find(L"empty"), std::wstring::npos) << CL::Narrow(RefusalOf(ForeignWorkbook("")));
    EXPECT_NE(RefusalOf(ForeignWorkbook("<x:row><x:c t=\"s\"><x:v>0</x:v></x:c></x:row>")).find(L"\"Path\""),
              std::wstring::npos);
}
