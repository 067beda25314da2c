#include "addressspace/AddressSpaceCopy.h"

namespace CL {

namespace {

using BranchPtr = CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CSmartPtr<COPCItem>;

void CopyChildren(const COPCServerAddressSpaceBranch& from, COPCServerAddressSpaceBranch& to)
{
    for (const ItemPtr& item : from.Items())
        to.AddItem(CopyItem(*item));
    for (const BranchPtr& branch : from.Branches()) {
        BranchPtr copy = BranchPtr::Make(branch->Name());
        to.AddBranch(copy);
        CopyChildren(*branch, *copy);
    }
}

} // namespace

CSmartPtr<COPCItem> CopyItem(const COPCItem& item)
{
    ItemPtr copy = ItemPtr::Make(item.AccessRights(), item.ScanRate(), item.Archive(), item.Quality(),
                                 item.CanonicalDataType(), item.Owner());
    copy->Rename(item.Name().c_str());
    copy->SetValue(item.Value());
    copy->SetValueTime(item.ValueTime());
    return copy;
}

CSmartPtr<COPCServerAddressSpaceBranch> CopyBranch(const COPCServerAddressSpaceBranch& branch)
{
    BranchPtr copy = BranchPtr::Make(branch.Name());
    CopyChildren(branch, *copy);
    return copy;
}

CSmartPtr<COPCServerAddressSpace> CopyAddressSpace(const COPCServerAddressSpace& space)
{
    auto copy = CSmartPtr<COPCServerAddressSpace>::Make();
    CopyChildren(*space.RootBranch(), *copy->RootBranch());
    for (const AeCondition& condition : space.Conditions())
        copy->AddCondition(condition);
    return copy;
}

} // namespace CL
