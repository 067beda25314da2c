#include "common/historian/HistorianSummaryOf.h"

#include "common/historian/DbConnection.h"
#include "common/historian/DbRecordset.h"
#include "common/historian/Historian.h"

namespace CL {

namespace {

std::wstring Quoted(const std::wstring& text)
{
    std::wstring quoted = L"'";
    for (wchar_t c : text) {
        quoted += c;
        if (c == L'\'')
            quoted += c;
    }
    return quoted + L"'";
}

// A LIKE pattern for every ID below the path: the path's own wildcard
// characters escaped with '!'.
std::wstring BelowPattern(const std::wstring& path)
{
    std::wstring pattern;
    for (wchar_t c : path) {
        if (c == L'!' || c == L'%' || c == L'_' || c == L'[')
            pattern += L'!';
        pattern += c;
    }
    return Quoted(pattern + L".%");
}

double AsDouble(IDbRecordset& recordset, const wchar_t* name)
{
    CVariant value;
    ::VariantChangeTypeEx(&value, &recordset.Field(name), LOCALE_INVARIANT, 0, VT_R8);
    return value.vt == VT_R8 ? value.dblVal : 0.0;
}

long long AsCount(IDbRecordset& recordset, const wchar_t* name)
{
    CVariant value;
    ::VariantChangeTypeEx(&value, &recordset.Field(name), LOCALE_INVARIANT, 0, VT_I8);
    return value.vt == VT_I8 ? value.llVal : 0;
}

} // namespace

std::wstring SummaryOfQuery(const std::vector<std::wstring>& itemIds, const std::vector<std::wstring>& branchPaths)
{
    std::wstring where;
    if (!itemIds.empty()) {
        where = L"ItemID IN (";
        for (size_t i = 0; i < itemIds.size(); ++i)
            where += (i ? L", " : L"") + Quoted(itemIds[i]);
        where += L")";
    }
    for (const std::wstring& path : branchPaths)
        where += (where.empty() ? L"" : L" OR ") + std::wstring(L"ItemID LIKE ") + BelowPattern(path) + L" ESCAPE '!'";
    return L"SELECT ItemID as a, min(TimeFrom) as b, max(TimeTo) as c, sum(ValCount) as d FROM HistoricData WHERE " +
           where + L" GROUP BY ItemID";
}

std::vector<CHistorianSummaryEntry> ReadSummaryOf(CHistorian& historian, const std::vector<std::wstring>& itemIds,
                                                  const std::vector<std::wstring>& branchPaths)
{
    if (itemIds.empty() && branchPaths.empty())
        return {};
    if (itemIds.size() + branchPaths.size() > kMaxSummaryNames)
        return historian.ReadSummary();
    const std::unique_ptr<IDbConnection> connection = OpenDbConnection(historian.ConnectionString());
    std::vector<CHistorianSummaryEntry> summary;
    const std::unique_ptr<IDbRecordset> recordset = connection->Query(SummaryOfQuery(itemIds, branchPaths));
    for (; !recordset->IsEof(); recordset->MoveNext()) {
        CHistorianSummaryEntry entry;
        CVariant id;
        ::VariantChangeTypeEx(&id, &recordset->Field(L"a"), LOCALE_INVARIANT, 0, VT_BSTR);
        if (id.vt == VT_BSTR)
            entry.itemId.assign(id.bstrVal, ::SysStringLen(id.bstrVal));
        entry.timeFrom = AsDouble(*recordset, L"b");
        entry.timeTo = AsDouble(*recordset, L"c");
        entry.valueCount = static_cast<decltype(entry.valueCount)>(AsCount(*recordset, L"d"));
        summary.push_back(std::move(entry));
    }
    recordset->Close();
    return summary;
}

} // namespace CL
