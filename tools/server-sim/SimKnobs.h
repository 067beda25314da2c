#pragma once
// The simulator's test knobs (ServerSim.ini), read afresh for every event.
#include <string>

namespace sim {

struct SimKnobs {
    bool ignoreWriteRequest = false;
    unsigned writeDelay = 0;
    unsigned startWaitHint = 0;
    unsigned startDelay = 0;
    unsigned stopWaitHint = 0;
    unsigned stopDelay = 0;
    bool serviceOnInstall = false;
    bool goneAfterUnregister = false;
    unsigned archiveIntervalMs = 0;   // 0: no periodic archive runs
    unsigned archiveValues = 1;       // at least 1
};

SimKnobs ReadKnobs(const std::wstring& folder);

} // namespace sim
