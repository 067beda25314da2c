#pragma once
// Database failures of both connection backends are raised the way ADO
// raises them: as a _com_error whose IErrorInfo carries the database's own
// text as its description and the failing call as its source.
#include <windows.h>
#include <comdef.h>

#include <string>

namespace CL {

// Throws _com_error(hr) with an IErrorInfo holding description and source.
[[noreturn]] void ThrowDbError(HRESULT hr, const std::wstring& description,
                               const std::wstring& source);

// The description of a _com_error's IErrorInfo, empty when it has none.
std::wstring DbErrorDescription(const _com_error& error);

} // namespace CL
