#include "historian/DeletionJournal.h"

#include <oleauto.h>

#include "common/ChangeJournal.h"
#include "common/Text.h"

namespace CL {

namespace {

constexpr size_t kItemsNamed = 20;   // more are counted, not listed

std::wstring UtcText(DATE time)
{
    SYSTEMTIME utc = {};
    if (!::VariantTimeToSystemTime(time, &utc))
        return L"?";
    return CChangeJournal::TimeText(utc) + L" UTC";
}

std::wstring Thousands(unsigned long long number)
{
    std::wstring digits = std::to_wstring(number);
    for (int i = static_cast<int>(digits.size()) - 3; i > 0; i -= 3)
        digits.insert(static_cast<size_t>(i), L",");
    return digits;
}

} // namespace

std::wstring DeletionDetails(const CDeletion& deletion)
{
    std::wstring items;
    if (deletion.itemIds.empty()) {
        items = L"All items (" + Thousands(deletion.itemsBefore) + L")";
    } else {
        for (size_t i = 0; i < deletion.itemIds.size() && i < kItemsNamed; ++i)
            items += (i ? L", " : L"") + deletion.itemIds[i];
        if (deletion.itemIds.size() > kItemsNamed)
            items += L" and " + Thousands(deletion.itemIds.size() - kItemsNamed) + L" more";
        items = L"Items: " + items + L" (" + Thousands(deletion.itemIds.size()) + L")";
    }
    std::wstring period;
    if (!deletion.hasFrom && !deletion.hasTo)
        period = L"the whole time";
    else
        period = L"from " + (deletion.hasFrom ? UtcText(deletion.from) : std::wstring(L"the first value")) +
                 L" to before " + (deletion.hasTo ? UtcText(deletion.to) : std::wstring(L"the last value"));
    const unsigned long long deleted =
        deletion.valuesBefore > deletion.valuesAfter ? deletion.valuesBefore - deletion.valuesAfter : 0;
    if (!deletion.countKnown)
        return items + L"; period: " + period + L"; values deleted: unknown (the database could not be read "
                                                  L"afterwards; " + Thousands(deletion.valuesBefore) +
               L" values before).";
    return items + L"; period: " + period + L"; values deleted: " + Thousands(deleted) + L" (of " +
           Thousands(deletion.valuesBefore) + L").";
}

void JournalDeletion(const CDeletion& deletion) noexcept
{
    try {
        CChangeJournal::Instance().Record(kJournalValuesDeleted, DeletionDetails(deletion));
    } catch (...) {
    }
}

} // namespace CL
