#pragma once
// The items of an address space file that are marked for archiving, with the
// item IDs under which their values are stored in the historian database.
#include <windows.h>
#include <oleauto.h>

#include <string>
#include <vector>

namespace sim {

struct SimArchivedItem {
    // The branch names from the root down and the item's name, joined by
    // "." ("Plant.Line1.Speed"; a top-level item is just its name).
    std::wstring itemId;
    VARTYPE canonicalDataType = VT_EMPTY;
};

// Reads the address space file through the address space model and lists
// its items whose Archive flag is set, in tree order (branches before items,
// names in case-insensitive order). Throws CException when the file does not
// load.
std::vector<SimArchivedItem> ReadArchivedItems(const std::wstring& addressSpaceFile);

} // namespace sim
