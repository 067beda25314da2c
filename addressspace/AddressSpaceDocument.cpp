#include "addressspace/AddressSpaceDocument.h"

#include "common/Exception.h"

CAddressSpaceDocument::CAddressSpaceDocument() : m_model(ModelPtr::Make()) {}

void CAddressSpaceDocument::SetModel(ModelPtr model)
{
    if (!model)
        throw CL::CException(E_POINTER, L"CAddressSpaceDocument::SetModel");
    m_model = std::move(model);
}
