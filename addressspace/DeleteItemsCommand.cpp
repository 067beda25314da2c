#include "addressspace/DeleteItemsCommand.h"

#include "common/Text.h"

CDeleteItemsCommand::CDeleteItemsCommand(BranchPtr branch, std::vector<ItemPtr> items, std::wstring verb)
    : m_branch(std::move(branch)), m_items(std::move(items)), m_verb(std::move(verb))
{
}

// Removes the first `count` items.
void CDeleteItemsCommand::Remove(size_t count)
{
    for (size_t i = 0; i < count; ++i)
        m_branch->RemoveItem(m_items[i]->Name());
}

// Adds the first `count` items back.
void CDeleteItemsCommand::Add(size_t count)
{
    for (size_t i = 0; i < count; ++i)
        m_branch->AddItem(m_items[i]);
}

// A failure half-way puts back what was taken, so the branch stays whole.
void CDeleteItemsCommand::Do()
{
    size_t removed = 0;
    try {
        for (; removed < m_items.size(); ++removed)
            m_branch->RemoveItem(m_items[removed]->Name());
    } catch (...) {
        Add(removed);
        throw;
    }
}

void CDeleteItemsCommand::Undo()
{
    size_t added = 0;
    try {
        for (; added < m_items.size(); ++added)
            m_branch->AddItem(m_items[added]);
    } catch (...) {
        Remove(added);
        throw;
    }
}

std::wstring CDeleteItemsCommand::Description() const
{
    if (m_items.size() == 1)
        return m_verb + L" Item '" + m_items.front()->Name() + L"'";
    return CL::Format(L"%ls %zu Items", m_verb.c_str(), m_items.size());
}
