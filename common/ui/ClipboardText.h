#pragma once
// Text onto the clipboard (CF_UNICODETEXT), replacing what it held, and the
// selected rows of a report list as the text a spreadsheet pastes: the
// column titles as the first line, then one line per row, cells as the list
// shows them, separated by tabs (the delimited format of Csv.h).
#include <windows.h>

#include <string>
#include <vector>

namespace CL {

class CReportList;

// Throws CException when the clipboard cannot be opened or filled.
void SetClipboardText(HWND owner, const std::wstring& text);
// The clipboard's text; empty when it holds none.
std::wstring GetClipboardText(HWND owner);

// The rows (source rows, in the order given) as tab-separated text.
std::wstring ReportRowsText(const CReportList& list, const std::vector<size_t>& sourceRows);

} // namespace CL
