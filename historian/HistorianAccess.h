#pragma once
// Whether the historian database can be reached: the windows over it are
// opened only when a connection to it can be opened.
#include <windows.h>

namespace CL {

class CHistorian;

// Opens and closes one connection with the historian's connection string.
// A failure is logged (level 1) and gives false.
bool IsHistorianAccessible(const CHistorian& historian);

// The box shown instead of a historian window when the database cannot be
// opened: "The HDA database is not accessible.", caption "OPC HDA Database
// Explorer", error icon, no owner.
void ShowHistorianNotAccessible();

} // namespace CL
