#include "common/historian/HistorianItem.h"

#include <vector>

#include "common/CaughtException.h"
#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/SafeArray.h"
#include "common/Util_Variant.h"
#include "common/historian/DbConnection.h"

namespace CL {

namespace {

// One day in minutes, as the retention rule counts it.
constexpr double kDaysPerMinute = 0.000694444444444444444;

bool RuleIsOn(long value)
{
    return value >= 1 && value <= 0x7FFFFFFE;
}

void Run(IDbConnection& connection, const std::wstring& sql, const StatementObserver& observer)
{
    if (observer)
        observer(sql);
    connection.Execute(sql);
}

} // namespace

FILETIME DateToFileTime(DATE date)
{
    const SYSTEMTIME fields = DateToSystemTime(date);
    FILETIME time;
    if (!::SystemTimeToFileTime(&fields, &time))
        ThrowLastError(L"::SystemTimeToFileTime (&st, &ft)");
    return time;
}

double CHistorianItem::CutOffTime(long keepLastMinutes)
{
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    double time = 0.0;
    // The conversion drops the milliseconds; they are added back.
    if (::SystemTimeToVariantTime(&now, &time))
        time += now.wMilliseconds / 86400000.0;
    return time - keepLastMinutes * kDaysPerMinute;
}

void CHistorianItem::Append(DATE time, WORD quality, const VARIANT& value)
{
    const bool first = m_cache.ValueCount() == 0;
    m_cache.Append(time, quality, value);
    if (first)
        m_timeFrom = time;
    m_timeTo = time;
}

void CHistorianItem::SaveCache(IDbConnection& connection, const CHistorianSql& sql, const CRetention& retention,
                               const StatementObserver& observer) noexcept
{
    if (LogEnabled(3))
        Log(3, "CItem::SaveCache [Historian, 443]");
    if (m_cache.UsedSize() == 0)
        return;
    try {
        Store(connection, sql, observer);
        Empty();
    } catch (...) {
        LogCaughtException(1, " [Historian, 477]");
        return;
    }
    try {
        ApplyRetention(connection, sql, retention, observer);
    } catch (...) {
        LogCaughtException(1, " [Historian, 493]");
    }
}

void CHistorianItem::Store(IDbConnection& connection, const CHistorianSql& sql, const StatementObserver& observer)
{
    std::vector<DbField> fields(6);
    fields[0].name = L"ItemID";
    fields[0].value = CVariant(m_itemId);
    fields[1].name = L"TimeFrom";
    fields[1].value = CVariant::R8(m_timeFrom);
    fields[2].name = L"TimeTo";
    fields[2].value = CVariant::R8(m_timeTo);
    fields[3].name = L"ValCount";
    fields[3].value = CVariant::UI4(m_cache.ValueCount());
    fields[4].name = L"ItemValues";
    fields[5].name = L"CacheUsedSize";
    fields[5].value = CVariant::UI4(m_cache.UsedSize());

    // The whole array, capacity included, is lent to the new row's field
    // and taken back before the field could release it.
    VARIANT& lent = fields[4].value;
    lent.vt = VT_ARRAY | VT_UI1;
    lent.parray = m_cache.Array();
    struct TakeBack {
        VARIANT& v;
        ~TakeBack()
        {
            v.vt = VT_EMPTY;
            v.parray = nullptr;
        }
    } takeBack{lent};

    const std::wstring query = sql.EmptyRowQuery();
    if (observer)
        observer(query);
    connection.AppendRow(query, CHistorianSql::kTable, fields);
}

void CHistorianItem::Empty()
{
    // Used size and value count go back to 0; the array and its capacity
    // stay for the next run.
    UniqueSafeArray array(m_cache.Detach());
    if (array)
        m_cache.Attach(array.get(), 0, 0);
    array.release();
}

void CHistorianItem::ApplyRetention(IDbConnection& connection, const CHistorianSql& sql, const CRetention& retention,
                                    const StatementObserver& observer)
{
    if (RuleIsOn(retention.keepLastValues))
        Run(connection, sql.KeepLastValuesStatement(retention.keepLastValues, m_itemId), observer);
    if (RuleIsOn(retention.keepLastMinutes))
        Run(connection, sql.KeepLastMinutesStatement(CutOffTime(retention.keepLastMinutes), m_itemId), observer);
}

bool CHistorianItem::Deliver(bool hasFrom, double from, bool hasTo, double to, DWORD maxCount,
                             CHistorianValues& out) const
{
    if (m_cache.ValueCount() == 0)
        return true;
    if ((hasFrom && m_timeTo < from) || (hasTo && m_timeFrom > to))
        return true;
    return AppendRecordsInRange(m_cache, hasFrom, from, hasTo, to, true, maxCount, out);
}

bool AppendRecordsInRange(const var_length_container& cache, bool hasFrom, double from, bool hasTo, double to,
                          bool toIncluded, DWORD maxCount, CHistorianValues& out)
{
    CDecodedRecord record;
    for (CRecordCursor cursor = cache.Records(); !cursor.AtEnd();) {
        cursor.Next(record);
        const bool pastTo = toIncluded ? record.time > to : record.time >= to;
        if ((hasFrom && record.time < from) || (hasTo && pastTo))
            continue;
        if (maxCount != 0 && out.Size() >= maxCount)
            return false;
        out.times.push_back(DateToFileTime(record.time));
        out.qualities.push_back(record.quality);
        out.values.push_back(std::move(record.value));
    }
    return true;
}

} // namespace CL
