#pragma once
// What the tray window needs of the options dialog: run it modally and learn
// whether new settings were applied.
#include <windows.h>

namespace CL {

class IOptionsDialog {
public:
    virtual ~IOptionsDialog() = default;
    // Runs the dialog modally; true when it ended with OK.
    virtual bool Run(HWND owner) = 0;
};

} // namespace CL
