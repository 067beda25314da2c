#pragma once
// CdlgCsvImport: the report an administrator sees before a CSV file (or a
// workbook: then captioned "Import Workbook", listing rows that held
// formulas too) changes the address space: how many items the file gives, every line that cannot
// be taken with its line number and reason, and the choice whether items
// that exist already are updated. "Import" takes the good lines; "Cancel"
// changes nothing.
#include <windows.h>

#include <string>

#include "addressspace/AddressSpaceCsv.h"
#include "common/Window.h"
#include "common/ui/DialogAnchors.h"
#include "common/ui/ReportList.h"

class CdlgCsvImport : public CL::CDialog, private CL::IReportRows {
public:
    CdlgCsvImport(const CL::CsvImportPlan& plan, std::wstring fileName);

    // The choice, read when the dialog closes with IDOK.
    bool updateExisting = false;
    // The report of a paste: captioned "Paste", without the update choice
    // (a paste never changes an existing item).
    bool pasting = false;

    // IDOK ("Import") or IDCANCEL.
    INT_PTR DoModal(HWND owner);

    // The summary line above the list.
    static std::wstring Summary(const CL::CsvImportPlan& plan, const std::wstring& fileName);
    static std::wstring WorkbookSummary(const CL::CsvImportPlan& plan, const std::wstring& fileName);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnDpiChanged() override { m_list.OnDpiChanged(); }

private:
    // IReportRows over the rejected lines: "Line" sorts as a number.
    size_t RowCount() const override;
    std::wstring CellText(size_t row, int column) const override;
    bool ComparesByText(int column) const override { return column != 0; }
    bool Less(size_t a, size_t b, int column) const override;

    const CL::CsvRejectedLine& Entry(size_t row) const;

    const CL::CsvImportPlan& m_plan;
    std::wstring m_fileName;
    CL::CReportList m_list;
    CL::CDialogAnchors m_anchors;
};
