#include "addressspace/ItemId.h"

#include "addressspace/OPCItem.h"
#include "addressspace/OPCServerAddressSpaceBranch.h"

std::wstring ArchivedItemId(const COPCItem& item)
{
    std::wstring id = item.Name();
    // The root has no parent and no part in the ID.
    for (const COPCServerAddressSpaceBranch* branch = item.Parent(); branch && branch->Parent();
         branch = branch->Parent())
        id = branch->Name() + L"." + id;
    return id;
}
