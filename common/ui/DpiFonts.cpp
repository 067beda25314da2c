#include "common/ui/DpiFonts.h"

#include <memory>

#include "common/ui/Dpi.h"

namespace CL {

namespace {

HFONT FontOf(HWND window)
{
    return reinterpret_cast<HFONT>(::SendMessageW(window, WM_GETFONT, 0, 0));
}

BOOL CALLBACK Collect(HWND child, LPARAM list)
{
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(child);
    return TRUE;
}

} // namespace

namespace {

// The top-level windows' fonts, on the windows' thread (one thread has
// them all in this program; the lock is for tests that open windows on
// others).
class FontTable {
public:
    static FontTable& Instance()
    {
        static FontTable table;
        return table;
    }
    SRWLOCK lock = SRWLOCK_INIT;
    std::map<HWND, std::shared_ptr<void>> windows;
};

} // namespace

void CDpiFonts::Start(HWND window)
{
    auto state = std::make_shared<Fonts>();
    state->dpi = CDpi::Of(window).Value();
    FontTable& table = FontTable::Instance();
    ::AcquireSRWLockExclusive(&table.lock);
    table.windows[window] = state;
    ::ReleaseSRWLockExclusive(&table.lock);
}

void CDpiFonts::Forget(HWND window)
{
    std::shared_ptr<void> gone;   // the fonts are deleted after the lock
    FontTable& table = FontTable::Instance();
    ::AcquireSRWLockExclusive(&table.lock);
    if (const auto found = table.windows.find(window); found != table.windows.end()) {
        gone = std::move(found->second);
        table.windows.erase(found);
    }
    ::ReleaseSRWLockExclusive(&table.lock);
}

HFONT CDpiFonts::FontFor(const Fonts& state, HFONT current, int newDpi, std::map<HFONT, HFONT>& made, Fonts& next)
{
    if (const auto found = made.find(current); found != made.end())
        return found->second;
    // A control that passed its new font on to a part (a list to its
    // header) before the walk reached the part: that font is at the new DPI.
    if (next.origins.count(current))
        return current;
    Origin origin = {};
    if (const auto own = state.origins.find(current); own != state.origins.end()) {
        origin = own->second;
    } else {
        // A control without a font of its own draws with the GUI font.
        const HGDIOBJ source = current ? static_cast<HGDIOBJ>(current) : ::GetStockObject(DEFAULT_GUI_FONT);
        if (::GetObjectW(source, sizeof origin.font, &origin.font) != sizeof origin.font)
            return nullptr;
        origin.dpi = state.dpi;
    }
    LOGFONTW scaled = origin.font;
    scaled.lfHeight = ::MulDiv(origin.font.lfHeight, newDpi, origin.dpi);
    scaled.lfWidth = ::MulDiv(origin.font.lfWidth, newDpi, origin.dpi);
    UniqueGdiObject font(::CreateFontIndirectW(&scaled));
    if (!font)
        return nullptr;
    const HFONT handle = static_cast<HFONT>(font.get());
    next.made.push_back(std::move(font));
    next.origins[handle] = origin;
    made[current] = handle;
    return handle;
}

void CDpiFonts::OnDpiChanged(HWND window, int newDpi)
{
    FontTable& table = FontTable::Instance();
    ::AcquireSRWLockShared(&table.lock);
    const auto found = table.windows.find(window);
    std::shared_ptr<Fonts> state =
        found == table.windows.end() ? nullptr : std::static_pointer_cast<Fonts>(found->second);
    ::ReleaseSRWLockShared(&table.lock);
    if (!state) {
        Start(window);
        OnDpiChanged(window, newDpi);
        return;
    }
    if (newDpi <= 0 || newDpi == state->dpi)
        return;
    std::vector<HWND> controls;
    if (FontOf(window))
        controls.push_back(window);   // a dialog's own font, which its parts (a chart) draw with
    ::EnumChildWindows(window, Collect, reinterpret_cast<LPARAM>(&controls));
    std::map<HFONT, HFONT> made;
    Fonts next;
    for (HWND control : controls) {
        if (const HFONT font = FontFor(*state, FontOf(control), newDpi, made, next))
            ::SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    }
    // The controls use the new fonts now: the old ones made here can go.
    state->made = std::move(next.made);
    state->origins = std::move(next.origins);
    state->dpi = newDpi;
}

} // namespace CL
