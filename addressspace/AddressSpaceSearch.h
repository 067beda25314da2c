#pragma once
// CAddressSpaceSearch: finds branches and items of an address space by a
// part of their name or path ("Plant.Line1.Sp"), or by a pattern with `*`
// (any run of characters) and `?` (one character) that matches a whole
// name or a whole path; letter case is ignored. The paths are taken once,
// in tree order (a branch, its items, then its sub-branches), so that each
// search is one pass over prepared lower-case texts.
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "addressspace/OPCServerAddressSpace.h"

class CAddressSpaceSearch {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;

    struct Entry {
        BranchPtr branch;    // the branch itself, or the item's branch
        ItemPtr item;        // null for a branch
        std::wstring path;   // names from below the root, joined with '.'
    };

    CAddressSpaceSearch() = default;
    explicit CAddressSpaceSearch(const COPCServerAddressSpace& space);

    size_t Size() const noexcept { return m_entries.size(); }
    const Entry& At(size_t index) const { return m_entries.at(index); }
    // The entry of this branch (item null) or item, or npos.
    size_t IndexOf(const COPCServerAddressSpaceBranch* branch, const COPCItem* item) const;

    // The indices of the matching entries in tree order, at most `limit`.
    // An empty query matches nothing.
    std::vector<size_t> Find(const std::wstring& query,
                             size_t limit = std::numeric_limits<size_t>::max()) const;

    // Whether the query is a pattern (holds '*' or '?').
    static bool IsPattern(std::wstring_view query);
    // Whether the whole text matches the pattern (compared as given).
    static bool Matches(std::wstring_view pattern, std::wstring_view text);

    static constexpr size_t npos = static_cast<size_t>(-1);

private:
    void AddBranch(const COPCServerAddressSpaceBranch& branch, const BranchPtr& self, const std::wstring& path);
    void Add(const BranchPtr& branch, const ItemPtr& item, std::wstring path);

    std::vector<Entry> m_entries;
    std::vector<std::wstring> m_lowerPaths;
    std::vector<size_t> m_nameStarts;   // where the last name begins in each path
};
