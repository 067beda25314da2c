#pragma once
// IDbConnection: one open connection to the historian database, over ADO or
// ODBC. Which backend serves a connection string is decided by
// OpenDbConnection: a string that starts with "Provider=" (ignoring case and
// leading blanks) is an OLE DB string and goes through ADO; any other string
// ("Driver=...", "DSN=...") goes through ODBC. Both raise every failure as a
// _com_error that carries the database's own text (DbError.h).
#include <windows.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/Variant.h"
#include "common/historian/DbRecordset.h"

namespace CL {

// One column value of a new row.
struct DbField {
    std::wstring name;
    CVariant value;
};

class IDbConnection {
public:
    virtual ~IDbConnection() = default;

    // The database product's name as the driver reports it ("SQLite",
    // "PostgreSQL", "Microsoft SQL Server", ...); empty when it says nothing.
    virtual std::wstring DbmsName() = 0;

    // Runs a statement that returns no rows (ADO: text command, no records).
    // A statement that matches no rows is not a failure.
    virtual void Execute(const std::wstring& sql) = 0;

    // Runs a query and returns a forward-only walk over its rows.
    virtual std::unique_ptr<IDbRecordset> Query(const std::wstring& sql) = 0;

    // Adds one row to `table`. ADO opens a recordset on `emptyQuery` (a query
    // of the table that returns no rows), adds a new record, sets the fields
    // and updates; ODBC runs a prepared INSERT into `table` with the fields
    // as bound parameters. Supported value types: VT_BSTR, VT_R8, VT_I4,
    // VT_UI4 and VT_ARRAY | VT_UI1.
    virtual void AppendRow(const std::wstring& emptyQuery, const std::wstring& table,
                           const std::vector<DbField>& fields) = 0;
};

// True for a string that goes through ADO: "Provider=" at its start, in any
// letter case, after any leading blanks.
bool IsOleDbConnectionString(std::wstring_view connectionString);

// Opens a connection with the backend the string asks for.
std::unique_ptr<IDbConnection> OpenDbConnection(const std::wstring& connectionString);

} // namespace CL
