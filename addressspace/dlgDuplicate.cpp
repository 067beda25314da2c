#include "addressspace/dlgDuplicate.h"

#include <commctrl.h>

#include "addressspace/DuplicateCommand.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "res/resource.h"

CdlgDuplicate::CdlgDuplicate(std::wstring itemName, Namer namer)
    : m_itemName(std::move(itemName)), m_namer(std::move(namer))
{
}

INT_PTR CdlgDuplicate::DoModal(HWND owner)
{
    return CDialog::DoModal(owner, IDD_DUPLICATE);
}

std::wstring CdlgDuplicate::Preview(const std::vector<std::wstring>& names)
{
    if (names.empty())
        return L"Type a number of copies from 1 to 10,000.";
    if (names.size() == 1)
        return L"The copy will be named " + names.front() + L".";
    return L"The copies will be named " + names.front() + L" ... " + names.back() + L".";
}

BOOL CdlgDuplicate::OnInitDialog()
{
    Log(3, "CdlgDuplicate::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        ::SetDlgItemTextW(Hwnd(), IDC_DUPLICATE_ITEM, m_itemName.c_str());
        ::SendDlgItemMessageW(Hwnd(), IDC_DUPLICATE_SPIN, UDM_SETRANGE32, 1, CDuplicateCommand::kMaxCopies);
        ::SetDlgItemInt(Hwnd(), IDC_DUPLICATE_COUNT, static_cast<UINT>(count), FALSE);
        UpdatePreview();
    });
    return TRUE;
}

size_t CdlgDuplicate::TypedCount() const
{
    BOOL ok = FALSE;
    const UINT typed = ::GetDlgItemInt(Hwnd(), IDC_DUPLICATE_COUNT, &ok, FALSE);
    return ok && typed >= 1 && typed <= CDuplicateCommand::kMaxCopies ? typed : 0;
}

void CdlgDuplicate::UpdatePreview()
{
    const size_t typed = TypedCount();
    const std::vector<std::wstring> names = typed ? m_namer(typed) : std::vector<std::wstring>();
    ::SetDlgItemTextW(Hwnd(), IDC_DUPLICATE_PREVIEW, Preview(names).c_str());
    ::EnableWindow(GetDlgItem(IDOK), typed != 0);
}

bool CdlgDuplicate::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    switch (id) {
    case IDC_DUPLICATE_COUNT:
        if (code == EN_CHANGE)
            CL::RunReported([this] { UpdatePreview(); });
        return true;
    case IDOK:
        Log(3, "CdlgDuplicate::OnOK" + MV_POS());
        CL::RunReported([this] {
            count = TypedCount();
            if (count != 0)
                EndDialog(IDOK);
        });
        return true;
    case IDCANCEL:
        EndDialog(IDCANCEL);
        return true;
    default:
        return false;
    }
}
