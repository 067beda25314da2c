#include "common/ReplacingFile.h"

#include <algorithm>

#include "common/Exception.h"

namespace CL {

namespace {

constexpr size_t kBufferSize = 1 << 20;
constexpr int kNameTries = 100;

// A number that differs between processes and between calls of one.
unsigned NameNumber()
{
    static LONG calls = 0;
    LARGE_INTEGER now = {};
    ::QueryPerformanceCounter(&now);
    return static_cast<unsigned>(now.QuadPart) ^ (::GetCurrentProcessId() << 16) ^
           static_cast<unsigned>(::InterlockedIncrement(&calls)) * 2654435761u;
}

} // namespace

UniqueFileHandle CReplacingFile::CreateTemporaryBeside(const std::wstring& target, std::wstring& path)
{
    // CREATE_NEW: a file of the chosen name is never touched, whoever made
    // it; another name is tried instead.
    for (int attempt = 0; attempt < kNameTries; ++attempt) {
        wchar_t number[16] = {};
        ::wsprintfW(number, L"%08x", NameNumber());
        path = target + L"." + number + L".saving";
        UniqueFileHandle file(
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file)
            return file;
        const DWORD error = ::GetLastError();
        if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS)
            break;
    }
    path.clear();
    return UniqueFileHandle();
}

CReplacingFile::CReplacingFile(const std::wstring& target, const wchar_t* failureSource)
    : m_target(target), m_failureSource(failureSource)
{
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        Fail(HResultFromWin32(ERROR_ACCESS_DENIED));
    m_file = CreateTemporaryBeside(target, m_temporary);
    if (!m_file)
        Fail(LastErrorAsHResult());
    m_buffer.reserve(kBufferSize);
}

CReplacingFile::~CReplacingFile()
{
    if (m_committed)
        return;
    m_file.reset();
    ::DeleteFileW(m_temporary.c_str());
}

void CReplacingFile::Fail(HRESULT hr) const
{
    throw CException(hr, m_failureSource);
}

void CReplacingFile::Write(std::string_view bytes)
{
    if (m_buffer.size() + bytes.size() > kBufferSize)
        Flush();
    if (bytes.size() > kBufferSize) {
        m_buffer.assign(bytes);
        Flush();
        return;
    }
    m_buffer += bytes;
}

void CReplacingFile::Flush()
{
    size_t done = 0;
    while (done < m_buffer.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(m_buffer.size() - done, 1u << 30));
        DWORD written = 0;
        if (!::WriteFile(m_file.get(), m_buffer.data() + done, chunk, &written, nullptr) || written == 0)
            Fail(LastErrorAsHResult());
        done += written;
    }
    m_buffer.clear();
}

void CReplacingFile::Commit()
{
    Flush();
    m_file.reset();
    if (!::MoveFileExW(m_temporary.c_str(), m_target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        Fail(LastErrorAsHResult());
    m_committed = true;
}

} // namespace CL
