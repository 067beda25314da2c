#pragma once
// CEditHistory: the editor's undo and redo stacks of edit commands. A
// history starts where the address space was loaded from or saved to the
// server (the clean state), or, after New or Open, where no state matches
// the server's. Executing a command after some undos drops the commands
// that could have been redone.
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "addressspace/EditCommand.h"

class CEditHistory {
public:
    using CommandPtr = std::unique_ptr<CEditCommand>;

    // Runs the command's Do and records it. A Do that throws records
    // nothing and leaves the history as it was.
    CEditCommand& Execute(CommandPtr command);
    // Takes back the last command (or makes the last undone one again) and
    // returns it; null when there is none. A failure leaves the command on
    // its stack.
    CEditCommand* Undo();
    CEditCommand* Redo();

    bool CanUndo() const noexcept { return !m_done.empty(); }
    bool CanRedo() const noexcept { return !m_undone.empty(); }
    // The descriptions of the commands Undo and Redo would take; empty when
    // there is none.
    std::wstring UndoDescription() const;
    std::wstring RedoDescription() const;
    size_t UndoCount() const noexcept { return m_done.size(); }
    size_t RedoCount() const noexcept { return m_undone.size(); }

    // Drops every command. With clean, the state reached is the clean one;
    // without, no state of this history is.
    void Reset(bool clean);
    // Whether the current state is the clean one.
    bool IsClean() const noexcept { return m_startIsClean && m_done.empty(); }

private:
    std::vector<CommandPtr> m_done;
    std::vector<CommandPtr> m_undone;
    bool m_startIsClean = true;
};
