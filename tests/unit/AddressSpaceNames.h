#pragma once
// The names of a branch's items and sub-branches in the order the branch
// lists them, for comparing a tree with what a test expects.
#include <string>
#include <vector>

#include "addressspace/OPCServerAddressSpaceBranch.h"

inline std::vector<std::wstring> ItemNames(const COPCServerAddressSpaceBranch& branch)
{
    std::vector<std::wstring> names;
    for (const auto& item : branch.Items())
        names.push_back(item->Name());
    return names;
}

inline std::vector<std::wstring> BranchNames(const COPCServerAddressSpaceBranch& branch)
{
    std::vector<std::wstring> names;
    for (const auto& child : branch.Branches())
        names.push_back(child->Name());
    return names;
}
