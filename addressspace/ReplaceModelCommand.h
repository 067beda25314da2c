#pragma once
// CReplaceModelCommand: the whole address space swapped for another one (an
// import applied to a copy); undo swaps the previous one back in.
#include <string>

#include "addressspace/EditCommand.h"
#include "common/SmartPtr.h"

class CAddressSpaceDocument;
class COPCServerAddressSpace;

class CReplaceModelCommand : public CEditCommand {
public:
    using ModelPtr = CL::CSmartPtr<COPCServerAddressSpace>;

    CReplaceModelCommand(CAddressSpaceDocument& document, ModelPtr model, std::wstring description);

    void Do() override;
    void Undo() override;
    std::wstring Description() const override { return m_description; }
    COPCServerAddressSpaceBranch* TouchedBranch() const override { return nullptr; }

private:
    CAddressSpaceDocument& m_document;
    ModelPtr m_other;   // the model that is not the document's
    std::wstring m_description;
};
