#include "TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace test {

TempDir::TempDir()
{
    wchar_t base[MAX_PATH] = {};
    ::GetTempPathW(MAX_PATH, base);
    static std::atomic<unsigned> sequence{0};
    for (;;) {
        wchar_t name[64];
        swprintf(name, 64, L"morvane-test-%lu-%lu-%u\\", ::GetCurrentProcessId(), ::GetTickCount(),
                 sequence++);
        m_path = std::wstring(base) + name;
        if (::CreateDirectoryW(m_path.c_str(), nullptr))
            break;
    }
}

TempDir::~TempDir()
{
    RemoveTree(m_path);
}

void RemoveTree(const std::wstring& path)
{
    std::wstring folder = path;
    if (!folder.empty() && folder.back() != L'\\')
        folder += L'\\';
    WIN32_FIND_DATAW data;
    HANDLE find = ::FindFirstFileW((folder + L"*").c_str(), &data);
    if (find != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = data.cFileName;
            if (name == L"." || name == L"..")
                continue;
            if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(folder + name);
            else {
                ::SetFileAttributesW((folder + name).c_str(), FILE_ATTRIBUTE_NORMAL);
                ::DeleteFileW((folder + name).c_str());
            }
        } while (::FindNextFileW(find, &data));
        ::FindClose(find);
    }
    ::RemoveDirectoryW(folder.c_str());
}

std::string ReadFileBytes(const std::wstring& path)
{
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return std::string();
    std::string bytes;
    char buffer[65536];
    DWORD got = 0;
    while (::ReadFile(file, buffer, sizeof buffer, &got, nullptr) && got > 0)
        bytes.append(buffer, got);
    ::CloseHandle(file);
    return bytes;
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes)
{
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << "cannot create test file";
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
    ASSERT_EQ(written, bytes.size());
}

bool FileExists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void CopyFileOrFail(const std::wstring& from, const std::wstring& to)
{
    ASSERT_TRUE(::CopyFileW(from.c_str(), to.c_str(), FALSE)) << "copy failed, error " << ::GetLastError();
}

std::wstring ProgramFolder()
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path);
    folder.erase(folder.find_last_of(L"\\/") + 1);
    return folder;
}

namespace {

struct BoxSearch {
    DWORD processId;
    const std::wstring* title;
    HWND found;
};

BOOL CALLBACK FindBox(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<BoxSearch*>(param);
    wchar_t cls[64] = {};
    ::GetClassNameW(hwnd, cls, 64);
    if (std::wstring(cls) != L"#32770" || !::IsWindowVisible(hwnd))
        return TRUE;
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    if (pid != search->processId)
        return TRUE;
    if (!search->title->empty()) {
        wchar_t title[256] = {};
        ::GetWindowTextW(hwnd, title, 256);
        if (*search->title != title)
            return TRUE;
    }
    search->found = hwnd;
    return FALSE;
}

} // namespace

std::wstring WindowText(HWND window)
{
    std::vector<wchar_t> text(::GetWindowTextLengthW(window) + 1, L'\0');
    ::GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    return text.data();
}

std::wstring DialogItemText(HWND dialog, int id)
{
    std::vector<wchar_t> text(8192, L'\0');
    ::GetDlgItemTextW(dialog, id, text.data(), static_cast<int>(text.size()));
    return text.data();
}

namespace {

MessageBoxInfo Describe(HWND box)
{
    MessageBoxInfo info;
    info.hwnd = box;
    wchar_t title[256] = {};
    ::GetWindowTextW(box, title, 256);
    info.title = title;
    std::vector<wchar_t> text(8192, L'\0');
    ::GetDlgItemTextW(box, 0xFFFF, text.data(), static_cast<int>(text.size()));
    info.text = text.data();
    return info;
}

} // namespace

MessageBoxInfo WaitForMessageBox(DWORD processId, std::chrono::milliseconds timeout, const std::wstring& title)
{
    BoxSearch search{processId ? processId : ::GetCurrentProcessId(), &title, nullptr};
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    do {
        search.found = nullptr;
        ::EnumWindows(&FindBox, reinterpret_cast<LPARAM>(&search));
        if (search.found)
            return Describe(search.found);
        ::Sleep(20);
    } while (std::chrono::steady_clock::now() < deadline);
    return MessageBoxInfo{};
}

bool ClickButton(HWND box, int buttonId)
{
    HWND button = ::GetDlgItem(box, buttonId);
    if (!button)
        return false;
    ::PostMessageW(button, BM_CLICK, 0, 0);
    return true;
}

MessageBoxAnswerer::MessageBoxAnswerer(Answer answer) : m_answer(std::move(answer))
{
    ::InitializeCriticalSection(&m_lock);
    m_thread = std::thread([this] { Watch(); });
}

MessageBoxAnswerer::~MessageBoxAnswerer()
{
    m_stop = true;
    m_thread.join();
    ::DeleteCriticalSection(&m_lock);
}

std::vector<MessageBoxInfo> MessageBoxAnswerer::Seen() const
{
    ::EnterCriticalSection(&m_lock);
    std::vector<MessageBoxInfo> copy = m_seen;
    ::LeaveCriticalSection(&m_lock);
    return copy;
}

void MessageBoxAnswerer::Watch()
{
    HWND lastAnswered = nullptr;
    while (!m_stop) {
        MessageBoxInfo box = WaitForMessageBox(0, std::chrono::milliseconds(50));
        if (!box.hwnd || box.hwnd == lastAnswered) {
            if (box.hwnd && !::IsWindow(box.hwnd))
                lastAnswered = nullptr;
            continue;
        }
        ::EnterCriticalSection(&m_lock);
        m_seen.push_back(box);
        ::LeaveCriticalSection(&m_lock);
        // A box without the wanted button (an error report where a question
        // was expected) is still closed, so that the test fails on what it
        // saw instead of hanging until its time-out.
        if (!ClickButton(box.hwnd, m_answer(box)) && !ClickButton(box.hwnd, IDOK))
            ClickButton(box.hwnd, IDCANCEL);
        lastAnswered = box.hwnd;
    }
}

Process::Process(const std::wstring& exe, const std::wstring& arguments, const std::wstring& folder)
{
    std::wstring commandLine = L"\"" + exe + L"\"" + (arguments.empty() ? L"" : L" " + arguments);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    if (!::CreateProcessW(exe.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                          folder.empty() ? nullptr : folder.c_str(), &startup, &m_info))
        ADD_FAILURE() << "CreateProcessW failed, error " << ::GetLastError();
}

Process::~Process()
{
    if (m_info.hProcess) {
        if (Running()) {
            ::TerminateProcess(m_info.hProcess, 99);
            ::WaitForSingleObject(m_info.hProcess, 5000);
        }
        ::CloseHandle(m_info.hProcess);
        ::CloseHandle(m_info.hThread);
    }
}

DWORD Process::Wait(std::chrono::milliseconds timeout)
{
    if (!m_info.hProcess)
        return STILL_ACTIVE;
    if (::WaitForSingleObject(m_info.hProcess, static_cast<DWORD>(timeout.count())) != WAIT_OBJECT_0)
        return STILL_ACTIVE;
    DWORD code = STILL_ACTIVE;
    ::GetExitCodeProcess(m_info.hProcess, &code);
    return code;
}

bool Process::Running() const
{
    return m_info.hProcess && ::WaitForSingleObject(m_info.hProcess, 0) == WAIT_TIMEOUT;
}

namespace {
struct WindowSearch {
    DWORD processId;
    const wchar_t* className;
    HWND found;
};
BOOL CALLBACK FindProcessWindow(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<WindowSearch*>(param);
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    wchar_t cls[128] = {};
    ::GetClassNameW(hwnd, cls, 128);
    if (pid == search->processId && wcscmp(cls, search->className) == 0) {
        search->found = hwnd;
        return FALSE;
    }
    return TRUE;
}
} // namespace

HWND WaitForProcessWindow(DWORD processId, const wchar_t* className, std::chrono::milliseconds timeout)
{
    WindowSearch search{processId, className, nullptr};
    WaitUntil([&] {
        ::EnumWindows(&FindProcessWindow, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    }, timeout);
    return search.found;
}

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        if (condition())
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        ::Sleep(20);
    }
}

} // namespace test
