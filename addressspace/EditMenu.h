#pragma once
// The Undo and Redo entries of the editor's Edit menu: their texts name the
// edit they would take back or make again ("&Undo Delete Item 'Speed'"),
// and they are grayed while there is none.
#include <windows.h>

#include <string>

#include "addressspace/EditHistory.h"

class CEditMenu {
public:
    // The entry's text for a description ("" gives the bare entry).
    static std::wstring UndoText(const std::wstring& description);
    static std::wstring RedoText(const std::wstring& description);
    // Sets both entries of the menu, when it holds them.
    static void Update(HMENU menu, const CEditHistory& history);
};
