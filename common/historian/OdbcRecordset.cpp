#include "common/historian/OdbcRecordset.h"

#include <sqlext.h>

#include <cstring>

#include "common/Exception.h"
#include "common/Text.h"
#include "common/historian/DbError.h"
#include "common/historian/DbFieldValue.h"

namespace CL {

namespace {

enum class ColumnKind { Text, Real, Integer, Binary };

ColumnKind KindOf(SQLSMALLINT sqlType)
{
    switch (sqlType) {
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_DECIMAL:
    case SQL_NUMERIC:
        return ColumnKind::Real;
    case SQL_BIT:
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
        return ColumnKind::Integer;
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
        return ColumnKind::Binary;
    default:
        return ColumnKind::Text;   // character data, and anything else as its text
    }
}

// A byte array of `size` bytes, returned unlocked.
SAFEARRAY* CreateByteArray(size_t size)
{
    if (size > 0xFFFFFFFFu)
        ThrowDbError(E_OUTOFMEMORY, L"A binary field is larger than 4 GiB.", L"SafeArrayCreateVector");
    SAFEARRAY* psa = ::SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(size));
    if (!psa)
        throw CException(E_OUTOFMEMORY, L"::SafeArrayCreateVector (VT_UI1, 0, size)");
    return psa;
}

void PutByteArray(CVariant& value, const BYTE* data, size_t size)
{
    SAFEARRAY* psa = CreateByteArray(size);
    value.Clear();
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = psa;
    if (size > 0)
        std::memcpy(psa->pvData, data, size);
}

} // namespace

COdbcRecordset::COdbcRecordset(COdbcHandle statement) : m_statement(std::move(statement))
{
    DescribeColumns();
    Fetch();
}

COdbcRecordset::~COdbcRecordset()
{
    Close();
}

void COdbcRecordset::Close()
{
    if (m_statement.Get() != SQL_NULL_HANDLE)
        ::SQLCloseCursor(m_statement.Get());
    m_statement.Reset();
    m_row.clear();
    m_eof = true;
}

void COdbcRecordset::DescribeColumns()
{
    SQLSMALLINT count = 0;
    m_statement.Check(::SQLNumResultCols(m_statement.Get(), &count), L"SQLNumResultCols");
    m_columns.resize(static_cast<size_t>(count));
    for (SQLSMALLINT i = 0; i < count; ++i) {
        SQLWCHAR name[256] = {};
        SQLSMALLINT nameLength = 0;
        SQLULEN size = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        m_statement.Check(::SQLDescribeColW(m_statement.Get(), static_cast<SQLUSMALLINT>(i + 1), name,
                                            static_cast<SQLSMALLINT>(std::size(name)), &nameLength,
                                            &m_columns[i].sqlType, &size, &digits, &nullable),
                          L"SQLDescribeColW");
        m_columns[i].name = reinterpret_cast<const wchar_t*>(name);
    }
    m_row.resize(m_columns.size());
}

void COdbcRecordset::Fetch()
{
    if (m_statement.Get() == SQL_NULL_HANDLE)
        ThrowDbError(E_FAIL, L"The recordset is closed.", L"SQLFetch");
    const SQLRETURN rc = ::SQLFetch(m_statement.Get());
    if (rc == SQL_NO_DATA) {
        m_eof = true;
        return;
    }
    m_statement.Check(rc, L"SQLFetch");
    m_eof = false;
    ReadRow();
}

void COdbcRecordset::MoveNext()
{
    if (m_eof)
        ThrowDbError(E_FAIL, L"The recordset is at its end.", L"SQLFetch");
    Fetch();
}

CVariant& COdbcRecordset::Field(std::wstring_view name)
{
    if (m_eof)
        ThrowDbError(E_FAIL, L"The recordset has no current row.", L"Field");
    for (size_t i = 0; i < m_columns.size(); ++i) {
        if (EqualsNoCase(m_columns[i].name, name))
            return m_row[i];
    }
    ThrowDbError(DISP_E_MEMBERNOTFOUND, Format(L"The query has no field '%ls'.", std::wstring(name).c_str()),
                 L"Field");
}

void COdbcRecordset::ReadRow()
{
    for (size_t i = 0; i < m_columns.size(); ++i) {
        m_row[i].Clear();
        ReadColumn(static_cast<SQLUSMALLINT>(i + 1), m_columns[i], m_row[i]);
        NormalizeFieldValue(m_row[i], m_columns[i].name);
    }
}

void COdbcRecordset::ReadColumn(SQLUSMALLINT number, const Column& column, CVariant& value)
{
    bool present = false;
    switch (KindOf(column.sqlType)) {
    case ColumnKind::Real: {
        double d = 0.0;
        present = ReadFixed(number, SQL_C_DOUBLE, d);
        value = CVariant::R8(d);
        break;
    }
    case ColumnKind::Integer: {
        // Read at 64 bits whatever the column says: SQLite reports sum() as
        // a 32-bit column and a driver would cut a larger sum silently.
        // Normalising makes it VT_I4, or an overflow error.
        SQLBIGINT n = 0;
        present = ReadFixed(number, SQL_C_SBIGINT, n);
        value = CVariant::I8(n);
        break;
    }
    case ColumnKind::Binary:
        present = ReadBinary(number, value);
        break;
    case ColumnKind::Text:
        present = ReadText(number, value);
        break;
    }
    if (!present) {
        value.Clear();
        value.vt = VT_NULL;
    }
}

template <typename T>
bool COdbcRecordset::ReadFixed(SQLUSMALLINT number, SQLSMALLINT cType, T& out)
{
    SQLLEN indicator = 0;
    m_statement.Check(::SQLGetData(m_statement.Get(), number, cType, &out, sizeof out, &indicator),
                      L"SQLGetData");
    return indicator != SQL_NULL_DATA;
}

bool COdbcRecordset::ReadText(SQLUSMALLINT number, CVariant& value)
{
    std::wstring text;
    wchar_t chunk[1024];
    for (;;) {
        SQLLEN indicator = 0;
        const SQLRETURN rc = ::SQLGetData(m_statement.Get(), number, SQL_C_WCHAR, chunk, sizeof chunk, &indicator);
        if (rc == SQL_NO_DATA)
            break;
        m_statement.Check(rc, L"SQLGetData");
        if (indicator == SQL_NULL_DATA)
            return false;
        // What this call returned: the whole rest when it fitted, else a
        // full chunk less its terminating null.
        const size_t chunkChars = std::size(chunk) - 1;
        const bool truncated = indicator == SQL_NO_TOTAL || static_cast<size_t>(indicator) / sizeof(wchar_t) > chunkChars;
        text.append(chunk, truncated ? chunkChars : static_cast<size_t>(indicator) / sizeof(wchar_t));
        if (!truncated)
            break;
    }
    value.Clear();
    value.bstrVal = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!value.bstrVal)
        throw CException(E_OUTOFMEMORY, L"::SysAllocStringLen");
    value.vt = VT_BSTR;
    return true;
}

bool COdbcRecordset::ReadBinary(SQLUSMALLINT number, CVariant& value)
{
    // The first call reads a chunk and tells the total; the rest then goes
    // straight into an array of the right size, without another copy.
    BYTE chunk[16384];
    SQLLEN indicator = 0;
    SQLRETURN rc = ::SQLGetData(m_statement.Get(), number, SQL_C_BINARY, chunk, sizeof chunk, &indicator);
    if (rc == SQL_NO_DATA) {
        PutByteArray(value, chunk, 0);
        return true;
    }
    m_statement.Check(rc, L"SQLGetData");
    if (indicator == SQL_NULL_DATA)
        return false;
    if (indicator != SQL_NO_TOTAL && static_cast<size_t>(indicator) <= sizeof chunk) {
        PutByteArray(value, chunk, static_cast<size_t>(indicator));
        return true;
    }
    if (indicator != SQL_NO_TOTAL) {
        const size_t total = static_cast<size_t>(indicator);
        SAFEARRAY* psa = CreateByteArray(total);
        value.Clear();
        value.vt = VT_ARRAY | VT_UI1;
        value.parray = psa;
        BYTE* data = static_cast<BYTE*>(psa->pvData);
        std::memcpy(data, chunk, sizeof chunk);
        SQLLEN restIndicator = 0;
        rc = ::SQLGetData(m_statement.Get(), number, SQL_C_BINARY, data + sizeof chunk,
                          static_cast<SQLLEN>(total - sizeof chunk), &restIndicator);
        m_statement.Check(rc, L"SQLGetData");
        return true;
    }
    // The driver does not know the total: collect the chunks.
    std::vector<BYTE> bytes(chunk, chunk + sizeof chunk);
    for (;;) {
        rc = ::SQLGetData(m_statement.Get(), number, SQL_C_BINARY, chunk, sizeof chunk, &indicator);
        if (rc == SQL_NO_DATA)
            break;
        m_statement.Check(rc, L"SQLGetData");
        const size_t got = (indicator == SQL_NO_TOTAL || static_cast<size_t>(indicator) > sizeof chunk)
                               ? sizeof chunk
                               : static_cast<size_t>(indicator);
        bytes.insert(bytes.end(), chunk, chunk + got);
        if (rc == SQL_SUCCESS)
            break;
    }
    PutByteArray(value, bytes.data(), bytes.size());
    return true;
}

} // namespace CL
