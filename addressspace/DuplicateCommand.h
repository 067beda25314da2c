#pragma once
// CDuplicateCommand: copies of one item in its branch, named by counting on
// from the item's trailing number ("Motor7" -> "Motor8", "Motor9" ...; a
// name without a number gets "_1", "_2" ...), skipping names that exist.
#include <string>
#include <vector>

#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CDuplicateCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    static constexpr size_t kMaxCopies = 10000;

    // The item must be in a branch; count is 1 to kMaxCopies.
    CDuplicateCommand(const ItemPtr& item, size_t count);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_branch.get(); }
    const std::vector<ItemPtr>& Copies() const noexcept { return m_copies; }

private:
    void Remove(size_t count);

    BranchPtr m_branch;
    std::wstring m_name;
    std::vector<ItemPtr> m_copies;
};
