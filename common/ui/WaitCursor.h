#pragma once
// CWaitCursor: shows the hourglass while a long operation runs on the user
// interface thread and puts the previous cursor back when it goes out of
// scope, whether the operation ends normally or by an exception.
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
