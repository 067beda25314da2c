#pragma once
// CWorkbookReader: the first sheet of an Office Open XML workbook (.xlsx),
// as written by this program, by Excel or by LibreOffice, read row by row.
// The zip container is read with CZipReader, the parts with
// CXmlEventParser as they inflate (no DOM: a sheet of a hundred thousand
// rows is a stream of events). Cells come with their types: shared, inline and rich text
// strings as text, numbers with the digits the file holds, booleans, errors,
// dates (numbers with a date format, or ISO dates), and whether the cell
// held a formula (its stored result is what the cell gives).
//
// Files that are not workbooks are refused with a CException whose text
// says what the file is: an old binary workbook (.xls), an encrypted
// workbook, a damaged or truncated archive, a part that unpacks to more
// than a sane size.
#include <windows.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/XmlEventParser.h"
#include "common/ZipReader.h"

namespace CL {

struct WorkbookCell {
    enum class Kind { Empty, Text, Number, Boolean, Error };
    Kind kind = Kind::Empty;
    // Text: the text (cut after kMaxTextKept characters); Number: the
    // digits as the file has them (for a date: the serial number); Boolean:
    // "1" or "0"; Error: the error's text ("#N/A").
    std::wstring text;
    size_t length = 0;        // the text's full length, before any cut
    bool date = false;        // a number with a date or time format
    bool formula = false;     // the cell held a formula
};

class CWorkbookReader {
public:
    // A cell's text beyond this is cut (its full length is still told): a
    // spreadsheet cell holds at most 32,767 characters.
    static constexpr size_t kMaxTextKept = 32768;
    // The most a sheet or the shared strings may unpack to, and the other parts.
    static constexpr uint64_t kLargePartLimit = 256ull << 20;
    static constexpr uint64_t kSmallPartLimit = 16ull << 20;

    // Opens the archive and reads the workbook, its relationships, styles
    // and shared strings. bytes must outlive the reader.
    explicit CWorkbookReader(std::string_view bytes);

    const std::wstring& FirstSheetName() const { return m_sheetName; }

    // Reads the first sheet; onRow is called for every row that has a cell
    // with content, with its 1-based row number and its cells by column
    // (index 0 is column A).
    void ReadFirstSheet(const std::function<void(size_t row, std::span<const WorkbookCell> cells)>& onRow);

    // A number's digits ("1.5", "-2E+20") as a double; false for other text.
    static bool ParseNumber(std::wstring_view digits, double& value);
    // The text with the workbook escapes (_xHHHH_) taken back.
    static std::wstring DecodeEscapes(std::wstring_view text);
    static void DecodeEscapes(std::wstring_view text, std::wstring& out);
    // Whether a number format code shows a date or a time.
    static bool IsDateFormat(std::wstring_view code);

private:
    struct Relationship {
        std::wstring id;
        std::wstring type;
        std::wstring target;
    };

    static void RefuseOtherFormats(std::string_view bytes);
    std::vector<Relationship> ReadRelationships(const std::string& partName) const;
    const CZipReader::Entry& Part(const std::string& name) const;
    void ReadWorkbook(const std::string& workbookPart);
    void ReadStyles(const std::string& part);
    void ReadSharedStrings(const std::string& part);
    void Parse(const std::string& part, uint64_t limit, IXmlHandler& handler) const;

    CZipReader m_zip;
    std::wstring m_sheetName;
    std::string m_sheetPart;
    std::vector<bool> m_dateStyles;
    std::vector<std::wstring> m_sharedStrings;
    std::vector<size_t> m_sharedLengths;
    bool m_date1904 = false;
};

} // namespace CL
