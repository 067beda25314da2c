#include "SetupRun.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <vector>

#include "TestSupport.h"
#include "common/ComPtr.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "version.h"

namespace setup_test {

namespace {

std::wstring FullPath(const std::wstring& path)
{
    wchar_t full[MAX_PATH] = {};
    ::GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    return full;
}

std::wstring OlderSetupFolder()
{
    return test::ProgramFolder() + L"older-setup\\";
}

struct RegKeyTraits {
    using Type = HKEY;
    static HKEY Invalid() { return nullptr; }
    static void Close(HKEY key) { ::RegCloseKey(key); }
};

using UniqueRegKey = CL::UniqueHandle<RegKeyTraits>;

// HKLM keys are opened in the 64-bit view, where the 64-bit setup writes.
UniqueRegKey OpenKey(const wchar_t* key, REGSAM access)
{
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, access | KEY_WOW64_64KEY, &opened) != ERROR_SUCCESS)
        return UniqueRegKey();
    return UniqueRegKey(opened);
}

void AddFolder(const std::wstring& root, const std::wstring& relative, FolderContents& contents)
{
    WIN32_FIND_DATAW data;
    HANDLE find = ::FindFirstFileW((root + relative + L"*").c_str(), &data);
    if (find == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::wstring name = data.cFileName;
        if (name == L"." || name == L"..")
            continue;
        if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            AddFolder(root, relative + name + L"\\", contents);
        else
            contents[relative + name] = test::ReadFileBytes(root + relative + name);
    } while (::FindNextFileW(find, &data));
    ::FindClose(find);
}

struct OwnedBoxSearch {
    HWND owner;
    HWND found;
};

BOOL CALLBACK FindOwnedBox(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<OwnedBoxSearch*>(param);
    wchar_t cls[64] = {};
    ::GetClassNameW(hwnd, cls, 64);
    if (std::wstring(cls) != L"#32770" || !::IsWindowVisible(hwnd) || ::GetWindow(hwnd, GW_OWNER) != search->owner)
        return TRUE;
    search->found = hwnd;
    return FALSE;
}

struct SetupWindowSearch {
    DWORD processId;
    HWND found;
};

// The setup's main window: a dialog of the process, shown, with a page in it
// and its Next button ready. The process may own other, hidden dialogs.
BOOL CALLBACK FindSetupWindow(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<SetupWindowSearch*>(param);
    wchar_t cls[64] = {};
    ::GetClassNameW(hwnd, cls, 64);
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    if (pid != search->processId || std::wstring(cls) != L"#32770" || !::IsWindowVisible(hwnd) ||
        !::FindWindowExW(hwnd, nullptr, L"#32770", nullptr) || !::IsWindowEnabled(::GetDlgItem(hwnd, IDOK)))
        return TRUE;
    search->found = hwnd;
    return FALSE;
}

struct PanelSearch {
    std::wstring exePath;
    RunningPanel found;
};

std::wstring ImageOf(DWORD processId)
{
    CL::UniqueKernelHandle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    if (!process)
        return L"";
    wchar_t image[MAX_PATH] = {};
    DWORD size = MAX_PATH;
    if (!::QueryFullProcessImageNameW(process.get(), 0, image, &size))
        return L"";
    return image;
}

BOOL CALLBACK FindPanel(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<PanelSearch*>(param);
    wchar_t cls[64] = {};
    ::GetClassNameW(hwnd, cls, 64);
    if (std::wstring(cls) != L"MorvaneGuiTrayWindow")
        return TRUE;
    DWORD pid = 0;
    ::GetWindowThreadProcessId(hwnd, &pid);
    if (_wcsicmp(ImageOf(pid).c_str(), search->exePath.c_str()) != 0)
        return TRUE;
    search->found = RunningPanel{hwnd, pid};
    return FALSE;
}

} // namespace

test::SimulatedServer::Options ServerOptions(bool registerService)
{
    test::SimulatedServer::Options options;
    options.servicePrefix = L"MvSetup";
    options.registerService = registerService;
    return options;
}

std::wstring WithoutTrailingBackslash(std::wstring folder)
{
    if (!folder.empty() && folder.back() == L'\\')
        folder.pop_back();
    return folder;
}

std::wstring CurrentSetupPath()
{
    return FullPath(test::ProgramFolder() + L"..\\dist\\MorvaneGui-" MORVANE_VERSION_WTEXT L"-x64-setup.exe");
}

std::wstring OlderSetupPath()
{
    return OlderSetupFolder() + L"MorvaneGui-" + kOlderVersion + L"-x64-setup.exe";
}

std::wstring OlderPanelPath()
{
    return OlderSetupFolder() + L"MorvaneGui.exe";
}

DWORD RunSilently(const std::wstring& exe, const std::wstring& arguments, std::chrono::milliseconds timeout)
{
    test::Process process(exe, arguments);
    return process.Wait(timeout);
}

std::optional<std::wstring> MachineString(const wchar_t* key, const wchar_t* value)
{
    UniqueRegKey opened = OpenKey(key, KEY_QUERY_VALUE);
    if (!opened)
        return std::nullopt;
    DWORD type = 0, size = 0;
    if (::RegQueryValueExW(opened.get(), value, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
        return std::nullopt;
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1, L'\0');
    if (::RegQueryValueExW(opened.get(), value, nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    return std::wstring(text.data());
}

std::optional<DWORD> MachineDword(const wchar_t* key, const wchar_t* value)
{
    UniqueRegKey opened = OpenKey(key, KEY_QUERY_VALUE);
    if (!opened)
        return std::nullopt;
    DWORD type = 0, data = 0, size = sizeof data;
    if (::RegQueryValueExW(opened.get(), value, nullptr, &type, reinterpret_cast<BYTE*>(&data), &size) !=
            ERROR_SUCCESS ||
        type != REG_DWORD)
        return std::nullopt;
    return data;
}

bool MachineKeyExists(const wchar_t* key)
{
    return static_cast<bool>(OpenKey(key, KEY_QUERY_VALUE));
}

void RemoveSetupTraces()
{
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kUninstallKey, KEY_WOW64_64KEY, 0);
    if (UniqueRegKey run = OpenKey(kRunKey, KEY_SET_VALUE))
        ::RegDeleteValueW(run.get(), kRunValue);
    ::DeleteFileW(ShortcutPath().c_str());
}

std::wstring ShortcutPath()
{
    wchar_t programs[MAX_PATH] = {};
    ::SHGetFolderPathW(nullptr, CSIDL_COMMON_PROGRAMS, nullptr, SHGFP_TYPE_CURRENT, programs);
    return std::wstring(programs) + L"\\" + kShortcutName;
}

std::wstring ShortcutTarget(const std::wstring& link)
{
    const HRESULT com = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::wstring target;
    {
        CL::ComPtr<IShellLinkW> shellLink;
        CL::ComPtr<IPersistFile> file;
        wchar_t path[MAX_PATH] = {};
        if (SUCCEEDED(::CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                         reinterpret_cast<void**>(shellLink.ReleaseAndGetAddressOf()))) &&
            SUCCEEDED(shellLink.QueryInterface(IID_IPersistFile, file)) &&
            SUCCEEDED(file->Load(link.c_str(), STGM_READ)) &&
            SUCCEEDED(shellLink->GetPath(path, MAX_PATH, nullptr, SLGP_RAWPATH)))
            target = path;
    }
    if (SUCCEEDED(com))
        ::CoUninitialize();
    return target;
}

FolderContents ReadFolder(const std::wstring& folder)
{
    FolderContents contents;
    AddFolder(folder, L"", contents);
    return contents;
}

RunningPanel FindRunningPanel(const std::wstring& exePath)
{
    PanelSearch search{exePath, {}};
    ::EnumWindows(&FindPanel, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

RunningPanel WaitForRunningPanel(const std::wstring& exePath, std::chrono::milliseconds timeout)
{
    RunningPanel panel;
    test::WaitUntil([&] { return (panel = FindRunningPanel(exePath)).tray != nullptr; }, timeout);
    return panel;
}

DWORD CloseRunningPanel(const RunningPanel& panel)
{
    CL::UniqueKernelHandle process(::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE,
                                                 panel.processId));
    if (!process)
        return STILL_ACTIVE;
    ::PostMessageW(panel.tray, WM_CLOSE, 0, 0);
    if (::WaitForSingleObject(process.get(), 20000) != WAIT_OBJECT_0)
        return STILL_ACTIVE;
    DWORD code = STILL_ACTIVE;
    ::GetExitCodeProcess(process.get(), &code);
    return code;
}

HWND WaitForSetupWindow(DWORD processId, std::chrono::milliseconds timeout)
{
    SetupWindowSearch search{processId, nullptr};
    test::WaitUntil([&] {
        ::EnumWindows(&FindSetupWindow, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    }, timeout);
    return search.found;
}

HWND WaitForPageControl(HWND setupWindow, int id, std::chrono::milliseconds timeout)
{
    HWND control = nullptr;
    test::WaitUntil([&] {
        const HWND page = ::FindWindowExW(setupWindow, nullptr, L"#32770", nullptr);
        control = page ? ::GetDlgItem(page, id) : nullptr;
        return control != nullptr && ::IsWindowVisible(control);
    }, timeout);
    return control;
}

std::wstring ControlText(HWND control)
{
    std::vector<wchar_t> text(4096, L'\0');
    ::SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

HWND WaitForSetupMessageBox(HWND setupWindow, std::chrono::milliseconds timeout)
{
    OwnedBoxSearch search{setupWindow, nullptr};
    test::WaitUntil([&] {
        ::EnumWindows(&FindOwnedBox, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    }, timeout);
    return search.found;
}

} // namespace setup_test
