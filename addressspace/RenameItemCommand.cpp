#include "addressspace/RenameItemCommand.h"

CRenameItemCommand::CRenameItemCommand(ItemPtr item, std::wstring newName)
    : m_item(std::move(item)), m_oldName(m_item->Name()), m_newName(std::move(newName))
{
}

void CRenameItemCommand::Do()
{
    m_item->Rename(m_newName.c_str());
}

void CRenameItemCommand::Undo()
{
    m_item->Rename(m_oldName.c_str());
}

std::wstring CRenameItemCommand::Description() const
{
    return L"Rename Item '" + m_oldName + L"'";
}
