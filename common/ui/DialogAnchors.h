#pragma once
// CDialogAnchors: keeps the controls of a resizable dialog in place as it
// grows. Each registered control keeps its distance to the dialog's edges
// as its anchor flags say: a control anchored right moves with the right
// edge, one anchored left and right stretches, and so on. The dialog cannot
// be made smaller than it was when Capture ran. After the dialog moved to
// a monitor of another DPI, the noted rectangles and sizes are scaled to
// the new DPI at the next WM_SIZE.
#include <windows.h>

#include <vector>

namespace CL {

class CDialogAnchors {
public:
    enum : unsigned {
        kLeft = 1,     // keeps its left edge (the default)
        kRight = 2,    // follows the right edge (moves, or stretches with kLeft)
        kTop = 4,
        kBottom = 8,   // follows the bottom edge (moves, or stretches with kTop)
        kStretchX = kLeft | kRight,
        kStretchY = kTop | kBottom,
    };

    // Notes the dialog's client size and the rectangles of the controls
    // added so far; call from WM_INITDIALOG after Add.
    void Add(int controlId, unsigned anchors);
    void Capture(HWND dialog);

    // WM_SIZE: moves the controls for the new client size.
    void OnSize(int width, int height);
    // WM_GETMINMAXINFO: the window's size at Capture is the smallest.
    void OnGetMinMaxInfo(MINMAXINFO* info) const;
    // Both of them from a dialog procedure: true when the message was one.
    bool OnMessage(UINT message, LPARAM lParam);

private:
    void FollowDpi();

    struct Control {
        int id;
        unsigned anchors;
        RECT rect;
    };
    HWND m_dialog = nullptr;
    SIZE m_client = {};
    SIZE m_window = {};
    int m_dpi = 0;   // the DPI of the noted sizes
    std::vector<Control> m_controls;
};

} // namespace CL
