#include "addressspace/PasteCommand.h"

#include <map>
#include <set>

#include "addressspace/NameNumbering.h"
#include "addressspace/NoCaseLess.h"
#include "common/Text.h"

CPasteCommand::CPasteCommand(const CL::CsvImportPlan& plan, BranchPtr target, std::wstring verb)
    : m_target(std::move(target)), m_verb(std::move(verb))
{
    Build(plan);
}

CPasteCommand::CPasteCommand(BranchPtr target, std::vector<ItemPtr> items, std::vector<BranchPtr> branches,
                             std::wstring verb)
    : m_target(std::move(target)), m_verb(std::move(verb)), m_items(std::move(items)),
      m_branches(std::move(branches)), m_itemCount(m_items.size())
{
}

void CPasteCommand::Build(const CL::CsvImportPlan& plan)
{
    FILETIME now = {};
    ::GetSystemTimeAsFileTime(&now);
    std::set<std::wstring, NoCaseLess> itemNames;                  // taken by pasted items on the level
    std::map<std::wstring, BranchPtr, NoCaseLess> topBranches;     // by the name the text gives
    std::set<std::wstring, NoCaseLess> branchNames;                // taken by pasted branches on the level
    for (const CL::CsvItem& entry : plan.items) {
        if (entry.branches.empty()) {
            const std::wstring name = CNameNumbering::NextFree(entry.name, [&](const std::wstring& n) {
                return m_target->FindItem(n) || itemNames.count(n) != 0;
            });
            itemNames.insert(name);
            m_items.push_back(CL::NewCsvItem(entry, name, now));
            ++m_itemCount;
            continue;
        }
        BranchPtr& top = topBranches[entry.branches.front()];
        if (!top) {
            const std::wstring name = CNameNumbering::NextFree(entry.branches.front(), [&](const std::wstring& n) {
                return m_target->FindBranch(n) || branchNames.count(n) != 0;
            });
            branchNames.insert(name);
            top = BranchPtr::Make(name);
            m_branches.push_back(top);
        }
        BranchPtr branch = top;
        for (size_t i = 1; i < entry.branches.size(); ++i) {
            BranchPtr next = branch->FindBranch(entry.branches[i]);
            if (!next) {
                next = BranchPtr::Make(entry.branches[i]);
                branch->AddBranch(next);
            }
            branch = next;
        }
        const std::wstring name =
            CNameNumbering::NextFree(entry.name, [&](const std::wstring& n) { return bool(branch->FindItem(n)); });
        branch->AddItem(CL::NewCsvItem(entry, name, now));
        ++m_itemCount;
    }
}

// Takes out the first `items` items and `branches` branches.
void CPasteCommand::Remove(size_t items, size_t branches)
{
    for (size_t i = 0; i < items; ++i)
        m_target->RemoveItem(m_items[i]->Name());
    for (size_t i = 0; i < branches; ++i)
        m_target->RemoveBranch(m_branches[i]->Name());
}

void CPasteCommand::Do()
{
    size_t items = 0;
    size_t branches = 0;
    try {
        for (; items < m_items.size(); ++items)
            m_target->AddItem(m_items[items]);
        for (; branches < m_branches.size(); ++branches)
            m_target->AddBranch(m_branches[branches]);
    } catch (...) {
        Remove(items, branches);
        throw;
    }
}

void CPasteCommand::Undo()
{
    Remove(m_items.size(), m_branches.size());
}

std::wstring CPasteCommand::Description() const
{
    if (m_itemCount == 1 && m_items.size() == 1)
        return m_verb + L" Item '" + m_items.front()->Name() + L"'";
    return CL::Format(L"%ls %zu Items", m_verb.c_str(), m_itemCount);
}
