#pragma once
// CDeleteBranchCommand: a branch taken out of its parent with everything
// under it; undo puts the same branch back, so a deleted branch of any size
// comes back at once.
#include <string>

#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CDeleteBranchCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;

    // The branch must have a parent (the root cannot be deleted).
    // The verb names the step in the Edit menu ("Delete", "Cut").
    explicit CDeleteBranchCommand(BranchPtr branch, std::wstring verb = L"Delete");

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    // The parent after Do, the branch itself after Undo.
    COPCServerAddressSpaceBranch* TouchedBranch() const override;

private:
    BranchPtr m_parent;
    BranchPtr m_branch;
    std::wstring m_verb;
    bool m_done = false;
};
