#pragma once
// The fixture of the historian tests: a real database (SQLite file or
// PostgreSQL schema, the test's parameter) with table HistoricData, rows
// written in the stored record format by the server's writer, and a
// CHistorian configured on it that records every statement it runs.
#include <gtest/gtest.h>

#include <comdef.h>

#include <memory>
#include <string>
#include <vector>

#include "common/Exception.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/historian/DbError.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/historian/Historian.h"
#include "support/HistorianTestDb.h"
#include "support/LogCapture.h"

namespace historian_test {

using test::DbKind;

// 15 March 2023 00:00 UTC, and one hour as an OLE date.
constexpr double kDay = 45000.0;
constexpr double kHour = 1.0 / 24.0;

inline double At(double hours)
{
    return kDay + hours * kHour;
}

// Values at the given hours; each value is its hour as a double, so the
// values read back tell which records were delivered and in what order.
inline std::vector<CL::CHistoricValue> ValuesAt(std::initializer_list<double> hours)
{
    std::vector<CL::CHistoricValue> values;
    for (double h : hours)
        values.push_back({At(h), 192, CL::CVariant::R8(h)});
    return values;
}

// The delivered values as doubles (their hours).
inline std::vector<double> Hours(const CL::CHistorianValues& out)
{
    std::vector<double> hours;
    for (const CL::CVariant& v : out.values)
        hours.push_back(v.vt == VT_R8 ? v.dblVal : -1.0);
    return hours;
}

// The current time as an OLE date, UTC.
inline double NowUtc()
{
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    return CL::SystemTimeToDate(now);
}

// A record buffer of the values, as a byte array in a variant, after patch
// has changed its bytes.
template <typename Patch>
CL::CVariant PatchedBuffer(const std::vector<CL::CHistoricValue>& values, uint32_t& usedSize, Patch&& patch)
{
    CL::var_length_container cache;
    for (const CL::CHistoricValue& v : values)
        cache.Append(v.time, v.quality, v.value);
    usedSize = cache.UsedSize();
    CL::CVariant buffer;
    buffer.vt = VT_ARRAY | VT_UI1;
    ::SafeArrayCopy(cache.Array(), &buffer.parray);
    patch(static_cast<BYTE*>(buffer.parray->pvData));
    return buffer;
}

// Times that went through a database column. SQLite's ODBC driver hands
// doubles up through text of 15 significant digits, so a time read from a
// column may differ from the stored one by some microseconds (the values in
// ItemValues are exact); PostgreSQL gives them back exactly.
inline void ExpectColumnTime(DbKind kind, double actual, double expected)
{
    if (kind == DbKind::Sqlite)
        EXPECT_NEAR(actual, expected, 1e-9);
    else
        EXPECT_EQ(actual, expected);
}

inline std::string KindName(const testing::TestParamInfo<DbKind>& info)
{
    return test::DbKindName(info.param);
}

class HistorianDb : public testing::TestWithParam<DbKind> {
protected:
    void SetUp() override
    {
        Configure(CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit);
        m_historian.SetStatementObserver([this](const std::wstring& sql) { m_statements.push_back(sql); });
        m_writer = std::make_unique<CL::CHistoricDataWriter>(m_db.ConnectionString());
    }

    void Configure(long keepLastValues, long keepLastMinutes)
    {
        m_historian.Configure(m_db.ConnectionString(), keepLastValues, keepLastMinutes, 50);
    }

    void WriteRun(const std::wstring& itemId, std::initializer_list<double> hours)
    {
        m_writer->AppendRun(itemId, ValuesAt(hours));
    }

    CL::CHistorianSql Sql() const
    {
        return CL::CHistorianSql(GetParam() == DbKind::Sqlite ? CL::SqlDialect::Sqlite : CL::SqlDialect::PostgreSql);
    }

    test::ComScope m_com;
    test::HistorianTestDb m_db{GetParam()};
    std::unique_ptr<CL::CHistoricDataWriter> m_writer;
    std::vector<std::wstring> m_statements;
    CL::CHistorian m_historian;   // destroyed first: it may still save its caches
};

} // namespace historian_test
