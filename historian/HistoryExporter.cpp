#include "historian/HistoryExporter.h"

#include "common/Exception.h"
#include "common/Text.h"

namespace CL {

namespace {

constexpr wchar_t kSaveSource[] = L"pIXMLDOM->save (szFile)";
constexpr wchar_t kCsvSource[] = L"CreateFile (szFile)";

bool EndsWithNoCase(const std::wstring& text, std::wstring_view tail)
{
    return text.size() >= tail.size() && EqualsNoCase(std::wstring_view(text).substr(text.size() - tail.size()), tail);
}

} // namespace

ExportFormat ExportFormatFor(const std::wstring& path, int filterIndex)
{
    if (EndsWithNoCase(path, L".csv"))
        return ExportFormat::Csv;
    if (EndsWithNoCase(path, L".xml"))
        return ExportFormat::Xml;
    if (EndsWithNoCase(path, L".xlsx"))
        return ExportFormat::Workbook;
    if (filterIndex == kExportFilterWorkbook)
        return ExportFormat::Workbook;
    return filterIndex == kExportFilterCsv ? ExportFormat::Csv : ExportFormat::Xml;
}

CHistoryExporter::CHistoryExporter(const std::wstring& path, ExportFormat format) : m_path(path)
{
    if (format == ExportFormat::Workbook) {
        m_file = std::make_unique<CReplacingFile>(path, kCsvSource);
        m_workbook = std::make_unique<CHistoryWorkbookWriter>(*m_file);
        return;
    }
    if (format == ExportFormat::Csv) {
        m_file = std::make_unique<CReplacingFile>(path, kCsvSource);
        m_csv = std::make_unique<CHistoryCsvWriter>(*m_file);
        return;
    }
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        throw CException(HResultFromWin32(ERROR_ACCESS_DENIED), kSaveSource);
    m_xml.emplace();
}

void CHistoryExporter::Add(const std::wstring& itemId, const CHistorianValues& values,
                           const std::function<void(size_t)>& step)
{
    if (m_workbook)
        m_workbook->Write(itemId, values, step);
    else if (m_csv)
        m_csv->Write(itemId, values, step);
    else
        m_xml->AddItem(itemId, values, step);
}

void CHistoryExporter::Commit()
{
    if (m_workbook)
        m_workbook->Close();
    if (m_file)
        m_file->Commit();
    else
        m_xml->Save(m_path);
}

} // namespace CL
