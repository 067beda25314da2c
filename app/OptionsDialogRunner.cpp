#include "app/OptionsDialogRunner.h"

#include "config/SettingsJournal.h"
#include "config/dlgOptions.h"

namespace CL {

bool COptionsDialogRunner::Run(HWND owner)
{
    CdlgOptions dialog(m_server);
    return dialog.DoModal(owner) == IDOK && dialog.Applied();
}

// The backup read over the settings in force, so that a key the backup
// lacks keeps its present value; the change is journalled as a restore.
bool COptionsDialogRunner::RunFrom(HWND owner, const std::wstring& backup)
{
    CSettings values = g_Settings;
    LoadSettingsFrom(backup, values);
    CSettingsRestoreNote restoring(backup);
    CdlgOptions dialog(m_server);
    dialog.SetInitialValues(values);
    return dialog.DoModal(owner) == IDOK && dialog.Applied();
}

} // namespace CL
