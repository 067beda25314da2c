#pragma once
// ItemFields: what the item dialog can change on an item, taken from an item
// and put on one; the properties command keeps these to do and undo.
#include <windows.h>

#include <string>

#include "addressspace/OPCItem.h"
#include "common/Variant.h"

struct ItemFields {
    std::wstring name;   // empty: the name is left as it is
    DWORD accessRights = 0;
    DWORD scanRate = 0;
    bool archive = false;
    VARTYPE dataType = VT_EMPTY;
    CL::CVariant value;
    WORD quality = 0;
    FILETIME valueTime = {};

    static ItemFields Of(const COPCItem& item);
    // Sets the fields on the item (and renames it, re-keyed in its branch,
    // when a name is given). A rename that fails throws before anything
    // else changed.
    void ApplyTo(COPCItem& item) const;
};
