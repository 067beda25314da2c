#include "HistorianTestDb.h"

#include <atomic>
#include <stdexcept>
#include <vector>

#include "common/Text.h"
#include "common/historian/HistorianSql.h"

namespace test {

namespace {

using WineUnixFileName = char*(__cdecl*)(const wchar_t*);

std::wstring UniqueSchemaName()
{
    static std::atomic<unsigned> sequence{0};
    return CL::Format(L"t%lu_%llu_%u", ::GetCurrentProcessId(),
                      static_cast<unsigned long long>(::GetTickCount64()), sequence++);
}

std::wstring WithOption(std::wstring connection, const std::wstring& option)
{
    if (!connection.empty() && connection.back() != L';')
        connection += L';';
    return connection + option + L";";
}

} // namespace

std::string DbKindName(DbKind kind)
{
    return kind == DbKind::Sqlite ? "SQLite" : "PostgreSQL";
}

void PrintTo(DbKind kind, std::ostream* out)
{
    *out << DbKindName(kind);
}

std::wstring HostPath(const std::wstring& windowsPath)
{
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    const auto toUnix = reinterpret_cast<WineUnixFileName>(
        reinterpret_cast<void*>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
    if (!toUnix)
        return windowsPath;
    char* unixPath = toUnix(windowsPath.c_str());
    if (!unixPath)
        return windowsPath;
    std::wstring result = CL::FromUtf8(unixPath);
    ::HeapFree(::GetProcessHeap(), 0, unixPath);
    return result;
}

std::wstring PostgresServerConnectionString()
{
    wchar_t value[1024] = {};
    const DWORD n = ::GetEnvironmentVariableW(L"MORVANE_TEST_POSTGRES", value, 1024);
    return (n > 0 && n < 1024) ? std::wstring(value, n) : std::wstring();
}

HistorianTestDb::HistorianTestDb(DbKind kind, bool createTable) : m_kind(kind)
{
    if (kind == DbKind::Sqlite) {
        m_connectionString = L"Driver={SQLite3};Database=" + HostPath(m_folder.File(L"Historian.db")) + L";";
    } else {
        const std::wstring server = PostgresServerConnectionString();
        if (server.empty())
            throw std::runtime_error("MORVANE_TEST_POSTGRES is not set: no PostgreSQL server for the tests "
                                     "(run them with 'make test' or scripts/with-wine.sh)");
        m_schema = UniqueSchemaName();
        CL::OpenDbConnection(server)->Execute(L"CREATE SCHEMA " + m_schema);
        m_connectionString = WithOption(server, L"ConnSettings=SET search_path TO " + m_schema);
    }
    if (createTable) {
        const auto connection = Connect();
        const CL::CHistorianSql sql(CL::CHistorianSql::DialectOf(connection->DbmsName()));
        connection->Execute(sql.CreateTableStatement());
        connection->Execute(sql.CreateIndexStatement());
    }
}

HistorianTestDb::~HistorianTestDb()
{
    if (m_schema.empty())
        return;
    try {
        CL::OpenDbConnection(PostgresServerConnectionString())->Execute(L"DROP SCHEMA " + m_schema + L" CASCADE");
    } catch (...) {
        // A schema left behind only costs space in the test cluster.
    }
}

std::unique_ptr<CL::IDbConnection> HistorianTestDb::Connect() const
{
    return CL::OpenDbConnection(m_connectionString);
}

long HistorianTestDb::RowCount(const std::wstring& itemId) const
{
    std::wstring sql = L"SELECT count(*) AS n FROM HistoricData";
    if (!itemId.empty())
        sql += L" WHERE ItemID = '" + itemId + L"'";
    const auto connection = Connect();
    const auto recordset = connection->Query(sql);
    const CL::CVariant& n = recordset->Field(L"n");
    if (n.vt != VT_I4)
        throw std::runtime_error("count(*) did not come back as VT_I4");
    return n.lVal;
}

} // namespace test
