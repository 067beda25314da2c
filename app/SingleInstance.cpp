#include "app/SingleInstance.h"

#include <windows.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <cwchar>

#include "common/Exception.h"
#include "common/Handle.h"

namespace CL {

namespace {

bool SameImage(DWORD processId, const wchar_t* ownImage)
{
    UniqueKernelHandle process(::OpenProcess(PROCESS_ALL_ACCESS, FALSE, processId));
    if (!process)
        return false;   // other users' processes when not elevated: skipped
    wchar_t image[260] = {};
    return ::GetProcessImageFileNameW(process.get(), image, 260) != 0 && _wcsicmp(image, ownImage) == 0;
}

} // namespace

bool IsAnotherInstanceRunning()
{
    wchar_t thisProcess[260] = {};
    if (!(0 < ::GetProcessImageFileNameW(::GetCurrentProcess(), thisProcess, 260)))
        ThrowLastError(L"0 < GetProcessImageFileNameW(GetCurrentProcess(), thisProcess, 260)");

    const DWORD ownId = ::GetCurrentProcessId();
    UniqueFileHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot)
        ThrowLastError(L"snapshot.get()");

    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    if (!::Process32FirstW(snapshot.get(), &entry))
        return false;
    // The first entry (the system's idle process) is never compared.
    while (::Process32NextW(snapshot.get(), &entry)) {
        if (entry.th32ProcessID != ownId && SameImage(entry.th32ProcessID, thisProcess))
            return true;
    }
    return false;
}

} // namespace CL
