#pragma once
// What a screen reader reads of a window: the name, description and role of
// the accessible object the window (or the system for it) gives through
// AccessibleObjectFromWindow. The caller's thread is in a single-threaded
// apartment (Wine's proxies answer E_NOINTERFACE in a multithreaded one).
#include <windows.h>

#include <string>

namespace test {

struct AccessibleText {
    bool hasObject = false;   // false when the window has no accessible object
    HRESULT result = S_OK;
    std::wstring name;
    std::wstring description;
    long role = 0;
    std::wstring roleText;
};

AccessibleText ReadAccessible(HWND window);

} // namespace test
