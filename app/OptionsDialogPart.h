#pragma once
// What the tray window needs of the options dialog: run it modally and learn
// whether new settings were applied.
#include <windows.h>

#include <string>

namespace CL {

class IOptionsDialog {
public:
    virtual ~IOptionsDialog() = default;
    // Runs the dialog modally; true when it ended with OK.
    virtual bool Run(HWND owner) = 0;
    // The same dialog filled from a settings backup (the change history's
    // Restore); its OK runs the same settings change.
    virtual bool RunFrom(HWND owner, const std::wstring& backup) = 0;
};

} // namespace CL
