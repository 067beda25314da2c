#pragma once
// CHistorianItem (the historian's CItem): a run of values of one item still
// held in memory, waiting to be stored as a new row of HistoricData.
#include <windows.h>

#include <functional>
#include <string>

#include "common/historian/HistorianSql.h"
#include "common/historian/HistorianValues.h"
#include "common/historian/var_length_container.h"

namespace CL {

class IDbConnection;

// Statement texts just before they run (a seam for tests and diagnostics).
using StatementObserver = std::function<void(const std::wstring&)>;

// The retention rules applied after each store; 0, negative values and
// 0x7FFFFFFF switch a rule off.
struct CRetention {
    long keepLastValues = 0x7FFFFFFF;
    long keepLastMinutes = 0x7FFFFFFF;
};

class CHistorianItem {
public:
    explicit CHistorianItem(std::wstring itemId) : m_itemId(std::move(itemId)) {}

    const std::wstring& ItemId() const { return m_itemId; }
    double TimeFrom() const { return m_timeFrom; }
    double TimeTo() const { return m_timeTo; }
    const var_length_container& Cache() const { return m_cache; }

    // Appends one value; the first value of a run sets TimeFrom, every value
    // sets TimeTo. Throws CException for a value that cannot be stored.
    void Append(DATE time, WORD quality, const VARIANT& value);

    // Stores the run as a new row on the connection (nothing when it holds
    // no values), empties it keeping its array for reuse, and applies the
    // retention rules to the item. Never throws: a failure is logged.
    void SaveCache(IDbConnection& connection, const CHistorianSql& sql, const CRetention& retention,
                   const StatementObserver& observer) noexcept;

    // Appends the values of the run that pass the in-memory filter (a run
    // lying wholly before `from` or after `to` is skipped whole; the upper
    // bound is inclusive) until `maxCount` (0 = no limit) values are in
    // `out`. Returns false when the maximum stopped it.
    bool Deliver(bool hasFrom, double from, bool hasTo, double to, DWORD maxCount, CHistorianValues& out) const;

    // The cut-off time of the keep-last-minutes rule: now (UTC, with its
    // milliseconds) less the given minutes.
    static double CutOffTime(long keepLastMinutes);

private:
    void Store(IDbConnection& connection, const CHistorianSql& sql, const StatementObserver& observer);
    void ApplyRetention(IDbConnection& connection, const CHistorianSql& sql, const CRetention& retention,
                        const StatementObserver& observer);
    void Empty();

    std::wstring m_itemId;
    double m_timeFrom = 0.0;
    double m_timeTo = 0.0;
    var_length_container m_cache;
};

// Turns an OLE date (UTC) into a FILETIME through its calendar fields.
FILETIME DateToFileTime(DATE date);

// Appends the records of a run whose time lies in the range to `out` until
// `maxCount` (0 = no limit) values are there: from `from` on (when hasFrom)
// up to `to` (when hasTo), `to` itself only when toIncluded. Returns false
// when the maximum stopped it.
bool AppendRecordsInRange(const var_length_container& cache, bool hasFrom, double from, bool hasTo, double to,
                          bool toIncluded, DWORD maxCount, CHistorianValues& out);

} // namespace CL
