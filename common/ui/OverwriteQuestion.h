#pragma once
// The overwrite question of the save dialog, for a name that the program
// completes after the dialog closed (an extension appended to a name typed
// without one): the dialog's own question saw only the typed name.
#include <windows.h>

#include <string>

namespace CL {

// True when the file does not exist, or the user answered Yes to
// "<name> already exists. Do you want to replace it?".
bool MayOverwrite(HWND owner, const std::wstring& path, const wchar_t* caption);

} // namespace CL
