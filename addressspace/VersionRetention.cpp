#include "addressspace/VersionRetention.h"

#include <algorithm>

#include "common/RegistryKey.h"

CVersionRetention::CVersionRetention(HKEY root, std::wstring keyPath) : m_root(root), m_keyPath(std::move(keyPath)) {}

unsigned CVersionRetention::Kept() const
{
    const CL::CRegistryKey key = CL::CRegistryKey::Open(m_root, m_keyPath);
    DWORD kept = kDefaultKept;
    if (!key.Valid() || !key.ReadDword(kValueName, kept))
        return kDefaultKept;
    return std::min<unsigned>(kept, kMostKept);
}

void CVersionRetention::SetKept(unsigned kept) const
{
    CL::CRegistryKey::Create(m_root, m_keyPath).WriteDword(kValueName, std::min(kept, kMostKept));
}

std::wstring CVersionRetention::Describe(unsigned kept)
{
    if (kept == 0)
        return L"every version";
    return L"the newest " + std::to_wstring(kept) + (kept == 1 ? L" version" : L" versions");
}
