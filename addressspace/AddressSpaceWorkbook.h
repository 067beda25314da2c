#pragma once
// The address space as an Office Open XML workbook (.xlsx) for a
// spreadsheet: one sheet "Address space", one row per item in the order and
// under the header of the CSV export (Path, Data type, Value, Readable,
// Writable, Archive, Scan rate), header bold, frozen and with an autofilter.
// Every cell is typed so that a spreadsheet keeps the value exactly:
//   - text values are text cells, never a formula or a number;
//   - numbers are number cells where a number cell gives back the same
//     value of the item's type (every integer type within +-2^53, VT_R4,
//     VT_R8, VT_CY below 10^11), otherwise text cells;
//   - VT_BOOL values are boolean cells, VT_DATE values date-time cells (from
//     1 March 1900 on; earlier dates, which spreadsheets count differently,
//     are text);
//   - arrays one text cell, one element per line;
//   - flags 1 or 0 and the scan rate as number cells.
//
// Reading takes the first sheet of a workbook from this program, Excel or
// LibreOffice into the CSV import's plan (AddressSpaceCsv.h): columns found
// by their header names in the first row with content, one plan entry per
// row; rows that cannot be taken listed with their row number and reason,
// rows whose cells held formulas noted (their stored results are taken).
#include <string>
#include <string_view>

#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/OPCServerAddressSpace.h"

namespace CL {

// The sheet's name.
extern const wchar_t kWorkbookSheetName[];

// Writes the workbook (beside the target first, then moved over it).
// Throws CException, also for a value longer than a cell holds (32,767
// characters), which a spreadsheet would cut.
void ExportAddressSpaceWorkbook(const COPCServerAddressSpace& space, const std::wstring& path);

// The plan of the workbook's bytes. A file that is not a workbook, or whose
// first sheet has no header row with "Path", throws CException.
CsvImportPlan ReadAddressSpaceWorkbook(std::string_view bytes, const CsvItemDefaults& defaults = {});

// Loads a whole workbook file into an address space (normally a new, empty
// one), as the CSV loader fills one: returns the plan, whose rejected rows
// were left out.
CsvImportPlan LoadAddressSpaceWorkbook(const std::wstring& path, COPCServerAddressSpace& into,
                                       const CsvItemDefaults& defaults = {});

} // namespace CL
