#pragma once
// CPasteCommand: rows read from clipboard text (the editor's own copy, or
// cells copied from a spreadsheet) added below a branch. The paths are
// taken relative to that branch; a name on its level that exists there
// already gets the next free number ("Speed" -> "Speed_2"), so a paste
// never overwrites anything. Everything pasted is built aside first; Do
// hangs the new top-level branches and items into the branch, Undo takes
// them out again.
#include <string>
#include <vector>

#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CPasteCommand : public CEditCommand {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    // The plan's items, built below the target as they would be pasted.
    CPasteCommand(const CL::CsvImportPlan& plan, BranchPtr target, std::wstring verb = L"Paste");
    // Items and branches built already (copies dropped with Ctrl held),
    // whose names are free in the target.
    CPasteCommand(BranchPtr target, std::vector<ItemPtr> items, std::vector<BranchPtr> branches, std::wstring verb);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_target.get(); }

    // What lands directly in the target.
    const std::vector<ItemPtr>& Items() const noexcept { return m_items; }
    const std::vector<BranchPtr>& Branches() const noexcept { return m_branches; }
    // Every item pasted, at any depth.
    size_t ItemCount() const noexcept { return m_itemCount; }

private:
    void Build(const CL::CsvImportPlan& plan);
    void Remove(size_t items, size_t branches);

    BranchPtr m_target;
    std::wstring m_verb;
    std::vector<ItemPtr> m_items;
    std::vector<BranchPtr> m_branches;
    size_t m_itemCount = 0;
};
