#include "common/historian/HistorianSql.h"

#include "common/Text.h"

namespace CL {

namespace {

// One piece of a multi-line statement: `tabs` tab characters, the piece,
// and one space.
std::wstring Piece(int tabs, const std::wstring& text)
{
    return std::wstring(static_cast<size_t>(tabs), L'\t') + text + L" ";
}

constexpr wchar_t kStatementEnd[] = L"\t\t\t";

bool ContainsNoCase(std::wstring_view text, std::wstring_view part)
{
    if (part.size() > text.size())
        return false;
    for (size_t i = 0; i + part.size() <= text.size(); ++i) {
        if (EqualsNoCase(text.substr(i, part.size()), part))
            return true;
    }
    return false;
}

} // namespace

SqlDialect CHistorianSql::DialectOf(std::wstring_view dbmsName)
{
    if (ContainsNoCase(dbmsName, L"PostgreSQL"))
        return SqlDialect::PostgreSql;
    if (ContainsNoCase(dbmsName, L"SQLite"))
        return SqlDialect::Sqlite;
    return SqlDialect::Standard;
}

std::wstring CHistorianSql::Name(const wchar_t* name) const
{
    if (m_dialect == SqlDialect::PostgreSql)
        return name;
    return std::wstring(L"[") + name + L"]";
}

std::wstring CHistorianSql::RangeQuery(const std::wstring& itemId, bool hasFrom, double from, bool hasTo,
                                       double to) const
{
    std::wstring sql = Format(L"SELECT * FROM HistoricData WHERE %ls='%ls'", Name(L"ItemID").c_str(), itemId.c_str());
    if (hasFrom)
        sql += Format(L" and (%ls <= %.14f)", Name(L"TimeFrom").c_str(), to);
    if (hasTo)
        sql += Format(L" and (%ls >= %.14f)", Name(L"TimeTo").c_str(), from);
    sql += Format(L" ORDER BY %ls", Name(L"TimeFrom").c_str());
    return sql;
}

std::wstring CHistorianSql::SummaryQuery() const
{
    return L"SELECT ItemID as a, min(TimeFrom) as b, max(TimeTo) as c, sum(ValCount) as d FROM HistoricData "
           L"GROUP BY ItemID ORDER BY ItemID";
}

std::wstring CHistorianSql::DeleteAllStatement() const
{
    return L"DELETE FROM HistoricData";
}

std::wstring CHistorianSql::DeleteItemsStatement(const std::vector<std::wstring>& itemIds, bool hasFrom,
                                                 double from, bool hasTo, double to) const
{
    if (itemIds.empty())
        return std::wstring();
    std::wstring sql = L"DELETE FROM HistoricData WHERE (";
    for (size_t i = 0; i < itemIds.size(); ++i) {
        if (i > 0)
            sql += L" or ";
        sql += Format(L"%ls = '%ls'", Name(L"ItemID").c_str(), itemIds[i].c_str());
    }
    sql += L")";
    if (hasFrom)
        sql += Format(L" AND (%ls >= %.14f)", Name(L"TimeFrom").c_str(), from);
    if (hasTo)
        sql += Format(L" AND (%ls < %.14f)", Name(L"TimeTo").c_str(), to);
    return sql;
}

std::wstring CHistorianSql::EmptyRowQuery() const
{
    return L"SELECT * FROM HistoricData WHERE 1=2";
}

std::wstring CHistorianSql::KeepLastValuesStatement(long keepLastValues, const std::wstring& itemId) const
{
    std::wstring head;
    switch (m_dialect) {
    case SqlDialect::Standard:
        head = L"DELETE hd FROM HistoricData hd";
        break;
    case SqlDialect::PostgreSql:
        head = L"DELETE FROM HistoricData hd";
        break;
    case SqlDialect::Sqlite:
        head = L"DELETE FROM HistoricData AS hd";
        break;
    }
    return Piece(4, head) +
           Piece(4, Format(L"WHERE %d <= (", static_cast<int>(keepLastValues))) +
           Piece(6, L"SELECT SUM(ValCount)") +
           Piece(6, L"FROM HistoricData hd2") +
           Piece(6, Format(L"WHERE hd2.TimeFrom > hd.TimeFrom AND hd2.ItemID = '%ls'", itemId.c_str())) +
           Piece(5, L")") +
           Piece(5, Format(L"AND hd.ItemID = '%ls'", itemId.c_str())) +
           kStatementEnd;
}

std::wstring CHistorianSql::KeepLastMinutesStatement(double cutOff, const std::wstring& itemId) const
{
    return Piece(4, L"DELETE FROM HistoricData") +
           Piece(4, Format(L"WHERE TimeTo < %.14f", cutOff)) +
           Piece(5, Format(L"AND ItemID = '%ls'", itemId.c_str())) +
           kStatementEnd;
}

std::wstring CHistorianSql::CreateTableStatement() const
{
    switch (m_dialect) {
    case SqlDialect::PostgreSql:
        return L"CREATE TABLE HistoricData (ItemID VARCHAR(255) NOT NULL, TimeFrom DOUBLE PRECISION NOT NULL, "
               L"TimeTo DOUBLE PRECISION NOT NULL, ValCount INTEGER NOT NULL, ItemValues BYTEA, "
               L"CacheUsedSize INTEGER NOT NULL)";
    case SqlDialect::Sqlite:
        return L"CREATE TABLE HistoricData (ItemID VARCHAR(255) NOT NULL, TimeFrom DOUBLE NOT NULL, "
               L"TimeTo DOUBLE NOT NULL, ValCount INTEGER NOT NULL, ItemValues BLOB, "
               L"CacheUsedSize INTEGER NOT NULL)";
    case SqlDialect::Standard:
        break;
    }
    // Jet and SQL Server: FLOAT is a double, IMAGE a long binary in both.
    return L"CREATE TABLE HistoricData (ItemID VARCHAR(255) NOT NULL, TimeFrom FLOAT NOT NULL, "
           L"TimeTo FLOAT NOT NULL, ValCount INT NOT NULL, ItemValues IMAGE, CacheUsedSize INT NOT NULL)";
}

std::wstring CHistorianSql::CreateIndexStatement() const
{
    return L"CREATE INDEX HistoricData_ItemTime ON HistoricData (ItemID, TimeFrom)";
}

} // namespace CL
