#pragma once
// CClipboard: the clipboard, open while the object lives (OpenClipboard in
// the constructor, CloseClipboard in the destructor), with its text put and
// taken as CF_UNICODETEXT.
#include <windows.h>

#include <optional>
#include <string>

namespace CL {

class CClipboard {
public:
    // Throws CException when another window holds the clipboard open.
    explicit CClipboard(HWND owner);
    ~CClipboard();
    CClipboard(const CClipboard&) = delete;
    CClipboard& operator=(const CClipboard&) = delete;

    // Empties the clipboard and puts the text on it.
    void PutText(const std::wstring& text);
    // The clipboard's text, or none when it holds no text.
    std::optional<std::wstring> Text() const;
};

} // namespace CL
