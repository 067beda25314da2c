#include "LogCapture.h"

#include <cstdio>
#include <sstream>

#include "TestSupport.h"
#include "common/DiagnosticLog.h"
#include "config/Settings.h"

namespace test {

namespace {

std::wstring CurrentLogFile()
{
    CL::DiagnosticLog& log = CL::DiagnosticLog::Instance();
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    return log.FileName(now, log.FileCounter());
}

// "hh:mm:ss:mmmm (tttttttt) [": the head of every log line.
bool StartsLikeALogLine(const std::string& line)
{
    static const char pattern[] = "dd:dd:dd:dddd (xxxxxxxx) [";
    if (line.size() < sizeof pattern - 1)
        return false;
    for (size_t i = 0; i + 1 < sizeof pattern; ++i) {
        const char c = line[i];
        switch (pattern[i]) {
        case 'd':
            if (c < '0' || c > '9')
                return false;
            break;
        case 'x':
            if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')))
                return false;
            break;
        default:
            if (c != pattern[i])
                return false;
        }
    }
    return true;
}

} // namespace

LogCapture::LogCapture(long level)
    : m_file(CurrentLogFile()), m_start(ReadFileBytes(m_file).size()), m_oldLevel(g_Settings.TraceLevel)
{
    g_Settings.TraceLevel = level;
}

LogCapture::~LogCapture()
{
    g_Settings.TraceLevel = m_oldLevel;
}

std::vector<std::string> LogCapture::Lines() const
{
    const std::string text = ReadFileBytes(m_file);
    char thread[32];
    std::snprintf(thread, sizeof thread, "(%08x) ", static_cast<unsigned>(::GetCurrentThreadId()));
    // A message may hold line breaks of its own (system texts end in one,
    // database texts have several lines): a physical line that does not
    // start like a log line continues the message before it.
    std::vector<std::string> lines;
    bool ours = false;
    std::istringstream in(m_start <= text.size() ? text.substr(m_start) : text);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!StartsLikeALogLine(line)) {
            if (ours && !lines.empty())
                lines.back() += "\n" + line;
            continue;
        }
        const size_t at = line.find(thread);
        ours = at == 14;
        if (ours)
            lines.push_back(line.substr(at + std::string(thread).size()));
    }
    return lines;
}

bool LogCapture::Contains(unsigned level, const std::string& text) const
{
    const std::string wanted = "[" + std::to_string(level) + "] " + text;
    for (const std::string& line : Lines()) {
        if (line == wanted)
            return true;
    }
    return false;
}

bool LogCapture::ContainsLike(unsigned level, const std::string& prefix, const std::string& suffix) const
{
    const std::string head = "[" + std::to_string(level) + "] " + prefix;
    for (const std::string& line : Lines()) {
        if (line.size() >= head.size() + suffix.size() && line.compare(0, head.size(), head) == 0 &&
            line.compare(line.size() - suffix.size(), suffix.size(), suffix) == 0)
            return true;
    }
    return false;
}

bool LogCapture::Contains(const std::string& text) const
{
    return Count(text) > 0;
}

size_t LogCapture::Count(const std::string& text) const
{
    size_t n = 0;
    for (const std::string& line : Lines())
        if (line.find(text) != std::string::npos)
            ++n;
    return n;
}

std::string LogCapture::Dump() const
{
    std::string text;
    for (const std::string& line : Lines())
        text += line + "\n";
    return text;
}

} // namespace test
