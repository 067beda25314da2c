#pragma once
// CAddressSpaceDocument: the editor's state, owned by the address space
// editor window: the address space being edited and the dirty flag. The
// window attaches itself as the views while it exists, so that a reload
// started elsewhere (the tray after the options changed) can empty and
// refill it.
#include "addressspace/AddressSpaceViews.h"
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

    // Set by every edit, cleared after loading from or saving to the server.
    bool IsDirty() const noexcept { return m_dirty; }
    void SetDirty(bool dirty = true) noexcept { m_dirty = dirty; }

    // The window showing the document, or null while there is none.
    IAddressSpaceViews* Views() const noexcept { return m_views; }
    void AttachViews(IAddressSpaceViews* views) noexcept { m_views = views; }

private:
    ModelPtr m_model;
    bool m_dirty = false;
    IAddressSpaceViews* m_views = nullptr;
};
