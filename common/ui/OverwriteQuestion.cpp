#include "common/ui/OverwriteQuestion.h"

namespace CL {

bool MayOverwrite(HWND owner, const std::wstring& path, const wchar_t* caption)
{
    if (::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return true;
    const size_t slash = path.find_last_of(L"\\/");
    const std::wstring name = slash == std::wstring::npos ? path : path.substr(slash + 1);
    const std::wstring text = name + L" already exists.\nDo you want to replace it?";
    return ::MessageBoxW(owner, text.c_str(), caption, MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

} // namespace CL
