#pragma once
// CFindCursor: the editor's last search and the match it showed last, for
// F3 (next match) and Shift+F3 (previous match). Each step searches the
// address space as it is now, so edits made since are taken into account.
#include <optional>
#include <string>

#include "addressspace/AddressSpaceSearch.h"

class CFindCursor {
public:
    const std::wstring& Query() const noexcept { return m_query; }
    bool HasQuery() const noexcept { return !m_query.empty(); }

    // The search and the match now shown.
    void Set(const std::wstring& query, const CAddressSpaceSearch::Entry& shown);

    // The match after (or before) the one shown last, going round at the
    // ends; it becomes the one shown. None when nothing matches any more.
    std::optional<CAddressSpaceSearch::Entry> Step(const COPCServerAddressSpace& space, bool forward);

private:
    std::wstring m_query;
    CAddressSpaceSearch::BranchPtr m_branch;
    CAddressSpaceSearch::ItemPtr m_item;
};
