#pragma once
// CDialogAnchors: keeps the controls of a resizable dialog in place as it is
// resized. Each anchored control keeps its distance to the dialog's right
// and/or bottom edge (moving or growing with it); the dialog cannot be made
// smaller than its template size.
#include <windows.h>

#include <vector>

namespace CL {

class CDialogAnchors {
public:
    enum : unsigned {
        kMoveX = 1,     // keeps its distance to the right edge
        kMoveY = 2,     // keeps its distance to the bottom edge
        kGrowX = 4,     // its right side follows the right edge
        kGrowY = 8,     // its bottom side follows the bottom edge
    };

    // Records the dialog's size and its controls' places (call from
    // WM_INITDIALOG, before any resize).
    void Capture(HWND dialog);
    void Anchor(int controlId, unsigned how);
    // WM_SIZE: moves the anchored controls.
    void Arrange() const;
    // WM_GETMINMAXINFO: the template size is the smallest.
    void LimitSize(MINMAXINFO* info) const;

private:
    struct Entry {
        HWND control;
        RECT place;   // client coordinates at capture time
        unsigned how;
    };
    HWND m_dialog = nullptr;
    SIZE m_client = {};
    SIZE m_window = {};
    std::vector<Entry> m_entries;
};

} // namespace CL
