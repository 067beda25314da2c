#pragma once
// CMoveCommand: items or one branch taken out of where they are and put
// into another branch (drag and drop); undo puts them back.
#include <string>
#include <vector>

#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CMoveCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    // Items of one branch, or (items empty) the branch `moved`.
    CMoveCommand(BranchPtr from, std::vector<ItemPtr> items, BranchPtr moved, BranchPtr to);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    // The target after Do, the branch they came from after Undo.
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_undone ? m_from.get() : m_to.get(); }
    const std::vector<ItemPtr>& Items() const noexcept { return m_items; }

private:
    // The items or the branch from one branch into the other.
    void Transfer(COPCServerAddressSpaceBranch& from, COPCServerAddressSpaceBranch& to) const;
    static void Move(const std::vector<ItemPtr>& items, COPCServerAddressSpaceBranch& from,
                     COPCServerAddressSpaceBranch& to);

    BranchPtr m_from;
    std::vector<ItemPtr> m_items;
    BranchPtr m_moved;
    BranchPtr m_to;
    bool m_undone = false;
};
