#pragma once
// CSplitBar: a thin horizontal bar between two stacked panes of a window
// that the user drags up and down to share the height between them. The
// bar only reports where the user wants it (onDrag, in the parent's client
// coordinates of the bar's top edge); the owner lays the panes out and puts
// the bar where it fits.
#include <windows.h>

#include <functional>

#include "common/Window.h"

namespace CL {

class CSplitBar : public CWindow {
public:
    static constexpr int kHeight = 6;   // pixels at 96 dpi
    static constexpr wchar_t kName[] = L"Size bar";   // its accessible name
    // The bar's height at the DPI of the window it is in.
    int Height() const;

    // Creates the bar as a child of parent. Throws CException on failure.
    HWND Create(HWND parent, UINT id);

    // The wanted top edge while the user drags the bar.
    std::function<void(int top)> onDrag;

protected:
    const wchar_t* ClassName() const override { return L"MorvaneSplitBar"; }
    void PrepareClass(WNDCLASSEXW& wc) const override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnLButtonDown(int y);
    void OnMouseMove(int y);

    bool m_dragging = false;
    int m_grab = 0;   // where in the bar it was grabbed
};

} // namespace CL
