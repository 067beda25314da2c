#pragma once
// Comma-separated values as RFC 4180 has them: fields separated by commas,
// records by CR LF (a lone LF is accepted on reading), a field holding a
// comma, a quote or a line break written between quotes with its quotes
// doubled. The reader keeps the line each record starts on and reports a
// malformed record instead of guessing what it meant.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace CL {

// The field as it goes into a record: quoted when it must be.
std::wstring CsvField(std::wstring_view text);
// The fields joined with commas and ended with CR LF.
std::wstring CsvRecord(const std::vector<std::wstring>& fields);

// The same rules with another separator (tab-separated text for the
// clipboard): a field holding the separator, a quote or a line break is
// quoted, its quotes doubled.
std::wstring DelimitedField(std::wstring_view text, wchar_t separator);
std::wstring DelimitedRecord(const std::vector<std::wstring>& fields, wchar_t separator);
// Appends the field to a record being built (no allocation for a field that
// needs no quotes): the way large exports write their records.
void AppendDelimitedField(std::wstring& record, std::wstring_view text, wchar_t separator);

struct CsvRow {
    size_t line = 0;                    // 1-based line the record starts on
    std::vector<std::wstring> fields;
    std::wstring error;                 // empty for a well-formed record
};

// The separator of a text's records, judged from its first line: a tab or a
// semicolon when that line holds more of them (outside quotes) than of
// commas, as spreadsheets write them in locales whose decimal mark is a
// comma and as they put cells on the clipboard; a comma otherwise.
wchar_t DetectCsvSeparator(std::wstring_view text);

class CCsvReader {
public:
    explicit CCsvReader(std::wstring_view text, wchar_t separator = L',') : m_text(text), m_separator(separator) {}
    // The next record; false at the end of the text. A malformed record
    // (a quote inside an unquoted field, text after a closing quote, a quote
    // never closed) comes back with its error set; reading goes on at the
    // next line.
    bool Next(CsvRow& row);

private:
    void SkipToNextLine();
    bool AtRecordEnd() const;
    void EndRecord();

    std::wstring_view m_text;
    wchar_t m_separator;
    size_t m_pos = 0;
    size_t m_line = 1;
};

} // namespace CL
