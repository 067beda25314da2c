#pragma once
// Class identifiers as the options dialog shows and checks them.
#include <windows.h>

#include <string>

namespace CL {

// The registry form: 38 characters, upper-case hexadecimal in braces.
std::wstring ClsidText(const GUID& clsid);
// Parses the registry form (surrounding white space allowed); false for any
// other text, including program identifiers.
bool ParseClsid(const std::wstring& text, GUID& clsid);
// A fresh GUID in registry form (CoCreateGuid, StringFromCLSID); on failure
// the platform's message text for the status.
std::wstring NewClsidText();
// Whether HKEY_CLASSES_ROOT\CLSID\<registry form> exists.
bool IsClsidRegistered(const GUID& clsid);

} // namespace CL
