#include "addressspace/OPCItem.h"

#include "addressspace/NodeRename.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"
#include "common/Exception.h"

namespace {

// The current system time as a FILETIME, to the millisecond.
FILETIME SystemTimeNow()
{
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    FILETIME time = {};
    ::SystemTimeToFileTime(&now, &time);
    return time;
}

} // namespace

COPCItem::COPCItem(DWORD accessRights, DWORD scanRate, bool archive, WORD quality,
                   VARTYPE canonicalDataType, IOPCItemOwner* owner)
    : m_valueTime(SystemTimeNow()),
      m_quality(quality),
      m_canonicalDataType(canonicalDataType),
      m_accessRights(accessRights),
      m_scanRate(scanRate),
      m_lastUpdateTick(::GetTickCount()),
      m_archive(archive ? 1 : 0),
      m_owner(owner)
{
}

void COPCItem::Rename(const wchar_t* newName)
{
    RenameNode(m_name, newName, L"COPCItem::Rename", [this](const std::wstring& oldName, const std::wstring& name) {
        if (m_parent)
            m_parent->RekeyItem(oldName, name);
    });
}

CL::CVariant COPCItem::Value() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return m_value;
}

void COPCItem::SetValue(const VARIANT& value)
{
    CL::CVariant copy(value);   // copied outside the lock; may throw
    CL::CCriticalSection::Lock lock(m_lock);
    m_value = std::move(copy);
}

FILETIME COPCItem::ValueTime() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return m_valueTime;
}

void COPCItem::SetValueTime(const FILETIME& time)
{
    CL::CCriticalSection::Lock lock(m_lock);
    m_valueTime = time;
}

WORD COPCItem::Quality() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return m_quality;
}

void COPCItem::SetQuality(WORD quality)
{
    CL::CCriticalSection::Lock lock(m_lock);
    m_quality = quality;
}

void COPCItem::SetReadable(bool readable) noexcept
{
    m_accessRights = readable ? (m_accessRights | kReadable) : (m_accessRights & ~kReadable);
}

void COPCItem::SetWritable(bool writable) noexcept
{
    m_accessRights = writable ? (m_accessRights | kWritable) : (m_accessRights & ~kWritable);
}

void COPCItem::OnValueChange(const VARIANT& value, WORD quality, const FILETIME& time)
{
    CL::CVariant copy(value);
    {
        CL::CCriticalSection::Lock lock(m_lock);
        m_value = std::move(copy);
        m_quality = quality;
        m_valueTime = time;
        m_lastUpdateTick = ::GetTickCount();
    }
    if (m_owner)
        m_owner->OnItemValueChanged(*this);
}
