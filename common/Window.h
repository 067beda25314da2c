#pragma once
// The small window layer every window and dialog of the program uses:
//   CL::CWindow  - a window class whose messages go to a virtual member
//                  (WindowProc); the object owns its HWND and destroys it.
//   CL::CDialog  - a dialog over a resource template, modal (DoModal) or
//                  modeless (Create); messages go to DialogProc.
#include <windows.h>

#include <string>

namespace CL {

class CWindow {
public:
    CWindow() = default;
    CWindow(const CWindow&) = delete;
    CWindow& operator=(const CWindow&) = delete;
    virtual ~CWindow();

    HWND Hwnd() const { return m_hwnd; }
    bool IsWindow() const { return m_hwnd != nullptr && ::IsWindow(m_hwnd); }
    operator HWND() const { return m_hwnd; }

    // Registers the class (once) and creates the window; returns NULL on
    // failure with the last error set.
    HWND CreateEx(HWND parent = nullptr, const wchar_t* title = nullptr, DWORD style = 0,
                  DWORD exStyle = 0, const RECT* rect = nullptr, HMENU menu = nullptr);
    BOOL DestroyWindow();

protected:
    // The window class name; one class per derived window type.
    virtual const wchar_t* ClassName() const = 0;
    // Adjusts the class before registration (icon, cursor, background).
    virtual void PrepareClass(WNDCLASSEXW& /*wc*/) const {}
    // Every message of the window; the default passes it to DefWindowProcW.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // The window is gone (after WM_NCDESTROY); the HWND is already cleared.
    virtual void OnFinalMessage() {}

    LRESULT DefaultProc(UINT message, WPARAM wParam, LPARAM lParam)
    {
        return ::DefWindowProcW(m_hwnd, message, wParam, lParam);
    }

private:
    static LRESULT CALLBACK StaticWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    HWND m_hwnd = nullptr;
};

class CDialog {
public:
    CDialog() = default;
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;
    virtual ~CDialog();

    HWND Hwnd() const { return m_hwnd; }
    bool IsWindow() const { return m_hwnd != nullptr && ::IsWindow(m_hwnd); }
    operator HWND() const { return m_hwnd; }

    // Runs the dialog modally; returns the EndDialog result or -1.
    INT_PTR DoModal(HWND owner, int templateId, HINSTANCE instance = nullptr);
    // Creates the dialog modelessly; returns its HWND or NULL.
    HWND Create(HWND owner, int templateId, HINSTANCE instance = nullptr);
    // Ends a modal dialog (EndDialog) or destroys a modeless one.
    void EndDialog(INT_PTR result);

    HWND GetDlgItem(int id) const { return ::GetDlgItem(m_hwnd, id); }

protected:
    // WM_INITDIALOG; return TRUE to let the system set the focus.
    virtual BOOL OnInitDialog() { return TRUE; }
    // WM_COMMAND; return true when handled. The default ends the dialog on
    // IDOK and IDCANCEL.
    virtual bool OnCommand(WORD id, WORD code, HWND control);
    // WM_DPICHANGED, before the dialog moves to the suggested rectangle (its
    // WM_SIZE then lays it out again): sizes kept in pixels are made again.
    virtual void OnDpiChanged() {}
    // Every message; the default routes WM_INITDIALOG, WM_COMMAND and
    // WM_DPICHANGED.
    virtual INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam);
    virtual void OnFinalMessage() {}

private:
    static INT_PTR CALLBACK StaticDialogProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    HWND m_hwnd = nullptr;
    bool m_modal = false;
};

// The module instance of the running executable.
HINSTANCE ModuleInstance();

// A window's whole text, and a dialog control's.
std::wstring WindowText(HWND window);
std::wstring ItemText(HWND dialog, int id);
// A dialog's check box.
bool Checked(HWND dialog, int id);
void SetChecked(HWND dialog, int id, bool on);

} // namespace CL
