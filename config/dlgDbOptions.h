#pragma once
// CdlgDbOptions: the modal "Database Maintenance Options" dialog. It edits
// the options dialog's copy of the historian retention values: the keep-all,
// keep-last and keep-minutes check boxes (keep-last and keep-minutes may both
// be on; keep-all is on exactly when neither is), the two limits and the
// percentage deleted when the internal database is full. The values reach
// the settings only through the options dialog's OK.
#include "common/Window.h"
#include "config/DbRetention.h"

class CdlgDbOptions : public CL::CDialog {
public:
    explicit CdlgDbOptions(const CDbRetention& values) : m_given(values), m_values(values) {}

    INT_PTR DoModal(HWND owner);
    // The values given; after OK, the values read from the controls.
    const CDbRetention& Values() const { return m_values; }

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnBnKeepAllClicked();
    void OnBnKeepNumberClicked();
    void OnBnKeepMinutesClicked();
    void OnClickedOK();
    void OnClickedCancel();
    void OnClose();

    void ShowChecks();
    void ShowNumbers();
    void ReadChecks();
    void EnableNumberEdits();
    // Reads one number edit; on text that is not a number marks the field,
    // puts the focus on it and returns false.
    bool ReadNumber(int id, long& value);

    const CDbRetention m_given;   // what Cancel hands back
    CDbRetention m_values;        // what the controls show
};
