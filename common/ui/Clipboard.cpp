#include "common/ui/Clipboard.h"

#include <cstring>
#include <cwchar>
#include <utility>

#include "common/Exception.h"

namespace CL {

namespace {

// Global memory handed to the clipboard, freed unless the clipboard took it.
class GlobalText {
public:
    explicit GlobalText(const std::wstring& text)
        : m_memory(::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t)))
    {
        if (!m_memory)
            ThrowLastError(L"GlobalAlloc");
        void* bytes = ::GlobalLock(m_memory);
        std::memcpy(bytes, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
        ::GlobalUnlock(m_memory);
    }
    ~GlobalText()
    {
        if (m_memory)
            ::GlobalFree(m_memory);
    }
    GlobalText(const GlobalText&) = delete;
    GlobalText& operator=(const GlobalText&) = delete;
    HGLOBAL Release() { return std::exchange(m_memory, nullptr); }
    HGLOBAL Get() const { return m_memory; }

private:
    HGLOBAL m_memory;
};

} // namespace

CClipboard::CClipboard(HWND owner)
{
    if (!::OpenClipboard(owner))
        ThrowLastError(L"OpenClipboard");
}

CClipboard::~CClipboard()
{
    ::CloseClipboard();
}

void CClipboard::PutText(const std::wstring& text)
{
    GlobalText memory(text);
    if (!::EmptyClipboard())
        ThrowLastError(L"EmptyClipboard");
    if (!::SetClipboardData(CF_UNICODETEXT, memory.Get()))
        ThrowLastError(L"SetClipboardData");
    memory.Release();   // the clipboard owns it now
}

std::optional<std::wstring> CClipboard::Text() const
{
    const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
    if (!data)
        return std::nullopt;
    const auto* text = static_cast<const wchar_t*>(::GlobalLock(data));
    if (!text)
        return std::nullopt;
    const size_t limit = ::GlobalSize(data) / sizeof(wchar_t);
    const std::wstring copy(text, ::wcsnlen(text, limit));
    ::GlobalUnlock(data);
    return copy;
}

} // namespace CL
