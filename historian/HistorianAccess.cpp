#include "historian/HistorianAccess.h"

#include "common/CaughtException.h"
#include "common/DiagnosticLog.h"
#include "common/historian/DbConnection.h"
#include "common/historian/Historian.h"

namespace CL {

bool IsHistorianAccessible(const CHistorian& historian)
{
    try {
        OpenDbConnection(historian.ConnectionString());
        return true;
    } catch (...) {
        LogCaughtException(1, MV_POS());
        return false;
    }
}

void ShowHistorianNotAccessible()
{
    ::MessageBoxW(nullptr, L"The HDA database is not accessible.", L"OPC HDA Database Explorer",
                  MB_OK | MB_ICONERROR);
}

} // namespace CL
