#include "common/historian/OdbcConnection.h"

#include <sqlext.h>

#include <deque>

#include "common/Text.h"
#include "common/historian/DbError.h"
#include "common/historian/OdbcRecordset.h"

namespace CL {

namespace {

SQLWCHAR* SqlText(const std::wstring& text)
{
    return reinterpret_cast<SQLWCHAR*>(const_cast<wchar_t*>(text.c_str()));
}

// The locked data of a byte array for as long as a bound parameter needs it.
class CArrayLock {
public:
    explicit CArrayLock(SAFEARRAY* psa) : m_psa(psa)
    {
        const HRESULT hr = ::SafeArrayAccessData(m_psa, &m_data);
        if (FAILED(hr))
            ThrowDbError(hr, L"The byte array of a field cannot be locked.", L"SafeArrayAccessData");
    }
    ~CArrayLock() { ::SafeArrayUnaccessData(m_psa); }
    CArrayLock(const CArrayLock&) = delete;
    CArrayLock& operator=(const CArrayLock&) = delete;
    void* Data() const { return m_data; }
    SQLLEN Size() const { return static_cast<SQLLEN>(m_psa->rgsabound[0].cElements); }

private:
    SAFEARRAY* m_psa;
    void* m_data = nullptr;
};

// One bound parameter: its indicator and whatever keeps its data alive.
struct BoundParameter {
    SQLLEN indicator = 0;
    std::unique_ptr<CArrayLock> lock;
};

// A number of fixed size. Its length/indicator is bound too, although ODBC
// lets a fixed-size input go without one: some driver managers read it all
// the same and crash on the null pointer. An indicator of 0 means "not null".
SQLRETURN BindNumber(const COdbcHandle& statement, SQLUSMALLINT number, SQLSMALLINT cType, SQLSMALLINT sqlType,
                     SQLPOINTER value, BoundParameter& bound)
{
    bound.indicator = 0;
    return ::SQLBindParameter(statement.Get(), number, SQL_PARAM_INPUT, cType, sqlType, 0, 0, value, 0,
                              &bound.indicator);
}

void BindField(const COdbcHandle& statement, SQLUSMALLINT number, const DbField& field,
               BoundParameter& bound)
{
    const VARIANT& v = field.value;
    VARIANT& data = const_cast<VARIANT&>(v);   // ODBC takes non-const pointers to input data
    SQLRETURN rc;
    switch (v.vt) {
    case VT_BSTR: {
        const SQLULEN chars = ::SysStringLen(v.bstrVal);
        bound.indicator = static_cast<SQLLEN>(chars * sizeof(wchar_t));
        rc = ::SQLBindParameter(statement.Get(), number, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR,
                                chars ? chars : 1, 0, data.bstrVal, bound.indicator, &bound.indicator);
        break;
    }
    case VT_R8:
        rc = BindNumber(statement, number, SQL_C_DOUBLE, SQL_DOUBLE, &data.dblVal, bound);
        break;
    case VT_I4:
        rc = BindNumber(statement, number, SQL_C_SLONG, SQL_INTEGER, &data.lVal, bound);
        break;
    case VT_UI4:
        rc = BindNumber(statement, number, SQL_C_ULONG, SQL_INTEGER, &data.ulVal, bound);
        break;
    case VT_ARRAY | VT_UI1: {
        if (::SafeArrayGetDim(v.parray) != 1)
            ThrowDbError(E_INVALIDARG, Format(L"Field '%ls' is not a one-dimensional byte array.", field.name.c_str()),
                         L"SQLBindParameter");
        bound.lock = std::make_unique<CArrayLock>(v.parray);
        bound.indicator = bound.lock->Size();
        // SQL_VARBINARY, not SQL_LONGVARBINARY: PostgreSQL's driver would
        // turn a long binary parameter into a large object instead of bytea.
        rc = ::SQLBindParameter(statement.Get(), number, SQL_PARAM_INPUT, SQL_C_BINARY, SQL_VARBINARY,
                                bound.indicator ? static_cast<SQLULEN>(bound.indicator) : 1, 0,
                                bound.lock->Data(), bound.indicator, &bound.indicator);
        break;
    }
    default:
        ThrowDbError(DISP_E_TYPEMISMATCH,
                     Format(L"Field '%ls' has a value type (%u) that cannot be stored.", field.name.c_str(),
                            static_cast<unsigned>(v.vt)),
                     L"SQLBindParameter");
    }
    statement.Check(rc, L"SQLBindParameter");
}

} // namespace

COdbcConnection::COdbcConnection(const std::wstring& connectionString)
    : m_environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE)
{
    m_environment.Check(::SQLSetEnvAttr(m_environment.Get(), SQL_ATTR_ODBC_VERSION,
                                        reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0),
                        L"SQLSetEnvAttr");
    m_connection = COdbcHandle(SQL_HANDLE_DBC, m_environment.Get());
    SQLWCHAR completed[1024];
    SQLSMALLINT completedLength = 0;
    m_connection.Check(::SQLDriverConnectW(m_connection.Get(), nullptr, SqlText(connectionString), SQL_NTS,
                                           completed, static_cast<SQLSMALLINT>(std::size(completed)),
                                           &completedLength, SQL_DRIVER_NOPROMPT),
                       L"SQLDriverConnectW");
    m_connected = true;
}

COdbcConnection::~COdbcConnection()
{
    if (m_connected)
        ::SQLDisconnect(m_connection.Get());
}

COdbcHandle COdbcConnection::NewStatement()
{
    return COdbcHandle(SQL_HANDLE_STMT, m_connection.Get());
}

std::wstring COdbcConnection::DbmsName()
{
    SQLWCHAR name[256] = {};
    SQLSMALLINT length = 0;
    const SQLRETURN rc = ::SQLGetInfoW(m_connection.Get(), SQL_DBMS_NAME, name, sizeof name, &length);
    if (!SQL_SUCCEEDED(rc))
        return std::wstring();
    return reinterpret_cast<const wchar_t*>(name);
}

void COdbcConnection::Execute(const std::wstring& sql)
{
    COdbcHandle statement = NewStatement();
    const SQLRETURN rc = ::SQLExecDirectW(statement.Get(), SqlText(sql), SQL_NTS);
    if (rc == SQL_NO_DATA)   // a searched DELETE that matched no row
        return;
    statement.Check(rc, L"SQLExecDirectW");
}

std::unique_ptr<IDbRecordset> COdbcConnection::Query(const std::wstring& sql)
{
    COdbcHandle statement = NewStatement();
    statement.Check(::SQLExecDirectW(statement.Get(), SqlText(sql), SQL_NTS), L"SQLExecDirectW");
    return std::make_unique<COdbcRecordset>(std::move(statement));
}

void COdbcConnection::AppendRow(const std::wstring& /*emptyQuery*/, const std::wstring& table,
                                const std::vector<DbField>& fields)
{
    if (fields.empty())
        ThrowDbError(E_INVALIDARG, L"A new row needs at least one field.", L"AppendRow");
    std::wstring names;
    std::wstring markers;
    for (const DbField& field : fields) {
        names += (names.empty() ? L"" : L", ") + field.name;
        markers += markers.empty() ? L"?" : L", ?";
    }
    const std::wstring insert = L"INSERT INTO " + table + L" (" + names + L") VALUES (" + markers + L")";
    COdbcHandle statement = NewStatement();
    statement.Check(::SQLPrepareW(statement.Get(), SqlText(insert), SQL_NTS), L"SQLPrepareW");
    std::deque<BoundParameter> bound(fields.size());   // stable addresses for the indicators
    for (size_t i = 0; i < fields.size(); ++i)
        BindField(statement, static_cast<SQLUSMALLINT>(i + 1), fields[i], bound[i]);
    statement.Check(::SQLExecute(statement.Get()), L"SQLExecute");
}

} // namespace CL
