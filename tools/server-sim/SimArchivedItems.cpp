#include "SimArchivedItems.h"

#include "addressspace/OPCServerAddressSpace.h"

namespace sim {

namespace {

void CollectArchivedItems(const COPCServerAddressSpaceBranch& branch, const std::wstring& prefix,
                          std::vector<SimArchivedItem>& items)
{
    for (const auto& child : branch.Branches())
        CollectArchivedItems(*child, prefix + child->Name() + L".", items);
    for (const auto& item : branch.Items())
        if (item->Archive())
            items.push_back({prefix + item->Name(), item->CanonicalDataType()});
}

} // namespace

std::vector<SimArchivedItem> ReadArchivedItems(const std::wstring& addressSpaceFile)
{
    const auto addressSpace = CL::CSmartPtr<COPCServerAddressSpace>::Make();
    addressSpace->Load(addressSpaceFile);
    std::vector<SimArchivedItem> items;
    CollectArchivedItems(*addressSpace->RootBranch(), L"", items);
    return items;
}

} // namespace sim
