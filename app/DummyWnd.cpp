#include "app/DummyWnd.h"

#include "app/DiagnosticLog.h"
#include "app/ErrorReport.h"

CDummyWnd::CDummyWnd(const CL::MenuFlags& flags) : m_flags(flags) {}

LRESULT CDummyWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        return OnCreate();
    case WM_DESTROY:
        OnDestroy();
        return 0;
    case WM_CLOSE:
        OnClose();
        return 0;
    default:
        return DefaultProc(message, wParam, lParam);
    }
}

LRESULT CDummyWnd::OnCreate()
{
    Log(3, "CDummyWnd::OnCreate [DummyWnd, 143]");
    return 0;
}

void CDummyWnd::OnDestroy()
{
    Log(3, "CDummyWnd::OnDestroy [DummyWnd, 173]");
}

// Closing the hidden window (the system ending the session, or another
// program asking it to close) ends the program the same way as Exit, without
// the question; the shut-down destroys this window.
void CDummyWnd::OnClose()
{
    Log(3, "CDummyWnd::OnClose" + MV_POS());
    ::PostQuitMessage(0);
}
