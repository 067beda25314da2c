#pragma once
// The rename rule that branches and items share.
#include <string>

#include "addressspace/NoCaseLess.h"
#include "common/Exception.h"

// Renames `name` to newName. An empty (or null) name throws
// CException(E_INVALIDARG, source); a change of letter case only is ignored
// on purpose; otherwise rekey(oldName, newName) first moves the node's key
// in its parent's map.
template <typename Rekey>
void RenameNode(std::wstring& name, const wchar_t* newName, const wchar_t* source, Rekey rekey)
{
    if (newName == nullptr || *newName == L'\0')
        throw CL::CException(E_INVALIDARG, source);
    const std::wstring renamed(newName);
    if (!name.empty() && EqualNoCase(name, renamed))
        return;
    rekey(name, renamed);
    name = renamed;
}
