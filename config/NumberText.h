#pragma once
// Numbers typed into the dialogs' edit boxes.
#include <string>

namespace CL {

// A signed 32-bit decimal integer, optionally surrounded by white space and
// with a leading '+' or '-'. False for empty text, any other character, or a
// value outside the 32-bit range; `value` is then unchanged.
bool ParseSignedDecimal(const std::wstring& text, long& value);

} // namespace CL
