#include "addressspace/AddressSpaceDocument.h"

#include "addressspace/AddressSpaceCopy.h"
#include "common/Exception.h"

CAddressSpaceDocument::CAddressSpaceDocument() : m_model(ModelPtr::Make()), m_baseline(ModelPtr::Make()) {}

void CAddressSpaceDocument::SetModel(ModelPtr model)
{
    if (!model)
        throw CL::CException(E_POINTER, L"CAddressSpaceDocument::SetModel");
    m_model = std::move(model);
    ++m_revision;
}

void CAddressSpaceDocument::SetDirty(bool dirty)
{
    m_history.Reset(!dirty);
    m_dirty = dirty;
    ++m_revision;
    // Clean means "as the server has it": that state is the baseline.
    if (!dirty)
        m_baseline = CL::CopyAddressSpace(*m_model);
}

CEditCommand& CAddressSpaceDocument::Execute(std::unique_ptr<CEditCommand> command)
{
    CEditCommand& done = m_history.Execute(std::move(command));
    ++m_revision;
    m_dirty = !m_history.IsClean();
    return done;
}

CEditCommand* CAddressSpaceDocument::Undo()
{
    CEditCommand* undone = m_history.Undo();
    ++m_revision;
    m_dirty = !m_history.IsClean();
    return undone;
}

CEditCommand* CAddressSpaceDocument::Redo()
{
    CEditCommand* redone = m_history.Redo();
    ++m_revision;
    m_dirty = !m_history.IsClean();
    return redone;
}
