#include "addressspace/EditorStatus.h"

#include "common/Text.h"

std::vector<int> CEditorStatus::PaneWidths()
{
    return {130, 190, 140};
}

size_t CEditorStatus::CountItems(const COPCServerAddressSpaceBranch& root)
{
    // Iterative, so that a deep address space cannot exhaust the stack.
    size_t items = root.ItemCount();
    std::vector<COPCServerAddressSpaceBranch::BranchPtr> pending = root.Branches();
    while (!pending.empty()) {
        const COPCServerAddressSpaceBranch::BranchPtr branch = std::move(pending.back());
        pending.pop_back();
        items += branch->ItemCount();
        if (branch->BranchCount() == 0)
            continue;
        for (auto& child : branch->Branches())
            pending.push_back(std::move(child));
    }
    return items;
}

std::wstring CEditorStatus::BranchText(size_t items)
{
    return CL::Format(L"Branch: %zu item(s)", items);
}

std::wstring CEditorStatus::TotalText(size_t items)
{
    return CL::Format(L"Address space: %zu item(s)", items);
}

std::wstring CEditorStatus::ModifiedText(size_t changes)
{
    return CL::Format(changes == 1 ? L"%ls: %zu change" : L"%ls: %zu changes", kModified, changes);
}

void CEditorStatus::Show(CL::CFrameBars& bars, const COPCServerAddressSpaceBranch* listed,
                         const COPCServerAddressSpaceBranch& root, bool dirty, size_t changes)
{
    bars.SetPaneText(kBranchPane, listed ? BranchText(listed->ItemCount()) : std::wstring());
    bars.SetPaneText(kTotalPane, TotalText(CountItems(root)));
    bars.SetPaneText(kModifiedPane, dirty ? ModifiedText(changes) : std::wstring());
}
