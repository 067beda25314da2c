#pragma once
// CReviewRows: the rows of the review of changes, one per difference of a
// compare, with the historian impact beside each, filtered by a pattern of
// the editor's Find (a part of the path, or a pattern with '*' and '?'
// matching the whole path or the last name; letter case ignored).
#include <array>
#include <string>
#include <vector>

#include "addressspace/AddressSpaceCompare.h"
#include "addressspace/HistorianImpact.h"
#include "common/ui/ReportList.h"

class CReviewRows : public CL::IReportRows {
public:
    enum Column { kKind, kOrigin, kPath, kField, kBefore, kAfter, kImpact, kColumnCount };

    static std::vector<CL::ReportColumn> Columns();

    // The differences and what the historian holds for them; impactText
    // replaces every affected row's impact (e.g. when the historian could
    // not be opened); empty: the figures of `impact`.
    void Assign(AddressSpaceDifferences differences, const CHistorianImpact& impact, std::wstring impactText,
                bool showOrigin);
    // Shows only the rows whose path matches; an empty filter shows all.
    void SetFilter(const std::wstring& filter);

    const AddressSpaceDifferences& Differences() const noexcept { return m_differences; }
    // The difference of a shown row.
    const AddressSpaceDifference& At(size_t row) const { return m_differences.at(m_shown.at(row)); }

    size_t RowCount() const override { return m_shown.size(); }
    std::wstring CellText(size_t row, int column) const override;

    static std::wstring KindText(const AddressSpaceDifference& difference);
    static bool PathMatches(const std::wstring& filter, const std::wstring& path);

private:
    AddressSpaceDifferences m_differences;
    std::vector<std::wstring> m_impact;   // per difference
    std::vector<size_t> m_shown;          // indices into m_differences
    bool m_showOrigin = false;
};
