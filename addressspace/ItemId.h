#pragma once
// The item ID under which the server archives an item's values: the names
// of the branches from below the root down to the item's own branch, then
// the item's own name, joined with "." (e.g. "Plant.Line1.Speed").
#include <string>

class COPCItem;

std::wstring ArchivedItemId(const COPCItem& item);
