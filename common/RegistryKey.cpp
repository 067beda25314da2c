#include "common/RegistryKey.h"

#include "common/Exception.h"

namespace CL {

namespace {

void ThrowIfFailed(LSTATUS status, const wchar_t* source)
{
    if (status != ERROR_SUCCESS)
        throw CException(HRESULT_FROM_WIN32(status), source);
}

} // namespace

CRegistryKey CRegistryKey::Open(HKEY root, const std::wstring& path)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return CRegistryKey();
    return CRegistryKey(key);
}

CRegistryKey CRegistryKey::Create(HKEY root, const std::wstring& path)
{
    HKEY key = nullptr;
    ThrowIfFailed(::RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &key, nullptr),
                  L"RegCreateKeyExW");
    return CRegistryKey(key);
}

void CRegistryKey::Delete(HKEY root, const std::wstring& path)
{
    const LSTATUS status = ::RegDeleteTreeW(root, path.c_str());
    // A key that another process deleted while this one was deleting it is
    // gone as asked.
    if (status != ERROR_FILE_NOT_FOUND && status != ERROR_KEY_DELETED)
        ThrowIfFailed(status, L"RegDeleteTreeW");
}

bool CRegistryKey::ReadDword(const wchar_t* name, DWORD& value) const
{
    if (!Valid())
        return false;
    DWORD type = 0;
    DWORD read = 0;
    DWORD size = sizeof(read);
    if (::RegQueryValueExW(Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&read), &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof(read))
        return false;
    value = read;
    return true;
}

bool CRegistryKey::ReadString(const wchar_t* name, std::wstring& value) const
{
    if (!Valid())
        return false;
    DWORD type = 0;
    DWORD size = 0;
    if (::RegQueryValueExW(Get(), name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS || type != REG_SZ)
        return false;
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (::RegQueryValueExW(Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size) !=
            ERROR_SUCCESS || type != REG_SZ)
        return false;
    text.resize(wcsnlen(text.c_str(), text.size()));   // the stored terminator, if any
    value = text;
    return true;
}

void CRegistryKey::WriteDword(const wchar_t* name, DWORD value) const
{
    ThrowIfFailed(::RegSetValueExW(Get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value)),
                  L"RegSetValueExW");
}

void CRegistryKey::WriteString(const wchar_t* name, const std::wstring& value) const
{
    const DWORD size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    ThrowIfFailed(::RegSetValueExW(Get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), size),
                  L"RegSetValueExW");
}

} // namespace CL
