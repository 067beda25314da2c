#include "addressspace/dlgCsvImport.h"

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "res/resource.h"

CdlgCsvImport::CdlgCsvImport(const CL::CsvImportPlan& plan, std::wstring fileName)
    : m_plan(plan), m_fileName(std::move(fileName))
{
}

INT_PTR CdlgCsvImport::DoModal(HWND owner)
{
    return CDialog::DoModal(owner, IDD_CSV_IMPORT);
}

std::wstring CdlgCsvImport::Summary(const CL::CsvImportPlan& plan, const std::wstring& fileName)
{
    if (plan.workbook)
        return WorkbookSummary(plan, fileName);
    std::wstring text = CL::Format(L"%zu item(s) can be imported from \"%ls\".", plan.items.size(), fileName.c_str());
    if (plan.rejected.empty())
        text += L" Every line can be taken.";
    else
        text += CL::Format(L" %zu line(s) cannot be taken; they are listed below and left out of the import.",
                           plan.rejected.size());
    if (plan.separator == L';')
        text += L" Separator: semicolon (decimal commas read as points).";
    else if (plan.separator == L'\t')
        text += L" Separator: tab (decimal commas read as points).";
    else
        text += L" Separator: comma.";
    return text;
}

std::wstring CdlgCsvImport::WorkbookSummary(const CL::CsvImportPlan& plan, const std::wstring& fileName)
{
    std::wstring text = CL::Format(L"%zu item(s) can be imported from the first sheet of \"%ls\".", plan.items.size(),
                                   fileName.c_str());
    if (plan.rejected.empty())
        text += L" Every row can be taken.";
    else
        text += CL::Format(L" %zu row(s) cannot be taken; they are listed below and left out of the import.",
                           plan.rejected.size());
    if (!plan.notes.empty())
        text += CL::Format(L" %zu row(s) held formulas: their stored results are taken (listed below).",
                           plan.notes.size());
    return text;
}

BOOL CdlgCsvImport::OnInitDialog()
{
    Log(3, "CdlgCsvImport::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        ::SetDlgItemTextW(Hwnd(), IDC_CSV_SUMMARY, Summary(m_plan, m_fileName).c_str());
        m_list.Attach(GetDlgItem(IDC_CSV_REJECTED));
        m_list.SetColumns({{m_plan.workbook ? L"Row" : L"Line", 60}, {L"Reason", 400}});
        if (m_plan.workbook) {
            ::SetWindowTextW(Hwnd(), L"Import Workbook");
            ::SetDlgItemTextW(Hwnd(), IDC_CSV_REJECTED_LABEL, L"&Rows that cannot be taken, and rows taken with a note:");
        }
        m_list.SetRows(this);
        CL::SetChecked(Hwnd(), IDC_CSV_UPDATE, updateExisting);
        if (pasting) {
            ::SetWindowTextW(Hwnd(), L"Paste");
            ::SetDlgItemTextW(Hwnd(), IDOK, L"&Paste");
            ::ShowWindow(GetDlgItem(IDC_CSV_UPDATE), SW_HIDE);
        }
        ::EnableWindow(GetDlgItem(IDOK), !m_plan.items.empty());
        if (m_plan.items.empty())
            ::SendMessageW(Hwnd(), DM_SETDEFID, IDCANCEL, 0);
        m_anchors.Add(IDC_CSV_SUMMARY, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_CSV_REJECTED_LABEL, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_CSV_REJECTED, CL::CDialogAnchors::kStretchX | CL::CDialogAnchors::kStretchY);
        m_anchors.Add(IDC_CSV_UPDATE, CL::CDialogAnchors::kStretchX | CL::CDialogAnchors::kBottom);
        m_anchors.Add(IDOK, CL::CDialogAnchors::kRight | CL::CDialogAnchors::kBottom);
        m_anchors.Add(IDCANCEL, CL::CDialogAnchors::kRight | CL::CDialogAnchors::kBottom);
        m_anchors.Capture(Hwnd());
    });
    return TRUE;
}

bool CdlgCsvImport::OnCommand(WORD id, WORD /*code*/, HWND /*control*/)
{
    if (id != IDOK && id != IDCANCEL)
        return false;
    updateExisting = CL::Checked(Hwnd(), IDC_CSV_UPDATE);
    EndDialog(id);
    return true;
}

INT_PTR CdlgCsvImport::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_anchors.OnMessage(message, lParam))
        return TRUE;
    switch (message) {
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (m_list.OnNotify(reinterpret_cast<NMHDR*>(lParam), &result)) {
            ::SetWindowLongPtrW(Hwnd(), DWLP_MSGRESULT, result);
            return TRUE;
        }
        return FALSE;
    }
    case WM_SYSCOLORCHANGE:
        m_list.OnSysColorChange();
        return FALSE;
    default:
        return CDialog::DialogProc(message, wParam, lParam);
    }
}

// The rejected lines, then the rows taken with a note.
const CL::CsvRejectedLine& CdlgCsvImport::Entry(size_t row) const
{
    return row < m_plan.rejected.size() ? m_plan.rejected.at(row) : m_plan.notes.at(row - m_plan.rejected.size());
}

size_t CdlgCsvImport::RowCount() const
{
    return m_plan.rejected.size() + m_plan.notes.size();
}

std::wstring CdlgCsvImport::CellText(size_t row, int column) const
{
    const CL::CsvRejectedLine& line = Entry(row);
    return column == 0 ? std::to_wstring(line.line) : line.reason;
}

bool CdlgCsvImport::Less(size_t a, size_t b, int column) const
{
    if (column == 0)
        return Entry(a).line < Entry(b).line;
    return IReportRows::Less(a, b, column);
}
