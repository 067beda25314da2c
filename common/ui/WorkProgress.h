#pragma once
// CWorkProgress: the progress of long work on the one user-interface thread.
// The work calls Step between its steps (database rows, blocks of values);
// Step looks at the input waiting for the window without running it: Esc
// or a click on the Cancel button throws CWorkCancelled, other keyboard and
// mouse input is dropped (nothing else may start in the middle), paint
// messages are handled. Once the work has run for the show delay (about
// half a second), its progress text is shown, refreshed a few times a
// second, and the Cancel button (when there is one) is shown too; both are
// put back as they were when the object goes.
#include <windows.h>

#include <chrono>
#include <functional>
#include <string>

namespace CL {

class CWorkProgress {
public:
    using Clock = std::chrono::steady_clock;

    // window: the window doing the work (input for it and its children is
    // looked at); showText: shows a progress text (the window's status
    // area); cancelButton: shown while the work runs long, may be NULL;
    // shownText: what the status area shows now. With it, the text shown
    // before the work is put back when the object goes, unless the work put
    // a text of its own there meanwhile (its result).
    CWorkProgress(HWND window, std::function<void(const std::wstring&)> showText, HWND cancelButton = nullptr,
                  std::function<std::wstring()> shownText = nullptr);
    ~CWorkProgress();
    CWorkProgress(const CWorkProgress&) = delete;
    CWorkProgress& operator=(const CWorkProgress&) = delete;

    // One step done; text says how far the work is ("12,000 values read").
    // Throws CWorkCancelled when the user cancelled.
    void Step(const std::function<std::wstring()>& text);
    bool Shown() const { return m_shown; }

    // How long work runs before its progress shows (tests shorten it).
    static void SetShowDelay(std::chrono::milliseconds delay);
    // Called at every step before the input is looked at (tests use it to
    // press Esc in the middle of the work).
    static void SetStepObserver(std::function<void()> observer);

private:
    bool CancelRequested();
    bool IsOurs(HWND hwnd) const;

    HWND m_window;
    std::function<void(const std::wstring&)> m_showText;
    HWND m_cancel;
    std::function<std::wstring()> m_shownText;
    std::wstring m_textBefore;
    std::wstring m_lastText;   // the last progress text shown
    Clock::time_point m_start;
    Clock::time_point m_lastDrawn;
    Clock::time_point m_lastLook;   // the first step looks at the input
    bool m_shown = false;
};

} // namespace CL
