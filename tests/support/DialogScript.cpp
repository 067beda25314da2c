#include "DialogScript.h"

#include <algorithm>

#include "TestSupport.h"

namespace test {

namespace {

struct Search {
    DWORD processId;
    const std::wstring* title;
    const std::vector<HWND>* handled;
    bool sameWindow;
    HWND found;
};

BOOL CALLBACK FindStepWindow(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<Search*>(param);
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    if (pid != search->processId || !::IsWindowVisible(hwnd) || !::IsWindowEnabled(hwnd))
        return TRUE;
    wchar_t cls[64] = {};
    ::GetClassNameW(hwnd, cls, 64);
    if (std::wstring(cls) != L"#32770" || (!search->title->empty() && WindowText(hwnd) != *search->title))
        return TRUE;
    if (!search->sameWindow &&
        std::find(search->handled->begin(), search->handled->end(), hwnd) != search->handled->end())
        return TRUE;
    search->found = hwnd;
    return FALSE;
}

} // namespace

DialogScript::DialogScript(std::vector<Step> steps, std::chrono::milliseconds stepTimeout)
    : m_steps(std::move(steps)), m_timeout(stepTimeout), m_thread([this] { Run(); })
{
}

DialogScript::~DialogScript()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

bool DialogScript::Finished()
{
    if (m_thread.joinable())
        m_thread.join();
    return m_done == m_steps.size();
}

std::wstring DialogScript::Report() const
{
    return L"steps done: " + std::to_wstring(m_done.load()) + L" of " + std::to_wstring(m_steps.size()) +
           (m_failure.empty() ? L"" : L"; " + m_failure);
}

std::vector<std::wstring> DialogScript::Texts() const
{
    return m_texts;
}

void DialogScript::Run()
{
    std::vector<HWND> handled;
    for (const Step& step : m_steps) {
        Search search{::GetCurrentProcessId(), &step.title, &handled, step.sameWindow, nullptr};
        const auto deadline =
            std::chrono::steady_clock::now() + (step.timeout.count() > 0 ? step.timeout : m_timeout);
        while (!m_stop && std::chrono::steady_clock::now() < deadline) {
            search.found = nullptr;
            ::EnumWindows(&FindStepWindow, reinterpret_cast<LPARAM>(&search));
            if (search.found)
                break;
            ::Sleep(20);
        }
        if (!search.found) {
            m_failure = L"no window \"" + step.title + L"\" for step " + std::to_wstring(m_done.load() + 1);
            return;
        }
        // Message boxes keep their text in the static 0xFFFF.
        const std::wstring boxText = DialogItemText(search.found, 0xFFFF);
        m_texts.push_back(boxText.empty() ? WindowText(search.found) : boxText);
        handled.push_back(search.found);
        step.action(search.found);
        ++m_done;
    }
}

void SetItemText(HWND dialog, int id, const std::wstring& text)
{
    ::SendMessageW(::GetDlgItem(dialog, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

bool SelectComboData(HWND dialog, int id, LPARAM data)
{
    const HWND combo = ::GetDlgItem(dialog, id);
    const int count = static_cast<int>(::SendMessageW(combo, CB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        if (static_cast<LPARAM>(::SendMessageW(combo, CB_GETITEMDATA, i, 0)) == data) {
            ::SendMessageW(combo, CB_SETCURSEL, i, 0);
            return true;
        }
    }
    return false;
}

void SetCheck(HWND dialog, int id, bool checked)
{
    ::SendMessageW(::GetDlgItem(dialog, id), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool IsChecked(HWND dialog, int id)
{
    return ::SendMessageW(::GetDlgItem(dialog, id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void ChooseFile(HWND fileDialog, const std::wstring& path)
{
    // The explorer-style dialog names its file name box cmb13 (0x047C), the
    // older one edt1 (0x0480).
    HWND name = ::GetDlgItem(fileDialog, 0x047C);
    if (!name)
        name = ::GetDlgItem(fileDialog, 0x0480);
    ::SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    ClickButton(fileDialog, IDOK);
}

} // namespace test
