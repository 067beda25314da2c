#pragma once
// The common file dialogs as the program's windows ask for a file. To
// write: an overwrite question, the default extension appended when the
// user typed none, the current folder left alone. To read: a file that
// exists, its path kept in the caller's buffer for the next time.
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

// The open-file dialog titled title over the filter list, starting from the
// path in the buffer (which the chosen path replaces) or, when initialFolder
// is given, in that folder. False when the user cancelled.
bool AskOpenFileName(HWND owner, const wchar_t* filter, const wchar_t* title, wchar_t* path, size_t pathSize,
                     const wchar_t* initialFolder = nullptr);

} // namespace CL
