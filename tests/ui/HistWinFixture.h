#pragma once
// Shared pieces of the historian window tests: a real database (SQLite or
// PostgreSQL) with a historian on it, rows written in the stored format, and
// readers of the windows' list views, headers and pickers.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/LocalTime.h"
#include "common/Util_Variant.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/historian/Historian.h"
#include "historian/PickerTime.h"
#include "support/HistorianTestDb.h"
#include "support/ProcessState.h"
#include "support/TestSupport.h"
#include "support/ZoneOffset.h"

namespace histwin_test {

using namespace std::chrono_literals;
using test::DbKind;

constexpr double kMs = 1.0 / 86400000.0;
constexpr double kSecond = 1.0 / 86400.0;
constexpr double kHour = 1.0 / 24.0;

inline DATE Date(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second, WORD ms = 0)
{
    SYSTEMTIME st{};
    st.wYear = year;
    st.wMonth = month;
    st.wDay = day;
    st.wHour = hour;
    st.wMinute = minute;
    st.wSecond = second;
    st.wMilliseconds = ms;
    return CL::SystemTimeToDate(st);
}

// What the windows show for a UTC time: the same time shifted by the zone's
// offset of now, worked out without the product's conversions.
inline std::wstring LocalText(DATE utc)
{
    return CL::DateToString(utc + test::LocalOffsetDays());
}

inline std::string KindName(const testing::TestParamInfo<DbKind>& info)
{
    return test::DbKindName(info.param);
}

// --- list views -----------------------------------------------------------

inline int RowCount(HWND list)
{
    return static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
}

inline std::wstring CellText(HWND list, int row, int column)
{
    std::vector<wchar_t> text(4096, L'\0');
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    ::SendMessageW(list, LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
    return text.data();
}

inline std::vector<std::wstring> Column(HWND list, int column)
{
    std::vector<std::wstring> texts;
    for (int i = 0; i < RowCount(list); ++i)
        texts.push_back(CellText(list, i, column));
    return texts;
}

inline std::wstring HeaderText(HWND list, int column)
{
    wchar_t text[256] = {};
    LVCOLUMNW col = {};
    col.mask = LVCF_TEXT;
    col.pszText = text;
    col.cchTextMax = 256;
    ::SendMessageW(list, LVM_GETCOLUMNW, column, reinterpret_cast<LPARAM>(&col));
    return text;
}

// The arrow bitmap in a column's header; NULL when it shows none.
inline HBITMAP HeaderBitmap(HWND list, int column)
{
    const HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
    HDITEMW item = {};
    item.mask = HDI_FORMAT | HDI_BITMAP;
    ::SendMessageW(header, HDM_GETITEMW, column, reinterpret_cast<LPARAM>(&item));
    return (item.fmt & HDF_BITMAP) ? item.hbm : nullptr;
}

// A real click on a column header (button down and up in its middle).
inline void ClickHeader(HWND list, int column)
{
    const HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
    RECT r = {};
    ::SendMessageW(header, HDM_GETITEMRECT, column, reinterpret_cast<LPARAM>(&r));
    const LPARAM at = MAKELPARAM((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    ::SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(header, WM_LBUTTONUP, 0, at);
}

inline void SelectRows(HWND list, std::initializer_list<int> rows)
{
    LVITEMW none = {};
    none.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&none));
    for (int row : rows) {
        LVITEMW item = {};
        item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        item.state = LVIS_SELECTED | (row == *rows.begin() ? LVIS_FOCUSED : 0);
        ::SendMessageW(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    }
}

// --- pickers --------------------------------------------------------------

inline SYSTEMTIME PickerTime(HWND picker)
{
    SYSTEMTIME st = {};
    ::SendMessageW(picker, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&st));
    return st;
}

// The picker's time as display text (milliseconds 000).
inline std::wstring PickerText(HWND picker)
{
    SYSTEMTIME st = PickerTime(picker);
    st.wMilliseconds = 0;
    return CL::DateToString(CL::SystemTimeToDate(st));
}

inline void SetPicker(HWND picker, DATE date)
{
    SYSTEMTIME st = CL::DateToSystemTime(date);
    ::SendMessageW(picker, DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&st));
}

inline bool Checked(HWND dialog, int id)
{
    return ::IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

// --- the database ---------------------------------------------------------

class HistorianWindowTest : public testing::TestWithParam<DbKind> {
    // The windows' copy commands fill the clipboard: put back after each test.
    test::ClipboardKeeper m_keepClipboard;

protected:
    void SetUp() override
    {
        CL::RegisterHistorianControlClasses();
        m_historian.Configure(m_db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
        m_historian.SetStatementObserver([this](const std::wstring& sql) { m_statements.push_back(sql); });
        m_writer = std::make_unique<CL::CHistoricDataWriter>(m_db.ConnectionString());
    }

    // One run of R8 values (each value its index in the list) at the given
    // UTC times, all of good quality.
    void WriteRun(const std::wstring& itemId, std::initializer_list<DATE> times, WORD quality = 192)
    {
        std::vector<CL::CHistoricValue> values;
        double n = 0;
        for (DATE t : times)
            values.push_back({t, quality, CL::CVariant::R8(n++)});
        m_writer->AppendRun(itemId, values);
    }

    void WriteValues(const std::wstring& itemId, const std::vector<CL::CHistoricValue>& values)
    {
        m_writer->AppendRun(itemId, values);
    }

    // The statements run since the test began that start with the prefix.
    std::vector<std::wstring> Statements(const std::wstring& prefix) const
    {
        std::vector<std::wstring> found;
        for (const std::wstring& sql : m_statements)
            if (sql.rfind(prefix, 0) == 0)
                found.push_back(sql);
        return found;
    }

    test::ComScope m_com;
    test::HistorianTestDb m_db{GetParam()};
    std::unique_ptr<CL::CHistoricDataWriter> m_writer;
    std::vector<std::wstring> m_statements;
    CL::CHistorian m_historian;
};

} // namespace histwin_test
