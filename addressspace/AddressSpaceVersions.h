#pragma once
// CAddressSpaceVersions: every address space the control panel gives the
// server, kept as a file in a folder beside the exchange file
// ("AddressSpaceVersions"), named with the UTC time it was kept in the form
// of the settings backups: "DefaultAddressSpace.YYYY_MM_DD-hh_mm_ss.xml"
// (".xml" stays last so that the files open as address space files; a
// second version in the same second gets "_2", "_3" ...). Versions are only
// removed by the retention rule: the newest N are kept (0 keeps all).
#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

class CAddressSpaceVersions {
public:
    static constexpr wchar_t kFolderName[] = L"AddressSpaceVersions";

    // exchangeFile: the exchange file's full path; the folder is beside it.
    explicit CAddressSpaceVersions(const std::wstring& exchangeFile);

    const std::wstring& Folder() const { return m_folder; }
    // "DefaultAddressSpace.YYYY_MM_DD-hh_mm_ss.xml" for a UTC time.
    static std::wstring VersionName(const SYSTEMTIME& utc);

    // Keeps the bytes as a new version named from the current UTC time,
    // creating the folder; returns the full path. Throws on failure.
    std::wstring Keep(std::string_view bytes) const;
    // The same with the time given (tests).
    std::wstring KeepAt(std::string_view bytes, const SYSTEMTIME& utc) const;

    // Full paths of the kept versions, newest first.
    std::vector<std::wstring> List() const;
    // The newest version, or empty when none is kept.
    std::wstring Newest() const;

    // Removes the oldest versions beyond the newest `keep` (0: none are
    // removed); returns the removed paths. A file that cannot be removed is
    // logged and skipped.
    std::vector<std::wstring> ApplyRetention(unsigned keep) const;

private:
    std::wstring m_folder;   // ends with a backslash
    std::wstring m_stem;     // the exchange file's name without ".xml"
};
