#pragma once
// CRegistryKey: an open registry key that closes itself. Reads give false
// for a value that is missing or of another type, so that a caller can fall
// back to its default; writes throw CException with the system's error.
#include <windows.h>

#include <string>

#include "common/Handle.h"

namespace CL {

class CRegistryKey {
public:
    CRegistryKey() = default;

    // The key opened for reading; an empty (invalid) key when it is missing.
    static CRegistryKey Open(HKEY root, const std::wstring& path);
    // The key opened for reading and writing, created when it is missing.
    static CRegistryKey Create(HKEY root, const std::wstring& path);
    // Deletes the key with everything below it; a missing key is no error.
    static void Delete(HKEY root, const std::wstring& path);

    bool Valid() const noexcept { return m_key.valid(); }
    HKEY Get() const noexcept { return m_key.get(); }

    bool ReadDword(const wchar_t* name, DWORD& value) const;
    bool ReadString(const wchar_t* name, std::wstring& value) const;
    void WriteDword(const wchar_t* name, DWORD value) const;
    void WriteString(const wchar_t* name, const std::wstring& value) const;

private:
    explicit CRegistryKey(HKEY key) : m_key(key) {}

    UniqueRegistryKey m_key;
};

} // namespace CL
