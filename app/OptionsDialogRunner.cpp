#include "app/OptionsDialogRunner.h"

#include "config/dlgOptions.h"

namespace CL {

bool COptionsDialogRunner::Run(HWND owner)
{
    CdlgOptions dialog(m_server);
    return dialog.DoModal(owner) == IDOK && dialog.Applied();
}

} // namespace CL
