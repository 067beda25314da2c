#pragma once
// CEditCommand: one change of the address space made in the editor, able to
// make itself and to take itself back. The history keeps these; every edit
// of the editor (menu commands, CSV import) builds one, so that undo and
// redo are one mechanism for all of them.
//
// Do and Undo either finish or throw with the model as it was before the
// call; the history records a command only after its Do went through.
#include <string>

class COPCServerAddressSpaceBranch;

class CEditCommand {
public:
    virtual ~CEditCommand() = default;

    virtual void Do() = 0;
    virtual void Undo() = 0;
    // A short text for the Edit menu ("Delete branch 'Line1'").
    virtual std::wstring Description() const = 0;
    // The branch that the views select after Do, Undo or Redo; null for the
    // root.
    virtual COPCServerAddressSpaceBranch* TouchedBranch() const = 0;
};
