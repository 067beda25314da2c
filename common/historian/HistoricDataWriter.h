#pragma once
// CHistoricDataWriter: the server's side of table HistoricData, for the
// programs that play the server (the server simulator, tests, benchmarks,
// the demo): it creates the table and appends runs of item values in the
// stored record format. The control panel itself never writes rows this way.
//
// The table is created as CHistorianSql::CreateTableStatement defines it.
//
// Usage by a writer that archives values (one row per run):
//   CL::AppendHistoricRun(connectionString, L"Plant.Tank1.Level",
//                         {{time1, 192, CL::CVariant(...)}, {time2, 192, ...}});
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "common/Variant.h"
#include "common/historian/DbConnection.h"
#include "common/historian/HistorianSql.h"
#include "common/historian/var_length_container.h"

namespace CL {

// One value to archive.
struct CHistoricValue {
    DATE time = 0.0;   // OLE date, UTC
    WORD quality = 192;
    CVariant value;
};

class CHistoricDataWriter {
public:
    // Opens its own connection (either backend).
    explicit CHistoricDataWriter(const std::wstring& connectionString);
    explicit CHistoricDataWriter(std::unique_ptr<IDbConnection> connection);

    // Creates the table and its index unless the table exists.
    void CreateTable();

    // Appends one run holding the values in the given order (TimeFrom is the
    // first value's time, TimeTo the last one's). Throws CException for a
    // value that cannot be stored and _com_error for database failures.
    void AppendRun(const std::wstring& itemId, const std::vector<CHistoricValue>& values);
    // Appends the run of a value cache as it stands (capacity included).
    void AppendRun(const std::wstring& itemId, const var_length_container& cache, double timeFrom, double timeTo);
    // Appends a row with exactly these column values, whatever they hold
    // (for rows that a faulty writer could have left).
    void AppendRawRow(const std::wstring& itemId, double timeFrom, double timeTo, const VARIANT& valCount,
                      const VARIANT& itemValues, const VARIANT& cacheUsedSize);

    IDbConnection& Connection() { return *m_connection; }
    const CHistorianSql& Sql() const { return m_sql; }

private:
    std::unique_ptr<IDbConnection> m_connection;
    CHistorianSql m_sql;
};

// Appends one run of values of an archived item to HistoricData over the
// given connection string, creating the table first when it is missing.
void AppendHistoricRun(const std::wstring& connectionString, const std::wstring& itemId,
                       const std::vector<CHistoricValue>& values);

} // namespace CL
