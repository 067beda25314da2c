#pragma once
// CHistorian: access to the historian database, table HistoricData, in which
// the server archives the values of OPC items as runs (one row per run, the
// values in the stored record format of var_length_container.h).
//
// It answers which items are archived and over what span (ReadSummary), the
// values of one item in a time range (ReadRange), removes runs (DeleteAll,
// DeleteItems), and stores runs still held in memory (SaveCaches) followed by
// the retention rules. Every public operation opens its own connection and
// releases it at the end. The connection string picks the backend (ADO for
// "Provider=..." strings, ODBC for the rest; DbConnection.h) and the SQL
// dialect follows the database the connection reports (HistorianSql.h).
//
// Failures: ADO, ODBC and COM failures are raised as _com_error, program
// failures as CException. ReadRange and the storing of runs catch and log
// instead; the other operations let them reach the caller.
#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/CriticalSection.h"
#include "common/historian/HistorianItem.h"
#include "common/historian/HistorianValues.h"

namespace CL {

class IDbConnection;

class CHistorian {
public:
    using CItem = CHistorianItem;

    static constexpr long kNoLimit = 0x7FFFFFFF;
    // OPC HDA success codes of ReadRange.
    static constexpr HRESULT kNoData = 0x40041002;     // OPC_S_NODATA
    static constexpr HRESULT kMoreData = 0x40041003;   // OPC_S_MOREDATA

    // Called between the runs of a range read with the number of values
    // delivered so far. It may throw CWorkCancelled (WorkCancelled.h) to stop
    // the read: that exception always reaches the caller.
    using ReadProgress = std::function<void(size_t valuesSoFar)>;

    CHistorian() = default;
    // Saves every cache (one connection for all); never throws.
    virtual ~CHistorian();
    CHistorian(const CHistorian&) = delete;
    CHistorian& operator=(const CHistorian&) = delete;

    // Stores the numbers and the custom connection string (empty: none) and
    // sets the database folder to "<folder of this executable>\Historian".
    void Configure(const std::wstring& customConnection, long keepLastValues, long keepLastMinutes,
                   long deletePercent);

    // The custom string when there is one, else the Jet provider on
    // "<database folder>\Historian.mdb".
    std::wstring ConnectionString() const;
    std::wstring DatabaseFolder() const;
    long KeepLastValues() const;
    long KeepLastMinutes() const;
    long DeletePercent() const;

    // The values of itemId with from <= time < to (a bound applies only when
    // its flag is set), in TimeFrom order of the runs and record order within
    // a run, at most maxCount of them (0 = no limit). With includeMemoryRun
    // the item's run held in memory is delivered too. Returns S_OK when
    // values were delivered, kNoData when none, kMoreData when the maximum
    // stopped the read. Never throws for database or record faults: they
    // are logged and the read goes on.
    // stoppedEarly (when given) tells whether the read failed part way: it
    // was logged and what was read before it is in out.
    HRESULT ReadRange(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to,
                      DWORD maxCount, CHistorianValues& out, bool includeMemoryRun = false,
                      const ReadProgress& progress = {}, bool* stoppedEarly = nullptr);
    // The same read for work that must not go on with part of the values
    // (exports): a failure of the whole read (the database gone, a query
    // that fails) reaches the caller after it is logged. Faults of single
    // runs are logged and skipped as ReadRange does; no run in memory.
    HRESULT ReadRangeChecked(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to,
                             DWORD maxCount, CHistorianValues& out, const ReadProgress& progress = {});

    // One entry per archived item, in the database's order of item IDs.
    // progress (when given) is called before each row with the entries read
    // so far; it may throw CWorkCancelled to stop the read.
    std::vector<CHistorianSummaryEntry> ReadSummary(const ReadProgress& progress = {});

    // Removes every row.
    void DeleteAll();
    // Removes the runs of the listed items that lie wholly inside the bounds
    // (runs straddling a bound stay whole). An empty list executes nothing.
    void DeleteItems(const std::vector<std::wstring>& itemIds, bool hasFrom, double from, bool hasTo, double to);

    // Adds a value to the item's run in memory (the control panel itself
    // holds no runs; writers such as tests use this).
    void CacheValue(const std::wstring& itemId, DATE time, WORD quality, const VARIANT& value);
    // Stores every run that holds values as a new row and applies the
    // retention rules to its item. Failures are logged per run.
    void SaveCaches();

    // Called with each statement's text just before it runs.
    void SetStatementObserver(StatementObserver observer);

private:
    struct NoCaseLess {
        bool operator()(const std::wstring& a, const std::wstring& b) const;
    };

    std::unique_ptr<IDbConnection> OpenConnection() const;
    void Execute(IDbConnection& connection, const std::wstring& sql) const;
    // The stored runs of a range read; a failure of the whole read is
    // logged ("Failed to read DB") and then passed on when passOn is set,
    // else noted in *failed (when given). False when the maximum stopped the
    // read.
    bool ReadStored(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to, DWORD maxCount,
                    CHistorianValues& out, const ReadProgress& progress, bool passOn, bool* failed = nullptr) const;
    bool ReadRows(IDbConnection& connection, const std::wstring& itemId, bool hasFrom, double from, bool hasTo,
                  double to, DWORD maxCount, CHistorianValues& out, const ReadProgress& progress) const;
    void SaveCachesLocked();

    std::map<std::wstring, std::unique_ptr<CItem>, NoCaseLess> m_items;
    CCriticalSection m_lock;
    long m_keepLastValues = kNoLimit;
    long m_keepLastMinutes = kNoLimit;
    long m_deletePercent = 0;
    std::wstring m_databaseFolder;
    std::wstring m_connectionString;
    StatementObserver m_observer;
};

} // namespace CL
