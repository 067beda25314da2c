#pragma once
// CdlgChangeHistory: "Change History", the change journal newest first,
// narrowed by a filter as the explorer's list is. The selected entry's
// details are shown below the list. For an address space save: compare
// that version with the one before it, with the editor's address space or
// with the server's address space now, and "Restore..." takes it into the
// editor as one undoable change. For a settings change: the attributes
// changed and the backup; "Restore..." opens the Options dialog filled from
// the backup. "Versions Kept..." sets how many address space versions are
// kept.
#include <string>

#include "addressspace/AddressSpaceVersions.h"
#include "addressspace/VersionRetention.h"
#include "app/ChangeHistoryActions.h"
#include "app/ChangeHistoryRows.h"
#include "common/Window.h"
#include "common/ui/DialogAnchors.h"
#include "common/ui/ReportList.h"

namespace CL {

class CdlgChangeHistory : public CDialog {
public:
    CdlgChangeHistory(CChangeJournal& journal, const std::wstring& exchangeFile, CVersionRetention retention,
                      ChangeHistoryActions actions);

    INT_PTR DoModal(HWND owner);
    // The modeless window (tests and screenshots).
    HWND Create(HWND owner);

    const CChangeHistoryRows& Rows() const { return m_rows; }
    // Reads the journal again (after a restore applied new settings).
    void Reload();

    // The questions asked before a restore.
    static std::wstring RestoreVersionQuestion(const std::wstring& version);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void ShowCount();
    void ShowSelected();
    // The selected row, or -1.
    long long SelectedRow() const;
    void OnComparePrevious();
    void OnCompareEditor();
    void OnCompareServer();
    void OnRestore();
    void OnRetention();

    CChangeJournal& m_journal;
    CAddressSpaceVersions m_versions;
    CVersionRetention m_retention;
    ChangeHistoryActions m_actions;
    CChangeHistoryRows m_rows;
    CReportList m_list;
    CDialogAnchors m_anchors;
};

} // namespace CL
