#include "app/HistoricalDataHook.h"

#include "common/historian/Historian.h"

namespace CL {

HistoricalDataOpener MakeHistoricalDataHook(CHistorian& historian, HistoricalDataOpener opener)
{
    return [&historian, opener](HWND owner, const std::wstring& itemId) {
        if (!IsHistorianAccessible(historian)) {
            ::MessageBoxW(nullptr, kHdaNotAccessibleText, kHdaExplorerTitle, MB_OK | MB_ICONERROR);
            return;
        }
        if (opener)
            opener(owner, itemId);
        else
            ::MessageBoxW(owner, kHistoryWindowMissingText, kHdaExplorerTitle, MB_OK | MB_ICONINFORMATION);
    };
}

} // namespace CL
