#include "app/HistoricalDataHook.h"

#include "common/historian/Historian.h"
#include "historian/HistorianAccess.h"
#include "historian/dlgHistData.h"

namespace CL {

HistoricalDataOpener MakeHistoricalDataHook(CHistorian& historian, HistoricalDataOpener opener)
{
    if (!opener)
        opener = [&historian](HWND owner, const std::wstring& itemId) { RunHistoricalData(owner, historian, itemId); };
    return [&historian, opener](HWND owner, const std::wstring& itemId) {
        if (!IsHistorianAccessible(historian)) {
            ShowHistorianNotAccessible();
            return;
        }
        opener(owner, itemId);
    };
}

} // namespace CL
