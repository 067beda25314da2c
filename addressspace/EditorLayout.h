#pragma once
// CEditorLayout: the editor window's place and size, its splitter position
// and its list's column widths, remembered per user in the registry from
// one opening to the next. Sizes are kept in pixels at 96 dpi, so that they
// come back the same size at another display scale; the window's corner is
// kept in screen pixels. A value that is missing or makes no sense (wrong
// type, absurd size, a window off every monitor) is left out, and the
// editor uses its default for it.
#include <windows.h>

#include <string>
#include <vector>

#include "common/ui/Dpi.h"

class CEditorLayout {
public:
    // HKEY_CURRENT_USER\Software\<product>\Address Space Editor.
    static std::wstring DefaultKey();

    // The values stored under the key (of HKEY_CURRENT_USER); what is
    // missing or garbage stays unset.
    static CEditorLayout Load(const std::wstring& key);
    // Writes every value under the key, creating it when needed.
    void Save(const std::wstring& key) const;

    // The layout of the open editor: its frame's normal (not maximized)
    // rectangle, the splitter's position and the list's column widths.
    static CEditorLayout Capture(HWND frame, int splitterPosition, HWND list);

    // The stored window rectangle at this DPI; false when none is stored
    // or it would lie off every monitor.
    bool WindowRect(const CL::CDpi& dpi, RECT& rect) const;
    // The stored splitter position at this DPI, or the fallback.
    int SplitterPosition(const CL::CDpi& dpi, int fallback) const;
    // Gives the list's columns their stored widths when one is stored for
    // each of its columns.
    void ApplyColumns(HWND list) const;

private:
    bool m_hasWindow = false;
    POINT m_corner = {};   // screen pixels
    SIZE m_size = {};      // pixels at 96 dpi
    int m_splitter = -1;   // pixels at 96 dpi; -1: none stored
    std::vector<int> m_columns;   // pixels at 96 dpi
};
