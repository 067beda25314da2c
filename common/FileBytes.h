#pragma once
// Whole files as bytes: read in one piece, and written beside the target
// first and then moved over it, so that a failed write leaves the old file
// as it was. Failures throw CException with the failing call.
#include <string>
#include <string_view>

namespace CL {

std::string ReadWholeFile(const std::wstring& path);
void WriteWholeFile(const std::wstring& path, std::string_view bytes);

} // namespace CL
