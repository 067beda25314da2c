#include "addressspace/dlgAddItem.h"

#include <windowsx.h>

#include <vector>

#include "addressspace/ItemDataTypes.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/Util_Variant.h"
#include "res/resource.h"

namespace {

constexpr wchar_t kConversionFailedText[] =
    L"Failed to convert the value to the requested data type.\n\nEmpty values are not supported.\n\n"
    L"If you want to change the data type to VT_BSTR - click Yes\nOtherwise click Cancel";

} // namespace

INT_PTR CdlgAddItem::DoModal(HWND owner)
{
    return CL::CDialog::DoModal(owner, IDD_ADDITEM);
}

BOOL CdlgAddItem::OnInitDialog()
{
    Log(3, "CdlgAddItem::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        const HWND dialog = Hwnd();
        ::SetWindowTextW(dialog, addMode ? L"Add Item" : L"Item(s) properties");
        ::SetDlgItemTextW(dialog, IDC_ITEM_NAME, multipleSelection ? kMultipleSelection : name.c_str());
        // Several items keep their own names: the field cannot rename them.
        ::EnableWindow(GetDlgItem(IDC_ITEM_NAME), !multipleSelection);
        ::SetDlgItemTextW(dialog, IDC_ITEM_BRANCH, branch.c_str());
        FillDataTypes();
        SelectDataType(dataType);
        ::SendDlgItemMessageW(dialog, IDC_ITEM_VALUE, EM_LIMITTEXT, 0, 0);
        ::SetDlgItemTextW(dialog, IDC_ITEM_VALUE, valueText.substr(0, kMaxValueText).c_str());
        CL::SetChecked(dialog, IDC_ITEM_READABLE, readable);
        CL::SetChecked(dialog, IDC_ITEM_WRITABLE, writable);
        CL::SetChecked(dialog, IDC_ITEM_ARCHIVE, archive);
        ::SetDlgItemInt(dialog, IDC_ITEM_SCANRATE, scanRate, FALSE);
        // Saving and starting the next item belongs to adding only.
        ::EnableWindow(GetDlgItem(IDC_SAVE_AND_NEW), addMode);
        AnchorControls();
    });
    return TRUE;
}

void CdlgAddItem::AnchorControls()
{
    using A = CL::CDialogAnchors;
    for (int id : {IDC_ITEM_NAME, IDC_ITEM_BRANCH, IDC_ITEM_TYPE})
        m_anchors.Add(id, A::kStretchX | A::kTop);
    m_anchors.Add(IDC_ITEM_VALUE, A::kStretchX | A::kStretchY);
    m_anchors.Add(IDC_ITEM_HINT, A::kStretchX | A::kBottom);
    for (int id : {IDC_ITEM_READABLE, IDC_ITEM_WRITABLE, IDC_ITEM_SCANRATE_LABEL, IDC_ITEM_SCANRATE,
                   IDC_ITEM_SCANRATE_UNIT, IDC_ITEM_ARCHIVE})
        m_anchors.Add(id, A::kLeft | A::kBottom);
    for (int id : {IDOK, IDC_SAVE_AND_NEW, IDCANCEL})
        m_anchors.Add(id, A::kRight | A::kBottom);
    m_anchors.Capture(Hwnd());
}

INT_PTR CdlgAddItem::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_anchors.OnMessage(message, lParam))
        return TRUE;
    switch (message) {
    default:
        return CL::CDialog::DialogProc(message, wParam, lParam);
    }
}

void CdlgAddItem::FillDataTypes()
{
    const HWND combo = GetDlgItem(IDC_ITEM_TYPE);
    // The types in the order of CL::kItemDataTypes (ItemDataTypes.h).
    for (VARTYPE vt : CL::kItemDataTypes) {
        const int index = ComboBox_AddString(combo, CL::VarTypeToString(vt).c_str());
        ComboBox_SetItemData(combo, index, vt);
    }
}

void CdlgAddItem::SelectDataType(VARTYPE vt)
{
    const HWND combo = GetDlgItem(IDC_ITEM_TYPE);
    const int count = ComboBox_GetCount(combo);
    for (int i = 0; i < count; ++i) {
        if (static_cast<VARTYPE>(ComboBox_GetItemData(combo, i)) == vt) {
            ComboBox_SetCurSel(combo, i);
            return;
        }
    }
    // A type the list does not offer (read from a file) is shown as it is,
    // so that opening and saving the dialog keeps it.
    const int index = ComboBox_AddString(combo, CL::VarTypeToString(vt).c_str());
    ComboBox_SetItemData(combo, index, vt);
    ComboBox_SetCurSel(combo, index);
}

VARTYPE CdlgAddItem::SelectedDataType() const
{
    const HWND combo = GetDlgItem(IDC_ITEM_TYPE);
    const int selected = ComboBox_GetCurSel(combo);
    return selected == CB_ERR ? VARTYPE(VT_BSTR) : static_cast<VARTYPE>(ComboBox_GetItemData(combo, selected));
}

bool CdlgAddItem::OnCommand(WORD id, WORD /*code*/, HWND /*control*/)
{
    switch (id) {
    case IDOK:
    case IDC_SAVE_AND_NEW:
        OnClickedSave(id);
        return true;
    case IDCANCEL:
        OnClickedCancel();
        return true;
    default:
        return false;
    }
}

void CdlgAddItem::OnClickedSave(WORD id)
{
    Log(3, "CdlgAddItem::OnClickedOK" + MV_POS());
    CL::RunReported([this, id] {
        if (::IsWindowEnabled(GetDlgItem(id)) == FALSE)
            return;
        if (!ReadControls())
            return;
        if (ConvertValue() || AskToKeepAsText())
            EndDialog(id);
    });
}

void CdlgAddItem::OnClickedCancel()
{
    Log(3, "CdlgAddItem::OnClickedCancel" + MV_POS());
    CL::RunReported([this] { EndDialog(IDCANCEL); });
}

bool CdlgAddItem::ReadControls()
{
    const HWND dialog = Hwnd();
    BOOL translated = FALSE;
    const UINT rate = ::GetDlgItemInt(dialog, IDC_ITEM_SCANRATE, &translated, FALSE);
    if (!translated || rate > kMaxScanRate) {
        ::MessageBoxW(dialog, L"Enter a scan rate from 0 to 86400000 milliseconds.", L"Error",
                      MB_OK | MB_ICONEXCLAMATION);
        ::SetFocus(GetDlgItem(IDC_ITEM_SCANRATE));
        ::SendDlgItemMessageW(dialog, IDC_ITEM_SCANRATE, EM_SETSEL, 0, -1);
        return false;
    }
    if (!multipleSelection)
        name = CL::WindowText(GetDlgItem(IDC_ITEM_NAME));
    dataType = SelectedDataType();
    valueText = CL::WindowText(GetDlgItem(IDC_ITEM_VALUE)).substr(0, kMaxValueText);
    readable = CL::Checked(dialog, IDC_ITEM_READABLE);
    writable = CL::Checked(dialog, IDC_ITEM_WRITABLE);
    archive = CL::Checked(dialog, IDC_ITEM_ARCHIVE);
    scanRate = rate;
    return true;
}

bool CdlgAddItem::ConvertValue()
{
    // No type takes an empty text: it has no value to hold.
    if (valueText.empty())
        return false;
    try {
        value = CL::StringToVariant(valueText, dataType, CL::kLocaleSystemDefault, CL::kArraySeparator);
        return true;
    } catch (const CL::CException&) {
        return false;
    }
}

bool CdlgAddItem::AskToKeepAsText()
{
    switch (::MessageBoxW(Hwnd(), kConversionFailedText, L"Error", MB_OKCANCEL | MB_ICONEXCLAMATION)) {
    case IDOK:
        dataType = VT_BSTR;
        value = CL::CVariant(valueText);
        return true;
    case IDCANCEL:
        // Back to the dialog with the text as it was, for correction.
        ::SetFocus(GetDlgItem(IDC_ITEM_VALUE));
        return false;
    default:
        Log(0, "false" + MV_POS());
        return true;
    }
}
