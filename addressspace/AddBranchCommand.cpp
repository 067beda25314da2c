#include "addressspace/AddBranchCommand.h"

CAddBranchCommand::CAddBranchCommand(BranchPtr parent, BranchPtr branch)
    : m_parent(std::move(parent)), m_branch(std::move(branch))
{
}

void CAddBranchCommand::Do()
{
    m_parent->AddBranch(m_branch);
}

void CAddBranchCommand::Undo()
{
    m_parent->RemoveBranch(m_branch->Name());
}

std::wstring CAddBranchCommand::Description() const
{
    return L"New Branch '" + m_branch->Name() + L"'";
}
