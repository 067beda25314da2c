#pragma once
// Takes differences back: makes the objects of the chosen differences in one
// address space (the "after" side of a compare, in practice a copy of the
// editor's) as they are in the other (the "before" side). An added object
// goes, a removed one comes back from the other side, a changed field gets
// the other side's value, a moved object goes back where it was. No window
// code; the editor applies the result as one undoable step.
#include <cstddef>
#include <vector>

#include "addressspace/AddressSpaceCompare.h"
#include "addressspace/OPCServerAddressSpace.h"

// Applies the differences (chosen from CompareAddressSpaces(before, after))
// to `after`; returns how many could be taken back (one whose object is no
// longer where the compare saw it is skipped).
size_t RevertDifferences(COPCServerAddressSpace& after, const COPCServerAddressSpace& before,
                         const std::vector<const AddressSpaceDifference*>& differences);
