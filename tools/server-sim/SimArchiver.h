#pragma once
// CSimArchiver: the simulated server's historian side. On a thread of its
// own it appends runs of simulated values of the archived items of the held
// address space to table HistoricData, in the stored record format: once
// when asked (at start and after each reload of the address space) and then
// every ArchiveIntervalMs (ServerSim.ini; 0: only when asked).
//
// A run holds ArchiveValues values per item (SimValues.h), time stamps in UTC
// at regular steps ending now, each run strictly after the previous one, so
// an item's archived times keep increasing. The step is the interval divided
// by the number of values (1 s when periodic runs are off), shorter when the
// previous run ended less than that ago. One connection per run; the table
// is created when it is missing. Failures are events in ServerSim.log and
// never end the thread.
#include <windows.h>
#include <oleauto.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "SimArchivedItems.h"
#include "SimReport.h"
#include "common/CriticalSection.h"
#include "common/Handle.h"

namespace CL {
class CHistoricDataWriter;
}

namespace sim {

class CSimArchiver {
public:
    CSimArchiver(CSimReport& report, std::wstring connectionString);
    // Ends the thread (Stop).
    ~CSimArchiver();
    CSimArchiver(const CSimArchiver&) = delete;
    CSimArchiver& operator=(const CSimArchiver&) = delete;

    // Starts the thread. Throws CException when it cannot be created.
    void Start();
    // The items archived from the next run on.
    void SetItems(std::vector<SimArchivedItem> items);
    // Wakes the thread for one run now (runs asked for while one is under
    // way make one more run).
    void RequestRun();
    // Asks the thread to end, ending a run between two items, and waits for
    // it; progress is called about every 100 ms while waiting.
    void Stop(const std::function<void()>& progress = {});

private:
    static DWORD WINAPI ThreadMain(void* self);
    void Loop();
    void Run();
    void ArchiveItem(CL::CHistoricDataWriter& writer, const SimArchivedItem& item, const std::vector<DATE>& times);
    std::vector<DATE> NextTimes(unsigned count, unsigned intervalMs) const;
    std::vector<SimArchivedItem> Items() const;
    bool StopRequested() const;

    CSimReport& m_report;
    std::wstring m_connectionString;
    CL::CCriticalSection m_lock;                 // guards m_items
    std::vector<SimArchivedItem> m_items;
    std::map<std::wstring, unsigned> m_samples;  // next sample per item (archive thread only)
    DATE m_lastTime = 0.0;                       // time of the last value archived (archive thread only)
    unsigned m_runCount = 0;                     // archive thread only
    CL::UniqueKernelHandle m_stop;
    CL::UniqueKernelHandle m_runNow;
    CL::UniqueKernelHandle m_thread;
};

} // namespace sim
