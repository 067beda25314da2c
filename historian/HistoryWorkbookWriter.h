#pragma once
// CHistoryWorkbookWriter: archived values as an Excel workbook (.xlsx),
// written as a stream (CWorkbookWriter): memory does not grow with the
// number of values. The columns of the history CSV (HistoryCsvWriter.h):
//
//   Item ID, Time (local), Time (UTC), Value, Quality, Good, Data type
//
// The two times are date-time cells shown to the millisecond, which a
// spreadsheet sorts and charts; the value a number cell when it is a number
// that a number cell keeps exactly, else text (arrays one element per
// line); the quality a number; Good a boolean. A sheet holds 1,048,575
// values under its header; more continue on further sheets "Values (2)",
// "Values (3)", ... with the same header.
#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "common/LocalTimeTexts.h"
#include "common/ReplacingFile.h"
#include "common/WorkbookWriter.h"
#include "common/historian/HistorianValues.h"

namespace CL {

class CHistoryWorkbookWriter {
public:
    // Values on one sheet (its header row aside).
    static constexpr size_t kValuesPerSheet = CWorkbookWriter::kMaxRows - 1;

    // Starts the first sheet. valuesPerSheet is lowered only by tests.
    explicit CHistoryWorkbookWriter(CReplacingFile& file, size_t valuesPerSheet = kValuesPerSheet);

    // Writes one row per value of the item, in order; step is called every
    // few thousand values with the number written of these values.
    void Write(const std::wstring& itemId, const CHistorianValues& values,
               const std::function<void(size_t)>& step = {});
    // Ends the last sheet and writes the workbook's other parts.
    void Close();

private:
    void StartSheet();
    void WriteValue(const VARIANT& value);

    CWorkbookWriter m_writer;
    size_t m_valuesPerSheet;
    size_t m_sheets = 0;
    size_t m_onSheet = 0;
    std::map<VARTYPE, size_t> m_typeNames;   // their shared strings
    CLocalTimeTexts m_localTimes;
};

} // namespace CL
