#include "addressspace/ReplaceModelCommand.h"

#include "addressspace/AddressSpaceDocument.h"

CReplaceModelCommand::CReplaceModelCommand(CAddressSpaceDocument& document, ModelPtr model, std::wstring description)
    : m_document(document), m_other(std::move(model)), m_description(std::move(description))
{
}

// Do and Undo both swap: the document's model and the kept one change places.
void CReplaceModelCommand::Do()
{
    ModelPtr previous = m_document.Model();
    m_document.SetModel(m_other);
    m_other = std::move(previous);
}

void CReplaceModelCommand::Undo()
{
    Do();
}
