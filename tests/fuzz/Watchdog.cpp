#include "Watchdog.h"

#include <windows.h>

#include <cstdio>
#include <exception>

namespace fuzz {

namespace {

std::atomic<IFuzzTarget*> g_running{nullptr};

LONG WINAPI OnUnhandled(EXCEPTION_POINTERS* info)
{
    std::printf("CRASH: exception 0x%08lX in the %s loader\n",
                static_cast<unsigned long>(info->ExceptionRecord->ExceptionCode),
                g_running.load() ? g_running.load()->Name() : "(none)");
    if (IFuzzTarget* target = g_running.load())
        SaveInput("crash", *target);
    std::fflush(stdout);
    ::TerminateProcess(::GetCurrentProcess(), 4);
    return EXCEPTION_EXECUTE_HANDLER;
}

// A C++ exception that nothing caught ends the process through terminate.
void OnTerminate()
{
    std::printf("CRASH: an exception nobody caught in the %s loader\n",
                g_running.load() ? g_running.load()->Name() : "(none)");
    if (IFuzzTarget* target = g_running.load())
        SaveInput("crash", *target);
    std::fflush(stdout);
    ::TerminateProcess(::GetCurrentProcess(), 4);
}

std::string FileNamePart(const char* name)
{
    std::string part;
    for (const char* c = name; *c; ++c)
        part += (*c == ' ') ? '-' : *c;
    return part;
}

} // namespace

void SaveInput(const char* what, const IFuzzTarget& target)
{
    char module[MAX_PATH] = {};
    ::GetModuleFileNameA(nullptr, module, MAX_PATH);
    std::string path = module;
    path = path.substr(0, path.find_last_of('\\') + 1) + "fuzz-" + what + "-" + FileNamePart(target.Name()) + ".bin";
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(target.CurrentInput().data(), 1, target.CurrentInput().size(), file);
        std::fclose(file);
        std::printf("the input is saved in %s\n", path.c_str());
    }
}

CWatchdog::CWatchdog(unsigned boundMs) : m_boundMs(boundMs), m_thread([this] { Watch(); })
{
    ::SetUnhandledExceptionFilter(OnUnhandled);
    std::set_terminate(OnTerminate);
}

CWatchdog::~CWatchdog()
{
    m_stop = true;
    m_thread.join();
}

void CWatchdog::Enter(IFuzzTarget* target)
{
    m_since = ::GetTickCount64();
    m_target = target;
    g_running = target;
}

void CWatchdog::Leave()
{
    m_target = nullptr;
    g_running = nullptr;
}

void CWatchdog::Watch()
{
    while (!m_stop) {
        ::Sleep(50);
        IFuzzTarget* target = m_target.load();
        if (target && ::GetTickCount64() - m_since.load() > m_boundMs) {
            std::printf("HANG: one input of the %s loader ran longer than %u ms\n", target->Name(), m_boundMs);
            SaveInput("hang", *target);
            std::fflush(stdout);
            ::TerminateProcess(::GetCurrentProcess(), 3);
        }
    }
}

} // namespace fuzz
