#include "common/PriorityCriticalSection.h"

namespace CL {

void CPriorityCriticalSection::Enter() noexcept
{
    if (::TryEnterCriticalSection(&m_section))
        return;
    const HANDLE thread = ::GetCurrentThread();
    const int oldPriority = ::GetThreadPriority(thread);
    ::SetThreadPriority(thread, THREAD_PRIORITY_TIME_CRITICAL);
    ::EnterCriticalSection(&m_section);
    ::SetThreadPriority(thread, oldPriority);
}

} // namespace CL
