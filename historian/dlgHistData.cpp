#include "historian/dlgHistData.h"

#include <commdlg.h>

#include <algorithm>

#include <memory>
#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/LocalTime.h"
#include "common/Text.h"
#include "common/ui/FileDialog.h"
#include "common/ui/Dpi.h"
#include "common/ui/WaitCursor.h"
#include "common/historian/Historian.h"
#include "historian/HistorianAccess.h"
#include "historian/HistoryExport.h"
#include "historian/PickerTime.h"
#include "res/resource.h"

namespace {

// A file name made of the item ID: characters a file name cannot hold
// become '_'.
std::wstring ExportFileName(const std::wstring& itemId)
{
    std::wstring name = itemId;
    for (wchar_t& c : name)
        if (c < 0x20 || std::wstring_view(L"\\/:*?\"<>|").find(c) != std::wstring_view::npos)
            c = L'_';
    return name + L".xml";
}

} // namespace

CdlgHistData::CdlgHistData(CL::CHistorian& historian) : m_historian(historian) {}

INT_PTR CdlgHistData::DoModal(HWND owner)
{
    CL::RegisterHistorianControlClasses();
    return CL::CDialog::DoModal(owner, IDD_HISTDATA);
}

BOOL CdlgHistData::OnInitDialog()
{
    Log(3, "CdlgHistData::OnInitDialog" + MV_POS());
    MV_CHECK(::SetDlgItemTextW(Hwnd(), IDC_HISTDATA_ITEM, m_itemId.c_str()));
    MV_CHECK(::SetDlgItemInt(Hwnd(), IDC_HISTDATA_MAX_COUNT, m_maxCount, TRUE));
    CL::RunReported([this] { InitControls(); });
    // Enter shows the data.
    ::SetFocus(GetDlgItem(IDC_HISTDATA_BTN_REFRESH));
    return FALSE;
}

void CdlgHistData::InitControls()
{
    const HICON icon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
    ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
    ::SendMessageW(Hwnd(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));

    const DATE now = CL::NowLocalDate();
    PresetBound(IDC_TIMEPERIOD_CHK_FROM, IDC_TIMEPERIOD_FROM, m_useFrom, m_from == 0.0 ? now - CL::kOneHour : m_from);
    PresetBound(IDC_TIMEPERIOD_CHK_TO, IDC_TIMEPERIOD_TO, m_useTo, m_to == 0.0 ? now : m_to);

    m_list.Attach(GetDlgItem(IDC_HISTDATA_LIST));
    ::SendMessageW(m_list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP,
                   LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    m_list.SetColumns({{L"Value", 170}, {L"Time (UTC)", 175}, {L"Var. type", 110}, {L"Quality", 80}});
    m_rows.Clear();
    m_list.SetRows(&m_rows);
    m_list.Reset();

    using Anchors = CL::CDialogAnchors;
    m_anchors.Add(IDC_HISTDATA_ITEM, Anchors::kStretchX | Anchors::kTop);
    m_anchors.Add(IDC_HISTDATA_LIST, Anchors::kStretchX | Anchors::kStretchY);
    m_anchors.Add(IDC_HISTDATA_STATUS, Anchors::kStretchX | Anchors::kBottom);
    m_anchors.Capture(Hwnd());

    // The chart shares the list's area, below it, next in the tab order.
    m_splitBar.Create(Hwnd(), IDC_HISTDATA_CHART_BAR);
    m_splitBar.onDrag = [this](int top) { OnSplitBarDrag(top); };
    m_chart.Create(Hwnd(), IDC_HISTDATA_CHART);
    m_chart.Clear(m_itemId);
    ::SetWindowPos(m_chart, m_list, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    ::CheckDlgButton(Hwnd(), IDC_HISTDATA_CHART_SHOW, BST_CHECKED);
    ArrangeChart();
}

void CdlgHistData::ArrangeChart()
{
    RECT client;
    ::GetClientRect(Hwnd(), &client);
    m_anchors.OnSize(client.right, client.bottom);
    if (!m_chart.IsWindow() || !m_splitBar.IsWindow())
        return;
    RECT area;
    ::GetWindowRect(m_list, &area);
    ::MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&area), 2);
    const bool shown = ::IsDlgButtonChecked(Hwnd(), IDC_HISTDATA_CHART_SHOW) == BST_CHECKED;
    ::ShowWindow(m_chart, shown ? SW_SHOWNA : SW_HIDE);
    ::ShowWindow(m_splitBar, shown ? SW_SHOWNA : SW_HIDE);
    if (!shown)
        return;
    const int height = area.bottom - area.top;
    const int bar = m_splitBar.Height();
    if (m_chartHeight == 0)
        m_chartHeight = (height - bar) * 3 / 5;   // at first the chart has three fifths
    // Each pane keeps some room, as far as the area allows.
    const int least = std::min(CL::CDpi::Of(Hwnd()).Scale(60), (height - bar) / 2);
    const int chart = std::clamp(m_chartHeight, least, std::max(height - bar - least, least));
    const int listHeight = height - bar - chart;
    ::MoveWindow(m_list, area.left, area.top, area.right - area.left, listHeight, TRUE);
    ::MoveWindow(m_splitBar, area.left, area.top + listHeight, area.right - area.left, bar, TRUE);
    ::MoveWindow(m_chart, area.left, area.top + listHeight + bar, area.right - area.left, chart, TRUE);
}

void CdlgHistData::OnSplitBarDrag(int top)
{
    RECT chart;
    ::GetWindowRect(m_chart, &chart);
    ::MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&chart), 2);
    m_chartHeight = chart.bottom - (top + m_splitBar.Height());
    ArrangeChart();
}

void CdlgHistData::PresetBound(int checkId, int pickerId, int state, DATE date)
{
    const HWND picker = GetDlgItem(pickerId);
    CL::SetPickerFormat(picker);
    CL::SetPickerDate(picker, date);
    ::CheckDlgButton(Hwnd(), checkId, state >= 0 && state <= 2 ? static_cast<UINT>(state) : BST_UNCHECKED);
    SyncPicker(checkId, pickerId);
}

void CdlgHistData::SyncPicker(int checkId, int pickerId)
{
    ::EnableWindow(GetDlgItem(pickerId), ::IsDlgButtonChecked(Hwnd(), checkId) == BST_CHECKED);
}

bool CdlgHistData::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    if (code != BN_CLICKED)
        return false;
    switch (id) {
    case IDC_HISTDATA_BTN_REFRESH:
        OnBnClickedBtnRefresh();
        return true;
    case IDC_HISTDATA_OPEN_FILE:
        OnClickedOpenFile();
        return true;
    case IDC_TIMEPERIOD_CHK_FROM:
        OnBnClickedChkFrom();
        return true;
    case IDC_TIMEPERIOD_CHK_TO:
        OnBnClickedChkTo();
        return true;
    case IDC_HISTDATA_CHART_SHOW:
        OnBnClickedChkChart();
        return true;
    case IDOK:
    case IDCANCEL:
        EndDialog(id);
        return true;
    default:
        return false;
    }
}

INT_PTR CdlgHistData::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (!OnNotify(reinterpret_cast<const NMHDR*>(lParam), &result))
            return FALSE;
        ::SetWindowLongPtrW(Hwnd(), DWLP_MSGRESULT, result);
        return TRUE;
    }
    case WM_SIZE:
        ArrangeChart();
        return TRUE;
    case WM_ERASEBKGND:
        // The chart paints all of itself: the dialog's background is not
        // painted under it first, so that resizing does not flicker.
        if (m_chart.IsWindow() && ::IsWindowVisible(m_chart)) {
            RECT chart;
            ::GetWindowRect(m_chart, &chart);
            ::MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&chart), 2);
            ::ExcludeClipRect(reinterpret_cast<HDC>(wParam), chart.left, chart.top, chart.right, chart.bottom);
        }
        return FALSE;   // the default erases the rest
    case WM_GETMINMAXINFO:
        m_anchors.OnGetMinMaxInfo(reinterpret_cast<MINMAXINFO*>(lParam));
        return TRUE;
    case WM_SYSCOLORCHANGE:
        OnSysColorChange();
        return TRUE;
    default:
        return CL::CDialog::DialogProc(message, wParam, lParam);
    }
}

bool CdlgHistData::OnNotify(const NMHDR* header, LRESULT* result)
{
    if (header->hwndFrom != m_list.Hwnd())
        return false;
    if (header->code == LVN_COLUMNCLICK) {
        *result = OnColumnClick(header);
        return true;
    }
    return m_list.OnNotify(header, result);
}

LRESULT CdlgHistData::OnColumnClick(const NMHDR* header)
{
    Log(3, "CdlgHistData::OnColumnClick" + MV_POS());
    LRESULT result = 0;
    CL::RunReported([&] {
        CL::CWaitCursor wait;
        m_list.OnNotify(header, &result);
    });
    return result;
}

void CdlgHistData::OnDpiChanged()
{
    Log(3, "CdlgHistData::OnDpiChanged" + MV_POS());
    CL::RunReported([this] {
        m_chartHeight = 0;   // shared again as at first opening, at the new size
        m_list.OnDpiChanged();
    });
}

void CdlgHistData::OnSysColorChange()
{
    Log(3, "CdlgHistData::OnSysColorChange" + MV_POS());
    CL::RunReported([this] { m_list.OnSysColorChange(); });
}

void CdlgHistData::OnBnClickedChkFrom()
{
    Log(3, "CdlgHistData::OnBnClickedChkFrom" + MV_POS());
    CL::RunReported([this] { SyncPicker(IDC_TIMEPERIOD_CHK_FROM, IDC_TIMEPERIOD_FROM); });
}

void CdlgHistData::OnBnClickedChkChart()
{
    Log(3, "CdlgHistData::OnBnClickedChkChart" + MV_POS());
    CL::RunReported([this] { ArrangeChart(); });
}

void CdlgHistData::OnBnClickedChkTo()
{
    Log(3, "CdlgHistData::OnBnClickedChkTo" + MV_POS());
    CL::RunReported([this] { SyncPicker(IDC_TIMEPERIOD_CHK_TO, IDC_TIMEPERIOD_TO); });
}

CL::CHistorianValues CdlgHistData::Read()
{
    m_from = CL::GetPickerDate(GetDlgItem(IDC_TIMEPERIOD_FROM));
    m_to = CL::GetPickerDate(GetDlgItem(IDC_TIMEPERIOD_TO));
    m_useFrom = ::IsDlgButtonChecked(Hwnd(), IDC_TIMEPERIOD_CHK_FROM);
    m_useTo = ::IsDlgButtonChecked(Hwnd(), IDC_TIMEPERIOD_CHK_TO);
    m_maxCount = ::GetDlgItemInt(Hwnd(), IDC_HISTDATA_MAX_COUNT, nullptr, FALSE);
    // The whole last second shown is inside the period.
    const DATE fromUtc = CL::LocalToUtcDate(m_from);
    const DATE toUtc = CL::LocalToUtcDate(m_to + CL::kOneSecond);
    CL::CHistorianValues values;
    m_historian.ReadRange(m_itemId, m_useFrom == BST_CHECKED, fromUtc, m_useTo == BST_CHECKED, toUtc, m_maxCount,
                          values);
    return values;
}

void CdlgHistData::OnBnClickedBtnRefresh()
{
    Log(3, "CdlgHistData::OnBnClickedBtnRefresh" + MV_POS());
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        m_rows.Clear();
        m_list.Reset();
        m_chart.Clear(m_itemId);
        ::SetDlgItemTextW(Hwnd(), IDC_HISTDATA_STATUS, L"");
        const auto read = std::make_shared<const CL::CHistorianValues>(Read());
        const CL::CHistorianValues& values = *read;
        m_chart.SetValues(read, m_itemId);
        try {
            m_rows.Assign(values);
        } catch (...) {
            m_list.Reset();   // the rows made before the failure stay shown
            throw;
        }
        m_list.Reset();
        const std::wstring status = CL::Format(L"%u value(s) retrieved for '%ls'",
                                               static_cast<unsigned>(values.Size()), m_itemId.c_str());
        ::SetWindowTextW(GetDlgItem(IDC_HISTDATA_STATUS), status.c_str());
    });
}

std::wstring CdlgHistData::AskExportFile() const
{
    return CL::AskSaveFileName(Hwnd(), L"XML Files\0*.xml\0All files\0*.*\0", L"xml", ExportFileName(m_itemId));
}

void CdlgHistData::OnClickedOpenFile()
{
    Log(3, "CdlgHistData::OnClickedOpenFile" + MV_POS());
    CL::RunReported([this] {
        const std::wstring path = AskExportFile();
        if (path.empty())
            return;
        CL::CWaitCursor wait;
        const CL::CHistorianValues values = Read();
        CL::ExportHistory(m_itemId, values, path);
    });
}

void ShowHistoricalData(HWND owner, CL::CHistorian& historian, const std::wstring& itemId)
{
    Log(3, "ShowHistoricalData" + MV_POS());
    CL::RunReported([&] {
        if (!CL::IsHistorianAccessible(historian)) {
            CL::ShowHistorianNotAccessible();
            return;
        }
        RunHistoricalData(owner, historian, itemId);
    });
}

void RunHistoricalData(HWND owner, CL::CHistorian& historian, const std::wstring& itemId)
{
    CdlgHistData dialog(historian);
    dialog.m_itemId = itemId;
    dialog.DoModal(owner);
}
