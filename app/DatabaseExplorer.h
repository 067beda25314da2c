#pragma once
// CDatabaseExplorer: the database explorer as the tray window sees it
// (IDatabaseExplorer): the CdlgDBExplorer window over the process's one
// historian, titled with the Title setting, its About command running the
// program's About box. Its keys go through the program's message loop.
#include "app/DatabaseExplorerPart.h"
#include "app/MessageLoop.h"
#include "historian/dlgDBExplorer.h"

namespace CL {
class CHistorian;
}

class CDatabaseExplorer final : public CL::IDatabaseExplorer, private CL::IMessageFilter {
public:
    explicit CDatabaseExplorer(CL::CHistorian& historian);
    ~CDatabaseExplorer() override;
    CDatabaseExplorer(const CDatabaseExplorer&) = delete;
    CDatabaseExplorer& operator=(const CDatabaseExplorer&) = delete;

    HWND Window() const override { return m_window.Hwnd(); }
    bool IsDatabaseAccessible() override;
    void Create() override;

    CdlgDBExplorer& Explorer() { return m_window; }

private:
    bool PreTranslateMessage(MSG& msg) override { return m_window.PreTranslateMessage(msg); }

    CL::CHistorian& m_historian;
    CdlgDBExplorer m_window;
    CL::CMessageLoop* m_loop = nullptr;
};
