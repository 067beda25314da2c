#include "OptionsTestSupport.h"

#include "config/Settings.h"

namespace test {

bool FakeServerControl::IsServiceRunning(const std::wstring& name)
{
    Record(L"running? " + name);
    return running;
}

bool FakeServerControl::StopServiceAndWait(const std::wstring& name, DWORD /*timeoutMs*/)
{
    Record(L"stop " + name);
    if (stopsInTime)
        running = false;
    return stopsInTime;
}

bool FakeServerControl::StartServiceAndWait(const std::wstring& name, DWORD /*timeoutMs*/)
{
    Record(L"start " + name);
    running = startsInTime;
    return startsInTime;
}

DWORD FakeServerControl::RunAndWait(const std::wstring& commandLine)
{
    Record(L"run " + commandLine);
    FolderLook look;
    look.backups = BackupFiles(m_folder).size();
    if (FileExists(m_folder + CL::kSettingsFileName)) {
        CSettings onDisk;
        LoadSettingsFrom(m_folder + CL::kSettingsFileName, onDisk);
        look.settingsServiceName = onDisk.ServiceName;
    }
    looks.push_back(look);
    return runner ? runner(commandLine) : 0;
}

void FakeServerControl::Record(const std::wstring& call)
{
    calls.push_back(call);
    if (onCall)
        onCall(call);
}

std::vector<std::wstring> BackupFiles(const std::wstring& folder)
{
    std::vector<std::wstring> files;
    WIN32_FIND_DATAW data;
    HANDLE find = ::FindFirstFileW((folder + CL::kSettingsFileName + L".*").c_str(), &data);
    if (find == INVALID_HANDLE_VALUE)
        return files;
    const std::wstring prefix = std::wstring(CL::kSettingsFileName) + L".";
    do {
        const std::wstring name = data.cFileName;
        if (name.size() > prefix.size() && name.compare(0, prefix.size(), prefix) == 0 &&
            name.find(L".saving") == std::wstring::npos)
            files.push_back(folder + name);
    } while (::FindNextFileW(find, &data));
    ::FindClose(find);
    return files;
}

std::wstring ItemText(HWND dialog, int id)
{
    return DialogItemText(dialog, id);
}

void Click(HWND dialog, int id)
{
    ::SendMessageW(::GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

bool IsEnabled(HWND dialog, int id)
{
    return ::IsWindowEnabled(::GetDlgItem(dialog, id)) != FALSE;
}

} // namespace test
