#pragma once
// IOPCItemValueSink: the interface through which the server announces a new
// value of an item. COPCItem implements it: it stores value, quality and time
// together and tells its owner (IOPCItemOwner).
#include <windows.h>
#include <oleauto.h>

class IOPCItemValueSink {
public:
    virtual void OnValueChange(const VARIANT& value, WORD quality, const FILETIME& time) = 0;

protected:
    ~IOPCItemValueSink() = default;
};
