#include "LogWatch.h"

#include <windows.h>

#include <cstdio>
#include <sstream>

#include "TestSupport.h"
#include "app/DiagnosticLog.h"
#include "config/Settings.h"

namespace test {

namespace {
std::wstring CurrentLogFile()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    CL::DiagnosticLog& log = CL::DiagnosticLog::Instance();
    return log.FileName(now, log.FileCounter());
}
} // namespace

LogWatch::LogWatch(long level) : m_path(CurrentLogFile()), m_previousLevel(g_Settings.TraceLevel)
{
    m_offset = ReadFileBytes(m_path).size();
    g_Settings.TraceLevel = level;
}

LogWatch::~LogWatch()
{
    g_Settings.TraceLevel = m_previousLevel;
}

std::vector<std::string> LogWatch::Messages() const
{
    const std::string bytes = ReadFileBytes(m_path);
    char thread[16];
    std::snprintf(thread, sizeof thread, "(%08x) [", static_cast<unsigned>(::GetCurrentThreadId()));
    std::vector<std::string> messages;
    std::istringstream stream(bytes.size() > m_offset ? bytes.substr(m_offset) : std::string());
    std::string line;
    while (std::getline(stream, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const size_t at = line.find(thread);
        if (at == std::string::npos)
            continue;
        const size_t levelAt = at + std::string(thread).size();
        const size_t close = line.find("] ", levelAt);
        if (close == std::string::npos)
            continue;
        messages.push_back(line.substr(levelAt, close - levelAt) + " " + line.substr(close + 2));
    }
    return messages;
}

bool LogWatch::Contains(const std::string& levelAndMessage) const
{
    for (const std::string& message : Messages())
        if (message == levelAndMessage)
            return true;
    return false;
}

} // namespace test
