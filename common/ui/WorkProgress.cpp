#include "common/ui/WorkProgress.h"

#include "common/WorkCancelled.h"

namespace CL {

namespace {

std::chrono::milliseconds g_showDelay{500};
std::function<void()> g_stepObserver;
constexpr std::chrono::milliseconds kRedrawEvery{100};
// Looking at the input is a round trip to the window server (tens of
// microseconds under Wine): work of ten thousand small steps looked a second
// longer at its input than it worked. A look every few milliseconds keeps Esc
// as quick to answer.
constexpr std::chrono::milliseconds kLookEvery{5};

} // namespace

void CWorkProgress::SetShowDelay(std::chrono::milliseconds delay)
{
    g_showDelay = delay;
}

void CWorkProgress::SetStepObserver(std::function<void()> observer)
{
    g_stepObserver = std::move(observer);
}

CWorkProgress::CWorkProgress(HWND window, std::function<void(const std::wstring&)> showText, HWND cancelButton,
                             std::function<std::wstring()> shownText)
    : m_window(window),
      m_showText(std::move(showText)),
      m_cancel(cancelButton),
      m_shownText(std::move(shownText)),
      m_start(Clock::now())
{
    if (m_shownText)
        m_textBefore = m_shownText();
}

CWorkProgress::~CWorkProgress()
{
    if (!m_shown)
        return;
    if (m_cancel)
        ::ShowWindow(m_cancel, SW_HIDE);
    // The progress text goes; a result the work showed meanwhile stays.
    if (m_showText && m_shownText && m_shownText() == m_lastText)
        m_showText(m_textBefore);
}

bool CWorkProgress::IsOurs(HWND hwnd) const
{
    return hwnd == m_window || ::IsChild(m_window, hwnd);
}

void CWorkProgress::Step(const std::function<std::wstring()>& text)
{
    if (g_stepObserver)
        g_stepObserver();
    const Clock::time_point now = Clock::now();
    // A test that observes the steps has the input looked at after each.
    if (g_stepObserver || now - m_lastLook >= kLookEvery) {
        m_lastLook = now;
        if (CancelRequested())
            throw CWorkCancelled();
    }
    if (now - m_start < g_showDelay || now - m_lastDrawn < kRedrawEvery)
        return;
    if (!m_shown) {
        m_shown = true;
        if (m_cancel)
            ::ShowWindow(m_cancel, SW_SHOWNA);
    }
    m_lastDrawn = now;
    if (m_showText) {
        m_lastText = text();
        m_showText(m_lastText);
    }
    // The new text and button appear now, not when the work is over.
    ::RedrawWindow(m_window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

// Esc pressed or Cancel clicked since the last step. Other keyboard and mouse
// input for the window is dropped while the work runs; input for other
// windows stays queued.
bool CWorkProgress::CancelRequested()
{
    MSG msg;
    bool cancel = false;
    while (::PeekMessageW(&msg, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_NOREMOVE)) {
        if (!IsOurs(msg.hwnd))
            break;
        ::PeekMessageW(&msg, msg.hwnd, msg.message, msg.message, PM_REMOVE);
        cancel = cancel || (msg.message == WM_KEYDOWN && msg.wParam == VK_ESCAPE);
    }
    while (::PeekMessageW(&msg, nullptr, WM_MOUSEFIRST, WM_MOUSELAST, PM_NOREMOVE)) {
        if (!IsOurs(msg.hwnd))
            break;
        ::PeekMessageW(&msg, msg.hwnd, msg.message, msg.message, PM_REMOVE);
        cancel = cancel || (msg.message == WM_LBUTTONUP && m_cancel && msg.hwnd == m_cancel &&
                            ::IsWindowVisible(m_cancel));
    }
    return cancel;
}

} // namespace CL
