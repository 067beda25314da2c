#pragma once
// The five switches of the tray menu, decided at start-up from the command
// line and from the presence of the server executable.
#include <string>

#include "config/Settings.h"   // kServerExecutableName

namespace CL {

struct MenuFlags {
    bool ShowAddressSpace = true;   // "OPC Address Space..."
    bool ShowHdaExplorer = true;    // "OPC HDA Database Explorer..."
    bool ShowOptions = true;        // "Options..."
    bool ShowAbout = true;          // "About..."
    bool ServerPresent = true;      // the server submenu with Start and Stop
};


// Applies the switches "noas", "nohda", "noopt" and "noabout": each a whole
// argument, compared without regard to case; argument 0 is skipped and
// anything else is ignored.
void ApplyMenuSwitches(int argc, const wchar_t* const* argv, MenuFlags& flags);
// The same for the process's own command line (CommandLineToArgvW).
void ApplyCommandLineSwitches(const wchar_t* commandLine, MenuFlags& flags);

// Without the server executable the menu offers only the database explorer:
// clears everything but ShowHdaExplorer.
void ApplyServerPresence(bool serverExists, MenuFlags& flags);

// Whether a file or directory named serverPath exists.
bool ServerExecutableExists(const std::wstring& serverPath);

} // namespace CL
