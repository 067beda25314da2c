#include "common/historian/AdoConnection.h"

#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/Variant.h"
#include "common/historian/AdoError.h"
#include "common/historian/AdoRecordset.h"

namespace CL {

CAdoConnection::CAdoConnection(const std::wstring& connectionString)
{
    const HRESULT hr = ::CoCreateInstance(kClsidAdoConnection, nullptr, CLSCTX_INPROC_SERVER, kIidAdoConnection,
                                          reinterpret_cast<void**>(m_connection.ReleaseAndGetAddressOf()));
    if (FAILED(hr))
        throw CException(hr, L"con.CreateInstance(__uuidof(ADODB::Connection))");
    CBstr text(connectionString);
    CBstr user(L"");
    CBstr password(L"");
    CheckAdo(m_connection->Open(text.Get(), user.Get(), password.Get(), adOptionUnspecified), m_connection.Get(),
             L"Connection::Open");
    m_open = true;
}

CAdoConnection::~CAdoConnection()
{
    if (m_open)
        m_connection->Close();
}

std::wstring CAdoConnection::DbmsName()
{
    ComPtr<ADOProperties> properties;
    if (FAILED(m_connection->get_Properties(properties.ReleaseAndGetAddressOf())) || !properties)
        return std::wstring();
    CVariant index{std::wstring_view(L"DBMS Name")};
    ComPtr<ADOProperty> property;
    CVariant value;
    if (FAILED(properties->get_Item(index, property.ReleaseAndGetAddressOf())) || !property ||
        FAILED(property->get_Value(&value)) || value.vt != VT_BSTR || !value.bstrVal)
        return std::wstring();
    return std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal));
}

void CAdoConnection::Execute(const std::wstring& sql)
{
    CBstr text(sql);
    ComPtr<_ADORecordset> none;
    CheckAdo(m_connection->Execute(text.Get(), nullptr, static_cast<long>(adCmdText) | static_cast<long>(adExecuteNoRecords), none.ReleaseAndGetAddressOf()),
             m_connection.Get(), L"Connection::Execute");
}

std::unique_ptr<IDbRecordset> CAdoConnection::Query(const std::wstring& sql)
{
    return std::make_unique<CAdoRecordset>(m_connection, sql);
}

void CAdoConnection::AppendRow(const std::wstring& emptyQuery, const std::wstring& /*table*/,
                               const std::vector<DbField>& fields)
{
    CAdoRecordset recordset(m_connection, emptyQuery);
    std::vector<std::wstring> names;
    std::vector<VARIANT> values;
    for (const DbField& field : fields) {
        names.push_back(field.name);
        values.push_back(field.value);   // shallow: the fields own the data
    }
    recordset.AddRecord(names.data(), values.data(), fields.size());
    recordset.Close();
}

} // namespace CL
