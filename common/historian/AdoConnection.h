#pragma once
// CAdoConnection: the historian connection over ADO, for OLE DB connection
// strings ("Provider=..."): the Jet database file of a default installation
// and the users' own strings. Opened with the string, an empty user and
// password and unspecified options.
#include <windows.h>

#include <string>

#include "common/ComPtr.h"
#include "common/historian/AdoInterfaces.h"
#include "common/historian/DbConnection.h"

namespace CL {

class CAdoConnection final : public IDbConnection {
public:
    explicit CAdoConnection(const std::wstring& connectionString);
    ~CAdoConnection() override;

    std::wstring DbmsName() override;
    void Execute(const std::wstring& sql) override;
    std::unique_ptr<IDbRecordset> Query(const std::wstring& sql) override;
    void AppendRow(const std::wstring& emptyQuery, const std::wstring& table,
                   const std::vector<DbField>& fields) override;

private:
    ComPtr<_ADOConnection> m_connection;
    bool m_open = false;
};

} // namespace CL
