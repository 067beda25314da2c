#pragma once
// CdlgAddItem: the modal dialog that edits one item, or several at once. It
// serves for adding ("Add Item") and for changing ("Item(s) properties");
// the editor decides which by the add mode and applies the result. The
// dialog only collects the fields and turns the value text into a variant of
// the chosen type; duplicate names are the editor's business.
#include <windows.h>

#include <string>

#include "common/Variant.h"
#include "common/Window.h"
#include "common/ui/DialogAnchors.h"

class CdlgAddItem : public CL::CDialog {
public:
    // The name field's text when several items are edited.
    static constexpr wchar_t kMultipleSelection[] = L"[multiple selection]";
    // The longest value text shown and taken.
    static constexpr size_t kMaxValueText = 2048;
    // The scan rate accepted, in milliseconds (up to one day).
    static constexpr DWORD kMaxScanRate = 86400000;

    // Fields, exchanged with the controls when the dialog opens and when a
    // Save button closes it.
    bool addMode = true;
    bool multipleSelection = false;
    std::wstring name;
    std::wstring branch;
    VARTYPE dataType = VT_R8;
    std::wstring valueText = L"0";
    bool readable = true;
    bool writable = true;
    DWORD scanRate = 1000;
    bool archive = false;
    // The value made from the text on closing, of type dataType.
    CL::CVariant value;

    // Returns IDOK ("&Save"), IDC_SAVE_AND_NEW or IDCANCEL.
    INT_PTR DoModal(HWND owner);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnClickedSave(WORD id);
    void OnClickedCancel();
    void FillDataTypes();
    void SelectDataType(VARTYPE vt);
    VARTYPE SelectedDataType() const;
    // Reads the controls into the fields; false (the field focused and the
    // reason shown) when the scan rate is not a number in range.
    bool ReadControls();
    // Makes `value` from the text; false when the text does not convert.
    bool ConvertValue();
    // The conversion message; true when the dialog is to close.
    bool AskToKeepAsText();
    void AnchorControls();

    CL::CDialogAnchors m_anchors;
};
