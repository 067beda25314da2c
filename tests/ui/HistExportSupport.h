#pragma once
// Shared pieces of the export and copy tests of the historian windows:
// answers for the save dialog and the questions around it, the clipboard's
// text, the Ctrl key, files and their read-only flag.
#include <windows.h>

#include <dlgs.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/ui/ClipboardText.h"
#include "support/TestSupport.h"

namespace histwin_test {

// The save dialog's file name field (newer or older layout); NULL for a box
// that is no file dialog.
inline HWND FileNameField(HWND dialog)
{
    if (HWND combo = ::GetDlgItem(dialog, cmb13))
        return combo;
    return ::GetDlgItem(dialog, edt1);
}

// Answers the save dialog with the path, a question with Yes (the overwrite
// question), any other box (the time period dialog, an error report) with
// OK.
inline test::MessageBoxAnswerer::Answer SaveAsAnswer(const std::wstring& path)
{
    return [path](const test::MessageBoxInfo& box) {
        if (const HWND field = FileNameField(box.hwnd)) {
            ::SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
            return IDOK;
        }
        return ::GetDlgItem(box.hwnd, IDYES) ? IDYES : IDOK;
    };
}

// The boxes seen that were neither the save dialog (also seen before it has
// its title) nor its overwrite question: error reports, the time period
// dialog.
inline std::vector<test::MessageBoxInfo> OtherBoxes(const test::MessageBoxAnswerer& answerer)
{
    std::vector<test::MessageBoxInfo> boxes;
    for (const auto& box : answerer.Seen()) {
        const bool saveDialog = box.title == L"Save As" || (box.title.empty() && box.text.empty());
        const bool overwriteQuestion = box.text.find(L"already exists") != std::wstring::npos;
        if (!saveDialog && !overwriteQuestion)
            boxes.push_back(box);
    }
    return boxes;
}

// Ctrl held down for this thread's key state while the object lives.
class CtrlDown {
public:
    CtrlDown()
    {
        ::GetKeyboardState(m_saved);
        BYTE state[256];
        ::GetKeyboardState(state);
        state[VK_CONTROL] = state[VK_LCONTROL] = 0x80;
        ::SetKeyboardState(state);
    }
    ~CtrlDown() { ::SetKeyboardState(m_saved); }
    CtrlDown(const CtrlDown&) = delete;
    CtrlDown& operator=(const CtrlDown&) = delete;

private:
    BYTE m_saved[256];
};

// A key pressed in a list: the LVN_KEYDOWN its owner sees.
inline void PressKey(HWND list, WORD key)
{
    ::SendMessageW(list, WM_KEYDOWN, key, 0);
    ::SendMessageW(list, WM_KEYUP, key, 0xC0000000);
}

inline void WriteFileText(const std::wstring& path, const std::string& bytes)
{
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
}

inline bool FileExists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The names of the files in a folder, sorted (what a cancelled export may
// have left there, whatever its temporary files are called).
inline std::vector<std::wstring> FilesIn(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names.push_back(found.cFileName);
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace histwin_test
