#pragma once
// The files and knobs through which the server simulator and the tests talk.
// Every file lies in the simulator's own folder (the installation folder).
namespace sim {

// The exchange file of the address space (read at start and on code 128,
// written on code 129).
inline constexpr wchar_t kExchangeFile[] = L"DefaultAddressSpace.xml";

// One line per event, UTF-8, CR LF ended, appended while the simulator runs:
//   "started <service name>"
//   "loaded #<n> <bytes> bytes root=<element> branches=<b> items=<i> conditions=<c>"
//   "load failed #<n> <reason>"           (the previous address space is kept)
//   "control 128" / "control 129"
//   "ignored 129"                          (knob IgnoreWriteRequest)
//   "wrote <bytes> bytes"                  (answer to 129)
//   "stop requested" / "stopped"
//   "command line /u" / "command line /i"  (then the process exits 0)
// and, when the settings name a historian database (see SimArchiver.h):
//   "archiving on, <n> items"              (after each load: the items marked for archiving)
//   "archiving off, no database in the settings"
//   "archived <item id> <n> values"        (one run of one item appended)
//   "archive failed <item id>: <reason>"   (that item's run was not stored)
//   "archive run #<n> done"                (every item of the run was tried)
//   "archive run #<n> failed: <reason>"    (the database could not be used)
inline constexpr wchar_t kEventLogFile[] = L"ServerSim.log";

// A byte copy of the address space the simulator holds, rewritten after each
// successful load (what the control panel's last save handed over).
inline constexpr wchar_t kLoadedCopyFile[] = L"ServerSim.loaded.xml";

// Test knobs, an ini file with one section; read again at every event so a
// test may change them while the service runs. Missing keys are 0.
inline constexpr wchar_t kKnobFile[] = L"ServerSim.ini";
inline constexpr wchar_t kKnobSection[] = L"Simulator";
inline constexpr wchar_t kKnobIgnoreWriteRequest[] = L"IgnoreWriteRequest"; // 1: code 129 does nothing
inline constexpr wchar_t kKnobWriteDelay[] = L"WriteDelay";       // ms before answering 129
inline constexpr wchar_t kKnobStartWaitHint[] = L"StartWaitHint"; // ms reported while starting
inline constexpr wchar_t kKnobStartDelay[] = L"StartDelay";       // ms the start takes
inline constexpr wchar_t kKnobStopWaitHint[] = L"StopWaitHint";   // ms reported while stopping
inline constexpr wchar_t kKnobStopDelay[] = L"StopDelay";         // ms the stop takes
// 1: " /u" also deletes the service named in the settings file and " /i"
// registers it (as the real server's unregister/register do).
inline constexpr wchar_t kKnobServiceOnInstall[] = L"ServiceOnInstall";
// 1: " /u" moves the executable away (to Morvane.exe.gone), so that the
// " /i" after it cannot be started.
inline constexpr wchar_t kKnobGoneAfterUnregister[] = L"GoneAfterUnregister";
inline constexpr wchar_t kGoneExecutableName[] = L"Morvane.exe.gone";
// Milliseconds between two periodic archive runs (missing: 5000; 0: no
// periodic runs, only those at start and after each reload).
inline constexpr wchar_t kKnobArchiveIntervalMs[] = L"ArchiveIntervalMs";
inline constexpr unsigned kDefaultArchiveIntervalMs = 5000;
// Values per item in one archive run (missing or 0: 5; at most 1000).
inline constexpr wchar_t kKnobArchiveValues[] = L"ArchiveValues";
inline constexpr unsigned kDefaultArchiveValues = 5;

// Command lines of the simulator itself (never used by the control panel):
// register this executable as the service named in the settings file, or
// stop and delete that service. Exit code 0 or the Win32 error.
inline constexpr wchar_t kRegisterSwitch[] = L"--register-service";
inline constexpr wchar_t kDeleteSwitch[] = L"--delete-service";

} // namespace sim
