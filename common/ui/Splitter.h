#pragma once
// CSplitter: a child window split by a vertical bar into a left and a right
// pane. The panes are windows the owner creates as children of the
// splitter; the splitter sizes them on every resize and bar move and passes
// their WM_NOTIFY, WM_COMMAND and WM_CONTEXTMENU on to its own parent, so
// that the owner handles its controls as if they were its own children.
// The bar is dragged with the mouse; the owner may refuse a position.
#include <windows.h>

#include <functional>

#include "common/Window.h"

namespace CL {

class CSplitter : public CWindow {
public:
    static constexpr int kBarWidth = 5;   // pixels at 96 dpi
    static constexpr wchar_t kName[] = L"Splitter";   // its accessible name
    // The bar's width at the window's DPI.
    int BarWidth() const;

    HWND Create(HWND parent, UINT id, int position);
    void SetPanes(HWND left, HWND right);
    HWND LeftPane() const { return m_left; }
    HWND RightPane() const { return m_right; }

    // The bar's left edge in client coordinates.
    int Position() const { return m_position; }
    // Moves the bar, kept inside the window, unless onSplitterMove refuses;
    // returns whether it moved.
    bool SetPosition(int position);

    // Asked before the bar moves to a new position; false keeps it where it is.
    std::function<bool(int)> onSplitterMove;

protected:
    const wchar_t* ClassName() const override { return L"MorvaneSplitter"; }
    void PrepareClass(WNDCLASSEXW& wc) const override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void LayoutPanes();
    int Clamp(int position) const;
    bool OnBar(int x) const;
    void OnLButtonDown(int x);
    void OnMouseMove(int x);
    void OnLButtonUp();

    HWND m_left = nullptr;
    HWND m_right = nullptr;
    int m_position = 200;
    bool m_dragging = false;
    int m_grabOffset = 0;
};

} // namespace CL
