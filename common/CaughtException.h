#pragma once
// The naming line that code which catches and absorbs a failure writes to
// the log before its own message: one of
//   "Error HRESULT: 0x%X"            an HRESULT thrown as a plain long
//   "CException: %S"                 the exception's text
//   "_com_error: %S(%S) %S(0x%X)"    description, source, message, code
//   "std::exception: %s"             what()
//   "Unknown exception ..."          anything else
// The caller appends its source marker and logs the line.
#include <string>

namespace CL {

// Must be called from inside a catch clause; never throws.
std::string CaughtExceptionLine() noexcept;

// Logs CaughtExceptionLine() followed by marker at the given level (a no-op
// above the trace level). Call from inside a catch clause; never throws.
void LogCaughtException(unsigned level, const std::string& marker) noexcept;

} // namespace CL
