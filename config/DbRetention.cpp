#include "config/DbRetention.h"

#include "config/Settings.h"

CDbRetention CDbRetention::From(const CSettings& settings)
{
    CDbRetention values;
    values.KeepAll = settings.DbKeepAllValues;
    values.KeepLast = settings.DbKeepLastValues;
    values.LastValues = settings.DbLastValues;
    values.KeepMinutes = settings.DbKeepLastMinutesValues;
    values.LastMinutes = settings.DbLastMinutesValues;
    values.DeletePercent = settings.DbDeletePercent;
    return values;
}

void CDbRetention::StoreInto(CSettings& settings) const
{
    settings.DbKeepAllValues = KeepAll;
    settings.DbKeepLastValues = KeepLast;
    settings.DbLastValues = LastValues;
    settings.DbKeepLastMinutesValues = KeepMinutes;
    settings.DbLastMinutesValues = LastMinutes;
    settings.DbDeletePercent = DeletePercent;
}
