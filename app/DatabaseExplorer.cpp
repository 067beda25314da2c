#include "app/DatabaseExplorer.h"

#include "app/AboutDlg.h"
#include "config/Settings.h"
#include "historian/HistorianAccess.h"

CDatabaseExplorer::CDatabaseExplorer(CL::CHistorian& historian) : m_historian(historian), m_window(historian)
{
    m_window.onAbout = [](HWND owner) { CAboutDlg().DoModal(owner); };
}

CDatabaseExplorer::~CDatabaseExplorer()
{
    if (m_loop)
        m_loop->RemoveMessageFilter(this);
}

bool CDatabaseExplorer::IsDatabaseAccessible()
{
    return CL::IsHistorianAccessible(m_historian);
}

void CDatabaseExplorer::Create()
{
    m_window.SetProductName(g_Settings.Title);
    m_window.Create();
    // The window's keys work through the program's loop (none in tests).
    if (!m_loop && CL::CMessageLoop::Current()) {
        m_loop = CL::CMessageLoop::Current();
        m_loop->AddMessageFilter(this);
    }
}
