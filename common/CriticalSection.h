#pragma once
// CL::CCriticalSection: a Win32 critical section owned for its lifetime.
// Enter() raises the waiting thread to time-critical priority while another
// thread holds the section, so that a low-priority waiter cannot hold up the
// threads queued behind it; the old priority returns as soon as it enters.
// CCriticalSection::Lock enters in its constructor and leaves in its
// destructor.
#include <windows.h>

namespace CL {

class CCriticalSection {
public:
    CCriticalSection() noexcept;
    ~CCriticalSection();
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Enter() const noexcept;
    void Leave() const noexcept;

    class Lock {
    public:
        explicit Lock(const CCriticalSection& section) noexcept : m_section(section) { m_section.Enter(); }
        ~Lock() { m_section.Leave(); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        const CCriticalSection& m_section;
    };

private:
    mutable CRITICAL_SECTION m_section;
};

} // namespace CL
