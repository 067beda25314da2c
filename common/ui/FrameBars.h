#pragma once
// CFrameBars: the toolbar and status bar of a frame window. Button images
// are the common controls' standard bitmaps (STD_* and VIEW_* indices) at
// the frame's DPI (CToolbarImages), so no image resource is needed. Tooltips and status-bar prompts
// come from the string table: the string with the command's id holds
// "<status-bar prompt>\n<tooltip>".
//
// The frame forwards WM_NOTIFY to OnNotify (tooltips, the hot button's
// prompt), WM_MENUSELECT to OnMenuSelect (the menu entry's prompt), and lays
// out its client area with Layout on WM_SIZE.
#include <windows.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "common/ui/ToolbarImages.h"

namespace CL {

struct ToolButton {
    int command;       // 0: a separator
    int image;         // STD_* index of IDB_STD_SMALL_COLOR, or kViewImage + VIEW_* index
};

class CFrameBars {
public:
    static constexpr int kViewImage = 1000;   // offset of the IDB_VIEW_SMALL_COLOR images

    // Creates the toolbar (flat, tooltips, with the buttons in order) and
    // the status bar as children of the frame.
    void Create(HWND frame, const std::vector<ToolButton>& buttons, UINT toolbarId = 0xE800,
                UINT statusId = 0xE801);

    HWND Toolbar() const { return m_toolbar; }
    HWND StatusBar() const { return m_status; }
    bool ToolbarVisible() const;
    bool StatusBarVisible() const;
    void ShowToolbar(bool show);
    void ShowStatusBar(bool show);

    // The frame moved to a monitor of another DPI: the button images are
    // made again at the new size.
    void OnDpiChanged();
    // Places the visible bars in the frame's client area and returns what
    // is left for the frame's content.
    RECT Layout();

    // The status bar's text (the idle text when nothing is being pointed at).
    void SetStatusText(const std::wstring& text);
    void SetIdleText(const std::wstring& text);

    // Panes right of the prompt, of these widths in pixels at 96 dpi (left
    // to right); the prompt's pane takes what is left. Prompts, tooltips'
    // texts and the idle text stay in the first pane.
    void SetPanes(std::vector<int> widths96);
    // The text of pane 1, 2 ... (0 is the prompt's).
    void SetPaneText(int pane, const std::wstring& text);

    bool OnNotify(const NMHDR* header, LRESULT* result);
    void OnMenuSelect(WPARAM wParam, LPARAM lParam);

    // "<prompt>\n<tooltip>" of the string with this id split in two; empty
    // parts when there is no such string.
    static std::wstring Prompt(int command);
    static std::wstring Tooltip(int command);

private:
    // Gives the toolbar its images at the frame's DPI; returns the index of
    // the first VIEW_* image.
    int SetImages();
    // Divides the status bar into the prompt's pane and the fixed panes.
    void SetParts();

    HWND m_frame = nullptr;
    HWND m_toolbar = nullptr;
    HWND m_status = nullptr;
    UniqueImageList m_images;   // the toolbar's images at the frame's DPI
    int m_imageDpi = 0;
    std::vector<int> m_paneWidths;   // at 96 dpi
    std::wstring m_idle = L"Ready";
    std::wstring m_tipBuffer;
};

} // namespace CL
