#include "historian/dlgDBExplorer.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "common/LocalTime.h"
#include "common/Text.h"
#include "common/WorkCancelled.h"
#include "common/ui/ClipboardText.h"
#include "common/ui/FileDialog.h"
#include "common/ui/AccessibleName.h"
#include "common/ui/Dpi.h"
#include "common/ui/WorkProgress.h"
#include "common/ui/WaitCursor.h"
#include "common/historian/Historian.h"
#include "historian/DeletionJournal.h"
#include "historian/HistoryExporter.h"
#include "historian/dlgHistData.h"
#include "historian/PickerTime.h"
#include "historian/dlgTimePeriod.h"
#include "res/resource.h"

namespace {

constexpr wchar_t kNothingSelected[] = L"Nothing is selected";
constexpr wchar_t kClearQuestion[] = L"Are you sure you wish to clear the database?";
constexpr wchar_t kDeleteQuestion[] = L"Are you sure you wish to delete permanently all those values?";
constexpr wchar_t kExportCaption[] = L"Export values of the selected items";
constexpr wchar_t kReadingText[] = L"Reading the archived items... (Esc cancels)";
constexpr wchar_t kCancelledText[] = L"Cancelled: nothing was read";

} // namespace

CdlgDBExplorer::CdlgDBExplorer(CL::CHistorian& historian) : m_historian(historian) {}

void CdlgDBExplorer::PrepareClass(WNDCLASSEXW& wc) const
{
    wc.hIcon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
}

std::wstring CdlgDBExplorer::Title() const
{
    return m_productName + L" OPC HDA Database Explorer";
}

HWND CdlgDBExplorer::Create()
{
    CL::RegisterHistorianControlClasses();
    const HWND window = CreateEx(nullptr, Title().c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN);
    // Wide enough for the four columns at the default font.
    if (window) {
        const CL::CDpi dpi = CL::CDpi::Of(window);
        ::SetWindowPos(window, nullptr, 0, 0, dpi.Scale(720), dpi.Scale(460), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        // Shown before the first read, so that its progress can be seen.
        ::ShowWindow(window, SW_SHOWNORMAL);
        Refresh();
    }
    return window;
}

LRESULT CdlgDBExplorer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        return OnCreate();
    case WM_SIZE:
        OnSize();
        return 0;
    case WM_SETFOCUS:
        if (m_list.Hwnd())
            ::SetFocus(m_list);
        return 0;
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (OnNotify(reinterpret_cast<const NMHDR*>(lParam), &result))
            return result;
        break;
    }
    case WM_COMMAND:
        if (lParam == 0 || reinterpret_cast<HWND>(lParam) == m_bars.Toolbar()) {
            OnCommand(LOWORD(wParam));
            return 0;
        }
        break;
    case WM_CONTEXTMENU:
        if (reinterpret_cast<HWND>(wParam) == m_list.Hwnd()) {
            OnLVRClick(ContextMenuPoint(lParam));
            return 0;
        }
        break;
    case WM_MENUSELECT:
        m_bars.OnMenuSelect(wParam, lParam);
        return 0;
    case WM_SYSCOLORCHANGE:
        OnSysColorChange();
        return 0;
    case WM_GETMINMAXINFO: {
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        const CL::CDpi dpi = CL::CDpi::Of(Hwnd());
        info->ptMinTrackSize = {dpi.Scale(360), dpi.Scale(200)};
        return 0;
    }
    case WM_DPICHANGED:
        m_bars.OnDpiChanged();
        m_list.OnDpiChanged();
        CL::CDpi::OnDpiChanged(Hwnd(), lParam);   // its WM_SIZE lays the window out again
        return 0;
    default:
        break;
    }
    return DefaultProc(message, wParam, lParam);
}

POINT CdlgDBExplorer::ContextMenuPoint(LPARAM lParam) const
{
    POINT at = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    if (at.x != -1 || at.y != -1)
        return at;
    // From the keyboard (Shift+F10, the menu key): below the focused line,
    // or at the list's corner.
    RECT line = {LVIR_BOUNDS, 0, 0, 0};
    const long long focused = m_list.FocusedRow();
    const int index = focused >= 0 ? m_list.DisplayIndexOf(static_cast<size_t>(focused)) : -1;
    if (index >= 0 && ::SendMessageW(m_list, LVM_GETITEMRECT, index, reinterpret_cast<LPARAM>(&line)))
        at = {line.left + 16, line.bottom};
    else
        at = {0, 0};
    ::ClientToScreen(m_list, &at);
    return at;
}

LRESULT CdlgDBExplorer::OnCreate()
{
    Log(3, "CdlgDBExplorer::OnCreate" + MV_POS());
    bool created = false;
    CL::RunReported([&] {
        m_bars.Create(Hwnd(), {{ID_DBEXPLORER_DELETE_ALL, STD_DELETE},
                               {ID_DBEXPLORER_DELETE, STD_CUT},
                               {ID_DBEXPLORER_REFRESH, STD_REDOW},
                               {ID_DBEXPLORER_SHOW_DATA, CL::CFrameBars::kViewImage + VIEW_DETAILS},
                               {ID_DBEXPLORER_EXPORT, STD_FILESAVE},
                               {0, 0},
                               {ID_DBEXPLORER_ABOUT, STD_HELP}});
        if (!m_list.Create(Hwnd(), IDC_DBEXPLORER_LIST))
            CL::ThrowLastError(L"m_list.Create (m_hWnd)");
        CL::CAccessibleName::Set(m_list, L"Items in the database");
        ::SendMessageW(m_list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT | LVS_EX_INFOTIP | LVS_EX_LABELTIP,
                       LVS_EX_FULLROWSELECT | LVS_EX_INFOTIP | LVS_EX_LABELTIP);
        const HICON icon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
        m_list.SetColumns({{L"Item ID", 240},
                           {L"Earliest value time", 175},
                           {L"Latest value time", 175},
                           {L"Value count", 90, LVCFMT_RIGHT}});
        m_rows.Clear();
        m_list.SetRows(&m_rows);
        if (!m_filterBar.Create(Hwnd()))
            CL::ThrowLastError(L"m_filterBar.Create (m_hWnd)");
        m_filterBar.onChanged = [this](const std::wstring& text) { OnFilterChanged(text); };
        // In the tab order before the list, as it is above it.
        ::SetWindowPos(m_filterBar, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        CreateCancelButton();
        ::SetWindowTextW(Hwnd(), Title().c_str());
        created = true;
    });
    if (!created)
        return -1;
    return 0;
}

void CdlgDBExplorer::OnSize()
{
    if (!m_list.Hwnd())
        return;
    const RECT content = m_bars.Layout();
    const int filter = m_filterBar.IsWindow() ? m_filterBar.Height() : 0;
    if (filter)
        ::MoveWindow(m_filterBar, content.left, content.top, content.right - content.left, filter, TRUE);
    ::MoveWindow(m_list, content.left, content.top + filter, content.right - content.left,
                 content.bottom - content.top - filter, TRUE);
    PlaceCancelButton();
}

void CdlgDBExplorer::CreateCancelButton()
{
    const HWND status = m_bars.StatusBar();
    // The button is drawn over the bar: the bar's own painting leaves it out.
    ::SetWindowLongW(status, GWL_STYLE, ::GetWindowLongW(status, GWL_STYLE) | WS_CLIPCHILDREN);
    m_cancel = ::CreateWindowExW(0, WC_BUTTONW, L"Cancel", WS_CHILD | WS_TABSTOP | BS_PUSHBUTTON, 0, 0, 0, 0, status,
                                 reinterpret_cast<HMENU>(static_cast<INT_PTR>(ID_DBEXPLORER_CANCEL)),
                                 CL::ModuleInstance(), nullptr);
    if (!m_cancel)
        CL::ThrowLastError(L"CreateWindowExW (WC_BUTTONW, \"Cancel\")");
}

// At the right end of the status bar, left of its size grip, in the font of
// the filter box (the dialog font at the window's DPI).
void CdlgDBExplorer::PlaceCancelButton()
{
    if (!m_cancel)
        return;
    ::SendMessageW(m_cancel, WM_SETFONT, ::SendMessageW(m_filterBar.Edit(), WM_GETFONT, 0, 0), FALSE);
    RECT bar;
    ::GetClientRect(m_bars.StatusBar(), &bar);
    const CL::CDpi dpi = CL::CDpi::Of(Hwnd());
    const int width = dpi.Scale(75);
    const int height = bar.bottom - bar.top - dpi.Scale(2);
    const int grip = ::GetSystemMetrics(SM_CXVSCROLL);
    ::MoveWindow(m_cancel, std::max(0, static_cast<int>(bar.right) - grip - width), dpi.Scale(1), width, height, TRUE);
}

bool CdlgDBExplorer::OnNotify(const NMHDR* header, LRESULT* result)
{
    if (header->hwndFrom == m_list.Hwnd()) {
        switch (header->code) {
        case LVN_COLUMNCLICK:
            *result = OnColumnClick(header);
            return true;
        case NM_DBLCLK:
        case NM_RETURN:
            OnShowData();
            return true;
        case LVN_GETINFOTIPW:
            OnGetInfoTip(reinterpret_cast<NMLVGETINFOTIPW*>(const_cast<NMHDR*>(header)));
            return true;
        case LVN_KEYDOWN:
            OnListKey(reinterpret_cast<const NMLVKEYDOWN*>(header)->wVKey);
            return true;
        default:
            return m_list.OnNotify(header, result);
        }
    }
    return m_bars.OnNotify(header, result);
}

void CdlgDBExplorer::OnCommand(WORD id)
{
    switch (id) {
    case ID_DBEXPLORER_DELETE_ALL:
        OnDeleteAll();
        break;
    case ID_DBEXPLORER_DELETE:
        OnDelete();
        break;
    case ID_DBEXPLORER_REFRESH:
        OnRefresh();
        break;
    case ID_DBEXPLORER_SHOW_DATA:
        OnShowData();
        break;
    case ID_DBEXPLORER_ABOUT:
        OnAbout();
        break;
    case ID_DBEXPLORER_COPY:
        OnCopy();
        break;
    case ID_DBEXPLORER_EXPORT:
        OnExport();
        break;
    case ID_DBEXPLORER_SELECT_ALL:
        OnSelectAll();
        break;
    case ID_DBEXPLORER_CHANGE_HISTORY:
        OnChangeHistory();
        break;
    case ID_DBEXPLORER_FIND:
        OnFind();
        break;
    default:
        break;
    }
}

// The summary of a large database takes seconds (a cold one of 10^8 values
// took up to 8 s): the status bar says so at once, then counts the items
// read; Esc or Cancel stops the read and leaves the list empty.
void CdlgDBExplorer::Refresh()
{
    m_refreshed = false;
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        m_rows.Clear();
        m_list.Reset();
        m_bars.SetStatusText(kReadingText);
        ::UpdateWindow(Hwnd());
        std::vector<CL::CHistorianSummaryEntry> summary;
        try {
            CL::CWorkProgress progress(
                Hwnd(), [this](const std::wstring& text) { m_bars.SetStatusText(text); }, m_cancel);
            summary = m_historian.ReadSummary([&](size_t done) {
                progress.Step([done] {
                    return CL::Format(L"%u archived item(s) read... (Esc cancels)", static_cast<unsigned>(done));
                });
            });
        } catch (const CL::CWorkCancelled&) {
            m_bars.SetIdleText(kCancelledText);
            return;
        }
        m_rows.Assign(std::move(summary));
        m_list.Reset();
        m_list.SetSortIndicator(CL::CDBExplorerRows::kItemId, true);
        ShowCount();
        m_refreshed = true;
    });
}

// "<n> archived item(s)", or "<shown> of <all> archived item(s)" while a
// filter is set.
void CdlgDBExplorer::ShowCount()
{
    const auto shown = static_cast<unsigned>(m_rows.RowCount());
    if (m_rows.FilterText().empty())
        m_bars.SetIdleText(CL::Format(L"%u archived item(s)", shown));
    else
        m_bars.SetIdleText(CL::Format(L"%u of %u archived item(s)", shown, static_cast<unsigned>(m_rows.TotalCount())));
}

void CdlgDBExplorer::OnFilterChanged(const std::wstring& text)
{
    Log(3, "CdlgDBExplorer::OnFilterChanged" + MV_POS());
    CL::RunReported([&] {
        m_rows.SetFilter(text);
        // The rows shown keep the order the list was sorted in.
        m_list.Reset(true);
        ShowCount();
    });
}

void CdlgDBExplorer::OnFind()
{
    Log(3, "CdlgDBExplorer::OnFind" + MV_POS());
    CL::RunReported([this] { m_filterBar.Focus(); });
}

void CdlgDBExplorer::OnCopy()
{
    Log(3, "CdlgDBExplorer::OnCopy" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> selected = SelectionOrSay();
        if (selected.empty())
            return;
        CL::CWaitCursor wait;
        CL::SetClipboardText(Hwnd(), CL::ReportRowsText(m_list, selected));
    });
}

void CdlgDBExplorer::OnSelectAll()
{
    Log(3, "CdlgDBExplorer::OnSelectAll" + MV_POS());
    CL::RunReported([this] { m_list.SelectAll(); });
}

bool CdlgDBExplorer::PreTranslateMessage(MSG& msg)
{
    if (!IsWindow() || (msg.hwnd != Hwnd() && !::IsChild(Hwnd(), msg.hwnd)))
        return false;
    // Alt+L: the mnemonic of "Filter:" (the frame is no dialog that would
    // see it).
    if (msg.message == WM_SYSKEYDOWN && msg.wParam == 'L') {
        OnFind();
        return true;
    }
    if (msg.message != WM_KEYDOWN)
        return false;
    const bool control = ::GetKeyState(VK_CONTROL) < 0;
    if (control && msg.wParam == 'F') {
        OnFind();
        return true;
    }
    if (msg.hwnd == m_filterBar.Edit())
        return OnFilterKey(msg);
    return false;
}

// Enter and Down go from the filter box to the list, Tab moves between the
// two, Esc empties the box.
bool CdlgDBExplorer::OnFilterKey(const MSG& msg)
{
    switch (msg.wParam) {
    case VK_RETURN:
    case VK_DOWN:
    case VK_TAB:
        ::SetFocus(m_list);
        if (m_list.FocusedRow() < 0 && m_list.DisplayCount() > 0)
            m_list.Select(m_list.SourceRowAt(0));
        return true;
    case VK_ESCAPE:
        m_filterBar.SetText(L"");
        return true;
    default:
        return false;
    }
}

void CdlgDBExplorer::OnRefresh()
{
    Log(3, "CdlgDBExplorer::OnRefresh" + MV_POS());
    Refresh();
}

bool CdlgDBExplorer::Ask(const wchar_t* question)
{
    return ::MessageBoxW(Hwnd(), question, L"", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

std::vector<size_t> CdlgDBExplorer::SelectionOrSay()
{
    std::vector<size_t> selected = m_list.SelectedRows();
    if (selected.empty())
        ::MessageBoxW(Hwnd(), kNothingSelected, L"", MB_OK | MB_ICONINFORMATION);
    return selected;
}

void CdlgDBExplorer::OnDeleteAll()
{
    Log(3, "CdlgDBExplorer::OnDeleteAll" + MV_POS());
    CL::RunReported([this] {
        if (!Ask(kClearQuestion))
            return;
        const CL::CDeletion deletion = DeletionOfAll();
        {
            CL::CWaitCursor wait;
            m_historian.DeleteAll();
        }
        Refresh();
        JournalDeleted(deletion);
    });
}

void CdlgDBExplorer::OnDelete()
{
    Log(3, "CdlgDBExplorer::OnDelete" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> selected = SelectionOrSay();
        if (selected.empty())
            return;
        CdlgTimePeriod period;
        period.m_from = m_rows.Earliest(selected.front());
        period.m_to = m_rows.Latest(selected.front());
        if (period.DoModal(Hwnd()) != IDOK)
            return;
        if (!Ask(kDeleteQuestion))
            return;
        std::vector<std::wstring> itemIds;
        for (size_t row : selected)
            itemIds.push_back(m_rows.ItemId(row));
        // The last whole second shown is inside the period.
        const DATE from = CL::LocalToUtcDate(period.m_from);
        const DATE to = CL::LocalToUtcDate(period.m_to + CL::kOneSecond);
        CL::CDeletion deletion{itemIds, period.m_useFrom, from, period.m_useTo, to};
        for (size_t row : selected)
            deletion.valuesBefore += m_rows.ValueCount(row);
        {
            CL::CWaitCursor wait;
            m_historian.DeleteItems(itemIds, period.m_useFrom, from, period.m_useTo, to);
        }
        Refresh();
        JournalDeleted(deletion);
    });
}

CL::CDeletion CdlgDBExplorer::DeletionOfAll() const
{
    CL::CDeletion deletion;
    deletion.itemsBefore = m_rows.TotalCount();
    deletion.valuesBefore = m_rows.TotalValueCount();
    return deletion;
}

// The values left after the refresh tell how many the deletion removed.
void CdlgDBExplorer::JournalDeleted(CL::CDeletion deletion)
{
    for (const std::wstring& itemId : deletion.itemIds)
        deletion.valuesAfter += m_rows.ValueCountOf(itemId);
    if (deletion.itemIds.empty())
        deletion.valuesAfter = m_rows.TotalValueCount();
    deletion.countKnown = m_refreshed;
    CL::JournalDeletion(deletion);
}

void CdlgDBExplorer::OnShowData()
{
    Log(3, "CdlgDBExplorer::OnShowData" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> selected = SelectionOrSay();
        if (selected.empty())
            return;
        const size_t row = selected.front();
        CdlgHistData dialog(m_historian);
        dialog.m_itemId = m_rows.ItemId(row);
        dialog.m_from = m_rows.Earliest(row);
        dialog.m_to = m_rows.Latest(row);
        dialog.DoModal(Hwnd());
    });
}

void CdlgDBExplorer::OnExport()
{
    Log(3, "CdlgDBExplorer::OnExport" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> selected = SelectionOrSay();
        if (selected.empty())
            return;
        // The period of every selected item, items in the order of the list.
        CdlgTimePeriod period;
        period.m_caption = kExportCaption;
        period.m_from = m_rows.Earliest(selected.front());
        period.m_to = m_rows.Latest(selected.front());
        std::vector<std::wstring> itemIds;
        for (size_t row : selected) {
            period.m_from = std::min(period.m_from, m_rows.Earliest(row));
            period.m_to = std::max(period.m_to, m_rows.Latest(row));
            itemIds.push_back(m_rows.ItemId(row));
        }
        if (period.DoModal(Hwnd()) != IDOK)
            return;
        int filterIndex = 1;
        const std::wstring path =
            CL::AskSaveFileName(Hwnd(), CL::kExportFilter, L"xml", L"HistorianData.xml", &filterIndex);
        if (path.empty())
            return;
        size_t valueCount = 0;
        if (ExportItems(itemIds, period, path, filterIndex, valueCount))
            m_bars.SetStatusText(CL::Format(L"%u value(s) of %u item(s) exported", static_cast<unsigned>(valueCount),
                                            static_cast<unsigned>(itemIds.size())));
        else
            m_bars.SetStatusText(L"Export cancelled: nothing was written");
    });
}

bool CdlgDBExplorer::ExportItems(const std::vector<std::wstring>& itemIds, const CdlgTimePeriod& period,
                                 const std::wstring& path, int filterIndex, size_t& valueCount)
{
    CL::CWaitCursor wait;
    // The last whole second shown is inside the period.
    const DATE from = CL::LocalToUtcDate(period.m_from);
    const DATE to = CL::LocalToUtcDate(period.m_to + CL::kOneSecond);
    try {
        CL::CHistoryExporter exporter(path, CL::ExportFormatFor(path, filterIndex));
        CL::CWorkProgress progress(
            Hwnd(), [this](const std::wstring& text) { m_bars.SetStatusText(text); }, m_cancel);
        for (size_t i = 0; i < itemIds.size(); ++i) {
            const auto say = [&](const wchar_t* what, size_t done) {
                progress.Step([&] {
                    return CL::Format(L"Item %u of %u: %u value(s) %ls... (Esc cancels)", static_cast<unsigned>(i + 1),
                                      static_cast<unsigned>(itemIds.size()), static_cast<unsigned>(done), what);
                });
            };
            CL::CHistorianValues values;
            m_historian.ReadRangeChecked(itemIds[i], period.m_useFrom, from, period.m_useTo, to, 0, values,
                                         [&](size_t done) { say(L"read", done); });
            exporter.Add(itemIds[i], values, [&](size_t done) { say(L"written", done); });
            valueCount += values.Size();
        }
        exporter.Commit();
    } catch (const CL::CWorkCancelled&) {
        return false;
    }
    return true;
}

void CdlgDBExplorer::OnAbout()
{
    Log(3, "CdlgDBExplorer::OnAbout" + MV_POS());
    CL::RunReported([this] {
        if (onAbout)
            onAbout(Hwnd());
    });
}

void CdlgDBExplorer::OnChangeHistory()
{
    Log(3, "CdlgDBExplorer::OnChangeHistory" + MV_POS());
    CL::RunReported([this] {
        if (onChangeHistory)
            onChangeHistory(Hwnd());
    });
}

LRESULT CdlgDBExplorer::OnColumnClick(const NMHDR* header)
{
    Log(3, "CdlgDBExplorer::OnColumnClick" + MV_POS());
    LRESULT result = 0;
    CL::RunReported([&] {
        CL::CWaitCursor wait;
        m_list.OnNotify(header, &result);
    });
    return result;
}

void CdlgDBExplorer::OnLVRClick(POINT screen)
{
    Log(3, "CdlgDBExplorer::OnLVRClick" + MV_POS());
    CL::RunReported([&] {
        const CL::UniqueMenu menu(::LoadMenuW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDR_DBEXPLORER_CONTEXT)));
        if (!menu)
            CL::ThrowLastError(L"LoadMenu (IDR_DBEXPLORER_CONTEXT)");
        const HMENU popup = ::GetSubMenu(menu.get(), 0);
        // The command goes through WM_COMMAND like a toolbar click.
        ::TrackPopupMenu(popup, TPM_LEFTALIGN | TPM_RIGHTBUTTON, screen.x, screen.y, 0, Hwnd(), nullptr);
    });
}

void CdlgDBExplorer::OnSysColorChange()
{
    Log(3, "CdlgDBExplorer::OnSysColorChange" + MV_POS());
    CL::RunReported([this] {
        m_list.OnSysColorChange();
        ::SendMessageW(m_list, WM_SYSCOLORCHANGE, 0, 0);
        ::SendMessageW(m_bars.Toolbar(), WM_SYSCOLORCHANGE, 0, 0);
    });
}

// The list's info tip names the whole item ID, which a narrow column cuts.
void CdlgDBExplorer::OnGetInfoTip(NMLVGETINFOTIPW* tip) const
{
    if (tip->iItem < 0 || static_cast<size_t>(tip->iItem) >= m_list.DisplayCount() || tip->cchTextMax <= 0)
        return;
    const std::wstring& id = m_rows.ItemId(m_list.SourceRowAt(static_cast<size_t>(tip->iItem)));
    const size_t length = std::min(id.size(), static_cast<size_t>(tip->cchTextMax - 1));
    id.copy(tip->pszText, length);
    tip->pszText[length] = L'\0';
}

// Keys of the list: F5 refreshes, Delete deletes the selected items' values
// (Enter, like a double click, shows the item's values: NM_RETURN), Ctrl+C
// copies the selected rows, Ctrl+A selects all, Ctrl+F and Tab go to the
// filter box.
void CdlgDBExplorer::OnListKey(WORD key)
{
    switch (key) {
    case VK_F5:
        OnRefresh();
        break;
    case VK_DELETE:
        OnDelete();
        break;
    case VK_TAB:
        m_filterBar.Focus();
        break;
    case 'C':
        if (::GetKeyState(VK_CONTROL) < 0)
            OnCopy();
        break;
    case 'A':
        if (::GetKeyState(VK_CONTROL) < 0)
            OnSelectAll();
        break;
    case 'F':
        if (::GetKeyState(VK_CONTROL) < 0)
            OnFind();
        break;
    default:
        break;
    }
}
