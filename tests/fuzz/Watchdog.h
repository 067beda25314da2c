#pragma once
// Guards a campaign: an input that runs longer than the bound is a hang, an
// exception that nothing handles is a crash. Either way the input is saved
// beside the program (fuzz-hang-<loader>.bin, fuzz-crash-<loader>.bin), the
// fact is printed and the process ends with exit code 3 (hang) or 4 (crash),
// so that the campaign fails.
#include <atomic>
#include <string>
#include <thread>

#include "FuzzTarget.h"

namespace fuzz {

class CWatchdog {
public:
    explicit CWatchdog(unsigned boundMs);
    ~CWatchdog();
    CWatchdog(const CWatchdog&) = delete;
    CWatchdog& operator=(const CWatchdog&) = delete;

    // The target whose input runs from now on; nullptr between inputs.
    void Enter(IFuzzTarget* target);
    void Leave();

private:
    void Watch();

    unsigned m_boundMs;
    std::atomic<IFuzzTarget*> m_target{nullptr};
    std::atomic<unsigned long long> m_since{0};
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

// Saves the input under that name and prints where.
void SaveInput(const char* what, const IFuzzTarget& target);

} // namespace fuzz
