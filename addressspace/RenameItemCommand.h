#pragma once
// CRenameItemCommand: an item given another name in its branch (rename in
// place); nothing else of the item changes.
#include <string>

#include "addressspace/EditCommand.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

class CRenameItemCommand : public CEditCommand {
public:
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    CRenameItemCommand(ItemPtr item, std::wstring newName);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override;
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return m_item->Parent(); }

private:
    ItemPtr m_item;
    std::wstring m_oldName;
    std::wstring m_newName;
};
