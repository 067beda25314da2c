#pragma once
// COPCServerAddressSpaceBranch: one branch of the address space tree. It owns
// its sub-branches and its items in two maps keyed by name, ordered without
// regard to letter case; a branch and an item of one level may share a name.
// The branch's lock guards both maps; it is never held while a child's lock
// is taken.
#include <windows.h>

#include <map>
#include <string>
#include <vector>

#include "addressspace/NoCaseLess.h"
#include "addressspace/OPCItem.h"
#include "common/CriticalSection.h"
#include "common/RefCount.h"
#include "common/SmartPtr.h"

class COPCServerAddressSpaceBranch : public CL::CRefCount {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    // An unnamed branch (the root, or one to be named with Rename).
    COPCServerAddressSpaceBranch() = default;
    // A branch with the given name (not checked: adding it checks).
    explicit COPCServerAddressSpaceBranch(std::wstring name);

    const std::wstring& Name() const noexcept { return m_name; }
    // Null for the root and for a branch not added anywhere.
    COPCServerAddressSpaceBranch* Parent() const noexcept { return m_parent; }

    // Renames the branch and re-keys it in its parent. An empty name, or a
    // name already used by a sibling branch, throws CException(E_INVALIDARG)
    // and changes nothing; a new name that equals the old one ignoring case
    // changes nothing at all.
    void Rename(const wchar_t* newName);

    // Inserts the child under its name and makes this branch its parent. A
    // null child, an empty name or a name present already (ignoring case)
    // throws CException(E_INVALIDARG) and changes nothing; so does a child
    // that belongs to a branch already, and a branch that is this one or one
    // of its ancestors (the tree must stay a tree).
    void AddBranch(const BranchPtr& branch);
    void AddItem(const ItemPtr& item);

    // Takes the child of that name (ignoring case) out of this branch and
    // returns it, its parent reset. A name that is not present throws
    // CException(E_POINTER) and changes nothing.
    BranchPtr RemoveBranch(const std::wstring& name);
    ItemPtr RemoveItem(const std::wstring& name);

    // The child of that name (ignoring case), or null.
    BranchPtr FindBranch(const std::wstring& name) const;
    ItemPtr FindItem(const std::wstring& name) const;

    // The children in key order (case-insensitive alphabetical), taken under
    // the lock so that the caller may walk them without holding it.
    std::vector<BranchPtr> Branches() const;
    std::vector<ItemPtr> Items() const;
    size_t BranchCount() const;
    size_t ItemCount() const;

    // Drops every sub-branch and item.
    void Clear();

protected:
    ~COPCServerAddressSpaceBranch() override;

private:
    friend class COPCItem;   // an item's rename re-keys it here

    using BranchMap = std::map<std::wstring, BranchPtr, NoCaseLess>;
    using ItemMap = std::map<std::wstring, ItemPtr, NoCaseLess>;

    bool IsSelfOrAncestor(const COPCServerAddressSpaceBranch* branch) const;
    void RekeyBranch(const std::wstring& oldName, const std::wstring& newName);
    void RekeyItem(const std::wstring& oldName, const std::wstring& newName);

    std::wstring m_name;
    COPCServerAddressSpaceBranch* m_parent = nullptr;
    BranchMap m_branches;
    ItemMap m_items;
    CL::CCriticalSection m_lock;
};
