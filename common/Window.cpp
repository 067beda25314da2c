#include "common/Window.h"

#include "common/ui/AccessibleName.h"
#include "common/ui/ContextMenuKeys.h"
#include "common/ui/Dpi.h"
#include "common/ui/DpiFonts.h"

namespace CL {

HINSTANCE ModuleInstance()
{
    return ::GetModuleHandleW(nullptr);
}

std::wstring WindowText(HWND window)
{
    std::wstring text(static_cast<size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::wstring ItemText(HWND dialog, int id)
{
    return WindowText(::GetDlgItem(dialog, id));
}

bool Checked(HWND dialog, int id)
{
    return ::IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

void SetChecked(HWND dialog, int id, bool on)
{
    ::CheckDlgButton(dialog, id, on ? BST_CHECKED : BST_UNCHECKED);
}

CWindow::~CWindow()
{
    if (IsWindow())
        ::DestroyWindow(m_hwnd);
    if (m_hwnd)
        ::SetWindowLongPtrW(m_hwnd, GWLP_USERDATA, 0);
}

HWND CWindow::CreateEx(HWND parent, const wchar_t* title, DWORD style, DWORD exStyle,
                       const RECT* rect, HMENU menu)
{
    const HINSTANCE instance = ModuleInstance();
    WNDCLASSEXW wc = {};
    if (!::GetClassInfoExW(instance, ClassName(), &wc)) {
        wc = {};
        wc.cbSize = sizeof wc;
        wc.lpfnWndProc = &CWindow::StaticWindowProc;
        wc.hInstance = instance;
        wc.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
        wc.lpszClassName = ClassName();
        PrepareClass(wc);
        if (!::RegisterClassExW(&wc))
            return nullptr;
    }
    int x = CW_USEDEFAULT, y = CW_USEDEFAULT, cx = CW_USEDEFAULT, cy = CW_USEDEFAULT;
    if (rect) {
        x = rect->left;
        y = rect->top;
        cx = rect->right - rect->left;
        cy = rect->bottom - rect->top;
    }
    return ::CreateWindowExW(exStyle, ClassName(), title ? title : L"", style, x, y, cx, cy, parent,
                             menu, instance, this);
}

BOOL CWindow::DestroyWindow()
{
    return IsWindow() ? ::DestroyWindow(m_hwnd) : FALSE;
}

LRESULT CWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    return DefaultProc(message, wParam, lParam);
}

LRESULT CALLBACK CWindow::StaticWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    CWindow* self = nullptr;
    if (message == WM_NCCREATE) {
        self = static_cast<CWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->m_hwnd = hwnd;
        ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    } else {
        self = reinterpret_cast<CWindow*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    }
    if (!self)
        return ::DefWindowProcW(hwnd, message, wParam, lParam);
    // Fonts first: the layout that follows measures texts in them.
    if (message == WM_CREATE && !(reinterpret_cast<CREATESTRUCTW*>(lParam)->style & WS_CHILD))
        CDpiFonts::Start(hwnd);
    else if (message == WM_DPICHANGED && !(::GetWindowLongW(hwnd, GWL_STYLE) & WS_CHILD))
        CDpiFonts::OnDpiChanged(hwnd, LOWORD(wParam));
    const LRESULT result = self->WindowProc(message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        CDpiFonts::Forget(hwnd);
        ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
        self->m_hwnd = nullptr;
        self->OnFinalMessage();
    }
    return result;
}

CDialog::~CDialog()
{
    if (IsWindow() && !m_modal)
        ::DestroyWindow(m_hwnd);
}

INT_PTR CDialog::DoModal(HWND owner, int templateId, HINSTANCE instance)
{
    m_modal = true;
    return ::DialogBoxParamW(instance ? instance : ModuleInstance(), MAKEINTRESOURCEW(templateId),
                             owner, &CDialog::StaticDialogProc, reinterpret_cast<LPARAM>(this));
}

HWND CDialog::Create(HWND owner, int templateId, HINSTANCE instance)
{
    m_modal = false;
    return ::CreateDialogParamW(instance ? instance : ModuleInstance(), MAKEINTRESOURCEW(templateId),
                                owner, &CDialog::StaticDialogProc, reinterpret_cast<LPARAM>(this));
}

void CDialog::EndDialog(INT_PTR result)
{
    if (m_modal)
        ::EndDialog(m_hwnd, result);
    else
        ::DestroyWindow(m_hwnd);
}

bool CDialog::OnCommand(WORD id, WORD /*code*/, HWND /*control*/)
{
    if (id == IDOK || id == IDCANCEL) {
        EndDialog(id);
        return true;
    }
    return false;
}

INT_PTR CDialog::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog();
    case WM_COMMAND:
        return OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam)) ? TRUE : FALSE;
    case WM_DPICHANGED:
        OnDpiChanged();
        CDpi::OnDpiChanged(m_hwnd, lParam);
        return TRUE;
    default:
        return FALSE;
    }
}

INT_PTR CALLBACK CDialog::StaticDialogProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    CDialog* self = nullptr;
    if (message == WM_INITDIALOG) {
        self = reinterpret_cast<CDialog*>(lParam);
        self->m_hwnd = hwnd;
        ::SetWindowLongPtrW(hwnd, DWLP_USER, lParam);
        // Edits, combo boxes, lists and pickers are spoken by their labels;
        // OnInitDialog may name some otherwise.
        CAccessibleName::SetFromLabels(hwnd);
        EnableContextMenuKeysOfChildren(hwnd);
        if (!(::GetWindowLongW(hwnd, GWL_STYLE) & WS_CHILD))
            CDpiFonts::Start(hwnd);
    } else {
        self = reinterpret_cast<CDialog*>(::GetWindowLongPtrW(hwnd, DWLP_USER));
    }
    if (!self)
        return FALSE;
    // Fonts first: the layout that follows measures texts in them.
    if (message == WM_DPICHANGED && !(::GetWindowLongW(hwnd, GWL_STYLE) & WS_CHILD))
        CDpiFonts::OnDpiChanged(hwnd, LOWORD(wParam));
    const INT_PTR result = self->DialogProc(message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        CDpiFonts::Forget(hwnd);
        ::SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        self->m_hwnd = nullptr;
        self->OnFinalMessage();
    }
    return result;
}

} // namespace CL
