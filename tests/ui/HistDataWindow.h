#pragma once
// The historical data window in a test: created modeless on the test's
// thread so that the test drives it with messages the way the user's clicks
// arrive.
#include "HistWinFixture.h"

#include "historian/dlgHistData.h"
#include "res/resource.h"
#include "support/TestSupport.h"
#include "unit/ValueTestHelpers.h"

namespace histwin_test {

class HistDataWindow {
public:
    HistDataWindow(CL::CHistorian& historian, const std::wstring& itemId, DATE from = 0.0, DATE to = 0.0)
        : m_dialog(historian)
    {
        m_dialog.m_itemId = itemId;
        m_dialog.m_from = from;
        m_dialog.m_to = to;
    }
    CdlgHistData& Dialog() { return m_dialog; }
    HWND Open()
    {
        m_hwnd = m_dialog.Create(nullptr, IDD_HISTDATA);
        return m_hwnd;
    }
    HWND Item(int id) const { return ::GetDlgItem(m_hwnd, id); }
    HWND List() const { return Item(IDC_HISTDATA_LIST); }
    void Click(int id) const { ::SendMessageW(Item(id), BM_CLICK, 0, 0); }
    void SetMax(unsigned n) const { ::SetDlgItemInt(m_hwnd, IDC_HISTDATA_MAX_COUNT, n, FALSE); }
    // Both bounds switched off: every value of the item.
    void UncheckBounds() const
    {
        if (Checked(m_hwnd, IDC_TIMEPERIOD_CHK_FROM))
            Click(IDC_TIMEPERIOD_CHK_FROM);
        if (Checked(m_hwnd, IDC_TIMEPERIOD_CHK_TO))
            Click(IDC_TIMEPERIOD_CHK_TO);
    }
    void ShowAll() const
    {
        UncheckBounds();
        Click(IDC_HISTDATA_BTN_REFRESH);
    }
    std::wstring Status() const { return test::DialogItemText(m_hwnd, IDC_HISTDATA_STATUS); }
    HWND Hwnd() const { return m_hwnd; }

private:
    CdlgHistData m_dialog;
    HWND m_hwnd = nullptr;
};

// Values of every kind the exports must write, from 15.03.2023 10:00:00 UTC
// on, a second and 7 ms apart: numbers, a boolean, texts with markup, quotes,
// a comma and a line break, arrays, an empty array, qualities good and bad,
// and a text longer than the XML's 2048-character cut (2100 characters).
inline std::vector<CL::CHistoricValue> MixedValues()
{
    const DATE t = Date(2023, 3, 15, 10, 0, 0);
    std::wstring longText;
    while (longText.size() < 2100)
        longText += L"0123456789";
    CL::CVariant byte;
    byte.vt = VT_UI1;
    byte.bVal = 255;
    return {
        {t, 192, CL::CVariant::I4(42)},
        {t + 1 * kSecond + 7 * kMs, 192, CL::CVariant::R8(1.5)},
        {t + 2 * kSecond + 14 * kMs, 64, CL::CVariant::Bool(true)},
        {t + 3 * kSecond + 21 * kMs, 0, byte},
        {t + 4 * kSecond + 28 * kMs, 216, CL::CVariant::I8(-9000000000LL)},
        {t + 5 * kSecond + 35 * kMs, 192, CL::CVariant::R4(-0.25f)},
        {t + 6 * kSecond + 42 * kMs, 192, CL::CVariant(L"")},
        {t + 7 * kSecond + 49 * kMs, 192, CL::CVariant(L"Gr\u00FC\u00DFe, \u6E29\u5EA6 <&> \"quoted\"")},
        {t + 8 * kSecond + 56 * kMs, 192, CL::CVariant(L"line one\r\nline two")},
        {t + 9 * kSecond + 63 * kMs, 192, ValueTest::MakeArray<SHORT>(VT_I2, {1, -2, 3})},
        {t + 10 * kSecond + 70 * kMs, 192, ValueTest::MakeArray<double>(VT_R8, {})},
        {t + 11 * kSecond + 77 * kMs, 65535, ValueTest::MakeStringArray({L"a", L"b c"})},
        {t + 12 * kSecond + 84 * kMs, 192, CL::CVariant(longText)},
    };
}

} // namespace histwin_test
