#pragma once
// Reads back what this thread wrote to the process's diagnostic log since the
// capture began. Test programs run in parallel and share one log file per
// day, so lines are told apart by the writing thread's identifier.
#include <windows.h>

#include <string>
#include <vector>

namespace test {

class LogCapture {
public:
    // Raises the trace level to `level` (restored by the destructor) and
    // notes where the log file ends now.
    explicit LogCapture(long level = 4);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The message texts (without time and thread) this thread has logged
    // since construction, each with its level as "[<level>] <text>".
    std::vector<std::string> Lines() const;
    // True when one of Lines() equals "[<level>] <text>".
    bool Contains(unsigned level, const std::string& text) const;
    // True when one of Lines() contains the text anywhere.
    bool Contains(const std::string& text) const;
    // How many of Lines() contain the text.
    size_t Count(const std::string& text) const;
    // True when one of Lines() starts with "[<level>] <prefix>" and ends with suffix.
    bool ContainsLike(unsigned level, const std::string& prefix, const std::string& suffix) const;
    // All captured lines, one per line, for failure messages.
    std::string Dump() const;

private:
    std::wstring m_file;
    size_t m_start = 0;
    long m_oldLevel;
};

} // namespace test
