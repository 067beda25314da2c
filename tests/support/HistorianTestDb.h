#pragma once
// Real historian databases for the tests: an empty table HistoricData, as
// the server defines it, in a fresh SQLite file (ODBC driver "SQLite3") or in
// a fresh schema of the PostgreSQL server that scripts/with-wine.sh starts
// for the test run (its connection string comes in MORVANE_TEST_POSTGRES).
// Everything is removed again by the destructor.
#include <windows.h>

#include <memory>
#include <ostream>
#include <string>

#include "TestSupport.h"
#include "common/historian/DbConnection.h"

namespace test {

enum class DbKind { Sqlite, PostgreSql };

// The name a parameterised test gets for a database kind.
std::string DbKindName(DbKind kind);
// Lets GoogleTest print the kind by name.
void PrintTo(DbKind kind, std::ostream* out);

// COM for the test's thread, for as long as the object lives.
class ComScope {
public:
    ComScope() { ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    ~ComScope() { ::CoUninitialize(); }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;
};

// The Unix path of a Windows path under Wine (native ODBC drivers open Unix
// paths); the path itself where there is no Wine.
std::wstring HostPath(const std::wstring& windowsPath);

// The PostgreSQL server's connection string; empty when the tests were not
// started through scripts/with-wine.sh.
std::wstring PostgresServerConnectionString();

class HistorianTestDb {
public:
    // Creates the database with an empty table HistoricData. Raises a
    // std::runtime_error when PostgreSQL is asked for and there is no server.
    explicit HistorianTestDb(DbKind kind, bool createTable = true);
    ~HistorianTestDb();
    HistorianTestDb(const HistorianTestDb&) = delete;
    HistorianTestDb& operator=(const HistorianTestDb&) = delete;

    DbKind Kind() const { return m_kind; }
    const std::wstring& ConnectionString() const { return m_connectionString; }
    std::unique_ptr<CL::IDbConnection> Connect() const;
    // Number of rows in HistoricData (of one item when itemId is given).
    long RowCount(const std::wstring& itemId = L"") const;

private:
    DbKind m_kind;
    TempDir m_folder;
    std::wstring m_schema;
    std::wstring m_connectionString;
};

} // namespace test
