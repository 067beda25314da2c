#pragma once
// CHistoryCsvWriter: archived values as comma-separated values for a
// spreadsheet: UTF-8 with a byte order mark, records ended by CR LF, fields
// quoted as RFC 4180 has it (Csv.h), one record per value under the header
//
//   Item ID,Time (local),Time (UTC),Value,Quality,Good,Data type
//
// "Time (local)" is the time as the historical data list shows it, "Time
// (UTC)" ISO 8601 with milliseconds ("2025-03-14T08:00:50.000Z"), the value
// its whole text (array elements one per line inside the field, no cut),
// the quality word in decimal, Good 1 or 0 (both top bits of the quality's
// low byte set), and the data type's name.
//
// The file is meant for viewing in a spreadsheet, which runs a field that
// starts with "=", "+", "-", "@", a tab or a carriage return as a formula:
// such a text (an item ID, a text value, an array) is written with a single
// quote in front, as spreadsheet makers advise against formula injection.
// Numbers are written as they are ("-5" stays a number).
#include <functional>
#include <map>
#include <string>

#include "common/LocalTimeTexts.h"
#include "common/ReplacingFile.h"
#include "common/TimeFieldsCache.h"
#include "common/historian/HistorianValues.h"

namespace CL {

class CHistoryCsvWriter {
public:
    // Writes the byte order mark and the header.
    explicit CHistoryCsvWriter(CReplacingFile& file);

    // Writes one record per value of the item, in order; step is called
    // every few thousand values with the number written of these values.
    void Write(const std::wstring& itemId, const CHistorianValues& values,
               const std::function<void(size_t)>& step = {});

    // The header record (CR LF ended).
    static const wchar_t* Header();
    // The text as written into a field: a leading "'" when a spreadsheet
    // would run it.
    static std::wstring InertText(std::wstring text);

private:
    void AppendRecord(std::wstring& text, const std::wstring& itemField, const CHistorianValues& values, size_t i);
    void AppendTimes(std::wstring& text, const FILETIME& utc);
    void Flush(std::wstring& text);

    CReplacingFile& m_file;
    std::map<VARTYPE, std::wstring> m_typeNames;
    CLocalTimeTexts m_localTimes;
    CTimeFieldsCache m_localFields;
    CTimeFieldsCache m_utcFields;
};

} // namespace CL
