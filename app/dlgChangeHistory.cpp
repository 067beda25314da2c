#include "app/dlgChangeHistory.h"

#include "addressspace/dlgVersionRetention.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "common/ui/AccessibleName.h"
#include "common/ui/WaitCursor.h"
#include "res/resource.h"

namespace CL {

namespace {

constexpr wchar_t kCaption[] = L"Change History";

bool FileExists(const std::wstring& path)
{
    return !path.empty() && ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring NameOf(const std::wstring& path)
{
    const size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? path : path.substr(slash + 1);
}

} // namespace

CdlgChangeHistory::CdlgChangeHistory(CChangeJournal& journal, const std::wstring& exchangeFile,
                                     CVersionRetention retention, ChangeHistoryActions actions)
    : m_journal(journal), m_versions(exchangeFile), m_retention(std::move(retention)), m_actions(std::move(actions))
{
}

INT_PTR CdlgChangeHistory::DoModal(HWND owner)
{
    return CDialog::DoModal(owner, IDD_CHANGE_HISTORY);
}

HWND CdlgChangeHistory::Create(HWND owner)
{
    return CDialog::Create(owner, IDD_CHANGE_HISTORY);
}

std::wstring CdlgChangeHistory::RestoreVersionQuestion(const std::wstring& version)
{
    return L"Do you want to take the address space version " + NameOf(version) +
           L" into the editor?\n\nIt replaces the editor's address space as one change that Undo takes back; "
           L"the server gets it only when you save.";
}

BOOL CdlgChangeHistory::OnInitDialog()
{
    Log(3, "CdlgChangeHistory::OnInitDialog" + MV_POS());
    RunReported([this] {
        const HICON icon = ::LoadIconW(ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
        m_list.Attach(GetDlgItem(IDC_HISTORY_LIST));
        // The list is spoken with the count of changes above it.
        CAccessibleName::SetLabel(m_list, GetDlgItem(IDC_HISTORY_COUNT), L"Changes");
        m_list.SetColumns({{L"Time (UTC)", 140}, {L"Action", 140}, {L"Account", 110}, {L"Computer", 90},
                           {L"Details", 400}});
        m_list.SetRows(&m_rows);
        using A = CDialogAnchors;
        m_anchors.Add(IDC_HISTORY_FILTER, A::kStretchX);
        m_anchors.Add(IDC_HISTORY_COUNT, A::kRight);
        m_anchors.Add(IDC_HISTORY_LIST, A::kStretchX | A::kStretchY);
        m_anchors.Add(IDC_HISTORY_DETAILS_LABEL, A::kBottom);
        m_anchors.Add(IDC_HISTORY_DETAILS, A::kStretchX | A::kBottom);
        for (int id : {IDC_HISTORY_COMPARE_PREV, IDC_HISTORY_COMPARE_EDITOR, IDC_HISTORY_COMPARE_SERVER,
                       IDC_HISTORY_RESTORE, IDC_HISTORY_RETENTION})
            m_anchors.Add(id, A::kBottom);
        m_anchors.Add(IDCANCEL, A::kRight | A::kBottom);
        m_anchors.Capture(Hwnd());
        Reload();
    });
    return TRUE;
}

void CdlgChangeHistory::Reload()
{
    CWaitCursor wait;
    m_rows.Assign(m_journal.ReadAll());
    m_list.Reset();
    if (m_rows.RowCount())
        m_list.Select(0);
    ShowCount();
    ShowSelected();
}

void CdlgChangeHistory::ShowCount()
{
    const std::wstring text =
        m_rows.RowCount() == m_rows.TotalCount()
            ? Format(L"%zu change(s)", m_rows.TotalCount())
            : Format(L"%zu of %zu change(s)", m_rows.RowCount(), m_rows.TotalCount());
    ::SetDlgItemTextW(Hwnd(), IDC_HISTORY_COUNT, text.c_str());
}

long long CdlgChangeHistory::SelectedRow() const
{
    const std::vector<size_t> selected = m_list.SelectedRows();
    return selected.empty() ? -1 : static_cast<long long>(selected.front());
}

void CdlgChangeHistory::ShowSelected()
{
    const long long row = SelectedRow();
    const CJournalEntry* entry = row < 0 ? nullptr : &m_rows.Entry(static_cast<size_t>(row));
    ::SetDlgItemTextW(Hwnd(), IDC_HISTORY_DETAILS,
                      entry ? CChangeHistoryRows::DetailText(*entry).c_str() : L"");
    const bool space = entry && CChangeHistoryRows::IsAddressSpaceEntry(*entry) && FileExists(entry->file);
    const bool settings = entry && CChangeHistoryRows::IsSettingsEntry(*entry) && FileExists(entry->file);
    const bool previous = space && FileExists(m_rows.PreviousVersion(static_cast<size_t>(row)));
    ::EnableWindow(GetDlgItem(IDC_HISTORY_COMPARE_PREV), previous && m_actions.compareFiles);
    ::EnableWindow(GetDlgItem(IDC_HISTORY_COMPARE_EDITOR), space && m_actions.compareWithEditor);
    ::EnableWindow(GetDlgItem(IDC_HISTORY_COMPARE_SERVER), space && m_actions.compareWithServer);
    ::EnableWindow(GetDlgItem(IDC_HISTORY_RESTORE),
                   (space && m_actions.restoreAddressSpace) || (settings && m_actions.restoreSettings));
}

bool CdlgChangeHistory::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    switch (id) {
    case IDC_HISTORY_FILTER:
        if (code == EN_CHANGE) {
            Log(3, "CdlgChangeHistory::OnFilterChange" + MV_POS());
            RunReported([this] {
                m_rows.SetFilter(WindowText(GetDlgItem(IDC_HISTORY_FILTER)));
                m_list.Reset();
                if (m_rows.RowCount())
                    m_list.Select(0, false);
                ShowCount();
                ShowSelected();
            });
        }
        return true;
    case IDC_HISTORY_COMPARE_PREV:
        OnComparePrevious();
        return true;
    case IDC_HISTORY_COMPARE_EDITOR:
        OnCompareEditor();
        return true;
    case IDC_HISTORY_COMPARE_SERVER:
        OnCompareServer();
        return true;
    case IDC_HISTORY_RESTORE:
        OnRestore();
        return true;
    case IDC_HISTORY_RETENTION:
        OnRetention();
        return true;
    case IDCANCEL:
        EndDialog(IDCANCEL);
        return true;
    default:
        return false;
    }
}

void CdlgChangeHistory::OnComparePrevious()
{
    Log(3, "CdlgChangeHistory::OnComparePrevious" + MV_POS());
    RunReported([this] {
        const long long row = SelectedRow();
        if (row < 0 || !m_actions.compareFiles)
            return;
        m_actions.compareFiles(Hwnd(), m_rows.PreviousVersion(static_cast<size_t>(row)),
                               m_rows.Entry(static_cast<size_t>(row)).file);
    });
}

void CdlgChangeHistory::OnCompareEditor()
{
    Log(3, "CdlgChangeHistory::OnCompareEditor" + MV_POS());
    RunReported([this] {
        const long long row = SelectedRow();
        if (row >= 0 && m_actions.compareWithEditor)
            m_actions.compareWithEditor(Hwnd(), m_rows.Entry(static_cast<size_t>(row)).file);
    });
}

void CdlgChangeHistory::OnCompareServer()
{
    Log(3, "CdlgChangeHistory::OnCompareServer" + MV_POS());
    RunReported([this] {
        const long long row = SelectedRow();
        if (row >= 0 && m_actions.compareWithServer)
            m_actions.compareWithServer(Hwnd(), m_rows.Entry(static_cast<size_t>(row)).file);
    });
}

void CdlgChangeHistory::OnRestore()
{
    Log(3, "CdlgChangeHistory::OnRestore" + MV_POS());
    RunReported([this] {
        const long long row = SelectedRow();
        if (row < 0)
            return;
        const CJournalEntry entry = m_rows.Entry(static_cast<size_t>(row));
        if (CChangeHistoryRows::IsAddressSpaceEntry(entry) && m_actions.restoreAddressSpace) {
            if (::MessageBoxW(Hwnd(), RestoreVersionQuestion(entry.file).c_str(), L"Restore",
                              MB_YESNOCANCEL | MB_ICONQUESTION) != IDYES)
                return;
            // The editor shows the version taken back: this window steps aside.
            if (m_actions.restoreAddressSpace(Hwnd(), entry.file))
                EndDialog(IDOK);
        } else if (CChangeHistoryRows::IsSettingsEntry(entry) && m_actions.restoreSettings) {
            if (m_actions.restoreSettings(Hwnd(), entry.file))
                Reload();
        }
    });
}

void CdlgChangeHistory::OnRetention()
{
    Log(3, "CdlgChangeHistory::OnRetention" + MV_POS());
    RunReported([this] {
        CdlgVersionRetention dialog(m_retention, m_versions, m_journal);
        if (dialog.DoModal(Hwnd()) == IDOK)
            Reload();
    });
}

INT_PTR CdlgChangeHistory::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_anchors.OnMessage(message, lParam))
        return TRUE;
    switch (message) {
    case WM_NOTIFY: {
        auto* header = reinterpret_cast<NMHDR*>(lParam);
        LRESULT result = 0;
        if (m_list.OnNotify(header, &result)) {
            ::SetWindowLongPtrW(Hwnd(), DWLP_MSGRESULT, result);
            return TRUE;
        }
        if (header->idFrom == IDC_HISTORY_LIST && header->code == LVN_ITEMCHANGED) {
            const auto* change = reinterpret_cast<NMLISTVIEW*>(lParam);
            if ((change->uChanged & LVIF_STATE) && ((change->uNewState ^ change->uOldState) & LVIS_SELECTED))
                RunReported([this] { ShowSelected(); });
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

} // namespace CL
