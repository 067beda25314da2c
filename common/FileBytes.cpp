#include "common/FileBytes.h"

#include <windows.h>

#include "common/Exception.h"
#include "common/Handle.h"

namespace CL {

std::string ReadWholeFile(const std::wstring& path)
{
    UniqueFileHandle file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        ThrowLastError((L"::CreateFileW (" + path + L")").c_str());
    LARGE_INTEGER size = {};
    if (!::GetFileSizeEx(file.get(), &size))
        ThrowLastError(L"::GetFileSizeEx");
    if (size.QuadPart > 0x7FFFFFFF)
        throw CException(E_OUTOFMEMORY, L"The file is too large: " + path);
    std::string bytes(static_cast<size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!bytes.empty() && (!::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) ||
                           read != bytes.size()))
        ThrowLastError((L"::ReadFile (" + path + L")").c_str());
    return bytes;
}

void WriteWholeFile(const std::wstring& path, std::string_view bytes)
{
    const std::wstring temporary = path + L".tmp";
    {
        UniqueFileHandle file(::CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            ThrowLastError((L"::CreateFileW (" + temporary + L")").c_str());
        DWORD written = 0;
        if (!bytes.empty() && (!::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                                            nullptr) ||
                               written != bytes.size())) {
            const DWORD error = ::GetLastError();
            file.reset();
            ::DeleteFileW(temporary.c_str());
            ::SetLastError(error);
            ThrowLastError((L"::WriteFile (" + temporary + L")").c_str());
        }
    }
    if (!::MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        const DWORD error = ::GetLastError();
        ::DeleteFileW(temporary.c_str());
        ::SetLastError(error);
        ThrowLastError((L"::MoveFileExW (" + temporary + L", " + path + L")").c_str());
    }
}

} // namespace CL
