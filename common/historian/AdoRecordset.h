#pragma once
// CAdoRecordset: an ADO Recordset opened on a query (forward-only cursor,
// optimistic locking, text command), walked forward. Field values are
// fetched when asked for and normalised to the common field types.
#include <windows.h>

#include <deque>
#include <string>

#include "common/ComPtr.h"
#include "common/historian/AdoInterfaces.h"
#include "common/historian/DbRecordset.h"

namespace CL {

class CAdoRecordset final : public IDbRecordset {
public:
    // Creates the recordset and opens it on sql over the connection.
    CAdoRecordset(const ComPtr<_ADOConnection>& connection, const std::wstring& sql);
    ~CAdoRecordset() override;

    bool IsEof() const override { return m_eof; }
    void MoveNext() override;
    CVariant& Field(std::wstring_view name) override;
    void Close() override;

    // Adds a record (AddNew), sets the named fields and stores it (Update).
    void AddRecord(const std::wstring* names, const VARIANT* values, size_t count);

    // A Recordset object not yet opened; failing to create one raises the
    // program's exception with the creation call as its source.
    static ComPtr<_ADORecordset> Create();

private:
    void ReadEof();
    ComPtr<ADOField> FieldObject(std::wstring_view name);

    ComPtr<_ADOConnection> m_connection;
    ComPtr<_ADORecordset> m_recordset;
    std::deque<std::pair<std::wstring, CVariant>> m_values;   // of the current row
    bool m_eof = true;
    bool m_open = false;
};

} // namespace CL
