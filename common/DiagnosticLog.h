#pragma once
// The diagnostic log: one text file per day beside the executable,
// "<exe path without extension>.<YYYY>-<MM>-<DD>_<NNN>.log", one CR LF line
// per message, filtered by a trace level (the TraceLevel setting). Every line opens, appends
// to and closes the file, so nothing is lost when the process dies.
#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "common/CriticalSection.h"

namespace CL {

// Source of the local time for the log; tests substitute their own clock to
// move across midnight.
class ILogClock {
public:
    virtual ~ILogClock() = default;
    virtual SYSTEMTIME LocalNow() const = 0;
};

class SystemLogClock final : public ILogClock {
public:
    SYSTEMTIME LocalNow() const override;
};

class DiagnosticLog {
public:
    static constexpr uint32_t kSizeLimitKiB = 10000;
    static constexpr uint8_t kMaximumLevel = 99;

    // basePath: the executable's full path without its extension.
    DiagnosticLog(std::wstring basePath, const ILogClock& clock);
    DiagnosticLog(const DiagnosticLog&) = delete;
    DiagnosticLog& operator=(const DiagnosticLog&) = delete;

    // The process-wide log, created on first use from the module path.
    static DiagnosticLog& Instance();

    // Writes one line unless the level is above the trace level or the
    // maximum level. Failures to open or write the file lose the line.
    void Write(unsigned level, std::string_view text);

    uint32_t FileCounter() const { return m_fileCounter; }
    const std::wstring& BasePath() const { return m_basePath; }
    std::wstring FileName(const SYSTEMTIME& date, uint32_t counter) const;
    static std::string FormatLine(const SYSTEMTIME& time, DWORD threadId, unsigned level,
                                  std::string_view text);

    // The writers' lock (Write takes it itself). A thread that finds it held
    // waits at time-critical priority and gets its own priority back as soon
    // as it holds the lock.
    void Lock() { m_lock.Enter(); }
    void Unlock() { m_lock.Leave(); }

private:
    std::wstring ChooseFile(const SYSTEMTIME& now);

    uint32_t m_fileCounter = 0;
    uint32_t m_sizeLimit = kSizeLimitKiB;
    uint8_t m_maximumLevel = kMaximumLevel;
    CCriticalSection m_lock;   // waits with a priority boost
    std::wstring m_basePath;
    const ILogClock& m_clock;
};

// The executable's full path with the extension of its last component removed.
std::wstring StripExtension(const std::wstring& path);

// The log's base path: the module's file name without its extension
// (nullptr: the running executable). Throws CException when the name cannot
// be read.
std::wstring ModuleBasePath(HMODULE module);

// " [<file name without directory and extension>, <line>]".
std::string SourcePosition(const char* file, int line);

} // namespace CL

// Writes one message to the process log (levels: 0 Error, 1 Warning,
// 2 Info, 3 Debug, 4 Trace).
void Log(unsigned level, const char* text);
void Log(unsigned level, const std::string& text);
// True when a message of this level would be written: callers test it before
// building expensive texts.
bool LogEnabled(unsigned level);
// The variable that holds the highest level written (the settings record's
// TraceLevel announces itself here); NULL returns to the default, 1.
void SetTraceLevelSource(const long* level);

// The message text's source position for this line of this file.
#define MV_POS() (::CL::SourcePosition(__FILE__, __LINE__))

// A checked call: on a zero result, logs the expression and its position at
// level 0 and goes on. Evaluates to the expression's truth.
#define MV_CHECK(expr) (::CL::CheckedCall(static_cast<bool>(expr), #expr, __FILE__, __LINE__))

namespace CL {
bool CheckedCall(bool ok, const char* expression, const char* file, int line);
}
