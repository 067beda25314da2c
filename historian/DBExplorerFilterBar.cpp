#include "historian/DBExplorerFilterBar.h"

#include <algorithm>

#include "res/resource.h"

HWND CDBExplorerFilterBar::Create(HWND frame)
{
    return CL::CDialog::Create(frame, IDD_DBEXPLORER_FILTER);
}

BOOL CDBExplorerFilterBar::OnInitDialog()
{
    RECT bar;
    ::GetClientRect(Hwnd(), &bar);
    m_height = bar.bottom;
    RECT edit;
    ::GetWindowRect(Edit(), &edit);
    ::MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&edit), 2);
    m_editRightMargin = bar.right - edit.right;
    return FALSE;   // the frame keeps the focus on its list
}

HWND CDBExplorerFilterBar::Edit() const
{
    return GetDlgItem(IDC_DBEXPLORER_FILTER);
}

std::wstring CDBExplorerFilterBar::Text() const
{
    return CL::ItemText(Hwnd(), IDC_DBEXPLORER_FILTER);
}

void CDBExplorerFilterBar::SetText(const std::wstring& text)
{
    ::SetDlgItemTextW(Hwnd(), IDC_DBEXPLORER_FILTER, text.c_str());
}

void CDBExplorerFilterBar::Focus()
{
    ::SetFocus(Edit());
    ::SendMessageW(Edit(), EM_SETSEL, 0, -1);
}

bool CDBExplorerFilterBar::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    if (id == IDC_DBEXPLORER_FILTER && code == EN_CHANGE) {
        if (onChanged)
            onChanged(Text());
        return true;
    }
    return false;   // Enter and Esc of the bar do not end it
}

INT_PTR CDBExplorerFilterBar::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_SIZE) {
        StretchEdit(LOWORD(lParam));
        return TRUE;
    }
    return CL::CDialog::DialogProc(message, wParam, lParam);
}

void CDBExplorerFilterBar::StretchEdit(int width)
{
    RECT edit;
    ::GetWindowRect(Edit(), &edit);
    ::MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&edit), 2);
    const int right = std::max(width - m_editRightMargin, static_cast<int>(edit.left) + 40);
    ::MoveWindow(Edit(), edit.left, edit.top, right - edit.left, edit.bottom - edit.top, TRUE);
}
