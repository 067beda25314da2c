#include "common/historian/AdoRecordset.h"

#include "common/Bstr.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/historian/AdoError.h"
#include "common/historian/DbFieldValue.h"

namespace CL {

namespace {

// An optional argument left out (VT_ERROR with DISP_E_PARAMNOTFOUND).
VARIANT Missing()
{
    VARIANT v;
    ::VariantInit(&v);
    v.vt = VT_ERROR;
    v.scode = DISP_E_PARAMNOTFOUND;
    return v;
}

} // namespace

ComPtr<_ADORecordset> CAdoRecordset::Create()
{
    ComPtr<_ADORecordset> recordset;
    const HRESULT hr = ::CoCreateInstance(kClsidAdoRecordset, nullptr, CLSCTX_INPROC_SERVER, kIidAdoRecordset,
                                          reinterpret_cast<void**>(recordset.ReleaseAndGetAddressOf()));
    if (FAILED(hr))
        throw CException(hr, L"prs.CreateInstance(__uuidof(ADODB::Recordset))");
    return recordset;
}

CAdoRecordset::CAdoRecordset(const ComPtr<_ADOConnection>& connection, const std::wstring& sql)
    : m_connection(connection), m_recordset(Create())
{
    CVariant source(sql);
    CVariant active;
    active.vt = VT_DISPATCH;
    active.pdispVal = m_connection.Get();
    active.pdispVal->AddRef();
    CheckAdo(m_recordset->Open(source, active, adOpenForwardOnly, adLockOptimistic, adCmdText), m_connection.Get(),
             L"Recordset::Open");
    m_open = true;
    ReadEof();
}

CAdoRecordset::~CAdoRecordset()
{
    if (m_open)
        m_recordset->Close();
}

void CAdoRecordset::Close()
{
    if (!m_open)
        return;
    m_open = false;
    m_values.clear();
    m_eof = true;
    CheckAdo(m_recordset->Close(), m_connection.Get(), L"Recordset::Close");
}

void CAdoRecordset::ReadEof()
{
    VARIANT_BOOL eof = VARIANT_TRUE;
    CheckAdo(m_recordset->get_EOF(&eof), m_connection.Get(), L"Recordset::get_EOF");
    m_eof = eof != VARIANT_FALSE;
}

void CAdoRecordset::MoveNext()
{
    m_values.clear();
    CheckAdo(m_recordset->MoveNext(), m_connection.Get(), L"Recordset::MoveNext");
    ReadEof();
}

ComPtr<ADOField> CAdoRecordset::FieldObject(std::wstring_view name)
{
    ComPtr<ADOFields> fields;
    CheckAdo(m_recordset->get_Fields(fields.ReleaseAndGetAddressOf()), m_connection.Get(), L"Recordset::get_Fields");
    CVariant index{name};
    ComPtr<ADOField> field;
    CheckAdo(fields->get_Item(index, field.ReleaseAndGetAddressOf()), m_connection.Get(), L"Fields::get_Item");
    return field;
}

CVariant& CAdoRecordset::Field(std::wstring_view name)
{
    for (auto& [known, value] : m_values) {
        if (EqualsNoCase(known, name))
            return value;
    }
    CVariant value;
    CheckAdo(FieldObject(name)->get_Value(&value), m_connection.Get(), L"Field::get_Value");
    NormalizeFieldValue(value, name);
    m_values.emplace_back(std::wstring(name), std::move(value));
    return m_values.back().second;
}

void CAdoRecordset::AddRecord(const std::wstring* names, const VARIANT* values, size_t count)
{
    CheckAdo(m_recordset->AddNew(Missing(), Missing()), m_connection.Get(), L"Recordset::AddNew");
    for (size_t i = 0; i < count; ++i)
        CheckAdo(FieldObject(names[i])->put_Value(values[i]), m_connection.Get(), L"Field::put_Value");
    CheckAdo(m_recordset->Update(Missing(), Missing()), m_connection.Get(), L"Recordset::Update");
}

} // namespace CL
