#include "common/historian/HistoricDataWriter.h"

#include <comdef.h>

#include "common/Exception.h"

namespace CL {

CHistoricDataWriter::CHistoricDataWriter(const std::wstring& connectionString)
    : CHistoricDataWriter(OpenDbConnection(connectionString))
{
}

CHistoricDataWriter::CHistoricDataWriter(std::unique_ptr<IDbConnection> connection)
    : m_connection(std::move(connection)), m_sql(CHistorianSql::DialectOf(m_connection->DbmsName()))
{
}

void CHistoricDataWriter::CreateTable()
{
    try {
        m_connection->Query(m_sql.EmptyRowQuery())->Close();
        return;   // the table is there
    } catch (const _com_error&) {
    }
    m_connection->Execute(m_sql.CreateTableStatement());
    m_connection->Execute(m_sql.CreateIndexStatement());
}

void CHistoricDataWriter::AppendRun(const std::wstring& itemId, const std::vector<CHistoricValue>& values)
{
    if (values.empty())
        throw CException(E_INVALIDARG, L"AppendRun: a run holds at least one value");
    var_length_container cache;
    for (const CHistoricValue& v : values)
        cache.Append(v.time, v.quality, v.value);
    AppendRun(itemId, cache, values.front().time, values.back().time);
}

void CHistoricDataWriter::AppendRun(const std::wstring& itemId, const var_length_container& cache, double timeFrom,
                                    double timeTo)
{
    CVariant buffer;
    buffer.vt = VT_ARRAY | VT_UI1;
    const HRESULT hr = ::SafeArrayCopy(cache.Array(), &buffer.parray);
    if (FAILED(hr)) {
        buffer.vt = VT_EMPTY;
        throw CException(hr, L"::SafeArrayCopy (cache.Array (), &buffer.parray)");
    }
    AppendRawRow(itemId, timeFrom, timeTo, CVariant::UI4(cache.ValueCount()), buffer, CVariant::UI4(cache.UsedSize()));
}

void CHistoricDataWriter::AppendRawRow(const std::wstring& itemId, double timeFrom, double timeTo,
                                       const VARIANT& valCount, const VARIANT& itemValues,
                                       const VARIANT& cacheUsedSize)
{
    std::vector<DbField> fields;
    fields.push_back({L"ItemID", CVariant(itemId)});
    fields.push_back({L"TimeFrom", CVariant::R8(timeFrom)});
    fields.push_back({L"TimeTo", CVariant::R8(timeTo)});
    fields.push_back({L"ValCount", CVariant(valCount)});
    fields.push_back({L"ItemValues", CVariant(itemValues)});
    fields.push_back({L"CacheUsedSize", CVariant(cacheUsedSize)});
    m_connection->AppendRow(m_sql.EmptyRowQuery(), CHistorianSql::kTable, fields);
}

void AppendHistoricRun(const std::wstring& connectionString, const std::wstring& itemId,
                       const std::vector<CHistoricValue>& values)
{
    CHistoricDataWriter writer(connectionString);
    writer.CreateTable();
    writer.AppendRun(itemId, values);
}

} // namespace CL
