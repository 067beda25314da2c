#include "addressspace/EditHistory.h"

#include "common/Exception.h"

CEditCommand& CEditHistory::Execute(CommandPtr command)
{
    if (!command)
        throw CL::CException(E_POINTER, L"CEditHistory::Execute");
    m_done.reserve(m_done.size() + 1);   // nothing can fail after Do
    command->Do();
    m_undone.clear();
    m_done.push_back(std::move(command));
    return *m_done.back();
}

CEditCommand* CEditHistory::Undo()
{
    if (m_done.empty())
        return nullptr;
    m_undone.reserve(m_undone.size() + 1);
    m_done.back()->Undo();
    m_undone.push_back(std::move(m_done.back()));
    m_done.pop_back();
    return m_undone.back().get();
}

CEditCommand* CEditHistory::Redo()
{
    if (m_undone.empty())
        return nullptr;
    m_done.reserve(m_done.size() + 1);
    m_undone.back()->Do();
    m_done.push_back(std::move(m_undone.back()));
    m_undone.pop_back();
    return m_done.back().get();
}

std::wstring CEditHistory::UndoDescription() const
{
    return m_done.empty() ? std::wstring() : m_done.back()->Description();
}

std::wstring CEditHistory::RedoDescription() const
{
    return m_undone.empty() ? std::wstring() : m_undone.back()->Description();
}

void CEditHistory::Reset(bool clean)
{
    m_done.clear();
    m_undone.clear();
    m_startIsClean = clean;
}
