// mvwin: finds windows of the running programs and drives them with window
// messages; prints what it finds on standard output. Used by
// scripts/screenshots.sh and its scripts under scripts/screenshots.d/.
//
//   mvwin wait <class|-> [title|-] [seconds] waits for a visible top-level window; prints its handle
//   mvwin find <class|-> [title|-] [seconds] the same, hidden windows included
//   mvwin child <hwnd> <class> [n]           the n-th (0-based) descendant of that class
//   mvwin rect <hwnd>                        "x y width height" on the screen
//   mvwin command <hwnd> <id>                posts WM_COMMAND id
//   mvwin post <hwnd> <msg> [wparam] [lparam] posts a message (numbers, 0x... allowed)
//   mvwin click <hwnd> <x> <y>               posts a left click at client coordinates
//   mvwin treeselect <tree> <i/j/...>        selects the node reached by child indices from the root
//   mvwin listselect <list> <row>            selects and focuses one row of a list view
//   mvwin headerclick <list> <column>        clicks a list view's column header
//   mvwin treepoint <tree> <i/j/...> <hwnd>  the middle of a node's text in hwnd's client
//                                            coordinates, as a mouse message's lParam
//   mvwin listpoint <list> <row>             a point inside a row's text, as an lParam
//   mvwin size <hwnd> <width> <height>       resizes a window
//   mvwin close <hwnd>                       posts WM_CLOSE
//   mvwin settext <dialog> <id> <text>       sets the text of a dialog's control (a file dialog's
//                                            file name: id 0x47C)
//   mvwin trayicon <hwnd> <id>               exit code 0 when the shell holds that window's
//                                            notification icon (a NIM_MODIFY that changes nothing)
// Handles are printed and read as hexadecimal numbers.
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

namespace {

HWND ParseHandle(const wchar_t* text)
{
    return reinterpret_cast<HWND>(static_cast<UINT_PTR>(wcstoull(text, nullptr, 16)));
}

long long Number(const wchar_t* text)
{
    return wcstoll(text, nullptr, 0);
}

struct Search {
    const wchar_t* cls;
    const wchar_t* title;
    bool visibleOnly;
    HWND found;
};

BOOL CALLBACK FindTop(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<Search*>(param);
    if (search->visibleOnly && !::IsWindowVisible(hwnd))
        return TRUE;
    wchar_t cls[256] = {}, title[512] = {};
    ::GetClassNameW(hwnd, cls, 256);
    ::GetWindowTextW(hwnd, title, 512);
    if (wcscmp(search->cls, L"-") != 0 && wcscmp(cls, search->cls) != 0)
        return TRUE;
    if (search->title && wcscmp(title, search->title) != 0)
        return TRUE;
    search->found = hwnd;
    return FALSE;
}

int Wait(int argc, wchar_t** argv, bool visibleOnly)
{
    // "-" for the class or the title: any.
    const wchar_t* title = argc > 3 && wcscmp(argv[3], L"-") != 0 ? argv[3] : nullptr;
    Search search{argv[2], title, visibleOnly, nullptr};
    const double seconds = argc > 4 ? _wtof(argv[4]) : 20.0;
    const DWORD deadline = ::GetTickCount() + static_cast<DWORD>(seconds * 1000);
    for (;;) {
        search.found = nullptr;
        ::EnumWindows(&FindTop, reinterpret_cast<LPARAM>(&search));
        if (search.found) {
            std::wprintf(L"%llx\n", static_cast<unsigned long long>(reinterpret_cast<UINT_PTR>(search.found)));
            return 0;
        }
        if (static_cast<LONG>(::GetTickCount() - deadline) > 0)
            return 1;
        ::Sleep(100);
    }
}

struct ChildSearch {
    const wchar_t* cls;
    long long skip;
    HWND found;
};

BOOL CALLBACK FindChild(HWND hwnd, LPARAM param)
{
    auto* search = reinterpret_cast<ChildSearch*>(param);
    wchar_t cls[256] = {};
    ::GetClassNameW(hwnd, cls, 256);
    if (_wcsicmp(cls, search->cls) != 0)
        return TRUE;
    if (search->skip-- > 0)
        return TRUE;
    search->found = hwnd;
    return FALSE;
}

int Child(int argc, wchar_t** argv)
{
    ChildSearch search{argv[3], argc > 4 ? Number(argv[4]) : 0, nullptr};
    ::EnumChildWindows(ParseHandle(argv[2]), &FindChild, reinterpret_cast<LPARAM>(&search));
    if (!search.found)
        return 1;
    std::wprintf(L"%llx\n", static_cast<unsigned long long>(reinterpret_cast<UINT_PTR>(search.found)));
    return 0;
}

int Rect(wchar_t** argv)
{
    RECT rect = {};
    if (!::GetWindowRect(ParseHandle(argv[2]), &rect))
        return 1;
    std::wprintf(L"%ld %ld %ld %ld\n", rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
    return 0;
}


// LVM_SETITEMSTATE and HDM_GETITEMRECT take pointers: the structures go
// into the other process's memory.
template <typename T>
class Remote {
public:
    Remote(HWND window, const T& value)
    {
        DWORD pid = 0;
        ::GetWindowThreadProcessId(window, &pid);
        m_process = ::OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, pid);
        m_memory = ::VirtualAllocEx(m_process, nullptr, sizeof(T), MEM_COMMIT, PAGE_READWRITE);
        ::WriteProcessMemory(m_process, m_memory, &value, sizeof(T), nullptr);
    }
    ~Remote()
    {
        ::VirtualFreeEx(m_process, m_memory, 0, MEM_RELEASE);
        ::CloseHandle(m_process);
    }
    LPARAM Address() const { return reinterpret_cast<LPARAM>(m_memory); }
    T Read() const
    {
        T value{};
        ::ReadProcessMemory(m_process, m_memory, &value, sizeof(T), nullptr);
        return value;
    }

private:
    HANDLE m_process = nullptr;
    void* m_memory = nullptr;
};

int ListSelect(wchar_t** argv)
{
    const HWND list = ParseHandle(argv[2]);
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = LVIS_SELECTED | LVIS_FOCUSED;
    Remote<LVITEMW> remote(list, item);
    return ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(Number(argv[3])), remote.Address()) ? 0 : 1;
}

// The node reached from the root by the child indices "i/j/...", expanding
// the nodes on the way.
HTREEITEM FindNode(HWND tree, const wchar_t* path)
{
    auto node = reinterpret_cast<HTREEITEM>(::SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0));
    for (const wchar_t* at = path; node && *at;) {
        long index = wcstol(at, const_cast<wchar_t**>(&at), 10);
        ::SendMessageW(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(node));
        node = reinterpret_cast<HTREEITEM>(::SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CHILD, reinterpret_cast<LPARAM>(node)));
        while (node && index-- > 0)
            node = reinterpret_cast<HTREEITEM>(::SendMessageW(tree, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(node)));
        if (*at == L'/')
            ++at;
    }
    return node;
}

int TreeSelect(wchar_t** argv)
{
    const HWND tree = ParseHandle(argv[2]);
    const HTREEITEM node = FindNode(tree, argv[3]);
    if (!node)
        return 1;
    ::SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(node));
    return 0;
}

void PrintPoint(POINT p)
{
    std::wprintf(L"%ld\n", static_cast<long>(static_cast<DWORD>(MAKELPARAM(p.x, p.y))));
}

int TreePoint(wchar_t** argv)
{
    const HWND tree = ParseHandle(argv[2]);
    const HTREEITEM node = FindNode(tree, argv[3]);
    if (!node)
        return 1;
    ::SendMessageW(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(node));
    RECT asked = {};
    std::memcpy(&asked, &node, sizeof node);   // TVM_GETITEMRECT reads the node from the rectangle
    Remote<RECT> remote(tree, asked);
    if (!::SendMessageW(tree, TVM_GETITEMRECT, TRUE, remote.Address()))
        return 1;
    const RECT rect = remote.Read();
    POINT p = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    ::MapWindowPoints(tree, ParseHandle(argv[4]), &p, 1);
    PrintPoint(p);
    return 0;
}

int ListPoint(wchar_t** argv)
{
    const HWND list = ParseHandle(argv[2]);
    RECT asked = {};
    asked.left = LVIR_LABEL;
    Remote<RECT> remote(list, asked);
    if (!::SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(Number(argv[3])), remote.Address()))
        return 1;
    const RECT rect = remote.Read();
    PrintPoint(POINT{rect.left + 5, (rect.top + rect.bottom) / 2});
    return 0;
}

int HeaderClick(wchar_t** argv)
{
    const HWND list = ParseHandle(argv[2]);
    const HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
    Remote<RECT> remote(header, RECT{});
    if (!::SendMessageW(header, HDM_GETITEMRECT, static_cast<WPARAM>(Number(argv[3])), remote.Address()))
        return 1;
    const RECT rect = remote.Read();
    const LPARAM at = MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    ::PostMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::PostMessageW(header, WM_LBUTTONUP, 0, at);
    return 0;
}

// The shell answers a modification of an icon it does not hold with FALSE.
int TrayIcon(HWND window, UINT id)
{
    NOTIFYICONDATAW data = {};
    data.cbSize = sizeof data;
    data.hWnd = window;
    data.uID = id;
    data.uFlags = 0;
    return ::Shell_NotifyIconW(NIM_MODIFY, &data) ? 0 : 1;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc < 3) {
        std::fwprintf(stderr, L"usage: mvwin <verb> <arguments> (see mvwin.cpp)\n");
        return 2;
    }
    const std::wstring verb = argv[1];
    if (verb == L"wait" || verb == L"find")
        return Wait(argc, argv, verb == L"wait");
    const HWND window = ParseHandle(argv[2]);
    if (verb == L"child" && argc > 3)
        return Child(argc, argv);
    if (verb == L"rect")
        return Rect(argv);
    if (verb == L"command" && argc > 3)
        return ::PostMessageW(window, WM_COMMAND, MAKEWPARAM(Number(argv[3]), 0), 0) ? 0 : 1;
    if (verb == L"post" && argc > 3)
        return ::PostMessageW(window, static_cast<UINT>(Number(argv[3])), argc > 4 ? Number(argv[4]) : 0,
                              argc > 5 ? Number(argv[5]) : 0) ? 0 : 1;
    if (verb == L"click" && argc > 4) {
        const LPARAM at = MAKELPARAM(Number(argv[3]), Number(argv[4]));
        ::PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, at);
        return ::PostMessageW(window, WM_LBUTTONUP, 0, at) ? 0 : 1;
    }
    if (verb == L"treeselect" && argc > 3)
        return TreeSelect(argv);
    if (verb == L"listselect" && argc > 3)
        return ListSelect(argv);
    if (verb == L"headerclick" && argc > 3)
        return HeaderClick(argv);
    if (verb == L"treepoint" && argc > 4)
        return TreePoint(argv);
    if (verb == L"listpoint" && argc > 3)
        return ListPoint(argv);
    if (verb == L"size" && argc > 4)
        return ::SetWindowPos(window, nullptr, 0, 0, static_cast<int>(Number(argv[3])), static_cast<int>(Number(argv[4])),
                              SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE) ? 0 : 1;
    if (verb == L"close")
        return ::PostMessageW(window, WM_CLOSE, 0, 0) ? 0 : 1;
    if (verb == L"settext" && argc > 4)
        return ::SendMessageW(::GetDlgItem(window, static_cast<int>(Number(argv[3]))), WM_SETTEXT, 0,
                              reinterpret_cast<LPARAM>(argv[4])) ? 0 : 1;
    if (verb == L"trayicon" && argc > 3)
        return TrayIcon(window, static_cast<UINT>(Number(argv[3])));
    std::fwprintf(stderr, L"mvwin: unknown verb or missing arguments\n");
    return 2;
}
