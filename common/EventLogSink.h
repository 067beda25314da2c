#pragma once
// Where the change journal's entries go besides its file: the Windows
// Application event log, under the product's name as its source, where
// administrators and their log collectors look. An interface, because the
// event log of the test platform keeps nothing that a test could read back:
// tests hand the journal a sink that records what it was given.
#include <string>

namespace CL {

class IEventLogSink {
public:
    virtual ~IEventLogSink() = default;
    // One information event with the entry's text; false when the event
    // log refused it (the journal logs that and goes on).
    virtual bool Report(const std::wstring& text) = 0;
};

// The real Application event log: RegisterEventSourceW with the source
// name, ReportEventW of one string, DeregisterEventSource.
class CWindowsEventLog final : public IEventLogSink {
public:
    explicit CWindowsEventLog(std::wstring sourceName) : m_source(std::move(sourceName)) {}
    bool Report(const std::wstring& text) override;

private:
    std::wstring m_source;
};

} // namespace CL
