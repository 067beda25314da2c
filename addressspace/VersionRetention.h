#pragma once
// CVersionRetention: how many address space versions the control panel
// keeps (the newest N; 0 keeps every version). It is the control panel's
// own setting, kept for the whole machine in the registry
// (HKEY_LOCAL_MACHINE\Software\Varnel OPC Server Engine\Control Panel, value
// "AddressSpaceVersionsKept"), not a key of the server's settings file: the
// server never reads it.
#include <windows.h>

#include <string>

class CVersionRetention {
public:
    static constexpr unsigned kDefaultKept = 50;
    static constexpr unsigned kMostKept = 100000;
    static constexpr wchar_t kKeyPath[] = L"Software\\Varnel OPC Server Engine\\Control Panel";
    static constexpr wchar_t kValueName[] = L"AddressSpaceVersionsKept";

    explicit CVersionRetention(HKEY root = HKEY_LOCAL_MACHINE, std::wstring keyPath = kKeyPath);

    // The number kept: the stored value, or the default when none is stored.
    unsigned Kept() const;
    // Stores the number (at most kMostKept). Throws when the registry refuses.
    void SetKept(unsigned kept) const;
    // "the newest 50 versions" / "every version".
    static std::wstring Describe(unsigned kept);

private:
    HKEY m_root;
    std::wstring m_keyPath;
};
