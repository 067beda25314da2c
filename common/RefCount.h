#pragma once
// CL::CRefCount: the base of every shared address space object. It holds an
// intrusive 32-bit reference count next to the virtual table; CL::CSmartPtr
// takes and releases the references. A new object starts at count 0, so the
// first CSmartPtr that points to it owns it.
#include <windows.h>

namespace CL {

class CRefCount {
public:
    CRefCount() noexcept = default;
    // A copy is a new object: it starts unowned, whatever the source's count.
    CRefCount(const CRefCount&) noexcept {}
    CRefCount& operator=(const CRefCount&) noexcept { return *this; }

    // Atomic increment; returns the new count.
    LONG AddRef() const noexcept;
    // Atomic decrement; the release that brings the count from 1 to 0 deletes
    // the object through its virtual destructor. Returns the new count.
    LONG Release() const noexcept;
    // The current count (for diagnostics and tests; it may change at once).
    LONG RefCount() const noexcept;

protected:
    virtual ~CRefCount() = default;

private:
    mutable volatile LONG m_refCount = 0;
};

} // namespace CL
