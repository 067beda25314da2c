#pragma once
// CL::ComPtr: an owning COM interface pointer (AddRef on copy, Release in the
// destructor). Interfaces without __uuidof support use the IID overloads.
#include <windows.h>
#include <unknwn.h>

#include <utility>

namespace CL {

template <typename T>
class ComPtr {
public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    // Takes over a reference the caller already owns.
    static ComPtr Attach(T* p) noexcept
    {
        ComPtr r;
        r.m_p = p;
        return r;
    }
    ComPtr(const ComPtr& other) noexcept : m_p(other.m_p)
    {
        if (m_p)
            m_p->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(m_p, other.m_p);
        return *this;
    }
    ~ComPtr() { Reset(); }

    T* Get() const noexcept { return m_p; }
    T* operator->() const noexcept { return m_p; }
    explicit operator bool() const noexcept { return m_p != nullptr; }

    // For out parameters: releases the current pointer first.
    T** ReleaseAndGetAddressOf() noexcept
    {
        Reset();
        return &m_p;
    }
    void Reset() noexcept
    {
        if (m_p)
            std::exchange(m_p, nullptr)->Release();
    }
    T* Detach() noexcept { return std::exchange(m_p, nullptr); }

    template <typename U>
    HRESULT QueryInterface(REFIID iid, ComPtr<U>& out) const noexcept
    {
        if (!m_p)
            return E_POINTER;
        return m_p->QueryInterface(iid, reinterpret_cast<void**>(out.ReleaseAndGetAddressOf()));
    }

private:
    T* m_p = nullptr;
};

} // namespace CL
