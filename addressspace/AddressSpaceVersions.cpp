#include "addressspace/AddressSpaceVersions.h"

#include <algorithm>

#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/FileBytes.h"
#include "common/Text.h"

namespace {

constexpr wchar_t kExtension[] = L".xml";

bool EndsWithNoCase(const std::wstring& text, std::wstring_view end)
{
    return text.size() >= end.size() && CL::EqualsNoCase(std::wstring_view(text).substr(text.size() - end.size()), end);
}

bool Exists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The time part of a version's name sorts as the time does; a second
// version of the same second ("_2") sorts after the first by its number.
struct VersionOrder {
    bool operator()(const std::wstring& a, const std::wstring& b) const
    {
        auto key = [](const std::wstring& name) {
            const size_t dot = name.rfind(L'.');
            std::wstring stem = name.substr(0, dot);
            unsigned number = 1;
            // "..._hh_mm_ss_N": a sixth underscore-separated part numbers it.
            const size_t dash = stem.rfind(L'-');
            if (dash != std::wstring::npos && std::count(stem.begin() + static_cast<long>(dash), stem.end(), L'_') == 3) {
                const size_t last = stem.rfind(L'_');
                number = static_cast<unsigned>(std::wcstoul(stem.c_str() + last + 1, nullptr, 10));
                stem.erase(last);
            }
            return std::make_pair(stem, number);
        };
        return key(a) < key(b);
    }
};

} // namespace

CAddressSpaceVersions::CAddressSpaceVersions(const std::wstring& exchangeFile)
{
    const size_t slash = exchangeFile.find_last_of(L"\\/");
    const std::wstring folder = slash == std::wstring::npos ? std::wstring() : exchangeFile.substr(0, slash + 1);
    std::wstring name = slash == std::wstring::npos ? exchangeFile : exchangeFile.substr(slash + 1);
    if (EndsWithNoCase(name, kExtension))
        name.resize(name.size() - 4);
    m_folder = folder + kFolderName + L"\\";
    m_stem = name;
}

std::wstring CAddressSpaceVersions::VersionName(const SYSTEMTIME& utc)
{
    return CL::Format(L"%04u_%02u_%02u-%02u_%02u_%02u", utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute,
                      utc.wSecond);
}

std::wstring CAddressSpaceVersions::Keep(std::string_view bytes) const
{
    SYSTEMTIME utc;
    ::GetSystemTime(&utc);
    return KeepAt(bytes, utc);
}

std::wstring CAddressSpaceVersions::KeepAt(std::string_view bytes, const SYSTEMTIME& utc) const
{
    if (!::CreateDirectoryW(m_folder.c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS)
        CL::ThrowLastError(L"CreateDirectoryW(AddressSpaceVersions)");
    const std::wstring base = m_folder + m_stem + L"." + VersionName(utc);
    std::wstring path = base + kExtension;
    for (unsigned number = 2; Exists(path); ++number)
        path = base + L"_" + std::to_wstring(number) + kExtension;
    CL::WriteWholeFile(path, bytes);
    Log(2, "Address space version kept in " + CL::Narrow(path) + MV_POS());
    return path;
}

std::vector<std::wstring> CAddressSpaceVersions::List() const
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    // "????_??_??" "-??_??_??": written apart, as "??-" would be a trigraph.
    const std::wstring pattern = m_folder + m_stem + L".????_??_??" L"-??_??_??*" + kExtension;
    const HANDLE search = ::FindFirstFileW(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names.push_back(found.cFileName);
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
    std::sort(names.begin(), names.end(), VersionOrder());
    std::reverse(names.begin(), names.end());
    for (std::wstring& name : names)
        name = m_folder + name;
    return names;
}

std::wstring CAddressSpaceVersions::Newest() const
{
    const std::vector<std::wstring> versions = List();
    return versions.empty() ? std::wstring() : versions.front();
}

std::vector<std::wstring> CAddressSpaceVersions::ApplyRetention(unsigned keep) const
{
    std::vector<std::wstring> removed;
    if (keep == 0)
        return removed;
    const std::vector<std::wstring> versions = List();
    for (size_t i = keep; i < versions.size(); ++i) {
        if (::DeleteFileW(versions[i].c_str())) {
            removed.push_back(versions[i]);
            Log(2, "Address space version removed by the retention rule: " + CL::Narrow(versions[i]) + MV_POS());
        } else {
            Log(0, "The address space version " + CL::Narrow(versions[i]) + " could not be removed (error " +
                       std::to_string(::GetLastError()) + ")" + MV_POS());
        }
    }
    return removed;
}
