#include "common/Csv.h"

namespace CL {

std::wstring CsvField(std::wstring_view text)
{
    return DelimitedField(text, L',');
}

std::wstring CsvRecord(const std::vector<std::wstring>& fields)
{
    return DelimitedRecord(fields, L',');
}

std::wstring DelimitedField(std::wstring_view text, wchar_t separator)
{
    std::wstring field;
    AppendDelimitedField(field, text, separator);
    return field;
}

void AppendDelimitedField(std::wstring& record, std::wstring_view text, wchar_t separator)
{
    const wchar_t special[] = {separator, L'"', L'\r', L'\n', L'\0'};
    if (text.find_first_of(special) == std::wstring_view::npos) {
        record += text;
        return;
    }
    record += L'"';
    for (wchar_t c : text) {
        if (c == L'"')
            record += L'"';
        record += c;
    }
    record += L'"';
}

std::wstring DelimitedRecord(const std::vector<std::wstring>& fields, wchar_t separator)
{
    std::wstring record;
    for (size_t i = 0; i < fields.size(); ++i) {
        if (i)
            record += separator;
        AppendDelimitedField(record, fields[i], separator);
    }
    record += L"\r\n";
    return record;
}

wchar_t DetectCsvSeparator(std::wstring_view text)
{
    size_t commas = 0, semicolons = 0, tabs = 0;
    bool quoted = false;
    for (const wchar_t c : text) {
        if (c == L'"')
            quoted = !quoted;
        else if (!quoted && (c == L'\r' || c == L'\n'))
            break;
        else if (!quoted && c == L',')
            ++commas;
        else if (!quoted && c == L';')
            ++semicolons;
        else if (!quoted && c == L'\t')
            ++tabs;
    }
    if (tabs > commas && tabs >= semicolons)
        return L'\t';
    if (semicolons > commas)
        return L';';
    return L',';
}

bool CCsvReader::AtRecordEnd() const
{
    return m_pos >= m_text.size() || m_text[m_pos] == L'\r' || m_text[m_pos] == L'\n';
}

void CCsvReader::EndRecord()
{
    if (m_pos < m_text.size() && m_text[m_pos] == L'\r')
        ++m_pos;
    if (m_pos < m_text.size() && m_text[m_pos] == L'\n')
        ++m_pos;
    ++m_line;
}

void CCsvReader::SkipToNextLine()
{
    while (!AtRecordEnd())
        ++m_pos;
    EndRecord();
}

bool CCsvReader::Next(CsvRow& row)
{
    if (m_pos >= m_text.size())
        return false;
    row = CsvRow();
    row.line = m_line;
    std::wstring field;
    for (;;) {
        field.clear();
        if (m_pos < m_text.size() && m_text[m_pos] == L'"') {
            // Quoted: runs to the quote that is not doubled, across lines.
            ++m_pos;
            for (;;) {
                if (m_pos >= m_text.size()) {
                    row.error = L"a quoted field is never closed";
                    return true;
                }
                const wchar_t c = m_text[m_pos++];
                if (c == L'"') {
                    if (m_pos < m_text.size() && m_text[m_pos] == L'"') {
                        field += L'"';
                        ++m_pos;
                        continue;
                    }
                    break;
                }
                if (c == L'\n')
                    ++m_line;
                field += c;
            }
            if (!AtRecordEnd() && m_text[m_pos] != m_separator) {
                row.error = L"text follows the closing quote of a field";
                SkipToNextLine();
                return true;
            }
        } else {
            while (!AtRecordEnd() && m_text[m_pos] != m_separator) {
                if (m_text[m_pos] == L'"') {
                    row.error = L"a quote inside a field that does not start with one";
                    SkipToNextLine();
                    return true;
                }
                field += m_text[m_pos++];
            }
        }
        row.fields.push_back(field);
        if (AtRecordEnd()) {
            EndRecord();
            return true;
        }
        ++m_pos;   // the separator
    }
}

} // namespace CL
