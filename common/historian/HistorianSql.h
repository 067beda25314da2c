#pragma once
// CHistorianSql: the text of every statement the historian runs against table
// HistoricData, built by formatted printing. Times are printed with "%.14f";
// item IDs go between single quotes exactly as they are, with no escaping.
//
// The statements are written for the databases the server uses (Jet and SQL
// Server). Two databases the program also meets need a few words changed,
// and get them, nothing else:
//   - PostgreSQL rejects [bracketed] names and SQL Server's
//     "DELETE alias FROM table alias": it gets plain names and
//     "DELETE FROM HistoricData hd";
//   - SQLite accepts brackets but rejects the multi-table DELETE as well as
//     an alias without AS: its keep-last-values statement starts with
//     "DELETE FROM HistoricData AS hd".
#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace CL {

enum class SqlDialect {
    Standard,     // Jet, SQL Server and every other database
    PostgreSql,
    Sqlite,
};

class CHistorianSql {
public:
    explicit CHistorianSql(SqlDialect dialect = SqlDialect::Standard) : m_dialect(dialect) {}

    // The dialect of a database by the name its driver reports.
    static SqlDialect DialectOf(std::wstring_view dbmsName);

    SqlDialect Dialect() const { return m_dialect; }

    // The runs of one item, in TimeFrom order. The bound guards are crossed
    // on purpose: the has-from flag admits the clause printed with `to` and
    // the has-to flag the one printed with `from`; the exact filtering
    // happens value by value while reading.
    std::wstring RangeQuery(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to) const;
    // Per item: a = ItemID, b = earliest time, c = latest time, d = value count.
    std::wstring SummaryQuery() const;
    std::wstring DeleteAllStatement() const;
    // Runs of the listed items lying wholly inside the bounds; empty text for
    // an empty list (nothing is to be executed then).
    std::wstring DeleteItemsStatement(const std::vector<std::wstring>& itemIds, bool hasFrom, double from,
                                      bool hasTo, double to) const;
    // A query of the table's shape that returns no rows (for adding rows).
    std::wstring EmptyRowQuery() const;
    // Deletes the runs of an item older than the newest runs that together
    // hold at least keepLastValues values.
    std::wstring KeepLastValuesStatement(long keepLastValues, const std::wstring& itemId) const;
    // Deletes the runs of an item whose last value is older than cutOff.
    std::wstring KeepLastMinutesStatement(double cutOff, const std::wstring& itemId) const;

    // The table as the server defines it (for the programs that play the
    // server; the control panel never creates it):
    //   ItemID         text (up to 255 characters)   the OPC item ID
    //   TimeFrom       double (OLE date, UTC)         time of the run's first value
    //   TimeTo         double (OLE date, UTC)         time of the run's last value
    //   ValCount       32-bit integer                 number of values in the run
    //   ItemValues     long binary                    the run's buffer of records
    //   CacheUsedSize  32-bit integer                 meaningful bytes of ItemValues
    std::wstring CreateTableStatement() const;
    // An index on (ItemID, TimeFrom) for the per-item reads.
    std::wstring CreateIndexStatement() const;

    static constexpr wchar_t kTable[] = L"HistoricData";

private:
    // "[name]" in the standard dialect, the bare name for PostgreSQL.
    std::wstring Name(const wchar_t* name) const;

    SqlDialect m_dialect;
};

} // namespace CL
