#pragma once
// CWorkbookWriter: an Office Open XML workbook (.xlsx) written as a stream:
// each sheet's XML goes row by row through the zip writer into the file, so
// that a sheet of a million rows never sits in memory. Every cell carries
// its type: text cells (inline strings, or shared strings for texts that
// repeat), number cells, boolean cells and date-time cells; nothing is left
// for a spreadsheet to guess. Texts are written as they are: leading and
// trailing blanks kept, line breaks and characters XML cannot carry written
// in the workbook format's own escape (_xHHHH_).
//
// Styles (the s attribute): kPlain, kHeader (bold), kDateTime (a date-time
// shown to the millisecond), kText (the text number format "@", so that a
// cell edited later stays text).
#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/ReplacingFile.h"
#include "common/ZipWriter.h"

namespace CL {

class CWorkbookWriter {
public:
    enum Style { kPlain = 0, kHeader = 1, kDateTime = 2, kText = 3 };
    // The rows a sheet holds.
    static constexpr size_t kMaxRows = 1048576;
    // The characters a cell holds.
    static constexpr size_t kMaxCellText = 32767;

    explicit CWorkbookWriter(CReplacingFile& file);
    ~CWorkbookWriter();
    CWorkbookWriter(const CWorkbookWriter&) = delete;
    CWorkbookWriter& operator=(const CWorkbookWriter&) = delete;

    // Starts a sheet (ends the one before). widths: the columns' widths in
    // characters; frozenHeader: the first row stays in view while scrolling.
    void BeginSheet(const std::wstring& name, const std::vector<double>& widths, bool frozenHeader);
    // Ends the sheet; autoFilter puts the filter buttons on its first row
    // over the widths' columns.
    void EndSheet(bool autoFilter);

    void BeginRow();
    void EndRow();
    // Rows begun in the current sheet.
    size_t Rows() const { return m_rows; }

    // Cells, left to right.
    void Text(std::wstring_view text, Style style = kText);
    // A text kept once in the shared string table (item IDs, type names);
    // Share gives its index for cells of it written by index.
    void SharedText(const std::wstring& text, Style style = kPlain);
    size_t Share(const std::wstring& text);
    void SharedText(size_t index, Style style = kPlain);
    void Number(double value, Style style = kPlain);
    // A number given as its decimal text ("-12", "0.5", "1E+20").
    void NumberText(std::string_view digits, Style style = kPlain);
    void Boolean(bool value);
    // An OLE date (days since 30 December 1899) as a date-time cell.
    void DateTime(double oleDate);
    // Leaves the next cell empty.
    void Skip();

    // Writes the workbook's other parts and the zip directory. The file is
    // committed by its owner afterwards.
    void Close();

    // The shortest decimal text that reads back as the same double ("0.1",
    // "1E+20"), as number cells carry it.
    static std::string NumberDigits(double value);

private:
    struct Sheet {
        std::wstring name;
        size_t columns = 0;
        size_t rows = 0;
        bool autoFilter = false;
    };

    void CellStart(const char* type, Style style);
    void AppendEscaped(std::wstring_view text);
    void FlushIfFull();
    void WritePart(const std::string& name, const std::string& xml);
    std::string WorkbookXml() const;
    std::string RelationshipsXml() const;
    std::string ContentTypesXml() const;
    std::string SharedStringsXml() const;

    CReplacingFile& m_file;
    CZipWriter m_zip;
    std::vector<Sheet> m_sheets;
    bool m_inSheet = false;
    bool m_inRow = false;
    size_t m_rows = 0;
    size_t m_column = 0;
    bool m_gap = false;          // a cell was skipped: the next one names its reference
    std::string m_rowDigits;
    std::string m_buffer;
    std::unordered_map<std::wstring, size_t> m_shared;
    std::vector<const std::wstring*> m_sharedOrder;
    size_t m_sharedUses = 0;
};

} // namespace CL
