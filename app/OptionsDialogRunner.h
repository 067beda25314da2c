#pragma once
// COptionsDialogRunner: the tray window's options entry served by the real
// options dialog, with the service control and process running of this
// program behind it.
#include "app/OptionsDialogPart.h"
#include "app/ServerProcessControl.h"

namespace CL {

class COptionsDialogRunner final : public IOptionsDialog {
public:
    // The dialog runs against the running program's installation folder.
    bool Run(HWND owner) override;
    bool RunFrom(HWND owner, const std::wstring& backup) override;

private:
    CServerProcessControl m_server;
};

} // namespace CL
