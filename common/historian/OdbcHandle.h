#pragma once
// COdbcHandle: an owning ODBC handle (environment, connection or statement),
// freed with SQLFreeHandle in the destructor. Move-only.
#include <windows.h>
#include <sql.h>

#include <string>
#include <utility>

namespace CL {

class COdbcHandle {
public:
    COdbcHandle() noexcept = default;
    // Allocates a handle of `type` under `parent` (SQL_NULL_HANDLE for an
    // environment); raises the driver manager's text on failure.
    COdbcHandle(SQLSMALLINT type, SQLHANDLE parent);
    COdbcHandle(COdbcHandle&& other) noexcept
        : m_type(other.m_type), m_handle(std::exchange(other.m_handle, nullptr))
    {
    }
    COdbcHandle& operator=(COdbcHandle&& other) noexcept
    {
        if (this != &other) {
            Reset();
            m_type = other.m_type;
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    COdbcHandle(const COdbcHandle&) = delete;
    COdbcHandle& operator=(const COdbcHandle&) = delete;
    ~COdbcHandle() { Reset(); }

    SQLHANDLE Get() const noexcept { return m_handle; }
    SQLSMALLINT Type() const noexcept { return m_type; }
    void Reset() noexcept;

    // Raises the handle's diagnostics (SQLGetDiagRecW) as a database error
    // when rc is neither SQL_SUCCESS nor SQL_SUCCESS_WITH_INFO.
    void Check(SQLRETURN rc, const wchar_t* call) const;
    // The handle's diagnostic records, one "<text> (SQLSTATE <state>)" per
    // line (line breaks inside a driver's text become spaces); empty when
    // there are none.
    std::wstring Diagnostics() const;

private:
    SQLSMALLINT m_type = SQL_HANDLE_ENV;
    SQLHANDLE m_handle = SQL_NULL_HANDLE;
};

} // namespace CL
