#pragma once
// What the historian's reads deliver: the values of one item as three
// parallel lists in record order, and one summary entry per archived item.
#include <windows.h>

#include <string>
#include <vector>

#include "common/Variant.h"

namespace CL {

struct CHistorianValues {
    std::vector<CVariant> values;
    std::vector<FILETIME> times;   // UTC
    std::vector<WORD> qualities;

    size_t Size() const { return values.size(); }
    void Clear()
    {
        values.clear();
        times.clear();
        qualities.clear();
    }
};

struct CHistorianSummaryEntry {
    std::wstring itemId;
    double timeFrom = 0.0;   // OLE date, UTC: the earliest value
    double timeTo = 0.0;     // OLE date, UTC: the latest value
    long valueCount = 0;
};

} // namespace CL
