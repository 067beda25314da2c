#include "addressspace/dlgVersionRetention.h"

#include <commctrl.h>

#include "common/ChangeJournal.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "res/resource.h"

namespace {

constexpr wchar_t kCaption[] = L"Address Space Versions";

} // namespace

CdlgVersionRetention::CdlgVersionRetention(const CVersionRetention& retention, const CAddressSpaceVersions& versions,
                                           CL::CChangeJournal& journal)
    : m_retention(retention), m_versions(versions), m_journal(journal)
{
}

INT_PTR CdlgVersionRetention::DoModal(HWND owner)
{
    return CDialog::DoModal(owner, IDD_VERSION_RETENTION);
}

std::wstring CdlgVersionRetention::ChangeDetails(unsigned before, unsigned after, size_t removed)
{
    std::wstring details = L"Address space versions: keep " + CVersionRetention::Describe(after) + L" (was: " +
                           CVersionRetention::Describe(before) + L").";
    if (removed)
        details += L" " + std::to_wstring(removed) + L" old version(s) removed.";
    return details;
}

BOOL CdlgVersionRetention::OnInitDialog()
{
    Log(3, "CdlgVersionRetention::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        ::SendDlgItemMessageW(Hwnd(), IDC_RETENTION_SPIN, UDM_SETRANGE32, 0, CVersionRetention::kMostKept);
        ::SetDlgItemInt(Hwnd(), IDC_RETENTION_COUNT, m_retention.Kept(), FALSE);
        ::SendDlgItemMessageW(Hwnd(), IDC_RETENTION_COUNT, EM_SETSEL, 0, -1);
    });
    return TRUE;
}

bool CdlgVersionRetention::OnCommand(WORD id, WORD /*code*/, HWND /*control*/)
{
    switch (id) {
    case IDOK:
        OnOK();
        return true;
    case IDCANCEL:
        EndDialog(IDCANCEL);
        return true;
    default:
        return false;
    }
}

void CdlgVersionRetention::OnOK()
{
    Log(3, "CdlgVersionRetention::OnOK" + MV_POS());
    CL::RunReported([this] {
        BOOL ok = FALSE;
        const UINT kept = ::GetDlgItemInt(Hwnd(), IDC_RETENTION_COUNT, &ok, FALSE);
        if (!ok || kept > CVersionRetention::kMostKept) {
            ::MessageBoxW(Hwnd(),
                          CL::Format(L"Please, enter a whole number from 0 to %u.", CVersionRetention::kMostKept)
                              .c_str(),
                          kCaption, MB_OK | MB_ICONEXCLAMATION);
            ::SetFocus(GetDlgItem(IDC_RETENTION_COUNT));
            return;
        }
        const unsigned before = m_retention.Kept();
        if (kept != before) {
            m_retention.SetKept(kept);
            const size_t removed = m_versions.ApplyRetention(kept).size();
            m_journal.Record(CL::kJournalRetentionChanged, ChangeDetails(before, kept, removed));
        }
        EndDialog(IDOK);
    });
}
