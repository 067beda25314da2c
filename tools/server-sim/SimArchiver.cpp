#include "SimArchiver.h"

#include <objbase.h>

#include <algorithm>

#include "SimKnobs.h"
#include "SimValues.h"
#include "common/CaughtException.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/historian/HistoricDataWriter.h"

namespace sim {

namespace {

constexpr double kMillisecond = 1.0 / 86400000.0;   // of an OLE date
// Two values of a run never lie closer together than this (the readers
// deliver time stamps in whole milliseconds).
constexpr double kShortestStep = 10 * kMillisecond;
// The step between values when no periodic runs are made.
constexpr unsigned kStepWithoutTimerMs = 1000;
// How often the thread looks at the interval knob again while periodic runs
// are off, so that switching them on takes effect.
constexpr DWORD kKnobPollMs = 1000;

DATE NowUtc()
{
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    return CL::SystemTimeToDate(now);
}

} // namespace

CSimArchiver::CSimArchiver(CSimReport& report, std::wstring connectionString)
    : m_report(report),
      m_connectionString(std::move(connectionString)),
      m_stop(::CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_runNow(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
{
    if (!m_stop || !m_runNow)
        CL::ThrowLastError(L"::CreateEventW (nullptr, FALSE, FALSE, nullptr)");
}

CSimArchiver::~CSimArchiver()
{
    Stop();
}

void CSimArchiver::Start()
{
    m_thread.reset(::CreateThread(nullptr, 0, &CSimArchiver::ThreadMain, this, 0, nullptr));
    if (!m_thread)
        CL::ThrowLastError(L"::CreateThread (nullptr, 0, &CSimArchiver::ThreadMain, this, 0, nullptr)");
}

void CSimArchiver::SetItems(std::vector<SimArchivedItem> items)
{
    CL::CCriticalSection::Lock lock(m_lock);
    m_items = std::move(items);
}

std::vector<SimArchivedItem> CSimArchiver::Items() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return m_items;
}

void CSimArchiver::RequestRun()
{
    ::SetEvent(m_runNow.get());
}

void CSimArchiver::Stop(const std::function<void()>& progress)
{
    ::SetEvent(m_stop.get());
    if (!m_thread)
        return;
    while (::WaitForSingleObject(m_thread.get(), 100) == WAIT_TIMEOUT)
        if (progress)
            progress();
    m_thread.reset();
}

bool CSimArchiver::StopRequested() const
{
    return ::WaitForSingleObject(m_stop.get(), 0) == WAIT_OBJECT_0;
}

DWORD WINAPI CSimArchiver::ThreadMain(void* self)
{
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    static_cast<CSimArchiver*>(self)->Loop();
    if (SUCCEEDED(com))
        ::CoUninitialize();
    return 0;
}

void CSimArchiver::Loop()
{
    const HANDLE events[] = {m_stop.get(), m_runNow.get()};
    for (;;) {
        const unsigned intervalMs = ReadKnobs(m_report.Folder()).archiveIntervalMs;
        const DWORD woken = ::WaitForMultipleObjects(2, events, FALSE, intervalMs ? intervalMs : kKnobPollMs);
        if (woken == WAIT_OBJECT_0 || woken == WAIT_FAILED)
            return;
        if (woken == WAIT_OBJECT_0 + 1 || intervalMs)
            Run();
    }
}

std::vector<DATE> CSimArchiver::NextTimes(unsigned count, unsigned intervalMs) const
{
    const DATE now = NowUtc();
    double step = std::max(kShortestStep, (intervalMs ? intervalMs / count : kStepWithoutTimerMs) * kMillisecond);
    DATE first = now - (count - 1) * step;
    if (m_lastTime > 0.0 && first <= m_lastTime) {
        // The previous run ended less than a whole run ago (a reload right
        // after a periodic run): squeeze this run in after it.
        step = std::max(kShortestStep, (now - m_lastTime) / count);
        first = m_lastTime + step;
    }
    std::vector<DATE> times(count);
    for (unsigned i = 0; i < count; ++i)
        times[i] = first + i * step;
    return times;
}

void CSimArchiver::Run()
{
    const unsigned run = ++m_runCount;
    const SimKnobs knobs = ReadKnobs(m_report.Folder());
    const std::vector<SimArchivedItem> items = Items();
    const std::vector<DATE> times = NextTimes(knobs.archiveValues, knobs.archiveIntervalMs);
    try {
        if (!items.empty()) {
            CL::CHistoricDataWriter writer(m_connectionString);
            writer.CreateTable();
            for (const SimArchivedItem& item : items) {
                if (StopRequested())
                    return;
                ArchiveItem(writer, item, times);
            }
            m_lastTime = times.back();
        }
        m_report.Event(CL::FormatA("archive run #%u done", run));
    } catch (...) {
        m_report.Event(CL::FormatA("archive run #%u failed: %s", run, CL::CaughtExceptionLine().c_str()));
    }
}

void CSimArchiver::ArchiveItem(CL::CHistoricDataWriter& writer, const SimArchivedItem& item,
                               const std::vector<DATE>& times)
{
    const std::string id = CL::ToUtf8(item.itemId);
    try {
        unsigned& sample = m_samples[item.itemId];
        std::vector<CL::CHistoricValue> values;
        for (const DATE time : times) {
            values.push_back({time, SimulatedQuality(sample), SimulatedValue(item.canonicalDataType, sample, time)});
            ++sample;
        }
        writer.AppendRun(item.itemId, values);
        m_report.Event(CL::FormatA("archived %s %u values", id.c_str(), static_cast<unsigned>(values.size())));
    } catch (...) {
        m_report.Event(CL::FormatA("archive failed %s: %s", id.c_str(), CL::CaughtExceptionLine().c_str()));
    }
}

} // namespace sim
