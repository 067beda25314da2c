#pragma once
// CHistorianImpact: what a change of the address space does to the values
// the historian archived. The server archives an item's values under its
// item ID (its path); an item that is removed, renamed or moved leaves its
// values under an ID that no item will have, and an item that stops being
// archived or gets another data type leaves them behind its new settings.
// Nothing is deleted: this only says how many values are concerned.
//
// The figures come from the historian's summary (one query giving, per item
// ID, the number of values and the first and last time), matched here by
// item ID without regard to letter case.
#include <windows.h>
#include <oleauto.h>

#include <map>
#include <string>
#include <vector>

#include "addressspace/AddressSpaceCompare.h"
#include "common/historian/HistorianValues.h"

struct ArchivedValues {
    long long count = 0;
    DATE first = 0;   // UTC; meaningful when count > 0
    DATE last = 0;
};

class CHistorianImpact {
public:
    // No figures yet: every affected row says the database is not known.
    CHistorianImpact() = default;
    explicit CHistorianImpact(const std::vector<CL::CHistorianSummaryEntry>& summary);

    // Whether the difference changes what happens to archived values: a
    // removed or moved item or branch, an item whose archive flag goes off,
    // an item with another data type.
    static bool Affects(const AddressSpaceDifference& difference);
    // What to ask the historian about: the item IDs of the affected items
    // and the paths of the affected branches (every ID below them).
    static void Concerned(const AddressSpaceDifferences& differences, std::vector<std::wstring>& itemIds,
                          std::vector<std::wstring>& branchPaths);
    // The values archived under the difference's item ID (for a branch:
    // under every ID below its path). Zero when it affects none.
    ArchivedValues For(const AddressSpaceDifference& difference) const;

    struct Totals {
        size_t orphanedItems = 0;         // removed or moved: IDs no item will have
        long long orphanedValues = 0;
        size_t settingItems = 0;          // archive off or another data type
        long long settingValues = 0;
    };
    // Over the distinct item IDs of all affected differences that hold
    // archived values.
    Totals Total(const AddressSpaceDifferences& differences) const;

    // "Saving removes 1,234 items that have 12,345,678 archived values;
    // those values stay in the database under item IDs that no item will
    // have." and, when some items keep their ID but stop being archived or
    // change type, a second sentence. Empty when nothing archived is
    // affected.
    static std::wstring SummaryText(const Totals& totals);
    // The row's text: "12,345 values, <first> - <last>" in local time, "none"
    // for an affected row without values, empty for other rows.
    std::wstring CellText(const AddressSpaceDifference& difference) const;

    // 1234567 as "1,234,567".
    static std::wstring Grouped(long long number);

private:
    static bool Orphans(const AddressSpaceDifference& difference);
    // The entries of the ID, or of every ID below the branch path.
    template <typename Visit>
    void ForEachEntry(const AddressSpaceDifference& difference, Visit visit) const;

    // Folded item ID -> its figures.
    std::map<std::wstring, ArchivedValues> m_values;
};
