#pragma once
// CDpiFonts: the fonts of a top-level window's controls made anew for a new
// DPI (WM_DPICHANGED). Every control inside the window (the dialog itself
// too) gets its font again at the new DPI: the font it had, its height
// scaled from the DPI it was made for. The fonts made here are owned here;
// those of the dialog template and the controls' own defaults are left to
// their owners. A font is always scaled from the one the control had first,
// so going back and forth between DPIs does not drift by rounding.
#include <windows.h>

#include <map>
#include <vector>

#include "common/Handle.h"

namespace CL {

class CDpiFonts {
public:
    // The DPI the window's fonts are made for now (its DPI at creation).
    static void Start(HWND window);
    // WM_DPICHANGED to newDpi: every control gets its font for it.
    static void OnDpiChanged(HWND window, int newDpi);
    // The window is destroyed (WM_NCDESTROY): the fonts made for it go.
    static void Forget(HWND window);

private:
    struct Origin {
        LOGFONTW font;
        int dpi;
    };
    // One window's state.
    struct Fonts {
        int dpi = 0;
        std::vector<UniqueGdiObject> made;
        std::map<HFONT, Origin> origins;   // the fonts made here: what each was made from
    };
    static HFONT FontFor(const Fonts& state, HFONT current, int newDpi, std::map<HFONT, HFONT>& made, Fonts& next);
};

} // namespace CL
