#pragma once
// CClipboard: the clipboard, open for the owner window while the object
// lives. Opening it fails with CException when another program holds it.
#include <windows.h>

namespace CL {

class CClipboard {
public:
    explicit CClipboard(HWND owner);
    ~CClipboard() { ::CloseClipboard(); }
    CClipboard(const CClipboard&) = delete;
    CClipboard& operator=(const CClipboard&) = delete;
};

} // namespace CL
