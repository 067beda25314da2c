#include "SimReport.h"

#include <vector>

#include "SimFiles.h"
#include "common/Handle.h"

namespace sim {

CSimReport::CSimReport(std::wstring folder) : m_folder(std::move(folder))
{
    ::InitializeCriticalSection(&m_lock);
}

CSimReport::~CSimReport()
{
    ::DeleteCriticalSection(&m_lock);
}

void CSimReport::Event(const std::string& line)
{
    const std::string text = line + "\r\n";
    ::EnterCriticalSection(&m_lock);
    CL::UniqueFileHandle file(::CreateFileW((m_folder + kEventLogFile).c_str(), FILE_APPEND_DATA,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                            nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) {
        DWORD written = 0;
        ::WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }
    ::LeaveCriticalSection(&m_lock);
}

std::wstring ExecutableFolder()
{
    std::vector<wchar_t> path(32768, L'\0');
    const DWORD n = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    std::wstring folder(path.data(), n);
    const size_t slash = folder.find_last_of(L"\\/");
    folder.erase(slash == std::wstring::npos ? 0 : slash + 1);
    return folder;
}

} // namespace sim
