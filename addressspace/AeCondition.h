#pragma once
// AeCondition: one OPC AE condition of the address space, as the address
// space file stores it. Its identity is the pair (source, conditionName),
// compared without regard to letter case.
#include <windows.h>
#include <oleauto.h>

#include <string>

struct AeCondition {
    std::wstring source;           // the condition's source (an item path)
    std::wstring conditionName;
    ULONG category = 0;            // event category id
    bool active = false;
    bool enabled = false;
    bool acked = false;
    std::wstring definition;
    ULONG severity = 0;            // OPC severity
    std::wstring description;      // message text
    USHORT quality = 0;            // OPC quality
    DATE lastAckTime = 0;
    DATE lastActive = 0;
    DATE lastInactive = 0;
    std::wstring acknowledgerId;
    std::wstring comment;

    // True when both describe the same condition: equal source and equal
    // condition name, each ignoring case.
    bool SameConditionAs(const AeCondition& other) const;
};
