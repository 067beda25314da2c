#include "common/ui/Clipboard.h"

#include "common/Exception.h"

namespace CL {

CClipboard::CClipboard(HWND owner)
{
    if (!::OpenClipboard(owner))
        ThrowLastError(L"OpenClipboard (m_hWnd)");
}

} // namespace CL
