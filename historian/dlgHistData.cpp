#include "historian/dlgHistData.h"

#include <commdlg.h>
#include <windowsx.h>

#include <algorithm>

#include <memory>
#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/LocalTime.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/WorkCancelled.h"
#include "common/ui/ClipboardText.h"
#include "common/ui/FileDialog.h"
#include "common/ui/AccessibleName.h"
#include "common/ui/Dpi.h"
#include "common/ui/WaitCursor.h"
#include "common/historian/Historian.h"
#include "historian/HistorianAccess.h"
#include "historian/HistoryExporter.h"
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

constexpr wchar_t kCancelledText[] = L"Cancelled: nothing was read";
constexpr wchar_t kStoppedEarlyFormat[] =
    L"The read stopped early (see the log): the %u value(s) read before were saved";
constexpr double kMillisecond = 1.0 / 86400000.0;
constexpr DATE kLastDate = 2958465.0;   // 31.12.9999, the last day a DATE shows

DATE FileTimeToDate(const FILETIME& time)
{
    SYSTEMTIME fields;
    if (!::FileTimeToSystemTime(&time, &fields))
        CL::ThrowLastError(L"FileTimeToSystemTime (&ft, &st)");
    return CL::SystemTimeToDate(fields);
}

bool SameTime(const FILETIME& a, const FILETIME& b)
{
    return ::CompareFileTime(&a, &b) == 0;
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
    CL::CAccessibleName::Set(m_list, L"Values");
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
    m_anchors.Add(IDC_HISTDATA_MORE, Anchors::kStretchX | Anchors::kBottom);
    m_anchors.Add(IDC_HISTDATA_NEXT, Anchors::kRight | Anchors::kBottom);
    m_anchors.Add(IDC_HISTDATA_CANCEL, Anchors::kRight | Anchors::kBottom);
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
    // The list's right-click menu.
    if (id == ID_HISTDATA_COPY || id == ID_HISTDATA_SELECT_ALL) {
        id == ID_HISTDATA_COPY ? OnCopy() : OnSelectAll();
        return true;
    }
    if (code != BN_CLICKED)
        return false;
    switch (id) {
    case IDC_HISTDATA_NEXT:
        OnBnClickedBtnNext();
        return true;
    case IDC_HISTDATA_CANCEL:
        return true;   // seen by the work's progress while it runs
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
    case WM_CONTEXTMENU:
        if (reinterpret_cast<HWND>(wParam) != m_list.Hwnd())
            return FALSE;
        OnLVRClick({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
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
    if (header->code == LVN_KEYDOWN) {
        OnListKey(reinterpret_cast<const NMLVKEYDOWN*>(header)->wVKey);
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

void CdlgHistData::ReadControls()
{
    m_from = CL::GetPickerDate(GetDlgItem(IDC_TIMEPERIOD_FROM));
    m_to = CL::GetPickerDate(GetDlgItem(IDC_TIMEPERIOD_TO));
    m_useFrom = ::IsDlgButtonChecked(Hwnd(), IDC_TIMEPERIOD_CHK_FROM);
    m_useTo = ::IsDlgButtonChecked(Hwnd(), IDC_TIMEPERIOD_CHK_TO);
    m_maxCount = ::GetDlgItemInt(Hwnd(), IDC_HISTDATA_MAX_COUNT, nullptr, FALSE);
}

std::unique_ptr<CL::CWorkProgress> CdlgHistData::StartProgress()
{
    return std::make_unique<CL::CWorkProgress>(
        Hwnd(), [this](const std::wstring& text) { SetStatus(text); }, GetDlgItem(IDC_HISTDATA_CANCEL),
        [this] { return CL::WindowText(GetDlgItem(IDC_HISTDATA_STATUS)); });
}

void CdlgHistData::SetStatus(const std::wstring& text)
{
    ::SetWindowTextW(GetDlgItem(IDC_HISTDATA_STATUS), text.c_str());
}

// The values within the controls' period, read with the progress shown.
// The whole last second shown is inside the period. A read that fails
// part way is logged by the historian and keeps what was read before
// (stoppedEarly tells).
CL::CHistorianValues CdlgHistData::Read(bool& stoppedEarly)
{
    ReadControls();
    const DATE fromUtc = CL::LocalToUtcDate(m_from);
    const DATE toUtc = CL::LocalToUtcDate(m_to + CL::kOneSecond);
    CL::CHistorianValues values;
    const std::unique_ptr<CL::CWorkProgress> progress = StartProgress();
    m_historian.ReadRange(m_itemId, m_useFrom == BST_CHECKED, fromUtc, m_useTo == BST_CHECKED, toUtc, m_maxCount,
                          values, false,
                          [&](size_t done) {
                              progress->Step(
                                  [done] { return CL::Format(L"%u value(s) read...", static_cast<unsigned>(done)); });
                          },
                          &stoppedEarly);
    return values;
}

void CdlgHistData::ClearValues()
{
    m_rows.Clear();
    m_list.Reset();
    m_chart.Clear(m_itemId);
    m_shown.reset();
    SetStatus(L"");
    ::SetDlgItemTextW(Hwnd(), IDC_HISTDATA_MORE, L"");
    ::EnableWindow(GetDlgItem(IDC_HISTDATA_NEXT), FALSE);
}

void CdlgHistData::ShowValues(const std::shared_ptr<const CL::CHistorianValues>& read, bool more)
{
    const CL::CHistorianValues& values = *read;
    m_shown = read;
    m_chart.SetValues(read, m_itemId);
    try {
        m_rows.Assign(values);
    } catch (...) {
        m_list.Reset();   // the rows made before the failure stay shown
        throw;
    }
    m_list.Reset();
    SetStatus(CL::Format(L"%u value(s) retrieved for '%ls'", static_cast<unsigned>(values.Size()), m_itemId.c_str()));
    const bool next = more && values.Size() > 0;
    if (next) {
        const std::wstring after = L"More values follow after " + CL::LocalTimeText(values.times.back());
        ::SetDlgItemTextW(Hwnd(), IDC_HISTDATA_MORE, after.c_str());
    }
    ::EnableWindow(GetDlgItem(IDC_HISTDATA_NEXT), next);
}

void CdlgHistData::OnBnClickedBtnRefresh()
{
    Log(3, "CdlgHistData::OnBnClickedBtnRefresh" + MV_POS());
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        ClearValues();
        ReadControls();
        // The whole last second shown is inside the period.
        const DATE fromUtc = CL::LocalToUtcDate(m_from);
        const DATE toUtc = CL::LocalToUtcDate(m_to + CL::kOneSecond);
        const auto read = std::make_shared<CL::CHistorianValues>();
        m_sameTimeBefore = 0;
        try {
            const std::unique_ptr<CL::CWorkProgress> progress = StartProgress();
            const HRESULT result = m_historian.ReadRange(
                m_itemId, m_useFrom == BST_CHECKED, fromUtc, m_useTo == BST_CHECKED, toUtc, m_maxCount, *read, false,
                [&](size_t done) {
                    progress->Step([done] { return CL::Format(L"%u value(s) read...", static_cast<unsigned>(done)); });
                });
            ShowValues(read, result == CL::CHistorian::kMoreData);
        } catch (const CL::CWorkCancelled&) {
            SetStatus(kCancelledText);
        }
    });
}

void CdlgHistData::OnBnClickedBtnNext()
{
    Log(3, "CdlgHistData::OnBnClickedBtnNext" + MV_POS());
    CL::RunReported([this] {
        if (!m_shown || m_shown->Size() == 0)
            return;
        CL::CWaitCursor wait;
        try {
            const std::unique_ptr<CL::CWorkProgress> progress = StartProgress();
            bool more = false;
            const std::shared_ptr<const CL::CHistorianValues> next = ReadAfterShown(*progress, more);
            ClearValues();
            ShowValues(next, more);
        } catch (const CL::CWorkCancelled&) {
            SetStatus(kCancelledText);
        }
    });
}

// The read starts a millisecond before the last value shown (its time went
// through a text-free but lossy conversion) with room for the values shown
// in that millisecond, which are then dropped: values at the same time as
// the last one shown are not lost at the page break.
std::shared_ptr<const CL::CHistorianValues> CdlgHistData::ReadAfterShown(CL::CWorkProgress& progress, bool& more)
{
    const CL::CHistorianValues& shown = *m_shown;
    const FILETIME last = shown.times.back();
    const DATE lastUtc = FileTimeToDate(last);
    ULARGE_INTEGER margin;
    margin.LowPart = last.dwLowDateTime;
    margin.HighPart = last.dwHighDateTime;
    margin.QuadPart -= 10000;   // 1 ms in 100 ns units
    size_t inMargin = 0;
    size_t sameAsLast = 0;
    for (size_t i = shown.Size(); i-- > 0;) {
        const ULARGE_INTEGER t = {{shown.times[i].dwLowDateTime, shown.times[i].dwHighDateTime}};
        if (t.QuadPart < margin.QuadPart)
            break;
        ++inMargin;
        sameAsLast += SameTime(shown.times[i], last) ? 1 : 0;
    }
    if (sameAsLast == shown.Size())
        sameAsLast += m_sameTimeBefore;   // the whole page was at that time
    // The read's lower bound is always set here, and a set lower bound
    // limits the runs to those starting by the upper bound, set or not. With
    // neither box checked "Show data" had no such limit: the next page has
    // none either (a bound after every value), so it reaches every value.
    const bool unbounded = m_useFrom != BST_CHECKED && m_useTo != BST_CHECKED;
    const DATE toUtc = unbounded ? kLastDate : CL::LocalToUtcDate(m_to + CL::kOneSecond);
    const DWORD limit = m_maxCount + static_cast<DWORD>(inMargin + m_sameTimeBefore);
    CL::CHistorianValues read;
    const HRESULT result = m_historian.ReadRange(
        m_itemId, true, lastUtc - kMillisecond, m_useTo == BST_CHECKED, toUtc, limit, read, false, [&](size_t done) {
            progress.Step([done] { return CL::Format(L"%u value(s) read...", static_cast<unsigned>(done)); });
        });
    auto next = std::make_shared<CL::CHistorianValues>();
    size_t sameSkipped = 0;
    for (size_t i = 0; i < read.Size(); ++i) {
        const int order = ::CompareFileTime(&read.times[i], &last);
        if (order < 0 || (order == 0 && sameSkipped++ < sameAsLast))
            continue;
        if (next->Size() == m_maxCount) {
            more = true;
            break;
        }
        next->times.push_back(read.times[i]);
        next->qualities.push_back(read.qualities[i]);
        next->values.push_back(read.values[i]);
    }
    more = more || result == CL::CHistorian::kMoreData;
    m_sameTimeBefore = sameAsLast;
    return next;
}

void CdlgHistData::OnListKey(WORD key)
{
    if (::GetKeyState(VK_CONTROL) >= 0)
        return;
    if (key == 'C')
        OnCopy();
    else if (key == 'A')
        OnSelectAll();
}

void CdlgHistData::OnCopy()
{
    Log(3, "CdlgHistData::OnCopy" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> selected = m_list.SelectedRows();
        if (selected.empty())
            return;
        CL::CWaitCursor wait;
        CL::SetClipboardText(Hwnd(), CL::ReportRowsText(m_list, selected));
    });
}

void CdlgHistData::OnSelectAll()
{
    Log(3, "CdlgHistData::OnSelectAll" + MV_POS());
    CL::RunReported([this] { m_list.SelectAll(); });
}

void CdlgHistData::OnLVRClick(POINT screen)
{
    Log(3, "CdlgHistData::OnLVRClick" + MV_POS());
    CL::RunReported([&] {
        const CL::UniqueMenu menu(::LoadMenuW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDR_HISTDATA_CONTEXT)));
        if (!menu)
            CL::ThrowLastError(L"LoadMenu (IDR_HISTDATA_CONTEXT)");
        if (screen.x == -1 && screen.y == -1) {   // from the keyboard: the list's corner
            screen = {0, 0};
            ::ClientToScreen(m_list, &screen);
        }
        ::TrackPopupMenu(::GetSubMenu(menu.get(), 0), TPM_LEFTALIGN | TPM_RIGHTBUTTON, screen.x, screen.y, 0, Hwnd(),
                         nullptr);
    });
}

std::wstring CdlgHistData::AskExportFile(int* filterIndex) const
{
    return CL::AskSaveFileName(Hwnd(), CL::kExportFilter, L"xml", ExportFileName(m_itemId), filterIndex);
}

void CdlgHistData::OnClickedOpenFile()
{
    Log(3, "CdlgHistData::OnClickedOpenFile" + MV_POS());
    CL::RunReported([this] {
        int filterIndex = 1;
        const std::wstring path = AskExportFile(&filterIndex);
        if (path.empty())
            return;
        CL::CWaitCursor wait;
        try {
            CL::CHistoryExporter exporter(path, CL::ExportFormatFor(path, filterIndex));
            bool stoppedEarly = false;
            const CL::CHistorianValues values = Read(stoppedEarly);
            const std::unique_ptr<CL::CWorkProgress> progress = StartProgress();
            const size_t total = values.Size();
            exporter.Add(m_itemId, values, [&](size_t done) {
                progress->Step([&] {
                    return CL::Format(L"%u of %u value(s) written...", static_cast<unsigned>(done), static_cast<unsigned>(total));
                });
            });
            exporter.Commit();
            if (stoppedEarly)
                SetStatus(CL::Format(kStoppedEarlyFormat, static_cast<unsigned>(total)));
        } catch (const CL::CWorkCancelled&) {
            SetStatus(L"Cancelled: nothing was saved");
        }
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
