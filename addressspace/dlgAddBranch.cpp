#include "addressspace/dlgAddBranch.h"

#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "res/resource.h"

INT_PTR CdlgAddBranch::DoModal(HWND owner)
{
    return CL::CDialog::DoModal(owner, IDD_ADDBRANCH);
}

BOOL CdlgAddBranch::OnInitDialog()
{
    Log(3, "CdlgAddBranch::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        ::SetWindowTextW(Hwnd(), addMode ? L"Add Branch" : L"Branch properties");
        ::SetDlgItemTextW(Hwnd(), IDC_BRANCH_NAME, name.c_str());
        ::SetDlgItemTextW(Hwnd(), IDC_BRANCH_PARENT, parent.c_str());
        // Saving and starting the next branch belongs to adding only.
        ::EnableWindow(GetDlgItem(IDC_SAVE_AND_NEW), addMode);
    });
    return TRUE;
}

bool CdlgAddBranch::OnCommand(WORD id, WORD /*code*/, HWND /*control*/)
{
    switch (id) {
    case IDOK:
    case IDC_SAVE_AND_NEW:
        OnClickedSave(id);
        return true;
    case IDCANCEL:
        OnClickedCancel();
        return true;
    default:
        return false;
    }
}

void CdlgAddBranch::OnClickedSave(WORD id)
{
    Log(3, "CdlgAddBranch::OnClickedOK" + MV_POS());
    CL::RunReported([this, id] {
        if (::IsWindowEnabled(GetDlgItem(id)) == FALSE)
            return;
        name = CL::ItemText(Hwnd(), IDC_BRANCH_NAME);
        EndDialog(id);
    });
}

void CdlgAddBranch::OnClickedCancel()
{
    Log(3, "CdlgAddBranch::OnClickedCancel" + MV_POS());
    CL::RunReported([this] { EndDialog(IDCANCEL); });
}
