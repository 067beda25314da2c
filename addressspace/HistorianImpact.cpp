#include "addressspace/HistorianImpact.h"

#include <algorithm>
#include <cwctype>
#include <set>

#include "common/Exception.h"
#include "common/LocalTime.h"
#include "common/Util_Variant.h"

namespace {

std::wstring Folded(const std::wstring& text)
{
    std::wstring folded(text);
    for (wchar_t& c : folded)
        c = static_cast<wchar_t>(std::towlower(c));
    return folded;
}

std::wstring TimeText(DATE utc)
{
    try {
        return CL::DateToString(CL::UtcToLocalDate(utc));
    } catch (const CL::CException&) {
        return L"?";
    }
}

} // namespace

CHistorianImpact::CHistorianImpact(const std::vector<CL::CHistorianSummaryEntry>& summary)
{
    for (const CL::CHistorianSummaryEntry& entry : summary) {
        ArchivedValues& values = m_values[Folded(entry.itemId)];
        if (values.count == 0 || entry.timeFrom < values.first)
            values.first = entry.timeFrom;
        if (values.count == 0 || entry.timeTo > values.last)
            values.last = entry.timeTo;
        values.count += entry.valueCount;
    }
}

bool CHistorianImpact::Orphans(const AddressSpaceDifference& d)
{
    return (d.kind == DifferenceKind::Removed || d.kind == DifferenceKind::Moved) &&
           d.subject != DifferenceSubject::Condition && !d.itemId.empty();
}

bool CHistorianImpact::Affects(const AddressSpaceDifference& d)
{
    if (Orphans(d))
        return true;
    return d.kind == DifferenceKind::Changed && d.subject == DifferenceSubject::Item &&
           (d.field == L"Data type" || (d.field == L"Archive" && d.after == L"No"));
}

void CHistorianImpact::Concerned(const AddressSpaceDifferences& differences, std::vector<std::wstring>& itemIds,
                                 std::vector<std::wstring>& branchPaths)
{
    std::set<std::wstring> ids, paths;
    for (const AddressSpaceDifference& d : differences)
        if (Affects(d))
            (d.subject == DifferenceSubject::Item ? ids : paths).insert(d.itemId);
    itemIds.assign(ids.begin(), ids.end());
    branchPaths.assign(paths.begin(), paths.end());
}

template <typename Visit>
void CHistorianImpact::ForEachEntry(const AddressSpaceDifference& d, Visit visit) const
{
    if (!Affects(d))
        return;
    const std::wstring id = Folded(d.itemId);
    if (d.subject == DifferenceSubject::Item) {
        auto found = m_values.find(id);
        if (found != m_values.end())
            visit(found->first, found->second);
        return;
    }
    // A branch: every ID that starts with its path and a dot.
    const std::wstring prefix = id + L".";
    for (auto it = m_values.lower_bound(prefix); it != m_values.end() && it->first.compare(0, prefix.size(), prefix) == 0;
         ++it)
        visit(it->first, it->second);
}

ArchivedValues CHistorianImpact::For(const AddressSpaceDifference& d) const
{
    ArchivedValues total;
    ForEachEntry(d, [&](const std::wstring&, const ArchivedValues& values) {
        if (values.count == 0)
            return;
        if (total.count == 0 || values.first < total.first)
            total.first = values.first;
        if (total.count == 0 || values.last > total.last)
            total.last = values.last;
        total.count += values.count;
    });
    return total;
}

CHistorianImpact::Totals CHistorianImpact::Total(const AddressSpaceDifferences& differences) const
{
    std::set<std::wstring> orphaned;
    std::set<std::wstring> settings;
    for (const AddressSpaceDifference& d : differences)
        ForEachEntry(d, [&](const std::wstring& id, const ArchivedValues& values) {
            if (values.count > 0)
                (Orphans(d) ? orphaned : settings).insert(id);
        });
    Totals totals;
    for (const std::wstring& id : orphaned) {
        ++totals.orphanedItems;
        totals.orphanedValues += m_values.at(id).count;
    }
    for (const std::wstring& id : settings) {
        if (orphaned.count(id))
            continue;
        ++totals.settingItems;
        totals.settingValues += m_values.at(id).count;
    }
    return totals;
}

std::wstring CHistorianImpact::Grouped(long long number)
{
    std::wstring digits = std::to_wstring(number < 0 ? -number : number);
    for (size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, L",");
    return number < 0 ? L"-" + digits : digits;
}

std::wstring CHistorianImpact::SummaryText(const Totals& totals)
{
    std::wstring text;
    if (totals.orphanedItems > 0) {
        const bool one = totals.orphanedItems == 1;
        text = L"Saving removes " + Grouped(static_cast<long long>(totals.orphanedItems)) +
               (one ? L" item that has " : L" items that have ") + Grouped(totals.orphanedValues) +
               L" archived values; those values stay in the database under item IDs that no item will have.";
    }
    if (totals.settingItems > 0) {
        const bool one = totals.settingItems == 1;
        if (!text.empty())
            text += L" ";
        text += Grouped(static_cast<long long>(totals.settingItems)) + (one ? L" item that has " : L" items that have ") +
                Grouped(totals.settingValues) +
                (one ? L" archived values stops being archived or gets another data type; its values stay as they are."
                     : L" archived values stop being archived or get another data type; their values stay as they are.");
    }
    return text;
}

std::wstring CHistorianImpact::CellText(const AddressSpaceDifference& d) const
{
    if (!Affects(d))
        return {};
    const ArchivedValues values = For(d);
    if (values.count == 0)
        return L"none";
    return Grouped(values.count) + L" values, " + TimeText(values.first) + L" to " + TimeText(values.last);
}
