#pragma once
// CRenameBranchCommand: a branch given another name on its level.
#include <string>

#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CRenameBranchCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;

    CRenameBranchCommand(BranchPtr branch, std::wstring newName);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_branch.get(); }

private:
    BranchPtr m_branch;
    std::wstring m_oldName;
    std::wstring m_newName;
};
