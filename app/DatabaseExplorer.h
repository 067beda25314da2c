#pragma once
// CDatabaseExplorer: the database explorer as the tray window sees it
// (IDatabaseExplorer): the CdlgDBExplorer window over the process's one
// historian, titled with the Title setting, its About command running the
// program's About box.
#include "app/DatabaseExplorerPart.h"
#include "historian/dlgDBExplorer.h"

namespace CL {
class CHistorian;
}

class CDatabaseExplorer final : public CL::IDatabaseExplorer {
public:
    explicit CDatabaseExplorer(CL::CHistorian& historian);

    HWND Window() const override { return m_window.Hwnd(); }
    bool IsDatabaseAccessible() override;
    void Create() override;

    CdlgDBExplorer& Explorer() { return m_window; }

private:
    CL::CHistorian& m_historian;
    CdlgDBExplorer m_window;
};
