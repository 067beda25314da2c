#include "SimKnobs.h"

#include <windows.h>

#include "SimFiles.h"

namespace sim {

namespace {
unsigned Knob(const std::wstring& file, const wchar_t* name, unsigned missing = 0)
{
    return ::GetPrivateProfileIntW(kKnobSection, name, static_cast<INT>(missing), file.c_str());
}
} // namespace

SimKnobs ReadKnobs(const std::wstring& folder)
{
    const std::wstring file = folder + kKnobFile;
    SimKnobs knobs;
    knobs.ignoreWriteRequest = Knob(file, kKnobIgnoreWriteRequest) != 0;
    knobs.writeDelay = Knob(file, kKnobWriteDelay);
    knobs.startWaitHint = Knob(file, kKnobStartWaitHint);
    knobs.startDelay = Knob(file, kKnobStartDelay);
    knobs.stopWaitHint = Knob(file, kKnobStopWaitHint);
    knobs.stopDelay = Knob(file, kKnobStopDelay);
    knobs.serviceOnInstall = Knob(file, kKnobServiceOnInstall) != 0;
    knobs.goneAfterUnregister = Knob(file, kKnobGoneAfterUnregister) != 0;
    knobs.archiveIntervalMs = Knob(file, kKnobArchiveIntervalMs, kDefaultArchiveIntervalMs);
    const unsigned values = Knob(file, kKnobArchiveValues);
    knobs.archiveValues = values == 0 ? kDefaultArchiveValues : values > 1000 ? 1000 : values;
    return knobs;
}

} // namespace sim
