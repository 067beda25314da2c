#include "common/ProcessRun.h"

#include <vector>

#include "common/Exception.h"
#include "common/Handle.h"

namespace CL {

DWORD RunProcessAndWait(const std::wstring& commandLine)
{
    // CreateProcessW may write into the command line.
    std::vector<wchar_t> line(commandLine.begin(), commandLine.end());
    line.push_back(L'\0');
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION pi = {};
    if (!::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &pi))
        ThrowLastError(L"CreateProcess (NULL, szCommandLine, NULL, NULL, FALSE, 0, NULL, NULL, &si, &pi)");
    const UniqueKernelHandle process(pi.hProcess);
    const UniqueKernelHandle thread(pi.hThread);
    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD dwResult = 0;
    if (!::GetExitCodeProcess(process.get(), &dwResult))
        ThrowLastError(L"GetExitCodeProcess (pi.hProcess, &dwResult)");
    return dwResult;
}

} // namespace CL
