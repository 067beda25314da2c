// Export Workbook and Import Workbook in the address space editor: the
// address space to and from an Excel workbook (.xlsx) whose cells carry
// their types (AddressSpaceWorkbook.h). The import shows the CSV import's
// report and is one undoable step.
#include "addressspace/MainFrm.h"

#include <commdlg.h>
#include <shlwapi.h>

#include <memory>

#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "addressspace/ReplaceModelCommand.h"
#include "addressspace/dlgCsvImport.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/FileBytes.h"
#include "common/Text.h"
#include "common/ui/FileDialog.h"
#include "common/ui/WaitCursor.h"
#include "res/resource.h"

namespace {

constexpr wchar_t kWorkbookFilter[] = L"Excel Workbook (*.xlsx)\0*.xlsx\0All files (*.*)\0*.*\0";

} // namespace

void CMainFrame::OnFileExportWorkbook()
{
    Log(3, "CMainFrame::OnFileExportWorkbook" + MV_POS());
    CL::RunReported([this] {
        OPENFILENAMEW ofn = {};
        ofn.lStructSize = sizeof ofn;
        ofn.hwndOwner = Hwnd();
        ofn.lpstrFilter = kWorkbookFilter;
        ofn.nFilterIndex = 1;
        ofn.lpstrFile = m_workbookPath;
        ofn.nMaxFile = static_cast<DWORD>(std::size(m_workbookPath));
        ofn.lpstrTitle = L"Export Workbook";
        // A name typed without an extension gets ".xlsx" (before the
        // dialog's own question whether to replace a file).
        ofn.lpstrDefExt = L"xlsx";
        ofn.Flags = OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOREADONLYRETURN;
        if (!::GetSaveFileNameW(&ofn))
            return;
        CL::CWaitCursor wait;
        CL::ExportAddressSpaceWorkbook(*m_document.Model(), m_workbookPath);
    });
}

void CMainFrame::OnFileImportWorkbook()
{
    Log(3, "CMainFrame::OnFileImportWorkbook" + MV_POS());
    CL::RunReported([this] {
        if (!CL::AskOpenFileName(Hwnd(), kWorkbookFilter, L"Import Workbook", m_workbookPath,
                                 std::size(m_workbookPath)))
            return;
        CL::CsvImportPlan plan;
        {
            CL::CWaitCursor wait;
            const std::string bytes = CL::ReadWholeFile(m_workbookPath);
            plan = CL::ReadAddressSpaceWorkbook(bytes, NewItemDefaults());
        }
        ImportPlan(plan, ::PathFindFileNameW(m_workbookPath), L"Import Workbook", L"Workbook import");
    });
}
