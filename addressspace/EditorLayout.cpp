#include "addressspace/EditorLayout.h"

#include <commctrl.h>

#include <cwchar>

#include "common/RegistryKey.h"
#include "common/Text.h"
#include "version.h"

namespace {

constexpr wchar_t kLeft[] = L"WindowLeft";
constexpr wchar_t kTop[] = L"WindowTop";
constexpr wchar_t kWidth[] = L"WindowWidth";
constexpr wchar_t kHeight[] = L"WindowHeight";
constexpr wchar_t kSplitter[] = L"Splitter";
constexpr wchar_t kColumns[] = L"ColumnWidths";
constexpr int kLeastSize = 100;     // a stored window smaller than this is garbage
constexpr int kLargestSize = 16384;

bool InRange(long long value, long long least, long long most)
{
    return value >= least && value <= most;
}

// A stored DWORD as the signed number it was written from.
bool ReadInt(const CL::CRegistryKey& key, const wchar_t* name, int& value)
{
    DWORD stored = 0;
    if (!key.ReadDword(name, stored))
        return false;
    value = static_cast<int>(stored);
    return true;
}

// "120,80,95": every width a number in range, else nothing.
std::vector<int> ParseWidths(const std::wstring& text)
{
    std::vector<int> widths;
    const wchar_t* at = text.c_str();
    while (*at) {
        wchar_t* end = nullptr;
        const long width = std::wcstol(at, &end, 10);
        if (end == at || !InRange(width, 0, kLargestSize) || (*end != L',' && *end != L'\0'))
            return {};
        widths.push_back(static_cast<int>(width));
        at = *end ? end + 1 : end;
    }
    return widths;
}

// The window's rectangle when it is neither maximized nor minimized, in
// screen coordinates (the placement's are relative to the work area).
RECT NormalRect(HWND window)
{
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof(placement);
    ::GetWindowPlacement(window, &placement);
    RECT rect = placement.rcNormalPosition;
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    if (::GetMonitorInfoW(::MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST), &monitor))
        ::OffsetRect(&rect, monitor.rcWork.left - monitor.rcMonitor.left, monitor.rcWork.top - monitor.rcMonitor.top);
    return rect;
}

} // namespace

std::wstring CEditorLayout::DefaultKey()
{
    return L"Software\\" + CL::Widen(MORVANE_PRODUCT_NAME) + L"\\Address Space Editor";
}

CEditorLayout CEditorLayout::Load(const std::wstring& keyPath)
{
    CEditorLayout layout;
    const CL::CRegistryKey key = CL::CRegistryKey::Open(HKEY_CURRENT_USER, keyPath);
    if (!key.Valid())
        return layout;
    int left = 0, top = 0, width = 0, height = 0;
    if (ReadInt(key, kLeft, left) && ReadInt(key, kTop, top) && ReadInt(key, kWidth, width) &&
        ReadInt(key, kHeight, height) && InRange(width, kLeastSize, kLargestSize) &&
        InRange(height, kLeastSize, kLargestSize) && InRange(left, -kLargestSize, kLargestSize) &&
        InRange(top, -kLargestSize, kLargestSize)) {
        layout.m_hasWindow = true;
        layout.m_corner = POINT{left, top};
        layout.m_size = SIZE{width, height};
    }
    int splitter = -1;
    if (ReadInt(key, kSplitter, splitter) && InRange(splitter, 0, kLargestSize))
        layout.m_splitter = splitter;
    std::wstring columns;
    if (key.ReadString(kColumns, columns))
        layout.m_columns = ParseWidths(columns);
    return layout;
}

void CEditorLayout::Save(const std::wstring& keyPath) const
{
    const CL::CRegistryKey key = CL::CRegistryKey::Create(HKEY_CURRENT_USER, keyPath);
    if (m_hasWindow) {
        key.WriteDword(kLeft, static_cast<DWORD>(m_corner.x));
        key.WriteDword(kTop, static_cast<DWORD>(m_corner.y));
        key.WriteDword(kWidth, static_cast<DWORD>(m_size.cx));
        key.WriteDword(kHeight, static_cast<DWORD>(m_size.cy));
    }
    if (m_splitter >= 0)
        key.WriteDword(kSplitter, static_cast<DWORD>(m_splitter));
    std::wstring columns;
    for (int width : m_columns)
        columns += (columns.empty() ? L"" : L",") + std::to_wstring(width);
    if (!m_columns.empty())
        key.WriteString(kColumns, columns);
}

CEditorLayout CEditorLayout::Capture(HWND frame, int splitterPosition, HWND list)
{
    CEditorLayout layout;
    const CL::CDpi dpi = CL::CDpi::Of(frame);
    const RECT rect = NormalRect(frame);
    layout.m_hasWindow = true;
    layout.m_corner = POINT{rect.left, rect.top};
    layout.m_size = SIZE{dpi.Unscale(rect.right - rect.left), dpi.Unscale(rect.bottom - rect.top)};
    layout.m_splitter = dpi.Unscale(splitterPosition);
    const HWND header = ListView_GetHeader(list);
    const int count = header ? Header_GetItemCount(header) : 0;
    for (int column = 0; column < count; ++column)
        layout.m_columns.push_back(dpi.Unscale(ListView_GetColumnWidth(list, column)));
    return layout;
}

bool CEditorLayout::WindowRect(const CL::CDpi& dpi, RECT& rect) const
{
    if (!m_hasWindow)
        return false;
    const RECT stored = {m_corner.x, m_corner.y, m_corner.x + dpi.Scale(m_size.cx),
                         m_corner.y + dpi.Scale(m_size.cy)};
    // A monitor that was unplugged, or a resolution that shrank, would
    // leave the window where nobody can reach it: a good part of its
    // caption must lie on a monitor's work area.
    const RECT caption = {stored.left, stored.top, stored.right, stored.top + dpi.Metric(SM_CYCAPTION)};
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    RECT seen = {};
    if (!::GetMonitorInfoW(::MonitorFromRect(&caption, MONITOR_DEFAULTTONULL), &monitor) ||
        !::IntersectRect(&seen, &caption, &monitor.rcWork) || seen.right - seen.left < dpi.Scale(kLeastSize) / 2)
        return false;
    rect = stored;
    return true;
}

int CEditorLayout::SplitterPosition(const CL::CDpi& dpi, int fallback) const
{
    return m_splitter >= 0 ? dpi.Scale(m_splitter) : fallback;
}

void CEditorLayout::ApplyColumns(HWND list) const
{
    const HWND header = ListView_GetHeader(list);
    if (!header || m_columns.size() != static_cast<size_t>(Header_GetItemCount(header)))
        return;
    const CL::CDpi dpi = CL::CDpi::Of(list);
    for (size_t column = 0; column < m_columns.size(); ++column)
        ListView_SetColumnWidth(list, static_cast<int>(column), dpi.Scale(m_columns[column]));
}
