#pragma once
// A deep copy of an address space: new branches and items with the same
// names, settings, values, qualities and times, and the same conditions.
// Edits that must not touch the original until confirmed work on a copy.
#include "addressspace/OPCServerAddressSpace.h"
#include "common/SmartPtr.h"

namespace CL {

CSmartPtr<COPCServerAddressSpace> CopyAddressSpace(const COPCServerAddressSpace& space);
// A new item with the item's name, settings, value, quality and time, in no
// branch.
CSmartPtr<COPCItem> CopyItem(const COPCItem& item);
// A new branch of the same name with copies of everything under it, in no
// branch.
CSmartPtr<COPCServerAddressSpaceBranch> CopyBranch(const COPCServerAddressSpaceBranch& branch);

} // namespace CL
