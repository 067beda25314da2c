#include "config/ClsidText.h"

#include <objbase.h>

#include "common/Exception.h"
#include "common/Handle.h"
#include "common/Text.h"

namespace CL {

std::wstring ClsidText(const GUID& clsid)
{
    wchar_t text[40] = {};
    ::StringFromGUID2(clsid, text, 40);
    return text;
}

bool ParseClsid(const std::wstring& text, GUID& clsid)
{
    const std::wstring trimmed = TrimWhiteSpace(text);
    // CLSIDFromString also resolves program identifiers; only the braced
    // form is a class identifier typed by the user.
    if (trimmed.size() != 38 || trimmed.front() != L'{' || trimmed.back() != L'}')
        return false;
    GUID parsed = GUID_NULL;
    if (FAILED(::CLSIDFromString(trimmed.c_str(), &parsed)))
        return false;
    clsid = parsed;
    return true;
}

std::wstring NewClsidText()
{
    GUID guid = GUID_NULL;
    HRESULT hr = ::CoCreateGuid(&guid);
    wchar_t* text = nullptr;
    if (SUCCEEDED(hr))
        hr = ::StringFromCLSID(guid, &text);
    const UniqueCoTaskMemory owner(text);
    if (FAILED(hr))
        return TrimWhiteSpace(SystemMessage(hr));
    return text;
}

bool IsClsidRegistered(const GUID& clsid)
{
    const std::wstring key = Format(L"CLSID\\%ls", ClsidText(clsid).c_str());
    HKEY opened = nullptr;
    const LSTATUS status = ::RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened);
    const UniqueRegistryKey owner(status == ERROR_SUCCESS ? opened : nullptr);
    return status == ERROR_SUCCESS;
}

} // namespace CL
