#pragma once
// COPCItem: one OPC DA item of the address space. Its value, quality and
// value time are guarded by the item's own lock; the other fields are set by
// the thread that edits the address space.
#include <windows.h>
#include <oleauto.h>

#include <string>

#include "addressspace/OPCItemOwner.h"
#include "addressspace/OPCItemValueSink.h"
#include "common/CriticalSection.h"
#include "common/RefCount.h"
#include "common/Variant.h"

class COPCServerAddressSpaceBranch;

class COPCItem : public CL::CRefCount, public IOPCItemValueSink {
public:
    // Access-rights bits.
    static constexpr DWORD kReadable = 1;
    static constexpr DWORD kWritable = 2;

    // The value time starts at the current system time, the value empty,
    // the name empty (set it with Rename before adding the item to a branch).
    COPCItem(DWORD accessRights, DWORD scanRate, bool archive, WORD quality,
             VARTYPE canonicalDataType, IOPCItemOwner* owner);

    const std::wstring& Name() const noexcept { return m_name; }
    // Renames the item (and re-keys it in its branch). An empty name or a
    // name already used by another item of the branch throws
    // CException(E_INVALIDARG); a new name that equals the old one ignoring
    // case changes nothing at all.
    void Rename(const wchar_t* newName);

    COPCServerAddressSpaceBranch* Parent() const noexcept { return m_parent; }

    // The value (a copy), read and written under the item's lock.
    CL::CVariant Value() const;
    void SetValue(const VARIANT& value);
    FILETIME ValueTime() const;
    void SetValueTime(const FILETIME& time);
    WORD Quality() const;
    void SetQuality(WORD quality);

    VARTYPE CanonicalDataType() const noexcept { return m_canonicalDataType; }
    void SetCanonicalDataType(VARTYPE vt) noexcept { m_canonicalDataType = vt; }
    DWORD AccessRights() const noexcept { return m_accessRights; }
    void SetAccessRights(DWORD rights) noexcept { m_accessRights = rights; }
    bool Readable() const noexcept { return (m_accessRights & kReadable) != 0; }
    bool Writable() const noexcept { return (m_accessRights & kWritable) != 0; }
    void SetReadable(bool readable) noexcept;
    void SetWritable(bool writable) noexcept;
    DWORD ScanRate() const noexcept { return m_scanRate; }
    void SetScanRate(DWORD milliseconds) noexcept { m_scanRate = milliseconds; }
    bool Archive() const noexcept { return m_archive != 0; }
    void SetArchive(bool archive) noexcept { m_archive = archive ? 1 : 0; }
    DWORD LastUpdateTick() const noexcept { return m_lastUpdateTick; }
    IOPCItemOwner* Owner() const noexcept { return m_owner; }

    // IOPCItemValueSink: stores value, quality and time in one step, notes
    // the tick of the update and tells the owner.
    void OnValueChange(const VARIANT& value, WORD quality, const FILETIME& time) override;

protected:
    // Items die with their last CSmartPtr, never on the stack.
    ~COPCItem() override = default;

private:
    friend class COPCServerAddressSpaceBranch;   // sets the parent when adding and removing

    FILETIME m_valueTime;
    WORD m_quality;
    VARTYPE m_canonicalDataType;
    DWORD m_accessRights;
    DWORD m_reserved = 0;
    DWORD m_scanRate;
    DWORD m_lastUpdateTick;
    BYTE m_archive;
    std::wstring m_name;
    IOPCItemOwner* m_owner;
    CL::CVariant m_value;
    CL::CCriticalSection m_lock;
    COPCServerAddressSpaceBranch* m_parent = nullptr;
};
