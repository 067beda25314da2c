#pragma once
// Drives the modal windows a command opens (dialogs, message boxes, common
// file dialogs) from a watcher thread, one step after another, while the
// test's own thread runs the command.
//
//   test::DialogScript script({
//       {L"Add Item", [](HWND d) { test::SetItemText(d, IDC_ITEM_NAME, L"X"); test::ClickButton(d, IDOK); }},
//       {L"Error", [](HWND box) { test::ClickButton(box, IDCANCEL); }},
//       {L"Add Item", [](HWND d) { test::ClickButton(d, IDCANCEL); }, test::DialogScript::kSameWindow},
//   });
//   SendMessageW(frame, WM_COMMAND, ID_..., 0);
//   EXPECT_TRUE(script.Finished()) << script.Report();
//
// A step waits (up to its time-out) for a visible, enabled top-level dialog
// ("#32770") of this process with its title (any title when empty); an enabled window only, so a
// dialog under its own message box is not taken. A window that an earlier
// step handled is not taken again unless the step says kSameWindow.
#include <windows.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace test {

class DialogScript {
public:
    static constexpr bool kSameWindow = true;

    struct Step {
        std::wstring title;
        std::function<void(HWND)> action;
        bool sameWindow = false;
        // 0: the script's time-out. A short one checks that a window does
        // NOT come (then StepsDone() stays below the step's number).
        std::chrono::milliseconds timeout{0};
    };

    explicit DialogScript(std::vector<Step> steps, std::chrono::milliseconds stepTimeout = std::chrono::seconds(10));
    ~DialogScript();
    DialogScript(const DialogScript&) = delete;
    DialogScript& operator=(const DialogScript&) = delete;

    // Waits for the watcher to end; true when every step ran.
    bool Finished();
    size_t StepsDone() const { return m_done; }
    // Which steps ran, and the one that found no window.
    std::wstring Report() const;
    // The texts of the windows the steps handled (message box texts for boxes).
    std::vector<std::wstring> Texts() const;

private:
    void Run();

    std::vector<Step> m_steps;
    std::chrono::milliseconds m_timeout;
    std::atomic<size_t> m_done{0};
    std::atomic<bool> m_stop{false};
    std::vector<std::wstring> m_texts;
    std::wstring m_failure;
    std::thread m_thread;
};

// Sets a control's text (through the dialog's thread).
void SetItemText(HWND dialog, int id, const std::wstring& text);
// Selects the combo box entry whose item data is `data`; false when none has it.
bool SelectComboData(HWND dialog, int id, LPARAM data);
void SetCheck(HWND dialog, int id, bool checked);
bool IsChecked(HWND dialog, int id);
// Fills the file name of a common file dialog and presses its OK button.
void ChooseFile(HWND fileDialog, const std::wstring& path);

} // namespace test
