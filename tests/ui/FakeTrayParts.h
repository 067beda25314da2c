#pragma once
// Stand-ins for the windows that the tray menu opens (the address space
// editor, the database explorer, the options dialog): each counts what the
// tray window asked of it, and the editor and explorer have real top-level
// windows so that minimising, restoring and destroying are the system's.
#include <windows.h>

#include <string>
#include <vector>

#include "common/Exception.h"

#include "app/AddressSpaceEditorPart.h"
#include "app/DatabaseExplorerPart.h"
#include "app/OptionsDialogPart.h"

namespace test {

inline HWND CreatePlainWindow(const wchar_t* title)
{
    return ::CreateWindowExW(0, L"STATIC", title, WS_OVERLAPPEDWINDOW, 100, 100, 300, 200, nullptr, nullptr,
                             nullptr, nullptr);
}

// The stand-in's window while it exists.
inline HWND LiveWindow(HWND window)
{
    return ::IsWindow(window) ? window : nullptr;
}

// A stand-in's window goes with the stand-in, as a real window goes with its owner.
inline void DestroyLiveWindow(HWND window)
{
    if (::IsWindow(window))
        ::DestroyWindow(window);
}

struct EditorCounters {
    int prepared = 0;
    int created = 0;
    int reloaded = 0;
    bool reloadFails = false;
    HWND window = nullptr;
    std::vector<std::wstring> restored;   // RestoreVersion's files
    std::vector<std::wstring> compared;   // the compares asked for
};

class FakeEditor : public CL::IAddressSpaceEditor {
public:
    explicit FakeEditor(EditorCounters& counters, bool acceptOpen = true, bool createFails = false)
        : m_counters(counters), m_acceptOpen(acceptOpen), m_createFails(createFails) {}
    ~FakeEditor() override { DestroyLiveWindow(m_counters.window); }
    HWND Window() const override { return LiveWindow(m_counters.window); }
    bool PrepareOpen() override
    {
        ++m_counters.prepared;
        return m_acceptOpen;
    }
    bool Create() override
    {
        ++m_counters.created;
        if (m_createFails) {
            ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return false;
        }
        m_counters.window = CreatePlainWindow(L"OPC Address Space (test editor)");
        return m_counters.window != nullptr;
    }
    void ReloadFromFile() override
    {
        ++m_counters.reloaded;
        if (m_counters.reloadFails)
            throw CL::CException(E_FAIL, L"Error loading OPC Address Space file.");
    }
    void RestoreVersion(const std::wstring& file) override { m_counters.restored.push_back(file); }
    void CompareWithVersion(const std::wstring& file) override { m_counters.compared.push_back(L"editor " + file); }
    void CompareVersionWithServer(HWND, const std::wstring& file) override
    {
        m_counters.compared.push_back(L"server " + file);
    }
    void CompareVersions(HWND, const std::wstring& older, const std::wstring& newer) override
    {
        m_counters.compared.push_back(L"versions " + older + L" " + newer);
    }

private:
    EditorCounters& m_counters;
    bool m_acceptOpen;
    bool m_createFails;
};

struct ExplorerCounters {
    int asked = 0;
    int created = 0;
    HWND window = nullptr;
};

class FakeExplorer : public CL::IDatabaseExplorer {
public:
    FakeExplorer(ExplorerCounters& counters, bool accessible) : m_counters(counters), m_accessible(accessible) {}
    ~FakeExplorer() override { DestroyLiveWindow(m_counters.window); }
    HWND Window() const override { return LiveWindow(m_counters.window); }
    bool IsDatabaseAccessible() override
    {
        ++m_counters.asked;
        return m_accessible;
    }
    void Create() override
    {
        ++m_counters.created;
        m_counters.window = CreatePlainWindow(L"OPC HDA Database Explorer (test)");
    }

private:
    ExplorerCounters& m_counters;
    bool m_accessible;
};

struct OptionsCounters {
    int runs = 0;
    std::vector<std::wstring> backups;   // RunFrom's backups
};

class FakeOptions : public CL::IOptionsDialog {
public:
    FakeOptions(OptionsCounters& counters, bool ok) : m_counters(counters), m_ok(ok) {}
    bool Run(HWND) override
    {
        ++m_counters.runs;
        return m_ok;
    }
    bool RunFrom(HWND, const std::wstring& backup) override
    {
        m_counters.backups.push_back(backup);
        return m_ok;
    }

private:
    OptionsCounters& m_counters;
    bool m_ok;
};

} // namespace test
