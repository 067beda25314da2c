#pragma once
// CdlgTimePeriod: the modal dialog "Delete selected items values from
// database" in which the user chooses the period of values to delete. The
// caller presets from, to and the two flags, runs it, and reads them back
// when it ends with OK. The dialog converts nothing (local time in, local
// time out) and validates nothing: a From after To is accepted as it is.
#include <windows.h>

#include <string>

#include "common/Window.h"

class CdlgTimePeriod : public CL::CDialog {
public:
    double m_from = 0.0;     // OLE date, local time
    double m_to = 0.0;       // OLE date, local time
    bool m_useFrom = true;
    bool m_useTo = true;
    // A caption for another use of the dialog (the export); empty keeps the
    // template's caption.
    std::wstring m_caption;

    // Runs the dialog; returns IDOK or IDCANCEL (or -1 when it cannot be shown).
    INT_PTR DoModal(HWND owner);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    void OnBnClickedChkFrom();
    void OnBnClickedChkTo();
    void OnCloseCmd(WORD id);
    // Reads the check box into its flag and enables its picker to match.
    void SyncBound(int checkId, int pickerId, bool& flag);
};
