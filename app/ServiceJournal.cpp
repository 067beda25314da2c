#include "app/ServiceJournal.h"

#include "common/ChangeJournal.h"

namespace CL {

void JournalServiceStarted(const std::wstring& serviceName, DWORD result) noexcept
{
    try {
        CChangeJournal::Instance().Record(kJournalServiceStarted,
                                          L"Service '" + serviceName + L"' " +
                                              (result == 0 ? L"started from the tray menu."
                                                           : L"asked to start from the tray menu (not running "
                                                             L"within 30 s)."));
    } catch (...) {
    }
}

void JournalServiceStopped(const std::wstring& serviceName, DWORD result) noexcept
{
    try {
        CChangeJournal::Instance().Record(kJournalServiceStopped,
                                          L"Service '" + serviceName + L"' " +
                                              (result == 0 ? L"stopped from the tray menu."
                                                           : L"asked to stop from the tray menu (not stopped "
                                                             L"within 30 s)."));
    } catch (...) {
    }
}

} // namespace CL
