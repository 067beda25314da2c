#pragma once
// The change journal's entry for a deletion in the historian: the items,
// the period (UTC; an open bound is "any time"), and the number of values
// deleted, learnt from the explorer's value counts before and after.
#include <windows.h>
#include <oleauto.h>

#include <string>
#include <vector>

namespace CL {

struct CDeletion {
    std::vector<std::wstring> itemIds;   // empty: every item (Delete all)
    bool hasFrom = false;
    DATE from = 0;                       // UTC
    bool hasTo = false;
    DATE to = 0;                         // UTC, exclusive
    unsigned long long valuesBefore = 0;
    unsigned long long valuesAfter = 0;
    size_t itemsBefore = 0;              // Delete all: the number of items
    bool countKnown = true;              // false: the counts after could not be read
};

// The details text of the entry.
std::wstring DeletionDetails(const CDeletion& deletion);
// Records the deletion (never throws; the journal warns on failure).
void JournalDeletion(const CDeletion& deletion) noexcept;

} // namespace CL
