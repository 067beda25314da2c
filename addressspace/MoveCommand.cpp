#include "addressspace/MoveCommand.h"

#include "common/Text.h"

CMoveCommand::CMoveCommand(BranchPtr from, std::vector<ItemPtr> items, BranchPtr moved, BranchPtr to)
    : m_from(std::move(from)), m_items(std::move(items)), m_moved(std::move(moved)), m_to(std::move(to))
{
}

// One item after the other; a failure puts the moved ones back.
void CMoveCommand::Move(const std::vector<ItemPtr>& items, COPCServerAddressSpaceBranch& from,
                        COPCServerAddressSpaceBranch& to)
{
    size_t moved = 0;
    try {
        for (; moved < items.size(); ++moved) {
            from.RemoveItem(items[moved]->Name());
            try {
                to.AddItem(items[moved]);
            } catch (...) {
                from.AddItem(items[moved]);
                throw;
            }
        }
    } catch (...) {
        for (size_t i = 0; i < moved; ++i) {
            to.RemoveItem(items[i]->Name());
            from.AddItem(items[i]);
        }
        throw;
    }
}

void CMoveCommand::Transfer(COPCServerAddressSpaceBranch& from, COPCServerAddressSpaceBranch& to) const
{
    if (!m_moved) {
        Move(m_items, from, to);
        return;
    }
    from.RemoveBranch(m_moved->Name());
    try {
        to.AddBranch(m_moved);
    } catch (...) {
        from.AddBranch(m_moved);
        throw;
    }
}

void CMoveCommand::Do()
{
    Transfer(*m_from, *m_to);
    m_undone = false;
}

void CMoveCommand::Undo()
{
    Transfer(*m_to, *m_from);
    m_undone = true;
}

std::wstring CMoveCommand::Description() const
{
    if (m_moved)
        return L"Move Branch '" + m_moved->Name() + L"'";
    if (m_items.size() == 1)
        return L"Move Item '" + m_items.front()->Name() + L"'";
    return CL::Format(L"Move %zu Items", m_items.size());
}
