#pragma once
// Every window and dialog of the program, each opened the way its tests
// open it (modeless, on the test's thread, with what it needs to show its
// normal content). The layout and keyboard tests run over this table, so a
// new window is covered by adding one entry to EveryWindow() in
// WindowCatalog.cpp: a name and a function that opens it.
#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

// An open window and what it needs while it lives. The window goes first,
// then the objects, last added first.
class OpenedWindow {
public:
    OpenedWindow() = default;
    OpenedWindow(const OpenedWindow&) = delete;
    OpenedWindow& operator=(const OpenedWindow&) = delete;
    ~OpenedWindow();

    HWND Hwnd() const { return m_hwnd; }
    void SetHwnd(HWND hwnd) { m_hwnd = hwnd; }
    // What the program's message loop does with a message for the window
    // before dispatching it (a frame's accelerators); true: handled.
    std::function<bool(MSG&)> translate;
    // Keeps an object alive as long as the window; returns it.
    template <typename T, typename... Args>
    T& Keep(Args&&... args)
    {
        auto object = std::make_shared<T>(std::forward<Args>(args)...);
        m_kept.push_back(object);
        return *object;
    }

private:
    HWND m_hwnd = nullptr;
    std::vector<std::shared_ptr<void>> m_kept;
};

struct WindowEntry {
    std::string name;   // a test name: letters and digits
    std::function<std::unique_ptr<OpenedWindow>()> open;
    // What the window shows, so that a test over every window fails when a
    // window loses it: the controls that show a menu to the right mouse
    // button, and the program's own controls (class names "Morvane...").
    int contextMenus = 0;
    int ownControls = 0;
};

// The table.
const std::vector<WindowEntry>& EveryWindow();

// For the parameterised tests' names.
std::string EntryName(const testing::TestParamInfo<WindowEntry>& info);

} // namespace test
