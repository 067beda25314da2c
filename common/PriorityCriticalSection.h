#pragma once
// CL::CPriorityCriticalSection: a critical section whose Enter first tries
// TryEnterCriticalSection; when another thread holds it, the waiting thread
// raises its own priority to time critical (15) while it waits, and restores
// its previous priority as soon as it holds the lock, so that a low-priority
// waiter does not hold up everyone queued behind it.
#include <windows.h>

namespace CL {

class CPriorityCriticalSection {
public:
    CPriorityCriticalSection() noexcept { ::InitializeCriticalSection(&m_section); }
    ~CPriorityCriticalSection() { ::DeleteCriticalSection(&m_section); }
    CPriorityCriticalSection(const CPriorityCriticalSection&) = delete;
    CPriorityCriticalSection& operator=(const CPriorityCriticalSection&) = delete;

    void Enter() noexcept;
    void Leave() noexcept { ::LeaveCriticalSection(&m_section); }

    // Holds the section for the lifetime of the guard.
    class Guard {
    public:
        explicit Guard(CPriorityCriticalSection& section) noexcept : m_section(section) { m_section.Enter(); }
        ~Guard() { m_section.Leave(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        CPriorityCriticalSection& m_section;
    };

private:
    CRITICAL_SECTION m_section;
};

} // namespace CL
