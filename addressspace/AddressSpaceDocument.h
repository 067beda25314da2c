#pragma once
// CAddressSpaceDocument: the editor's state, owned by the address space
// editor window: the address space being edited, the history of its edits
// and the dirty flag. The
// window attaches itself as the views while it exists, so that a reload
// started elsewhere (the tray after the options changed) can empty and
// refill it.
#include <memory>

#include "addressspace/AddressSpaceViews.h"
#include "addressspace/EditHistory.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "common/SmartPtr.h"

class CAddressSpaceDocument {
public:
    using ModelPtr = CL::CSmartPtr<COPCServerAddressSpace>;

    // Starts with a new, empty address space and a clear dirty flag.
    CAddressSpaceDocument();

    const ModelPtr& Model() const noexcept { return m_model; }
    // Makes the given address space the edited one; the previous one is
    // released (and dies unless someone else holds it).
    void SetModel(ModelPtr model);

    // The address space as it was last loaded from or saved to the server
    // (a copy taken by SetDirty(false)); what "my changes" are measured
    // against. New and Open leave it as it was.
    const ModelPtr& Baseline() const noexcept { return m_baseline; }

    // Set by every edit, cleared after loading from or saving to the server
    // and when undo or redo comes back to that state.
    bool IsDirty() const noexcept { return m_dirty; }
    // Both start a fresh history. False: the address space now matches the
    // server's (loaded or saved), and that is the history's clean state.
    // True: it was replaced outside the history (New, Open), no state of
    // the fresh history matches the server's.
    void SetDirty(bool dirty = true);

    // Runs the edit and records it in the history; the dirty flag follows.
    // A failing edit throws and changes neither model, history nor flag.
    CEditCommand& Execute(std::unique_ptr<CEditCommand> command);
    // Takes back the last edit, or makes the last undone one again; returns
    // it (null when there was none). The dirty flag follows.
    CEditCommand* Undo();
    CEditCommand* Redo();
    const CEditHistory& History() const noexcept { return m_history; }
    // Counts every change of the model, the history or the baseline, so
    // that figures derived from them know when to be made again.
    unsigned long long Revision() const noexcept { return m_revision; }

    // The window showing the document, or null while there is none.
    IAddressSpaceViews* Views() const noexcept { return m_views; }
    void AttachViews(IAddressSpaceViews* views) noexcept { m_views = views; }

private:
    ModelPtr m_model;
    ModelPtr m_baseline;
    CEditHistory m_history;
    bool m_dirty = false;
    unsigned long long m_revision = 0;
    IAddressSpaceViews* m_views = nullptr;
};
