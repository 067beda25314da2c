#include "LogCapture.h"

#include <cstdio>

#include "TestSupport.h"
#include "app/DiagnosticLog.h"
#include "config/Settings.h"

namespace test {

namespace {

std::wstring TodaysLogFile()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    const CL::DiagnosticLog& log = CL::DiagnosticLog::Instance();
    return log.FileName(now, log.FileCounter());
}

} // namespace

LogCapture::LogCapture(long level) : m_file(TodaysLogFile()), m_oldLevel(g_Settings.TraceLevel)
{
    m_start = ReadFileBytes(m_file).size();
    g_Settings.TraceLevel = level;
}

LogCapture::~LogCapture()
{
    g_Settings.TraceLevel = m_oldLevel;
}

std::vector<std::string> LogCapture::Messages() const
{
    const std::string bytes = ReadFileBytes(m_file);
    char thread[16];
    std::snprintf(thread, sizeof thread, "(%08x)", static_cast<unsigned>(::GetCurrentThreadId()));
    std::vector<std::string> messages;
    size_t pos = m_start < bytes.size() ? m_start : bytes.size();
    while (pos < bytes.size()) {
        size_t end = bytes.find("\r\n", pos);
        if (end == std::string::npos)
            end = bytes.size();
        const std::string line = bytes.substr(pos, end - pos);
        pos = end + 2;
        // "hh:mm:ss:mmmm (tttttttt) [l] text"
        if (line.find(thread) == std::string::npos)
            continue;
        const size_t level = line.find(") [");
        if (level != std::string::npos)
            messages.push_back(line.substr(level + 2));
    }
    return messages;
}

bool LogCapture::Contains(const std::string& text) const
{
    return Count(text) > 0;
}

size_t LogCapture::Count(const std::string& text) const
{
    size_t n = 0;
    for (const std::string& message : Messages())
        if (message.find(text) != std::string::npos)
            ++n;
    return n;
}

} // namespace test
