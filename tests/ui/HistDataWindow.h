#pragma once
// The historical data window in a test: created modeless on the test's
// thread so that the test drives it with messages the way the user's clicks
// arrive.
#include "HistWinFixture.h"

#include "historian/dlgHistData.h"
#include "res/resource.h"
#include "support/TestSupport.h"

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
    void ShowAll() const
    {
        if (Checked(m_hwnd, IDC_TIMEPERIOD_CHK_FROM))
            Click(IDC_TIMEPERIOD_CHK_FROM);
        if (Checked(m_hwnd, IDC_TIMEPERIOD_CHK_TO))
            Click(IDC_TIMEPERIOD_CHK_TO);
        Click(IDC_HISTDATA_BTN_REFRESH);
    }
    std::wstring Status() const { return test::DialogItemText(m_hwnd, IDC_HISTDATA_STATUS); }
    HWND Hwnd() const { return m_hwnd; }

private:
    CdlgHistData m_dialog;
    HWND m_hwnd = nullptr;
};

} // namespace histwin_test
