#pragma once
// The address space as comma-separated values, for bulk editing in a
// spreadsheet. One record per item, in tree order (a branch's items, then
// its sub-branches), under a header naming the columns:
//   Path, Data type, Value, Readable, Writable, Archive, Scan rate
// Path: the names of the item's branches below the root and its own name
// joined with "."; a "." or "\" inside a name is written "\." or "\\", so
// every path splits back into the same names. Data type: the type's VT name
// ("VT_R8", "VT_I4 | VT_ARRAY"). Value: the value as text, array elements
// one per line. Readable, Writable, Archive: 1 or 0. Scan rate: milliseconds.
// The file is UTF-8 with a byte order mark, CR LF between records.
//
// Reading builds an import plan first: every record that can be taken, and
// every one that cannot with its line and the reason; nothing touches an
// address space until the plan is applied.
#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "addressspace/OPCServerAddressSpace.h"
#include "common/Variant.h"

namespace CL {

// The column names of the header, in the order export writes them.
extern const wchar_t* const kCsvColumns[7];

// The whole file: BOM, header and one record per item. Throws CException
// when an item's value cannot be turned into text.
std::string ExportAddressSpaceCsv(const COPCServerAddressSpace& space);

// Items as the clipboard holds them for a spreadsheet: the same header and
// columns, fields separated by tabs, CR LF between records, no byte order
// mark. The rows' paths are their names; a branch's rows' paths start with
// the branch's own name.
std::wstring TabSeparatedItems(const std::vector<CSmartPtr<COPCItem>>& items);
std::wstring TabSeparatedBranch(const COPCServerAddressSpaceBranch& branch);

// A path split into its names ("\." and "\\" taken back); false with the
// reason for an empty name or an escape other than those two.
bool SplitItemPath(std::wstring_view path, std::vector<std::wstring>& names, std::wstring& reason);
// The names joined into a path, each "." and "\" escaped.
std::wstring JoinItemPath(const std::vector<std::wstring>& names);
// Appends one name to a path as JoinItemPath joins it.
void AppendItemPathName(std::wstring& path, std::wstring_view name);

// What a column that the file lacks gives each item (the item dialog's
// values for a new item).
struct CsvItemDefaults {
    VARTYPE dataType = VT_R8;
    bool readable = true;
    bool writable = true;
    bool archive = false;
    DWORD scanRate = 1000;
};

struct CsvItem {
    size_t line = 0;
    std::vector<std::wstring> branches;   // from the root down
    std::wstring name;
    VARTYPE dataType = VT_EMPTY;
    CVariant value;
    bool readable = false;
    bool writable = false;
    bool archive = false;
    DWORD scanRate = 0;
};

struct CsvRejectedLine {
    size_t line = 0;
    std::wstring reason;
};

struct CsvImportPlan {
    std::vector<CsvItem> items;
    std::vector<CsvRejectedLine> rejected;
    // The separator the text was read with (',', ';' or a tab). With ';'
    // or a tab, a decimal comma in a VT_R4, VT_R8 or VT_CY value (or an
    // array of them) was read as the decimal point.
    wchar_t separator = L',';
    // Read from a workbook: the line numbers are the sheet's row numbers,
    // and notes lists rows that were taken with a remark (a cell that held
    // a formula gave its stored result).
    bool workbook = false;
    std::vector<CsvRejectedLine> notes;
};

// Reads the file's bytes (UTF-8, with or without a byte order mark) into a
// plan. The separator is judged from the header line (DetectCsvSeparator). A file that is not UTF-8 text, has no header, or whose header lacks
// "Path" or names a column twice throws CException: nothing in it can be
// taken.
CsvImportPlan ReadAddressSpaceCsv(std::string_view bytes, const CsvItemDefaults& defaults = {});
// The same for text that is already wide (the clipboard's).
CsvImportPlan ReadAddressSpaceCsvText(std::wstring_view text, const CsvItemDefaults& defaults = {});

// Where each column is in a record (-1: the file lacks it), in the order
// of kCsvColumns.
struct CsvColumnMap {
    int index[7] = {-1, -1, -1, -1, -1, -1, -1};
};

// The columns named by a header (names compared ignoring case and outer
// blanks). A header without "Path" or naming a column twice throws
// CException: "<file> has no "Path" column in its <firstLine>."
CsvColumnMap MapCsvColumns(const std::vector<std::wstring>& names, const wchar_t* file, const wchar_t* firstLine);

// The item of one record's fields; empty, or the reason it cannot be
// taken. decimalComma: a comma in a VT_R4, VT_R8 or VT_CY value is its
// decimal mark.
std::wstring ReadCsvFields(const std::vector<std::wstring>& fields, const CsvColumnMap& map,
                          const CsvItemDefaults& defaults, bool decimalComma, CsvItem& item);

struct CsvImportResult {
    size_t added = 0;
    size_t updated = 0;
    size_t leftAlone = 0;   // existing items not updated
    size_t branchesCreated = 0;
};

// A new item of the record under the given name, with quality 192 (good)
// and the given time.
CSmartPtr<COPCItem> NewCsvItem(const CsvItem& entry, const std::wstring& name, const FILETIME& now);

// Applies the plan's items to the address space in file order: the branches
// along each path are created as needed, new items added with quality 192
// (good) and the current time; an item that exists (its name ignoring
// letter case) is updated when updateExisting, else left alone and counted.
CsvImportResult ApplyCsvImport(const CsvImportPlan& plan, COPCServerAddressSpace& space, bool updateExisting);

} // namespace CL
