#pragma once
// The process's one message loop. Modeless windows register a filter so that
// their keyboard navigation (IsDialogMessage, accelerators) sees messages
// before they are dispatched.
#include <windows.h>

#include <vector>

namespace CL {

class IMessageFilter {
public:
    virtual ~IMessageFilter() = default;
    // Returns true when the message was handled and must not be dispatched.
    virtual bool PreTranslateMessage(MSG& msg) = 0;
};

class CMessageLoop {
public:
    void AddMessageFilter(IMessageFilter* filter);
    void RemoveMessageFilter(IMessageFilter* filter);
    // Runs until WM_QUIT; returns its exit code.
    int Run();

    // The loop registered for the running program, or nullptr.
    static CMessageLoop* Current();
    static void SetCurrent(CMessageLoop* loop);

private:
    std::vector<IMessageFilter*> m_filters;
};

} // namespace CL
