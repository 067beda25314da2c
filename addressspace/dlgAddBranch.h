#pragma once
// CdlgAddBranch: the modal dialog that names a branch, for adding ("Add
// Branch") and for renaming ("Branch properties"). The editor checks the
// name and applies it.
#include <windows.h>

#include <string>

#include "common/Window.h"

class CdlgAddBranch : public CL::CDialog {
public:
    bool addMode = true;
    std::wstring name;
    std::wstring parent;

    // Returns IDOK ("&Save"), IDC_SAVE_AND_NEW or IDCANCEL.
    INT_PTR DoModal(HWND owner);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    void OnClickedSave(WORD id);
    void OnClickedCancel();
};
