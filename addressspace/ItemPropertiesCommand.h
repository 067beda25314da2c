#pragma once
// CItemPropertiesCommand: the item dialog's fields put on one or several
// items; undo puts back each item's fields (and name) as they were.
#include <vector>

#include "addressspace/EditCommand.h"
#include "addressspace/ItemFields.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CItemPropertiesCommand : public CEditCommand {
public:
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    // `fields` go on every item; its name, when not empty, renames the one
    // item.
    CItemPropertiesCommand(std::vector<ItemPtr> items, ItemFields fields);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override;
    const std::vector<ItemPtr>& Items() const noexcept { return m_items; }

private:
    std::vector<ItemPtr> m_items;
    std::vector<ItemFields> m_before;
    ItemFields m_after;
};
