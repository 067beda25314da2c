#include "addressspace/AddressSpaceSearch.h"

#include <windows.h>

#include "common/Wildcard.h"

namespace {

std::wstring Lower(std::wstring text)
{
    if (!text.empty())
        ::CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

} // namespace

CAddressSpaceSearch::CAddressSpaceSearch(const COPCServerAddressSpace& space)
{
    const BranchPtr& root = space.RootBranch();
    AddBranch(*root, root, std::wstring());
}

void CAddressSpaceSearch::Add(const BranchPtr& branch, const ItemPtr& item, std::wstring path)
{
    const size_t dot = path.rfind(L'.');
    m_nameStarts.push_back(dot == std::wstring::npos ? 0 : dot + 1);
    m_lowerPaths.push_back(Lower(path));
    m_entries.push_back(Entry{branch, item, std::move(path)});
}

void CAddressSpaceSearch::AddBranch(const COPCServerAddressSpaceBranch& branch, const BranchPtr& self,
                                    const std::wstring& path)
{
    const std::wstring prefix = path.empty() ? std::wstring() : path + L".";
    for (const ItemPtr& item : branch.Items())
        Add(self, item, prefix + item->Name());
    for (const BranchPtr& child : branch.Branches()) {
        const std::wstring childPath = prefix + child->Name();
        Add(child, nullptr, childPath);
        AddBranch(*child, child, childPath);
    }
}

size_t CAddressSpaceSearch::IndexOf(const COPCServerAddressSpaceBranch* branch, const COPCItem* item) const
{
    for (size_t i = 0; i < m_entries.size(); ++i)
        if (m_entries[i].branch.get() == branch && m_entries[i].item.get() == item)
            return i;
    return npos;
}

bool CAddressSpaceSearch::IsPattern(std::wstring_view query)
{
    return CL::IsWildcardPattern(query);
}

bool CAddressSpaceSearch::Matches(std::wstring_view pattern, std::wstring_view text)
{
    return CL::WildcardMatch(pattern, text);
}

std::vector<size_t> CAddressSpaceSearch::Find(const std::wstring& query, size_t limit) const
{
    std::vector<size_t> found;
    if (query.empty() || limit == 0)
        return found;
    const std::wstring lower = Lower(query);
    const bool pattern = IsPattern(lower);
    for (size_t i = 0; i < m_lowerPaths.size(); ++i) {
        const std::wstring& path = m_lowerPaths[i];
        const bool match = pattern ? Matches(lower, path) ||
                                         Matches(lower, std::wstring_view(path).substr(m_nameStarts[i]))
                                   : path.find(lower) != std::wstring::npos;
        if (match) {
            found.push_back(i);
            if (found.size() == limit)
                break;
        }
    }
    return found;
}
