#pragma once
// CServiceHandle: an owning service control manager handle that is closed
// through the manager that opened it, on every path, exceptions included.
// (A scripted manager's handles must never reach the system's
// CloseServiceHandle.) Move-only.
#include <utility>

#include "common/ServiceManager.h"

namespace CL {

class CServiceHandle {
public:
    CServiceHandle(IServiceManager& manager, SC_HANDLE handle) noexcept : m_manager(&manager), m_handle(handle) {}
    CServiceHandle(CServiceHandle&& other) noexcept
        : m_manager(other.m_manager), m_handle(std::exchange(other.m_handle, nullptr)) {}
    CServiceHandle& operator=(CServiceHandle&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_manager = other.m_manager;
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    CServiceHandle(const CServiceHandle&) = delete;
    CServiceHandle& operator=(const CServiceHandle&) = delete;
    ~CServiceHandle() { reset(); }

    SC_HANDLE get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != nullptr; }
    void reset() noexcept
    {
        if (m_handle)
            m_manager->CloseServiceHandle(std::exchange(m_handle, nullptr));
    }

private:
    IServiceManager* m_manager;
    SC_HANDLE m_handle;
};

} // namespace CL
