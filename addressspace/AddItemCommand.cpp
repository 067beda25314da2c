#include "addressspace/AddItemCommand.h"

CAddItemCommand::CAddItemCommand(BranchPtr branch, ItemPtr item) : m_branch(std::move(branch)), m_item(std::move(item))
{
}

void CAddItemCommand::Do()
{
    m_branch->AddItem(m_item);
}

void CAddItemCommand::Undo()
{
    m_branch->RemoveItem(m_item->Name());
}

std::wstring CAddItemCommand::Description() const
{
    return L"New Item '" + m_item->Name() + L"'";
}
