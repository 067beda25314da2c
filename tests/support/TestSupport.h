#pragma once
// Helpers shared by the test programs: temporary folders, file access,
// answering message boxes from a watcher thread, and running programs.
#include <windows.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace test {

// A fresh folder under the system's temporary folder, removed with its
// contents by the destructor. Path() ends with a backslash.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::wstring& Path() const { return m_path; }
    std::wstring File(const std::wstring& name) const { return m_path + name; }

private:
    std::wstring m_path;
};

std::string ReadFileBytes(const std::wstring& path);
void WriteFileBytes(const std::wstring& path, const std::string& bytes);
bool FileExists(const std::wstring& path);
void RemoveTree(const std::wstring& path);
void CopyFileOrFail(const std::wstring& from, const std::wstring& to);

// The folder of the running test program (ends with a backslash); the
// product's executables are built into the same folder.
std::wstring ProgramFolder();

// A message box (dialog class "#32770") seen on the screen.
struct MessageBoxInfo {
    HWND hwnd = nullptr;
    std::wstring title;
    std::wstring text;
};

// Waits up to `timeout` for a top-level message box of the given process
// (0: this process) and returns it; hwnd is NULL when none appeared.
MessageBoxInfo WaitForMessageBox(DWORD processId, std::chrono::milliseconds timeout,
                                 const std::wstring& title = L"");
// The text of a window (its title, or a control's text) and of a dialog's
// control (GetDlgItemTextW, which also reaches other processes' controls).
std::wstring WindowText(HWND window);
std::wstring DialogItemText(HWND dialog, int id);

// Clicks the box's button with the given id (IDOK, IDYES, IDNO, IDCANCEL).
bool ClickButton(HWND box, int buttonId);

// Answers every message box this process shows while it lives: records it,
// then clicks the button that the answer function returns for it.
class MessageBoxAnswerer {
public:
    using Answer = std::function<int(const MessageBoxInfo&)>;
    explicit MessageBoxAnswerer(Answer answer = [](const MessageBoxInfo&) { return IDOK; });
    ~MessageBoxAnswerer();
    std::vector<MessageBoxInfo> Seen() const;

private:
    void Watch();
    Answer m_answer;
    std::atomic<bool> m_stop{false};
    mutable CRITICAL_SECTION m_lock;
    std::vector<MessageBoxInfo> m_seen;
    std::thread m_thread;
};

// A child process started with CreateProcessW; terminated by the destructor
// if still running.
class Process {
public:
    Process(const std::wstring& exe, const std::wstring& arguments, const std::wstring& folder = L"");
    ~Process();
    DWORD Id() const { return m_info.dwProcessId; }
    HANDLE Handle() const { return m_info.hProcess; }
    // Waits for the end; returns the exit code, or STILL_ACTIVE on time-out.
    DWORD Wait(std::chrono::milliseconds timeout);
    bool Running() const;

private:
    PROCESS_INFORMATION m_info = {};
};

// The first top-level window of the given class owned by the process.
HWND WaitForProcessWindow(DWORD processId, const wchar_t* className, std::chrono::milliseconds timeout);

// Polls the condition every 20 ms until it holds or the time-out passes.
bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

} // namespace test
