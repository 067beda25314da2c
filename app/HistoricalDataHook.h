#pragma once
// What the editor's "HDA Database Data..." and "Historical data..." do: the
// glue between the address space editor and the historian's windows.
#include <functional>
#include <string>

#include <windows.h>

// IsHistorianAccessible: whether a connection to the database can be opened now.
#include "historian/HistorianAccess.h"

namespace CL {

class CHistorian;

inline constexpr wchar_t kHdaNotAccessibleText[] = L"The HDA database is not accessible.";
inline constexpr wchar_t kHdaExplorerTitle[] = L"OPC HDA Database Explorer";
inline constexpr wchar_t kHistoryWindowMissingText[] =
    L"The historical data window is not available yet in this version of the control panel.";

// Opens the historical data of an item (owner window, archived item ID).
using HistoricalDataOpener = std::function<void(HWND, const std::wstring&)>;

// The editor's hook: when the database cannot be opened, the box "The HDA
// database is not accessible."; otherwise the opener, or, while there is
// none, a box saying that the window is not available yet.
HistoricalDataOpener MakeHistoricalDataHook(CHistorian& historian, HistoricalDataOpener opener = nullptr);

} // namespace CL
