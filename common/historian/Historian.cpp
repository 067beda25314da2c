#include "common/historian/Historian.h"

#include <cwchar>

#include "common/CaughtException.h"
#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/WorkCancelled.h"
#include "common/historian/DbConnection.h"
#include "common/historian/DbError.h"

namespace CL {

namespace {

// The log lines of the range read, with their fixed source markers.
constexpr char kBadInfoInFields[] = "Bad info in fields [Historian, 225]";
constexpr char kRowFailureMarker[] = " [Historian, 266]";
constexpr char kBadInfoInDb[] = "Bad info in DB [Historian, 267]";
constexpr char kReadFailureMarker[] = " [Historian, 275]";
constexpr char kFailedToReadDb[] = "Failed to read DB [Historian, 276]";
constexpr char kDestructorMarker[] = " [Historian, 59]";

std::wstring ExecutableFolder()
{
    wchar_t path[260] = {};
    const DWORD n = ::GetModuleFileNameW(nullptr, path, 260);
    if (n == 0)
        ThrowLastError(L"::GetModuleFileNameW (0, path_buffer, 260)");
    std::wstring folder(path, n);
    const size_t slash = folder.find_last_of(L"\\/");
    folder.erase(slash == std::wstring::npos ? 0 : slash);
    return folder;
}

// A field's value as the given type (invariant locale); a value that cannot
// be converted raises the conversion's code.
CVariant FieldAs(IDbRecordset& recordset, const wchar_t* name, VARTYPE vt)
{
    CVariant& field = recordset.Field(name);
    if (field.vt == vt)
        return field;
    CVariant converted;
    const HRESULT hr = ::VariantChangeTypeEx(&converted, &field, LOCALE_INVARIANT, 0, vt);
    if (FAILED(hr))
        ThrowDbError(hr, Format(L"Field '%ls' cannot be read as variant type %u.", name, static_cast<unsigned>(vt)),
                     L"VariantChangeTypeEx");
    return converted;
}

} // namespace

bool CHistorian::NoCaseLess::operator()(const std::wstring& a, const std::wstring& b) const
{
    return ::_wcsicmp(a.c_str(), b.c_str()) < 0;
}

CHistorian::~CHistorian()
{
    try {
        CCriticalSection::Lock guard(m_lock);
        SaveCachesLocked();
        m_items.clear();
    } catch (...) {
        LogCaughtException(1, kDestructorMarker);
    }
}

void CHistorian::Configure(const std::wstring& customConnection, long keepLastValues, long keepLastMinutes,
                           long deletePercent)
{
    const std::wstring folder = ExecutableFolder() + L"\\Historian";
    CCriticalSection::Lock guard(m_lock);
    m_keepLastValues = keepLastValues;
    m_keepLastMinutes = keepLastMinutes;
    m_deletePercent = deletePercent;
    m_databaseFolder = folder;
    m_connectionString = customConnection;
}

std::wstring CHistorian::ConnectionString() const
{
    CCriticalSection::Lock guard(m_lock);
    if (!m_connectionString.empty())
        return m_connectionString;
    const std::wstring file = m_databaseFolder + L"\\Historian.mdb";
    return Format(L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%ls", file.c_str());
}

std::wstring CHistorian::DatabaseFolder() const
{
    CCriticalSection::Lock guard(m_lock);
    return m_databaseFolder;
}

long CHistorian::KeepLastValues() const
{
    CCriticalSection::Lock guard(m_lock);
    return m_keepLastValues;
}

long CHistorian::KeepLastMinutes() const
{
    CCriticalSection::Lock guard(m_lock);
    return m_keepLastMinutes;
}

long CHistorian::DeletePercent() const
{
    CCriticalSection::Lock guard(m_lock);
    return m_deletePercent;
}

void CHistorian::SetStatementObserver(StatementObserver observer)
{
    CCriticalSection::Lock guard(m_lock);
    m_observer = std::move(observer);
}

std::unique_ptr<IDbConnection> CHistorian::OpenConnection() const
{
    return OpenDbConnection(ConnectionString());
}

void CHistorian::Execute(IDbConnection& connection, const std::wstring& sql) const
{
    if (m_observer)
        m_observer(sql);
    connection.Execute(sql);
}

HRESULT CHistorian::ReadRange(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to,
                              DWORD maxCount, CHistorianValues& out, bool includeMemoryRun,
                              const ReadProgress& progress, bool* stoppedEarly)
{
    out.Clear();
    if (stoppedEarly)
        *stoppedEarly = false;
    if (!ReadStored(itemId, hasFrom, from, hasTo, to, maxCount, out, progress, false, stoppedEarly))
        return kMoreData;
    if (includeMemoryRun) {
        CCriticalSection::Lock guard(m_lock);
        const auto found = m_items.find(itemId);
        if (found != m_items.end() && !found->second->Deliver(hasFrom, from, hasTo, to, maxCount, out))
            return kMoreData;
    }
    return out.Size() > 0 ? S_OK : kNoData;
}

HRESULT CHistorian::ReadRangeChecked(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to,
                                     DWORD maxCount, CHistorianValues& out, const ReadProgress& progress)
{
    out.Clear();
    if (!ReadStored(itemId, hasFrom, from, hasTo, to, maxCount, out, progress, true))
        return kMoreData;
    return out.Size() > 0 ? S_OK : kNoData;
}

bool CHistorian::ReadStored(const std::wstring& itemId, bool hasFrom, double from, bool hasTo, double to,
                            DWORD maxCount, CHistorianValues& out, const ReadProgress& progress, bool passOn,
                            bool* failed) const
{
    try {
        const std::unique_ptr<IDbConnection> connection = OpenConnection();
        return ReadRows(*connection, itemId, hasFrom, from, hasTo, to, maxCount, out, progress);
    } catch (const CWorkCancelled&) {
        throw;
    } catch (...) {
        LogCaughtException(1, kReadFailureMarker);
        if (LogEnabled(1))
            Log(1, kFailedToReadDb);
        if (passOn)
            throw;
        if (failed)
            *failed = true;
    }
    return true;
}

bool CHistorian::ReadRows(IDbConnection& connection, const std::wstring& itemId, bool hasFrom, double from,
                          bool hasTo, double to, DWORD maxCount, CHistorianValues& out,
                          const ReadProgress& progress) const
{
    const std::wstring sql = CHistorianSql(CHistorianSql::DialectOf(connection.DbmsName()))
                                 .RangeQuery(itemId, hasFrom, from, hasTo, to);
    if (m_observer)
        m_observer(sql);
    const std::unique_ptr<IDbRecordset> recordset = connection.Query(sql);
    for (; !recordset->IsEof(); recordset->MoveNext()) {
        if (progress)
            progress(out.Size());
        try {
            const long valueCount = FieldAs(*recordset, L"ValCount", VT_I4).lVal;
            CVariant& buffer = recordset->Field(L"ItemValues");
            if (valueCount < 1 || buffer.vt != (VT_ARRAY | VT_UI1)) {
                if (LogEnabled(1))
                    Log(1, kBadInfoInFields);
                continue;
            }
            const long usedSize = FieldAs(*recordset, L"CacheUsedSize", VT_I4).lVal;
            var_length_container cache(buffer.parray, static_cast<uint32_t>(usedSize),
                                       static_cast<uint32_t>(valueCount));
            buffer.vt = VT_EMPTY;   // the cache owns the array now
            buffer.parray = nullptr;
            // A stored row's upper bound is exclusive.
            if (!AppendRecordsInRange(cache, hasFrom, from, hasTo, to, false, maxCount, out))
                return false;
        } catch (...) {
            LogCaughtException(1, kRowFailureMarker);
            if (LogEnabled(1))
                Log(1, kBadInfoInDb);
        }
    }
    recordset->Close();
    return true;
}

std::vector<CHistorianSummaryEntry> CHistorian::ReadSummary(const ReadProgress& progress)
{
    const std::unique_ptr<IDbConnection> connection = OpenConnection();
    const std::wstring sql = CHistorianSql(CHistorianSql::DialectOf(connection->DbmsName())).SummaryQuery();
    if (m_observer)
        m_observer(sql);
    std::vector<CHistorianSummaryEntry> summary;
    const std::unique_ptr<IDbRecordset> recordset = connection->Query(sql);
    for (; !recordset->IsEof(); recordset->MoveNext()) {
        if (progress)
            progress(summary.size());
        CHistorianSummaryEntry entry;
        const CVariant id = FieldAs(*recordset, L"a", VT_BSTR);
        entry.itemId.assign(id.bstrVal, ::SysStringLen(id.bstrVal));
        entry.timeFrom = FieldAs(*recordset, L"b", VT_R8).dblVal;
        entry.timeTo = FieldAs(*recordset, L"c", VT_R8).dblVal;
        entry.valueCount = FieldAs(*recordset, L"d", VT_I4).lVal;
        summary.push_back(std::move(entry));
    }
    recordset->Close();
    return summary;
}

void CHistorian::DeleteAll()
{
    const std::unique_ptr<IDbConnection> connection = OpenConnection();
    Execute(*connection, CHistorianSql(CHistorianSql::DialectOf(connection->DbmsName())).DeleteAllStatement());
}

void CHistorian::DeleteItems(const std::vector<std::wstring>& itemIds, bool hasFrom, double from, bool hasTo,
                             double to)
{
    if (itemIds.empty())
        return;
    const std::unique_ptr<IDbConnection> connection = OpenConnection();
    const CHistorianSql sql(CHistorianSql::DialectOf(connection->DbmsName()));
    Execute(*connection, sql.DeleteItemsStatement(itemIds, hasFrom, from, hasTo, to));
}

void CHistorian::CacheValue(const std::wstring& itemId, DATE time, WORD quality, const VARIANT& value)
{
    CCriticalSection::Lock guard(m_lock);
    auto found = m_items.find(itemId);
    if (found == m_items.end())
        found = m_items.emplace(itemId, std::make_unique<CItem>(itemId)).first;
    found->second->Append(time, quality, value);
}

void CHistorian::SaveCaches()
{
    CCriticalSection::Lock guard(m_lock);
    SaveCachesLocked();
}

void CHistorian::SaveCachesLocked()
{
    bool anyValues = false;
    for (const auto& [id, item] : m_items)
        anyValues = anyValues || item->Cache().UsedSize() > 0;
    if (!anyValues)
        return;
    const std::unique_ptr<IDbConnection> connection = OpenConnection();
    const CHistorianSql sql(CHistorianSql::DialectOf(connection->DbmsName()));
    const CRetention retention{m_keepLastValues, m_keepLastMinutes};
    for (const auto& [id, item] : m_items)
        item->SaveCache(*connection, sql, retention, m_observer);
}

} // namespace CL
