#include "addressspace/RevertDifferences.h"

#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/NoCaseLess.h"

namespace {

using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
using ItemPtr = CL::CSmartPtr<COPCItem>;
using Names = std::vector<std::wstring>;

// The branch that holds the object at the names (all names but the last),
// made on the way when `make` is set; null when missing.
COPCServerAddressSpaceBranch* Parent(COPCServerAddressSpace& space, const Names& names, bool make)
{
    COPCServerAddressSpaceBranch* branch = space.RootBranch().get();
    for (size_t i = 0; i + 1 < names.size(); ++i) {
        BranchPtr next = branch->FindBranch(names[i]);
        if (!next) {
            if (!make)
                return nullptr;
            next = BranchPtr::Make(names[i]);
            branch->AddBranch(next);
        }
        branch = next.get();
    }
    return branch;
}

const COPCServerAddressSpaceBranch* Parent(const COPCServerAddressSpace& space, const Names& names)
{
    return Parent(const_cast<COPCServerAddressSpace&>(space), names, false);
}

ItemPtr FindItem(const COPCServerAddressSpace& space, const Names& names)
{
    const COPCServerAddressSpaceBranch* parent = names.empty() ? nullptr : Parent(space, names);
    return parent ? parent->FindItem(names.back()) : nullptr;
}

BranchPtr FindBranch(const COPCServerAddressSpace& space, const Names& names)
{
    const COPCServerAddressSpaceBranch* parent = names.empty() ? nullptr : Parent(space, names);
    return parent ? parent->FindBranch(names.back()) : nullptr;
}

bool RemoveItem(COPCServerAddressSpace& space, const Names& names)
{
    COPCServerAddressSpaceBranch* parent = names.empty() ? nullptr : Parent(space, names, false);
    if (!parent || !parent->FindItem(names.back()))
        return false;
    parent->RemoveItem(names.back());
    return true;
}

bool RemoveBranch(COPCServerAddressSpace& space, const Names& names)
{
    COPCServerAddressSpaceBranch* parent = names.empty() ? nullptr : Parent(space, names, false);
    if (!parent || !parent->FindBranch(names.back()))
        return false;
    parent->RemoveBranch(names.back());
    return true;
}

// The other side's item put back at the names (replacing one there).
bool RestoreItem(COPCServerAddressSpace& after, const COPCServerAddressSpace& before, const Names& names)
{
    const ItemPtr original = FindItem(before, names);
    if (!original)
        return false;
    COPCServerAddressSpaceBranch* parent = Parent(after, names, true);
    if (parent->FindItem(names.back()))
        parent->RemoveItem(names.back());
    parent->AddItem(CL::CopyItem(*original));
    return true;
}

bool RestoreBranch(COPCServerAddressSpace& after, const COPCServerAddressSpace& before, const Names& names)
{
    const BranchPtr original = FindBranch(before, names);
    if (!original)
        return false;
    COPCServerAddressSpaceBranch* parent = Parent(after, names, true);
    if (parent->FindBranch(names.back()))
        return true;   // already back (an item of it was restored first)
    parent->AddBranch(CL::CopyBranch(*original));
    return true;
}

bool RevertField(COPCServerAddressSpace& after, const COPCServerAddressSpace& before, const AddressSpaceDifference& d)
{
    const ItemPtr target = FindItem(after, d.location);
    const ItemPtr source = FindItem(before, d.location);
    if (!target || !source)
        return false;
    if (d.field == L"Data type" || d.field == L"Value") {
        target->SetCanonicalDataType(source->CanonicalDataType());
        target->SetValue(source->Value());
    } else if (d.field == L"Access") {
        target->SetAccessRights(source->AccessRights());
    } else if (d.field == L"Scan rate") {
        target->SetScanRate(source->ScanRate());
    } else if (d.field == L"Archive") {
        target->SetArchive(source->Archive());
    } else {
        return false;
    }
    return true;
}

bool RevertCondition(COPCServerAddressSpace& after, const COPCServerAddressSpace& before, const AddressSpaceDifference& d)
{
    if (d.location.size() != 2)
        return false;
    AeCondition key;
    key.source = d.location[0];
    key.conditionName = d.location[1];
    const AeCondition* original = nullptr;
    const std::vector<AeCondition> originals = before.Conditions();
    for (const AeCondition& c : originals)
        if (c.SameConditionAs(key))
            original = &c;
    std::vector<AeCondition> conditions = after.Conditions();
    bool found = false;
    for (auto it = conditions.begin(); it != conditions.end(); ++it)
        if (it->SameConditionAs(key)) {
            found = true;
            if (original)
                *it = *original;
            else
                conditions.erase(it);
            break;
        }
    if (!found && original)
        conditions.push_back(*original);
    if (!found && !original)
        return false;
    after.ClearConditions();
    for (const AeCondition& c : conditions)
        after.AddCondition(c);
    return true;
}

bool Revert(COPCServerAddressSpace& after, const COPCServerAddressSpace& before, const AddressSpaceDifference& d)
{
    const bool item = d.subject == DifferenceSubject::Item;
    switch (d.subject == DifferenceSubject::Condition ? DifferenceKind::Changed : d.kind) {
    case DifferenceKind::Added:
        return item ? RemoveItem(after, d.location) : RemoveBranch(after, d.location);
    case DifferenceKind::Removed:
        return item ? RestoreItem(after, before, d.location) : RestoreBranch(after, before, d.location);
    case DifferenceKind::Moved: {
        const bool removed = item ? RemoveItem(after, d.location) : RemoveBranch(after, d.location);
        const bool restored = item ? RestoreItem(after, before, d.oldLocation) : RestoreBranch(after, before, d.oldLocation);
        return removed || restored;
    }
    case DifferenceKind::Changed:
        return d.subject == DifferenceSubject::Condition ? RevertCondition(after, before, d) : RevertField(after, before, d);
    }
    return false;
}

} // namespace

size_t RevertDifferences(COPCServerAddressSpace& after, const COPCServerAddressSpace& before,
                         const std::vector<const AddressSpaceDifference*>& differences)
{
    size_t reverted = 0;
    for (const AddressSpaceDifference* d : differences)
        if (d && Revert(after, before, *d))
            ++reverted;
    return reverted;
}
