#pragma once
// IOPCItemOwner: the notification target given to an item at construction;
// it hears of every value change announced to the item.
class COPCItem;

class IOPCItemOwner {
public:
    virtual void OnItemValueChanged(COPCItem& item) = 0;

protected:
    ~IOPCItemOwner() = default;
};
