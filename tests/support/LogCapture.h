#pragma once
// Reads back what the running test wrote to the program's diagnostic log.
// The log file is shared by every test process of one executable, so a
// capture keeps only the lines appended after it was made and written by
// the capturing thread (the thread id is part of every line).
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

    // The new lines of this thread as "[<level>] <text>".
    std::vector<std::string> Messages() const;
    // Whether one of them contains the text.
    bool Contains(const std::string& text) const;
    // How many of them contain the text.
    size_t Count(const std::string& text) const;

private:
    std::wstring m_file;
    size_t m_start = 0;
    long m_oldLevel;
};

} // namespace test
