#pragma once
// The historian's summary (item ID, first and last time, number of values)
// of some items only, for the review of an address space change: the
// listed item IDs and every ID below the listed branch paths ("Plant.Line1"
// takes "Plant.Line1.Speed"), in one query that the index on ItemID serves.
// A long list asks for the summary of every item instead (one query too).
#include <string>
#include <vector>

#include "common/historian/HistorianValues.h"

namespace CL {

class CHistorian;

// Above this many IDs and paths together the whole summary is read.
inline constexpr size_t kMaxSummaryNames = 400;

// Opens its own connection; failures reach the caller as CHistorian's do.
std::vector<CHistorianSummaryEntry> ReadSummaryOf(CHistorian& historian, const std::vector<std::wstring>& itemIds,
                                                  const std::vector<std::wstring>& branchPaths);

// The query's text (item IDs and LIKE patterns quoted and escaped).
std::wstring SummaryOfQuery(const std::vector<std::wstring>& itemIds, const std::vector<std::wstring>& branchPaths);

} // namespace CL
