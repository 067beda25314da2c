#pragma once
// CAddBranchCommand: a new branch added under a parent; undo takes it out
// again (with whatever was added below it since, which later commands of
// the history own).
#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CAddBranchCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;

    CAddBranchCommand(BranchPtr parent, BranchPtr branch);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_parent.get(); }

private:
    BranchPtr m_parent;
    BranchPtr m_branch;
};
