#include "historian/dlgTimePeriod.h"

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "historian/PickerTime.h"
#include "res/resource.h"

INT_PTR CdlgTimePeriod::DoModal(HWND owner)
{
    CL::RegisterHistorianControlClasses();
    return CL::CDialog::DoModal(owner, IDD_TIMEPERIOD);
}

BOOL CdlgTimePeriod::OnInitDialog()
{
    Log(3, "CdlgTimePeriod::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        const HICON icon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
        if (!m_caption.empty())
            ::SetWindowTextW(Hwnd(), m_caption.c_str());
        const HWND from = GetDlgItem(IDC_TIMEPERIOD_FROM);
        const HWND to = GetDlgItem(IDC_TIMEPERIOD_TO);
        CL::SetPickerFormat(from);
        CL::SetPickerFormat(to);
        CL::SetPickerDate(from, m_from);
        CL::SetPickerDate(to, m_to);
        ::CheckDlgButton(Hwnd(), IDC_TIMEPERIOD_CHK_FROM, m_useFrom ? BST_CHECKED : BST_UNCHECKED);
        ::CheckDlgButton(Hwnd(), IDC_TIMEPERIOD_CHK_TO, m_useTo ? BST_CHECKED : BST_UNCHECKED);
        ::EnableWindow(from, m_useFrom);
        ::EnableWindow(to, m_useTo);
    });
    return TRUE;
}

bool CdlgTimePeriod::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    switch (id) {
    case IDC_TIMEPERIOD_CHK_FROM:
        if (code == BN_CLICKED)
            OnBnClickedChkFrom();
        return true;
    case IDC_TIMEPERIOD_CHK_TO:
        if (code == BN_CLICKED)
            OnBnClickedChkTo();
        return true;
    case IDOK:
    case IDCANCEL:
        OnCloseCmd(id);
        return true;
    default:
        return false;
    }
}

void CdlgTimePeriod::SyncBound(int checkId, int pickerId, bool& flag)
{
    flag = ::IsDlgButtonChecked(Hwnd(), checkId) == BST_CHECKED;
    ::EnableWindow(GetDlgItem(pickerId), flag);
}

void CdlgTimePeriod::OnBnClickedChkFrom()
{
    Log(3, "CdlgTimePeriod::OnBnClickedChkFrom" + MV_POS());
    CL::RunReported([this] { SyncBound(IDC_TIMEPERIOD_CHK_FROM, IDC_TIMEPERIOD_FROM, m_useFrom); });
}

void CdlgTimePeriod::OnBnClickedChkTo()
{
    Log(3, "CdlgTimePeriod::OnBnClickedChkTo" + MV_POS());
    CL::RunReported([this] { SyncBound(IDC_TIMEPERIOD_CHK_TO, IDC_TIMEPERIOD_TO, m_useTo); });
}

// OK and Cancel alike read every control back, then end with the button.
void CdlgTimePeriod::OnCloseCmd(WORD id)
{
    Log(3, "CdlgTimePeriod::OnCloseCmd" + MV_POS());
    CL::RunReported([this] {
        m_from = CL::GetPickerDate(GetDlgItem(IDC_TIMEPERIOD_FROM));
        m_to = CL::GetPickerDate(GetDlgItem(IDC_TIMEPERIOD_TO));
        m_useFrom = ::IsDlgButtonChecked(Hwnd(), IDC_TIMEPERIOD_CHK_FROM) == BST_CHECKED;
        m_useTo = ::IsDlgButtonChecked(Hwnd(), IDC_TIMEPERIOD_CHK_TO) == BST_CHECKED;
    });
    EndDialog(id);
}
