#include "addressspace/RenameBranchCommand.h"

CRenameBranchCommand::CRenameBranchCommand(BranchPtr branch, std::wstring newName)
    : m_branch(std::move(branch)), m_oldName(m_branch->Name()), m_newName(std::move(newName))
{
}

void CRenameBranchCommand::Do()
{
    m_branch->Rename(m_newName.c_str());
}

void CRenameBranchCommand::Undo()
{
    m_branch->Rename(m_oldName.c_str());
}

std::wstring CRenameBranchCommand::Description() const
{
    return L"Rename Branch '" + m_oldName + L"'";
}
