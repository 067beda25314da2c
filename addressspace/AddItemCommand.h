#pragma once
// CAddItemCommand: a new item added to a branch; undo takes it out again.
#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CAddItemCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    CAddItemCommand(BranchPtr branch, ItemPtr item);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_branch.get(); }

private:
    BranchPtr m_branch;
    ItemPtr m_item;
};
