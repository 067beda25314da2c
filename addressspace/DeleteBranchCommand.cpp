#include "addressspace/DeleteBranchCommand.h"

#include "common/Exception.h"

CDeleteBranchCommand::CDeleteBranchCommand(BranchPtr branch, std::wstring verb)
    : m_branch(std::move(branch)), m_verb(std::move(verb))
{
    if (!m_branch || !m_branch->Parent())
        throw CL::CException(E_INVALIDARG, L"CDeleteBranchCommand");
    m_parent = m_branch->Parent();
}

void CDeleteBranchCommand::Do()
{
    m_parent->RemoveBranch(m_branch->Name());
    m_done = true;
}

void CDeleteBranchCommand::Undo()
{
    m_parent->AddBranch(m_branch);
    m_done = false;
}

std::wstring CDeleteBranchCommand::Description() const
{
    return m_verb + L" Branch '" + m_branch->Name() + L"'";
}

COPCServerAddressSpaceBranch* CDeleteBranchCommand::TouchedBranch() const
{
    return m_done ? m_parent.get() : m_branch.get();
}
