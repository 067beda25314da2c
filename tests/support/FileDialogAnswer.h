#pragma once
// Answers the next common file dialog (open or save) that this process shows:
// types the path into its file name field and presses its OK button, from a
// watcher thread, as a user would.
#include <windows.h>

#include <chrono>
#include <string>
#include <thread>

namespace test {

class FileDialogAnswer {
public:
    // An empty path presses Cancel instead.
    explicit FileDialogAnswer(std::wstring path, std::chrono::milliseconds timeout = std::chrono::seconds(10));
    ~FileDialogAnswer();
    FileDialogAnswer(const FileDialogAnswer&) = delete;
    FileDialogAnswer& operator=(const FileDialogAnswer&) = delete;

    // Waits for the watcher; true when a dialog was seen and answered.
    bool Answered();
    // The dialog's caption.
    std::wstring Title();

private:
    std::wstring m_path;
    bool m_answered = false;
    std::wstring m_title;
    std::thread m_thread;
};

} // namespace test
