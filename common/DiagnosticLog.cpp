#include "common/DiagnosticLog.h"

#include <cstdio>
#include <vector>

#include "common/Exception.h"
#include "common/Handle.h"

namespace CL {

SYSTEMTIME SystemLogClock::LocalNow() const
{
    SYSTEMTIME st;
    ::GetLocalTime(&st);
    return st;
}

DiagnosticLog::DiagnosticLog(std::wstring basePath, const ILogClock& clock)
    : m_basePath(std::move(basePath)), m_clock(clock)
{
}

DiagnosticLog& DiagnosticLog::Instance()
{
    static const SystemLogClock clock;
    static DiagnosticLog log(ModuleBasePath(nullptr), clock);
    return log;
}

std::wstring ModuleBasePath(HMODULE module)
{
    std::vector<wchar_t> path(260, L'\0');
    const DWORD n = ::GetModuleFileNameW(module, path.data(), 260);
    if (n == 0)
        ThrowLastError(L"::GetModuleFileNameW (0, path_buffer, 260)");
    return StripExtension(std::wstring(path.data(), n));
}

std::wstring DiagnosticLog::FileName(const SYSTEMTIME& date, uint32_t counter) const
{
    wchar_t suffix[64];
    std::swprintf(suffix, 64, L".%04d-%02d-%02d_%03d.log", date.wYear, date.wMonth, date.wDay,
                  static_cast<int>(counter));
    return m_basePath + suffix;
}

std::string DiagnosticLog::FormatLine(const SYSTEMTIME& time, DWORD threadId, unsigned level,
                                      std::string_view text)
{
    char head[64];
    std::snprintf(head, sizeof head, "%02d:%02d:%02d:%04d (%08x) [%u] ", time.wHour, time.wMinute,
                  time.wSecond, time.wMilliseconds, static_cast<unsigned>(threadId), level);
    std::string line(head);
    line.append(text);
    return line;
}

std::wstring DiagnosticLog::ChooseFile(const SYSTEMTIME& now)
{
    const DWORD limit = m_sizeLimit * 1024u;
    for (;;) {
        std::wstring name = FileName(now, m_fileCounter);
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!::GetFileAttributesExW(name.c_str(), GetFileExInfoStandard, &data) ||
            data.nFileSizeLow < limit)
            return name;
        ++m_fileCounter;   // never reset, not even when the date changes
    }
}

void DiagnosticLog::Write(unsigned level, std::string_view text)
{
    if (!LogEnabled(level) || level > m_maximumLevel)
        return;
    const SYSTEMTIME now = m_clock.LocalNow();
    const std::string line = FormatLine(now, ::GetCurrentThreadId(), level, text);

    CCriticalSection::Lock lock(m_lock);
    const std::wstring name = ChooseFile(now);
    UniqueFileHandle file(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) {
        if (::GetLastError() != 0)
            ::SetFilePointer(file.get(), 0, nullptr, FILE_END);
        DWORD written = 0;
        ::WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        ::WriteFile(file.get(), "\r\n", 2, &written, nullptr);
    }
}

std::wstring StripExtension(const std::wstring& path)
{
    const size_t slash = path.find_last_of(L"\\/");
    const size_t dot = path.find_last_of(L'.');
    if (dot == std::wstring::npos || (slash != std::wstring::npos && dot < slash))
        return path;
    return path.substr(0, dot);
}

std::string SourcePosition(const char* file, int line)
{
    std::string name(file);
    const size_t slash = name.find_last_of("\\/");
    if (slash != std::string::npos)
        name.erase(0, slash + 1);
    const size_t dot = name.find_last_of('.');
    if (dot != std::string::npos)
        name.erase(dot);
    return " [" + name + ", " + std::to_string(line) + "]";
}

bool CheckedCall(bool ok, const char* expression, const char* file, int line)
{
    if (!ok && LogEnabled(0))
        Log(0, expression + SourcePosition(file, line));
    return ok;
}

} // namespace CL

namespace {
// Until the settings record announces its TraceLevel, only errors and
// warnings are written (the setting's default).
const long kDefaultTraceLevel = 1;
const long* g_traceLevel = &kDefaultTraceLevel;
} // namespace

void SetTraceLevelSource(const long* level)
{
    g_traceLevel = level != nullptr ? level : &kDefaultTraceLevel;
}

bool LogEnabled(unsigned level)
{
    return static_cast<long long>(level) <= static_cast<long long>(*g_traceLevel);
}

void Log(unsigned level, const char* text)
{
    if (!LogEnabled(level))
        return;
    CL::DiagnosticLog::Instance().Write(level, text);
}

void Log(unsigned level, const std::string& text)
{
    Log(level, text.c_str());
}
