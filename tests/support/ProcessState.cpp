#include "ProcessState.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "common/Text.h"
#include "config/ClsidText.h"
#include "version.h"

namespace test {

namespace {

// Another program of the session may hold the clipboard for a moment.
bool OpenClipboardSoon()
{
    for (int attempt = 0; attempt < 50; ++attempt) {
        if (::OpenClipboard(nullptr))
            return true;
        ::Sleep(10);
    }
    return false;
}

bool IsMemoryFormat(UINT format)
{
    switch (format) {
    case CF_BITMAP:
    case CF_PALETTE:
    case CF_METAFILEPICT:
    case CF_ENHMETAFILE:
    case CF_OWNERDISPLAY:
    case CF_DSPBITMAP:
    case CF_DSPMETAFILEPICT:
    case CF_DSPENHMETAFILE:
        return false;
    default:
        return !(format >= CF_GDIOBJFIRST && format <= CF_GDIOBJLAST);
    }
}

// Formats the system makes from another one that is on the clipboard.
bool IsSynthesized(UINT format, const std::vector<ClipboardFormat>& all)
{
    const auto has = [&](UINT f) {
        for (const ClipboardFormat& c : all) {
            if (c.format == f)
                return true;
        }
        return false;
    };
    switch (format) {
    case CF_TEXT:
    case CF_OEMTEXT:
    case CF_LOCALE:
        return has(CF_UNICODETEXT);
    case CF_DIBV5:
    case CF_BITMAP:
        return has(CF_DIB);
    default:
        return false;
    }
}

std::string Quote(const std::wstring& text)
{
    return "\"" + CL::Narrow(text) + "\"";
}

std::string Text(bool value) { return value ? "true" : "false"; }
std::string Text(long value) { return std::to_string(value); }
std::string Text(const std::wstring& value) { return Quote(value); }
std::string Text(const GUID& value) { return CL::Narrow(CL::ClsidText(value)); }

bool Same(const GUID& a, const GUID& b) { return ::IsEqualGUID(a, b) != FALSE; }
template <typename T>
bool Same(const T& a, const T& b)
{
    return a == b;
}

// Walks a key's values and subkeys; each value as one line.
void DumpKey(HKEY root, const std::wstring& rootName, const std::wstring& path, std::vector<std::wstring>& lines)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return;
    for (DWORD i = 0;; ++i) {
        wchar_t name[16384];
        DWORD nameLength = static_cast<DWORD>(std::size(name));
        DWORD type = 0;
        BYTE data[8192];
        DWORD dataSize = sizeof data;
        const LSTATUS status = ::RegEnumValueW(key, i, name, &nameLength, nullptr, &type, data, &dataSize);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        std::wstring line = rootName + L"\\" + path + L"\\" + name + CL::Format(L" = %lu:", type);
        if (status == ERROR_SUCCESS) {
            for (DWORD b = 0; b < dataSize; ++b)
                line += CL::Format(L"%02x", data[b]);
        } else {
            line += L"(too long to compare)";
        }
        lines.push_back(line);
    }
    std::vector<std::wstring> subkeys;
    for (DWORD i = 0;; ++i) {
        wchar_t name[256];
        DWORD nameLength = static_cast<DWORD>(std::size(name));
        if (::RegEnumKeyExW(key, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        subkeys.emplace_back(name);
    }
    ::RegCloseKey(key);
    for (const std::wstring& subkey : subkeys)
        DumpKey(root, rootName, path + L"\\" + subkey, lines);
}

void CountSubkeys(HKEY root, const std::wstring& name, const wchar_t* path, std::vector<std::wstring>& lines)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return;
    DWORD subkeys = 0;
    ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr, nullptr,
                       nullptr, nullptr);
    ::RegCloseKey(key);
    lines.push_back(CL::Format(L"%ls\\%ls: %lu subkeys", name.c_str(), path, subkeys));
}

} // namespace

ClipboardContent ClipboardContent::Read()
{
    ClipboardContent content;
    if (!OpenClipboardSoon())
        return content;
    content.opened = true;
    for (UINT format = ::EnumClipboardFormats(0); format != 0; format = ::EnumClipboardFormats(format)) {
        ClipboardFormat entry;
        entry.format = format;
        entry.memory = IsMemoryFormat(format);
        if (entry.memory) {
            if (const HANDLE data = ::GetClipboardData(format)) {
                const SIZE_T size = ::GlobalSize(data);
                if (const void* bytes = ::GlobalLock(data)) {
                    entry.bytes.assign(static_cast<const char*>(bytes), size);
                    ::GlobalUnlock(data);
                }
            }
        }
        content.formats.push_back(std::move(entry));
    }
    ::CloseClipboard();
    return content;
}

void ClipboardContent::Write() const
{
    if (!OpenClipboardSoon())
        return;
    ::EmptyClipboard();
    for (const ClipboardFormat& entry : formats) {
        if (!entry.memory || IsSynthesized(entry.format, formats))
            continue;
        const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, entry.bytes.empty() ? 1 : entry.bytes.size());
        if (!memory)
            continue;
        if (void* bytes = ::GlobalLock(memory)) {
            std::memcpy(bytes, entry.bytes.data(), entry.bytes.size());
            ::GlobalUnlock(memory);
        }
        if (!::SetClipboardData(entry.format, memory))
            ::GlobalFree(memory);   // still ours when the clipboard refused it
    }
    ::CloseClipboard();
}

ClipboardKeeper::~ClipboardKeeper()
{
    if (m_before.opened && !(ClipboardContent::Read() == m_before))
        m_before.Write();
}

namespace {

std::wstring CurrentDirectory()
{
    wchar_t folder[MAX_PATH * 2] = {};
    ::GetCurrentDirectoryW(static_cast<DWORD>(std::size(folder)), folder);
    return folder;
}

} // namespace

CurrentDirectoryKeeper::CurrentDirectoryKeeper() : m_before(CurrentDirectory()) {}

CurrentDirectoryKeeper::~CurrentDirectoryKeeper()
{
    ::SetCurrentDirectoryW(m_before.c_str());
}

std::vector<std::wstring> WatchedRegistry()
{
    std::vector<std::wstring> lines;
    DumpKey(HKEY_CURRENT_USER, L"HKCU", L"Software\\" + CL::Widen(MORVANE_PRODUCT_NAME), lines);
    CountSubkeys(HKEY_CLASSES_ROOT, L"HKCR", L"CLSID", lines);
    CountSubkeys(HKEY_LOCAL_MACHINE, L"HKLM", L"System\\CurrentControlSet\\Services", lines);
    return lines;
}

std::vector<std::string> SettingsDifferences(const CSettings& before, const CSettings& after)
{
    std::vector<std::string> out;
#define MV_COMPARE_KEY(name)                                                                                 \
    if (!Same(before.name, after.name))                                                                      \
        out.push_back("g_Settings." #name " is " + Text(after.name) + ", was " + Text(before.name));
    MV_COMPARE_KEY(Title)
    MV_COMPARE_KEY(CustomADOConnection)
    MV_COMPARE_KEY(ADOConnection)
    MV_COMPARE_KEY(StartCCM)
    MV_COMPARE_KEY(CCM)
    MV_COMPARE_KEY(StartEmpty)
    MV_COMPARE_KEY(HDAServer_CLSID)
    MV_COMPARE_KEY(DAServer_CLSID)
    MV_COMPARE_KEY(AEServer_CLSID)
    MV_COMPARE_KEY(ServiceName)
    MV_COMPARE_KEY(MapItemsToFiles)
    MV_COMPARE_KEY(EnableXmlDa)
    MV_COMPARE_KEY(XmlDaPort)
    MV_COMPARE_KEY(CcmServer_CLSID)
    MV_COMPARE_KEY(EnableUa)
    MV_COMPARE_KEY(UaPort)
    MV_COMPARE_KEY(TraceLevel)
    MV_COMPARE_KEY(DbKeepAllValues)
    MV_COMPARE_KEY(DbKeepLastValues)
    MV_COMPARE_KEY(DbLastValues)
    MV_COMPARE_KEY(DbKeepLastMinutesValues)
    MV_COMPARE_KEY(DbLastMinutesValues)
    MV_COMPARE_KEY(DbDeletePercent)
#undef MV_COMPARE_KEY
    return out;
}

ProcessState ProcessState::Take(bool shared)
{
    ProcessState state;
    state.settings = g_Settings;
    state.currentDirectory = CurrentDirectory();
    state.shared = shared;
    if (shared) {
        state.clipboard = ClipboardContent::Read();
        state.registry = WatchedRegistry();
    }
    return state;
}

std::vector<std::string> ProcessState::Differences(const ProcessState& after) const
{
    std::vector<std::string> out = SettingsDifferences(settings, after.settings);
    if (currentDirectory != after.currentDirectory)
        out.push_back("the current directory is " + Quote(after.currentDirectory) + ", was " + Quote(currentDirectory));
    if (!shared || !after.shared)
        return out;
    if (clipboard.opened && after.clipboard.opened && !(clipboard == after.clipboard))
        out.push_back("the clipboard holds " + std::to_string(after.clipboard.formats.size()) + " formats, was " +
                      std::to_string(clipboard.formats.size()) + " (or other data)");
    for (const std::wstring& line : after.registry) {
        if (std::find(registry.begin(), registry.end(), line) == registry.end())
            out.push_back("registry now: " + CL::Narrow(line));
    }
    for (const std::wstring& line : registry) {
        if (std::find(after.registry.begin(), after.registry.end(), line) == after.registry.end())
            out.push_back("registry before: " + CL::Narrow(line));
    }
    return out;
}

void ProcessState::Restore() const
{
    g_Settings = settings;
    ::SetCurrentDirectoryW(currentDirectory.c_str());
    if (shared && clipboard.opened)
        clipboard.Write();
}

} // namespace test
