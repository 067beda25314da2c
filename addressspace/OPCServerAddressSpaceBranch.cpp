#include "addressspace/OPCServerAddressSpaceBranch.h"

#include "addressspace/NodeRename.h"
#include "common/Exception.h"

namespace {

// The values of a map in key order.
template <typename Map>
std::vector<typename Map::mapped_type> MappedValues(const Map& map)
{
    std::vector<typename Map::mapped_type> values;
    values.reserve(map.size());
    for (const auto& [name, value] : map)
        values.push_back(value);
    return values;
}

// Inserts name -> child unless the name (ignoring case) is taken.
template <typename Map, typename Ptr>
void InsertNew(Map& map, const std::wstring& name, const Ptr& child, const wchar_t* source)
{
    if (map.find(name) != map.end())
        throw CL::CException(E_INVALIDARG, source);
    map.emplace(name, child);
}

template <typename Map>
typename Map::mapped_type TakeOut(Map& map, const std::wstring& name, const wchar_t* source)
{
    const auto found = map.find(name);
    if (found == map.end())
        throw CL::CException(E_POINTER, source);
    typename Map::mapped_type child = found->second;
    map.erase(found);
    return child;
}

// Moves the child from the old key to the new one: the old key must be
// present and the new one free, else nothing changes.
template <typename Map>
void Rekey(Map& map, const std::wstring& oldName, const std::wstring& newName, const wchar_t* source)
{
    const auto old = map.find(oldName);
    if (old == map.end() || map.find(newName) != map.end())
        throw CL::CException(E_INVALIDARG, source);
    typename Map::mapped_type child = old->second;
    map.emplace(newName, child);
    map.erase(old);
}

} // namespace

COPCServerAddressSpaceBranch::COPCServerAddressSpaceBranch(std::wstring name) : m_name(std::move(name)) {}

COPCServerAddressSpaceBranch::~COPCServerAddressSpaceBranch()
{
    // Children that outlive this branch (a window may still hold them) must
    // not point back to it.
    for (auto& [name, branch] : m_branches)
        if (branch->m_parent == this)
            branch->m_parent = nullptr;
    for (auto& [name, item] : m_items)
        if (item->m_parent == this)
            item->m_parent = nullptr;
}

void COPCServerAddressSpaceBranch::Rename(const wchar_t* newName)
{
    RenameNode(m_name, newName, L"COPCServerAddressSpaceBranch::Rename",
               [this](const std::wstring& oldName, const std::wstring& name) {
                   if (m_parent)
                       m_parent->RekeyBranch(oldName, name);
               });
}

bool COPCServerAddressSpaceBranch::IsSelfOrAncestor(const COPCServerAddressSpaceBranch* branch) const
{
    for (const COPCServerAddressSpaceBranch* b = this; b; b = b->m_parent)
        if (b == branch)
            return true;
    return false;
}

void COPCServerAddressSpaceBranch::AddBranch(const BranchPtr& branch)
{
    if (!branch || branch->Name().empty() || branch->m_parent || IsSelfOrAncestor(branch.get()))
        throw CL::CException(E_INVALIDARG, L"COPCServerAddressSpaceBranch::AddBranch");
    CL::CCriticalSection::Lock lock(m_lock);
    InsertNew(m_branches, branch->Name(), branch, L"COPCServerAddressSpaceBranch::AddBranch");
    branch->m_parent = this;
}

void COPCServerAddressSpaceBranch::AddItem(const ItemPtr& item)
{
    if (!item || item->Name().empty() || item->m_parent)
        throw CL::CException(E_INVALIDARG, L"COPCServerAddressSpaceBranch::AddItem");
    CL::CCriticalSection::Lock lock(m_lock);
    InsertNew(m_items, item->Name(), item, L"COPCServerAddressSpaceBranch::AddItem");
    item->m_parent = this;
}

COPCServerAddressSpaceBranch::BranchPtr COPCServerAddressSpaceBranch::RemoveBranch(const std::wstring& name)
{
    CL::CCriticalSection::Lock lock(m_lock);
    BranchPtr branch = TakeOut(m_branches, name, L"COPCServerAddressSpaceBranch::RemoveBranch");
    branch->m_parent = nullptr;
    return branch;
}

COPCServerAddressSpaceBranch::ItemPtr COPCServerAddressSpaceBranch::RemoveItem(const std::wstring& name)
{
    CL::CCriticalSection::Lock lock(m_lock);
    ItemPtr item = TakeOut(m_items, name, L"COPCServerAddressSpaceBranch::RemoveItem");
    item->m_parent = nullptr;
    return item;
}

COPCServerAddressSpaceBranch::BranchPtr COPCServerAddressSpaceBranch::FindBranch(const std::wstring& name) const
{
    CL::CCriticalSection::Lock lock(m_lock);
    const auto found = m_branches.find(name);
    return found == m_branches.end() ? BranchPtr() : found->second;
}

COPCServerAddressSpaceBranch::ItemPtr COPCServerAddressSpaceBranch::FindItem(const std::wstring& name) const
{
    CL::CCriticalSection::Lock lock(m_lock);
    const auto found = m_items.find(name);
    return found == m_items.end() ? ItemPtr() : found->second;
}

std::vector<COPCServerAddressSpaceBranch::BranchPtr> COPCServerAddressSpaceBranch::Branches() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return MappedValues(m_branches);
}

std::vector<COPCServerAddressSpaceBranch::ItemPtr> COPCServerAddressSpaceBranch::Items() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return MappedValues(m_items);
}

size_t COPCServerAddressSpaceBranch::BranchCount() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return m_branches.size();
}

size_t COPCServerAddressSpaceBranch::ItemCount() const
{
    CL::CCriticalSection::Lock lock(m_lock);
    return m_items.size();
}

void COPCServerAddressSpaceBranch::Clear()
{
    BranchMap branches;
    ItemMap items;
    {
        CL::CCriticalSection::Lock lock(m_lock);
        branches.swap(m_branches);
        items.swap(m_items);
    }
    for (auto& [name, branch] : branches)
        branch->m_parent = nullptr;
    for (auto& [name, item] : items)
        item->m_parent = nullptr;
    // The children die here (unless held elsewhere), outside the lock.
}

void COPCServerAddressSpaceBranch::RekeyBranch(const std::wstring& oldName, const std::wstring& newName)
{
    CL::CCriticalSection::Lock lock(m_lock);
    Rekey(m_branches, oldName, newName, L"COPCServerAddressSpaceBranch::RekeyBranch");
}

void COPCServerAddressSpaceBranch::RekeyItem(const std::wstring& oldName, const std::wstring& newName)
{
    CL::CCriticalSection::Lock lock(m_lock);
    Rekey(m_items, oldName, newName, L"COPCServerAddressSpaceBranch::RekeyItem");
}
