#pragma once
// CL::CSmartPtr<T>: an owning pointer to a CRefCount object. Copies share the
// object; the object dies with its last CSmartPtr. Assignment takes the
// reference on the new object before it releases the old one, so assigning
// an object that only the old one keeps alive is safe.
#include <cstddef>
#include <type_traits>
#include <utility>

#include "common/Exception.h"
#include "common/RefCount.h"

namespace CL {

template <typename T>
class CSmartPtr {
public:
    CSmartPtr() noexcept = default;
    CSmartPtr(std::nullptr_t) noexcept {}
    // Takes a reference on p (a new object goes from 0 to 1).
    CSmartPtr(T* p) noexcept : m_p(p)
    {
        if (m_p)
            m_p->AddRef();
    }
    CSmartPtr(const CSmartPtr& other) noexcept : CSmartPtr(other.m_p) {}
    CSmartPtr(CSmartPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    CSmartPtr(const CSmartPtr<U>& other) noexcept : CSmartPtr(other.get())
    {
    }
    ~CSmartPtr() { Reset(); }

    CSmartPtr& operator=(T* p) noexcept
    {
        if (p)
            p->AddRef();   // first the new reference ...
        T* old = std::exchange(m_p, p);
        if (old)
            old->Release();   // ... then the old one goes
        return *this;
    }
    CSmartPtr& operator=(const CSmartPtr& other) noexcept { return *this = other.m_p; }
    CSmartPtr& operator=(CSmartPtr&& other) noexcept
    {
        if (this != &other) {
            T* old = std::exchange(m_p, std::exchange(other.m_p, nullptr));
            if (old)
                old->Release();
        }
        return *this;
    }
    CSmartPtr& operator=(std::nullptr_t) noexcept
    {
        Reset();
        return *this;
    }

    // A new T made from the arguments, owned by the returned pointer.
    template <typename... Args>
    static CSmartPtr Make(Args&&... args)
    {
        return CSmartPtr(new T(std::forward<Args>(args)...));
    }

    T* get() const noexcept { return m_p; }
    // Access to a missing object is an error of the caller, reported as
    // E_POINTER instead of a crash.
    T* operator->() const
    {
        if (!m_p)
            throw CException(E_POINTER, L"CSmartPtr::operator->");
        return m_p;
    }
    T& operator*() const { return *operator->(); }
    explicit operator bool() const noexcept { return m_p != nullptr; }

    void Reset() noexcept
    {
        if (m_p)
            std::exchange(m_p, nullptr)->Release();
    }

    friend bool operator==(const CSmartPtr& a, const CSmartPtr& b) noexcept { return a.m_p == b.m_p; }
    friend bool operator==(const CSmartPtr& a, std::nullptr_t) noexcept { return a.m_p == nullptr; }

private:
    T* m_p = nullptr;
};

} // namespace CL
