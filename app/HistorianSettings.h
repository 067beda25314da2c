#pragma once
// The settings record turned into the historian's parameters: the glue
// between config/ and common/historian/.
struct CSettings;

namespace CL {

class CHistorian;

// Configures the historian with the values the settings give:
//   keep-last-values  = 0x7FFFFFFF if DbKeepAllValues or not DbKeepLastValues, else DbLastValues;
//   keep-last-minutes = DbLastMinutesValues if not DbKeepAllValues and DbKeepLastMinutesValues,
//                       else 0x7FFFFFFF;
//   delete percent    = DbDeletePercent;
//   connection        = ADOConnection if CustomADOConnection, else none.
void ConfigureHistorian(CHistorian& historian, const CSettings& settings);

} // namespace CL
