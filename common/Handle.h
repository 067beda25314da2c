#pragma once
// Owning wrappers for Win32 handles: each closes its handle in its destructor,
// on every path, exceptions included. Move-only.
#include <windows.h>
#include <winsvc.h>
#include <objbase.h>

#include <utility>

namespace CL {

template <typename Traits>
class UniqueHandle {
public:
    using Type = typename Traits::Type;

    UniqueHandle() noexcept : m_handle(Traits::Invalid()) {}
    explicit UniqueHandle(Type handle) noexcept : m_handle(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_handle(other.release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { reset(); }

    Type get() const noexcept { return m_handle; }
    bool valid() const noexcept { return m_handle != Traits::Invalid(); }
    explicit operator bool() const noexcept { return valid(); }

    Type release() noexcept { return std::exchange(m_handle, Traits::Invalid()); }
    void reset(Type handle = Traits::Invalid()) noexcept
    {
        if (valid())
            Traits::Close(m_handle);
        m_handle = handle;
    }

private:
    Type m_handle;
};

struct KernelHandleTraits {               // NULL means "no handle"
    using Type = HANDLE;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::CloseHandle(h); }
};
struct FileHandleTraits {                 // INVALID_HANDLE_VALUE means "no handle"
    using Type = HANDLE;
    static Type Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(Type h) { ::CloseHandle(h); }
};
struct ServiceHandleTraits {
    using Type = SC_HANDLE;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::CloseServiceHandle(h); }
};
struct MenuHandleTraits {
    using Type = HMENU;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::DestroyMenu(h); }
};
struct GdiObjectTraits {
    using Type = HGDIOBJ;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::DeleteObject(h); }
};
struct IconHandleTraits {
    using Type = HICON;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::DestroyIcon(h); }
};
struct LocalMemoryTraits {
    using Type = HLOCAL;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::LocalFree(h); }
};
struct RegistryKeyTraits {
    using Type = HKEY;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ::RegCloseKey(h); }
};
struct CoTaskMemoryTraits {               // memory the COM task allocator gave out
    using Type = void*;
    static Type Invalid() { return nullptr; }
    static void Close(Type p) { ::CoTaskMemFree(p); }
};

using UniqueKernelHandle = UniqueHandle<KernelHandleTraits>;
using UniqueFileHandle = UniqueHandle<FileHandleTraits>;
using UniqueServiceHandle = UniqueHandle<ServiceHandleTraits>;
using UniqueMenu = UniqueHandle<MenuHandleTraits>;
using UniqueGdiObject = UniqueHandle<GdiObjectTraits>;
using UniqueIcon = UniqueHandle<IconHandleTraits>;
using UniqueLocalMemory = UniqueHandle<LocalMemoryTraits>;
using UniqueRegistryKey = UniqueHandle<RegistryKeyTraits>;
using UniqueCoTaskMemory = UniqueHandle<CoTaskMemoryTraits>;

} // namespace CL
