#pragma once
// IAddressSpaceViews: what the address space document asks of the editor
// window that shows it (the tree of branches and the list of items) when the
// document replaces its model on its own.
class IAddressSpaceViews {
public:
    // Empties the tree (every node from the root) and the list.
    virtual void ClearViews() = 0;
    // Fills the tree from the model's root and the list for the selection.
    virtual void FillViews() = 0;

protected:
    ~IAddressSpaceViews() = default;
};
