#include "common/historian/OdbcHandle.h"

#include <sqlext.h>

#include <string>

#include "common/Text.h"
#include "common/historian/DbError.h"

namespace CL {

COdbcHandle::COdbcHandle(SQLSMALLINT type, SQLHANDLE parent) : m_type(type)
{
    const SQLRETURN rc = ::SQLAllocHandle(type, parent, &m_handle);
    if (SQL_SUCCEEDED(rc))
        return;
    m_handle = SQL_NULL_HANDLE;
    std::wstring text;
    if (parent != SQL_NULL_HANDLE) {
        // The parent's diagnostics say why no child handle could be had.
        const SQLSMALLINT parentType = type == SQL_HANDLE_STMT ? SQL_HANDLE_DBC : SQL_HANDLE_ENV;
        COdbcHandle view;
        view.m_type = parentType;
        view.m_handle = parent;
        text = view.Diagnostics();
        view.m_handle = SQL_NULL_HANDLE;   // not ours to free
    }
    if (text.empty())
        text = Format(L"The ODBC driver manager could not allocate a handle of type %d (return code %d).",
                      static_cast<int>(type), static_cast<int>(rc));
    ThrowDbError(E_FAIL, text, L"SQLAllocHandle");
}

void COdbcHandle::Reset() noexcept
{
    if (m_handle != SQL_NULL_HANDLE)
        ::SQLFreeHandle(m_type, std::exchange(m_handle, nullptr));
}

std::wstring COdbcHandle::Diagnostics() const
{
    std::wstring text;
    for (SQLSMALLINT record = 1;; ++record) {
        SQLWCHAR state[6] = {};
        SQLINTEGER nativeError = 0;
        SQLWCHAR message[1024] = {};
        SQLSMALLINT length = 0;
        const SQLRETURN rc = ::SQLGetDiagRecW(m_type, m_handle, record, state, &nativeError, message,
                                              static_cast<SQLSMALLINT>(std::size(message)), &length);
        if (!SQL_SUCCEEDED(rc))
            break;
        // A driver's message may run over several lines; each record is
        // kept on one line, so that a logged failure stays one log line.
        std::wstring line = reinterpret_cast<const wchar_t*>(message);
        for (wchar_t& c : line) {
            if (c == L'\r' || c == L'\n')
                c = L' ';
        }
        if (!text.empty())
            text += L"\n";
        text += Format(L"%ls (SQLSTATE %ls)", line.c_str(), reinterpret_cast<const wchar_t*>(state));
    }
    return text;
}

void COdbcHandle::Check(SQLRETURN rc, const wchar_t* call) const
{
    if (SQL_SUCCEEDED(rc))
        return;
    std::wstring text = Diagnostics();
    if (text.empty())
        text = Format(L"%ls failed with return code %d and no diagnostic record.", call,
                      static_cast<int>(rc));
    ThrowDbError(E_FAIL, text, call);
}

} // namespace CL
