#include "app/MenuFlags.h"

#include <windows.h>
#include <shellapi.h>

#include "common/Handle.h"
#include "common/Text.h"

namespace CL {

void ApplyMenuSwitches(int argc, const wchar_t* const* argv, MenuFlags& flags)
{
    for (int i = 1; i < argc; ++i) {
        const std::wstring_view arg = argv[i];
        if (EqualsNoCase(arg, L"noas"))
            flags.ShowAddressSpace = false;
        else if (EqualsNoCase(arg, L"nohda"))
            flags.ShowHdaExplorer = false;
        else if (EqualsNoCase(arg, L"noopt"))
            flags.ShowOptions = false;
        else if (EqualsNoCase(arg, L"noabout"))
            flags.ShowAbout = false;
    }
}

void ApplyCommandLineSwitches(const wchar_t* commandLine, MenuFlags& flags)
{
    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(commandLine, &argc);
    if (!argv)
        return;
    UniqueLocalMemory owner(reinterpret_cast<HLOCAL>(argv));
    ApplyMenuSwitches(argc, argv, flags);
}

void ApplyServerPresence(bool serverExists, MenuFlags& flags)
{
    if (serverExists)
        return;
    flags.ShowAddressSpace = false;
    flags.ShowOptions = false;
    flags.ShowAbout = false;
    flags.ServerPresent = false;
}

bool ServerExecutableExists(const std::wstring& serverPath)
{
    return ::GetFileAttributesW(serverPath.c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace CL
