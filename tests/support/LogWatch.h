#pragma once
// LogWatch: the diagnostic log lines that this thread writes while the watch
// lives. Other test processes may write to the same log file at the same
// time; their lines carry other thread ids and are left out.
#include <string>
#include <vector>

namespace test {

class LogWatch {
public:
    // Raises the trace level to `level` (and puts it back at the end).
    explicit LogWatch(long level = 4);
    ~LogWatch();
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    // The messages (the text after "[<level>] ") written since construction
    // by this thread, each prefixed with its level: "3 CDummyWnd::OnCreate ...".
    std::vector<std::string> Messages() const;
    bool Contains(const std::string& levelAndMessage) const;

private:
    std::wstring m_path;
    size_t m_offset = 0;
    long m_previousLevel = 1;
};

} // namespace test
