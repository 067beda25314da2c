#include "app/MessageLoop.h"

#include <algorithm>

namespace CL {

namespace {
CMessageLoop* g_currentLoop = nullptr;
}

void CMessageLoop::AddMessageFilter(IMessageFilter* filter)
{
    m_filters.push_back(filter);
}

void CMessageLoop::RemoveMessageFilter(IMessageFilter* filter)
{
    m_filters.erase(std::remove(m_filters.begin(), m_filters.end(), filter), m_filters.end());
}

int CMessageLoop::Run()
{
    MSG msg;
    for (;;) {
        const BOOL got = ::GetMessageW(&msg, nullptr, 0, 0);
        if (got == 0 || got == -1)
            break;
        bool handled = false;
        // Newest first: the most recently opened window sees its keys first.
        for (auto it = m_filters.rbegin(); it != m_filters.rend() && !handled; ++it)
            handled = (*it)->PreTranslateMessage(msg);
        if (!handled) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    return static_cast<int>(msg.wParam);
}

CMessageLoop* CMessageLoop::Current()
{
    return g_currentLoop;
}

void CMessageLoop::SetCurrent(CMessageLoop* loop)
{
    g_currentLoop = loop;
}

} // namespace CL
