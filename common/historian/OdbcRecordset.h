#pragma once
// COdbcRecordset: the rows of one ODBC query, read forward. Each fetched row
// is read whole, column by column in order (drivers need not allow
// SQLGetData out of order), into variants of the common field types
// (DbFieldValue.h). Binary columns go straight into a byte array.
#include <windows.h>
#include <sql.h>

#include <string>
#include <vector>

#include "common/historian/DbRecordset.h"
#include "common/historian/OdbcHandle.h"

namespace CL {

class COdbcRecordset final : public IDbRecordset {
public:
    // Takes a statement on which a query has just been executed, and fetches
    // the first row.
    explicit COdbcRecordset(COdbcHandle statement);
    ~COdbcRecordset() override;

    bool IsEof() const override { return m_eof; }
    void MoveNext() override;
    CVariant& Field(std::wstring_view name) override;
    void Close() override;

private:
    struct Column {
        std::wstring name;
        SQLSMALLINT sqlType = 0;
    };

    void DescribeColumns();
    void Fetch();
    void ReadRow();
    void ReadColumn(SQLUSMALLINT number, const Column& column, CVariant& value);
    bool ReadText(SQLUSMALLINT number, CVariant& value);
    bool ReadBinary(SQLUSMALLINT number, CVariant& value);
    template <typename T>
    bool ReadFixed(SQLUSMALLINT number, SQLSMALLINT cType, T& out);

    COdbcHandle m_statement;
    std::vector<Column> m_columns;
    std::vector<CVariant> m_row;
    bool m_eof = true;
};

} // namespace CL
