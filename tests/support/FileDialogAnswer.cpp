#include "FileDialogAnswer.h"

#include <dlgs.h>

#include "TestSupport.h"

namespace test {

namespace {

// The file name field: the combo box of the newer layout, else the edit of
// the older one.
HWND FileNameField(HWND dialog)
{
    if (HWND combo = ::GetDlgItem(dialog, cmb13))
        return combo;
    return ::GetDlgItem(dialog, edt1);
}

// A common file dialog is a "#32770" with a file name field.
bool IsFileDialog(HWND window)
{
    return window && FileNameField(window) != nullptr;
}

} // namespace

FileDialogAnswer::FileDialogAnswer(std::wstring path, std::chrono::milliseconds timeout)
    : m_path(std::move(path))
{
    m_thread = std::thread([this, timeout] {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        MessageBoxInfo box;
        do {
            box = WaitForMessageBox(0, std::chrono::milliseconds(100));
            if (IsFileDialog(box.hwnd))
                break;
            box = MessageBoxInfo{};
        } while (std::chrono::steady_clock::now() < deadline);
        if (!box.hwnd)
            return;
        m_title = box.title;
        if (m_path.empty()) {
            ::PostMessageW(box.hwnd, WM_COMMAND, IDCANCEL, 0);
        } else {
            ::SendMessageW(FileNameField(box.hwnd), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(m_path.c_str()));
            ::PostMessageW(box.hwnd, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED),
                           reinterpret_cast<LPARAM>(::GetDlgItem(box.hwnd, IDOK)));
        }
        m_answered = true;
    });
}

FileDialogAnswer::~FileDialogAnswer()
{
    if (m_thread.joinable())
        m_thread.join();
}

bool FileDialogAnswer::Answered()
{
    if (m_thread.joinable())
        m_thread.join();
    return m_answered;
}

std::wstring FileDialogAnswer::Title()
{
    Answered();
    return m_title;
}

} // namespace test
