#pragma once
// What the editor's "HDA Database Data..." and "Historical data..." do: the
// glue between the address space editor and the historian's windows.
#include <windows.h>

#include <functional>
#include <string>

namespace CL {

class CHistorian;

// Opens the historical data of an item (owner window, archived item ID).
using HistoricalDataOpener = std::function<void(HWND, const std::wstring&)>;

// The editor's hook: when the database cannot be opened, the box "The HDA
// database is not accessible."; otherwise the opener, which is the
// historical data window (CdlgHistData) unless another one is given.
HistoricalDataOpener MakeHistoricalDataHook(CHistorian& historian, HistoricalDataOpener opener = nullptr);

} // namespace CL
