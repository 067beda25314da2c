#include "config/dlgDbOptions.h"

#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "config/NumberText.h"
#include "res/resource.h"

using CL::Checked;
using CL::ItemText;
using CL::SetChecked;

INT_PTR CdlgDbOptions::DoModal(HWND owner)
{
    return CL::CDialog::DoModal(owner, IDD_DBOPTIONS);
}

BOOL CdlgDbOptions::OnInitDialog()
{
    Log(3, "CdlgDbOptions::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        const HICON icon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
        ShowChecks();
        ShowNumbers();
        EnableNumberEdits();
    });
    return TRUE;
}

INT_PTR CdlgDbOptions::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CLOSE) {
        OnClose();
        return TRUE;
    }
    return CL::CDialog::DialogProc(message, wParam, lParam);
}

bool CdlgDbOptions::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    if (code != BN_CLICKED)
        return false;
    switch (id) {
    case IDC_CH_KEEP_ALL:
        OnBnKeepAllClicked();
        return true;
    case IDC_CH_KEEP_NUMBER:
        OnBnKeepNumberClicked();
        return true;
    case IDC_CH_KEEP_MINUTES:
        OnBnKeepMinutesClicked();
        return true;
    case IDOK:
        OnClickedOK();
        return true;
    case IDCANCEL:
        OnClickedCancel();
        return true;
    default:
        return false;
    }
}

// Turning keep-all off turns both limits on; turning it on turns both off.
void CdlgDbOptions::OnBnKeepAllClicked()
{
    Log(3, "CdlgDbOptions::OnBnKeepAllClicked" + MV_POS());
    CL::RunReported([this] {
        ReadChecks();
        m_values.KeepLast = !m_values.KeepAll;
        m_values.KeepMinutes = !m_values.KeepAll;
        EnableNumberEdits();
        ShowChecks();
    });
}

void CdlgDbOptions::OnBnKeepNumberClicked()
{
    Log(3, "CdlgDbOptions::OnBnKeepNumberClicked" + MV_POS());
    CL::RunReported([this] {
        ReadChecks();
        m_values.KeepAll = !m_values.KeepLast && !m_values.KeepMinutes;
        EnableNumberEdits();
        ShowChecks();
    });
}

void CdlgDbOptions::OnBnKeepMinutesClicked()
{
    Log(3, "CdlgDbOptions::OnBnKeepMinutesClicked" + MV_POS());
    CL::RunReported([this] {
        ReadChecks();
        m_values.KeepAll = !m_values.KeepLast && !m_values.KeepMinutes;
        EnableNumberEdits();
        ShowChecks();
    });
}

// The numbers are read in screen order; the first that is not a number
// keeps its old value, gets the focus and ends the reading, and the dialog
// closes with OK all the same (the options dialog refuses the value).
void CdlgDbOptions::OnClickedOK()
{
    Log(3, "CdlgDbOptions::OnClickedOK" + MV_POS());
    CL::RunReported([this] {
        ReadChecks();
        m_values.BadNumberField = 0;
        if (ReadNumber(IDC_ED_KEEP_NUMBER, m_values.LastValues) &&
            ReadNumber(IDC_ED_KEEP_MINUTES, m_values.LastMinutes))
            ReadNumber(IDC_ED_DELETE_PERCENT, m_values.DeletePercent);
        EndDialog(IDOK);
    });
}

void CdlgDbOptions::OnClickedCancel()
{
    Log(3, "CdlgDbOptions::OnClickedCancel" + MV_POS());
    CL::RunReported([this] {
        m_values = m_given;
        EndDialog(IDCANCEL);
    });
}

void CdlgDbOptions::OnClose()
{
    Log(3, "CdlgDbOptions::OnClose" + MV_POS());
    CL::RunReported([this] {
        m_values = m_given;
        EndDialog(IDCANCEL);
    });
}

void CdlgDbOptions::ShowChecks()
{
    SetChecked(Hwnd(), IDC_CH_KEEP_ALL, m_values.KeepAll);
    SetChecked(Hwnd(), IDC_CH_KEEP_NUMBER, m_values.KeepLast);
    SetChecked(Hwnd(), IDC_CH_KEEP_MINUTES, m_values.KeepMinutes);
}

void CdlgDbOptions::ShowNumbers()
{
    ::SetDlgItemInt(Hwnd(), IDC_ED_KEEP_NUMBER, static_cast<UINT>(m_values.LastValues), TRUE);
    ::SetDlgItemInt(Hwnd(), IDC_ED_KEEP_MINUTES, static_cast<UINT>(m_values.LastMinutes), TRUE);
    ::SetDlgItemInt(Hwnd(), IDC_ED_DELETE_PERCENT, static_cast<UINT>(m_values.DeletePercent), TRUE);
}

void CdlgDbOptions::ReadChecks()
{
    m_values.KeepAll = Checked(Hwnd(), IDC_CH_KEEP_ALL);
    m_values.KeepLast = Checked(Hwnd(), IDC_CH_KEEP_NUMBER);
    m_values.KeepMinutes = Checked(Hwnd(), IDC_CH_KEEP_MINUTES);
}

void CdlgDbOptions::EnableNumberEdits()
{
    ::EnableWindow(GetDlgItem(IDC_ED_KEEP_NUMBER), m_values.KeepLast);
    ::EnableWindow(GetDlgItem(IDC_ED_KEEP_MINUTES), m_values.KeepMinutes);
}

bool CdlgDbOptions::ReadNumber(int id, long& value)
{
    if (CL::ParseSignedDecimal(ItemText(Hwnd(), id), value))
        return true;
    m_values.BadNumberField = id;
    ::SendMessageW(Hwnd(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(id)), TRUE);
    return false;
}
