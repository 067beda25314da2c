#include "common/ui/ControlHook.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace CL {

namespace {

struct Hooked {
    WNDPROC original = nullptr;
    std::vector<std::pair<UINT_PTR, std::shared_ptr<IControlHandler>>> handlers;
};

// The hooked controls of the process. Controls of more than one thread can
// be hooked, so the table has a lock; it is never held while a handler or
// the control runs (they send messages that come back here).
class HookTable {
public:
    static HookTable& Instance()
    {
        static HookTable table;
        return table;
    }

    std::shared_ptr<Hooked> Find(HWND control)
    {
        ::AcquireSRWLockShared(&m_lock);
        const auto found = m_controls.find(control);
        std::shared_ptr<Hooked> hooked = found == m_controls.end() ? nullptr : found->second;
        ::ReleaseSRWLockShared(&m_lock);
        return hooked;
    }

    // The control's entry, made (and the control's procedure taken over)
    // on first use.
    std::shared_ptr<Hooked> Make(HWND control, WNDPROC proc)
    {
        ::AcquireSRWLockExclusive(&m_lock);
        std::shared_ptr<Hooked>& hooked = m_controls[control];
        if (!hooked) {
            hooked = std::make_shared<Hooked>();
            hooked->original = reinterpret_cast<WNDPROC>(
                ::SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(proc)));
            if (!hooked->original)
                m_controls.erase(control);
        }
        const auto found = m_controls.find(control);
        std::shared_ptr<Hooked> result = found == m_controls.end() ? nullptr : found->second;
        ::ReleaseSRWLockExclusive(&m_lock);
        return result;
    }

    void Remove(HWND control)
    {
        std::shared_ptr<Hooked> gone;   // released after the lock
        ::AcquireSRWLockExclusive(&m_lock);
        const auto found = m_controls.find(control);
        if (found != m_controls.end()) {
            gone = std::move(found->second);
            m_controls.erase(found);
        }
        ::ReleaseSRWLockExclusive(&m_lock);
    }

    size_t Count()
    {
        ::AcquireSRWLockShared(&m_lock);
        const size_t count = m_controls.size();
        ::ReleaseSRWLockShared(&m_lock);
        return count;
    }

private:
    SRWLOCK m_lock = SRWLOCK_INIT;
    std::unordered_map<HWND, std::shared_ptr<Hooked>> m_controls;
};

LRESULT CALLBACK HookProc(HWND control, UINT message, WPARAM wParam, LPARAM lParam)
{
    const std::shared_ptr<Hooked> hooked = HookTable::Instance().Find(control);
    if (!hooked)
        return ::DefWindowProcW(control, message, wParam, lParam);
    for (const auto& [kind, handler] : hooked->handlers) {
        LRESULT result = 0;
        if (handler->OnMessage(control, message, wParam, lParam, &result) && message != WM_NCDESTROY)
            return result;
    }
    if (message == WM_NCDESTROY) {
        // The last message: the handlers go (and with them what they keep),
        // the control's own procedure ends its life. Nobody restores the
        // procedure of a window that is being destroyed.
        HookTable::Instance().Remove(control);
    }
    return ::CallWindowProcW(hooked->original, control, message, wParam, lParam);
}

} // namespace

bool CControlHook::Set(HWND control, UINT_PTR kind, std::shared_ptr<IControlHandler> handler)
{
    DWORD process = 0;
    if (!control || !handler || !::GetWindowThreadProcessId(control, &process) ||
        process != ::GetCurrentProcessId())
        return false;
    const std::shared_ptr<Hooked> hooked = HookTable::Instance().Make(control, HookProc);
    if (!hooked)
        return false;
    for (auto& [existing, current] : hooked->handlers) {
        if (existing == kind) {
            current = std::move(handler);
            return true;
        }
    }
    hooked->handlers.emplace_back(kind, std::move(handler));
    return true;
}

std::shared_ptr<IControlHandler> CControlHook::Find(HWND control, UINT_PTR kind)
{
    const std::shared_ptr<Hooked> hooked = HookTable::Instance().Find(control);
    if (!hooked)
        return nullptr;
    for (const auto& [existing, handler] : hooked->handlers)
        if (existing == kind)
            return handler;
    return nullptr;
}

size_t CControlHook::HookedCount()
{
    return HookTable::Instance().Count();
}

} // namespace CL
