#pragma once
// CHistoryExporter: writes the values of one or more items to a file, as the
// XML export (HistoryExport.h, one Item element per item) or as CSV
// (HistoryCsvWriter.h) or as an Excel workbook (HistoryWorkbookWriter.h),
// item after item. Nothing reaches the target until
// Commit: an exporter destroyed before it (a failure, a cancel) leaves no
// partial file and the target as it was. A read-only target is refused
// before any work is done.
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "common/ReplacingFile.h"
#include "historian/HistoryCsvWriter.h"
#include "historian/HistoryExport.h"
#include "historian/HistoryWorkbookWriter.h"

namespace CL {

enum class ExportFormat { Xml, Csv, Workbook };

// The save dialog's file types for exports and which of them are CSV and
// the workbook.
inline constexpr wchar_t kExportFilter[] =
    L"XML Files\0*.xml\0All files\0*.*\0CSV Files (*.csv)\0*.csv\0Excel Workbook (*.xlsx)\0*.xlsx\0";
inline constexpr int kExportFilterCsv = 3;
inline constexpr int kExportFilterWorkbook = 4;

// The typed extension decides (".csv", ".xml", ".xlsx", any case); without
// one of them the file type chosen in the save dialog does.
ExportFormat ExportFormatFor(const std::wstring& path, int filterIndex);

class CHistoryExporter {
public:
    CHistoryExporter(const std::wstring& path, ExportFormat format);

    // Adds the item's values; step as the writers call it.
    void Add(const std::wstring& itemId, const CHistorianValues& values,
             const std::function<void(size_t)>& step = {});
    void Commit();

private:
    std::wstring m_path;
    std::optional<CHistoryXmlBuilder> m_xml;
    std::unique_ptr<CReplacingFile> m_file;
    std::unique_ptr<CHistoryCsvWriter> m_csv;
    std::unique_ptr<CHistoryWorkbookWriter> m_workbook;
};

} // namespace CL
