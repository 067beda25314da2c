#pragma once
// COdbcConnection: the historian connection over ODBC (SQLDriverConnectW with
// the whole connection string, no prompt, auto-commit). Under Wine this is
// the backend that works: Wine hands ODBC on to the host's driver manager.
#include <windows.h>
#include <sql.h>

#include <string>

#include "common/historian/DbConnection.h"
#include "common/historian/OdbcHandle.h"

namespace CL {

class COdbcConnection final : public IDbConnection {
public:
    explicit COdbcConnection(const std::wstring& connectionString);
    ~COdbcConnection() override;

    std::wstring DbmsName() override;
    void Execute(const std::wstring& sql) override;
    std::unique_ptr<IDbRecordset> Query(const std::wstring& sql) override;
    void AppendRow(const std::wstring& emptyQuery, const std::wstring& table,
                   const std::vector<DbField>& fields) override;

private:
    COdbcHandle NewStatement();

    COdbcHandle m_environment;
    COdbcHandle m_connection;
    bool m_connected = false;
};

} // namespace CL
