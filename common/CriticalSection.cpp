#include "common/CriticalSection.h"

namespace CL {

CCriticalSection::CCriticalSection() noexcept
{
    // The high bit of the spin count pre-allocates the wait event, so that
    // entering never fails for lack of memory.
    ::InitializeCriticalSectionAndSpinCount(&m_section, 0x80000000ul);
}

CCriticalSection::~CCriticalSection()
{
    ::DeleteCriticalSection(&m_section);
}

void CCriticalSection::Enter() const noexcept
{
    if (::TryEnterCriticalSection(&m_section))
        return;
    const HANDLE thread = ::GetCurrentThread();
    const int oldPriority = ::GetThreadPriority(thread);
    ::SetThreadPriority(thread, THREAD_PRIORITY_TIME_CRITICAL);
    ::EnterCriticalSection(&m_section);
    ::SetThreadPriority(thread, oldPriority);
}

void CCriticalSection::Leave() const noexcept
{
    ::LeaveCriticalSection(&m_section);
}

} // namespace CL
