#include "app/HistorianSettings.h"

#include <string>

#include "common/historian/Historian.h"
#include "config/Settings.h"

namespace CL {

void ConfigureHistorian(CHistorian& historian, const CSettings& settings)
{
    const long keepLastValues =
        (settings.DbKeepAllValues || !settings.DbKeepLastValues) ? CHistorian::kNoLimit : settings.DbLastValues;
    const long keepLastMinutes = (!settings.DbKeepAllValues && settings.DbKeepLastMinutesValues)
                                     ? settings.DbLastMinutesValues
                                     : CHistorian::kNoLimit;
    historian.Configure(settings.CustomADOConnection ? settings.ADOConnection : std::wstring(), keepLastValues,
                        keepLastMinutes, settings.DbDeletePercent);
}

} // namespace CL
