#pragma once
// The editor's duplicate-name messages, shown by the dialogs' commands and
// by rename in place, paste and drag and drop alike.

inline constexpr wchar_t kDuplicateBranchText[] =
    L"Another branch with the same name exists on the same level. Please, enter unique name.";
inline constexpr wchar_t kDuplicateItemText[] =
    L"Another OPC item with the same name exists on the same level. Please, enter unique item name.";
