#pragma once
// CSimReport: the simulator's event log (ServerSim.log in its folder). Each
// line is appended and the file closed again, so a test can read it at any
// time; writers on different threads are serialised.
#include <windows.h>

#include <string>

namespace sim {

class CSimReport {
public:
    explicit CSimReport(std::wstring folder);
    ~CSimReport();
    CSimReport(const CSimReport&) = delete;
    CSimReport& operator=(const CSimReport&) = delete;

    void Event(const std::string& line);
    const std::wstring& Folder() const { return m_folder; }

private:
    std::wstring m_folder;
    CRITICAL_SECTION m_lock;
};

// The folder of the running executable, ending with a backslash.
std::wstring ExecutableFolder();

} // namespace sim
