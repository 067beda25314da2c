#pragma once
// Raising failed ADO calls as _com_error, the way ADO's own wrappers do: with
// the error object the call left behind (GetErrorInfo), or else with the
// text of the connection's Errors collection (the provider's messages).
#include <windows.h>

#include "common/historian/AdoInterfaces.h"

namespace CL {

// Does nothing for a success code.
void CheckAdo(HRESULT hr, _ADOConnection* connection, const wchar_t* call);

} // namespace CL
