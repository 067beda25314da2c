#pragma once
// CDeleteItemsCommand: items taken out of their branch; undo puts the same
// items back.
#include <string>
#include <vector>

#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CDeleteItemsCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    // The verb names the step in the Edit menu ("Delete", "Cut").
    CDeleteItemsCommand(BranchPtr branch, std::vector<ItemPtr> items, std::wstring verb = L"Delete");

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_branch.get(); }
    const std::vector<ItemPtr>& Items() const noexcept { return m_items; }

private:
    void Remove(size_t count);
    void Add(size_t count);

    BranchPtr m_branch;
    std::vector<ItemPtr> m_items;
    std::wstring m_verb;
};
