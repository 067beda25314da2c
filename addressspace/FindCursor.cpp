#include "addressspace/FindCursor.h"

#include <algorithm>

void CFindCursor::Set(const std::wstring& query, const CAddressSpaceSearch::Entry& shown)
{
    m_query = query;
    m_branch = shown.branch;
    m_item = shown.item;
}

std::optional<CAddressSpaceSearch::Entry> CFindCursor::Step(const COPCServerAddressSpace& space, bool forward)
{
    const CAddressSpaceSearch search(space);
    const std::vector<size_t> matches = search.Find(m_query);
    if (matches.empty())
        return std::nullopt;
    // Where the last shown match is now (npos: it went; start at an end).
    const size_t current = search.IndexOf(m_branch.get(), m_item.get());
    size_t next = 0;
    if (forward) {
        const auto after = current == CAddressSpaceSearch::npos
                               ? matches.begin()
                               : std::upper_bound(matches.begin(), matches.end(), current);
        next = after == matches.end() ? matches.front() : *after;
    } else {
        const auto before = current == CAddressSpaceSearch::npos
                                ? matches.end()
                                : std::lower_bound(matches.begin(), matches.end(), current);
        next = before == matches.begin() ? matches.back() : *(before - 1);
    }
    const CAddressSpaceSearch::Entry& entry = search.At(next);
    m_branch = entry.branch;
    m_item = entry.item;
    return entry;
}
