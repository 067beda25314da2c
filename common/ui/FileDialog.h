#pragma once
// The common save-file dialog as the program's windows ask for a file to
// write: an overwrite question, the default extension appended when the
// user typed none, the current folder left alone.
#include <windows.h>

#include <string>

namespace CL {

// The chosen path, or an empty string when the user cancelled. filter is the
// dialog's double-NUL-ended filter list; initialName (shorter than 260
// characters) is proposed. A failure of the dialog itself throws CException.
std::wstring AskSaveFileName(HWND owner, const wchar_t* filter, const wchar_t* defaultExtension,
                             const std::wstring& initialName);
// The same, telling which file type the user left chosen (1-based index
// into the filter list) in *filterIndex.
std::wstring AskSaveFileName(HWND owner, const wchar_t* filter, const wchar_t* defaultExtension,
                             const std::wstring& initialName, int* filterIndex);

} // namespace CL
