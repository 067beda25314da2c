#include "common/RefCount.h"

namespace CL {

LONG CRefCount::AddRef() const noexcept
{
    return ::InterlockedIncrement(&m_refCount);
}

LONG CRefCount::Release() const noexcept
{
    const LONG count = ::InterlockedDecrement(&m_refCount);
    if (count == 0)
        delete this;   // the virtual destructor runs the most derived one
    return count;
}

LONG CRefCount::RefCount() const noexcept
{
    return ::InterlockedCompareExchange(&m_refCount, 0, 0);
}

} // namespace CL
