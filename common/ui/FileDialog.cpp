#include "common/ui/FileDialog.h"

#include <commdlg.h>

#include <vector>

#include "common/Exception.h"

namespace CL {

std::wstring AskSaveFileName(HWND owner, const wchar_t* filter, const wchar_t* defaultExtension,
                             const std::wstring& initialName)
{
    int filterIndex = 0;
    return AskSaveFileName(owner, filter, defaultExtension, initialName, &filterIndex);
}

std::wstring AskSaveFileName(HWND owner, const wchar_t* filter, const wchar_t* defaultExtension,
                             const std::wstring& initialName, int* filterIndex)
{
    // Room for a long path: the dialog fails rather than cut it.
    std::vector<wchar_t> file(32768, L'\0');
    if (initialName.size() < 260)
        initialName.copy(file.data(), initialName.size());
    OPENFILENAMEW ofn = {};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = filter;
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = file.data();
    ofn.nMaxFile = static_cast<DWORD>(file.size());
    ofn.lpstrDefExt = defaultExtension;
    ofn.Flags = OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!::GetSaveFileNameW(&ofn)) {
        const DWORD error = ::CommDlgExtendedError();
        if (error != 0)
            throw CException(HRESULT_FROM_WIN32(error), L"GetSaveFileName (&ofn)");
        return std::wstring();
    }
    *filterIndex = static_cast<int>(ofn.nFilterIndex);
    return file.data();
}

bool AskOpenFileName(HWND owner, const wchar_t* filter, const wchar_t* title, wchar_t* path, size_t pathSize,
                     const wchar_t* initialFolder)
{
    OPENFILENAMEW ofn = {};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = filter;
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = path;
    ofn.nMaxFile = static_cast<DWORD>(pathSize);
    ofn.lpstrTitle = title;
    ofn.lpstrInitialDir = initialFolder;
    ofn.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
    return ::GetOpenFileNameW(&ofn) != FALSE;
}

} // namespace CL
