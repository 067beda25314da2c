#pragma once
// CWaitCursor: shows the wait cursor for the life of the object (a long
// operation on the user interface thread) and restores the previous one.
#include <windows.h>

namespace CL {

class CWaitCursor {
public:
    CWaitCursor() : m_previous(::SetCursor(::LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT)))) {}
    ~CWaitCursor() { ::SetCursor(m_previous); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;

private:
    HCURSOR m_previous;
};

} // namespace CL
