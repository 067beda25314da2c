#include "addressspace/ReviewRows.h"

#include <cwctype>

#include "addressspace/AddressSpaceSearch.h"

namespace {

std::wstring Lower(std::wstring text)
{
    for (wchar_t& c : text)
        c = static_cast<wchar_t>(std::towlower(c));
    return text;
}

} // namespace

std::vector<CL::ReportColumn> CReviewRows::Columns()
{
    return {
        {L"Kind", 100},  {L"Changed on", 80}, {L"Path", 200},           {L"Field", 70},
        {L"Before", 130}, {L"After", 130},    {L"Historian impact", 220},
    };
}

void CReviewRows::Assign(AddressSpaceDifferences differences, const CHistorianImpact& impact, std::wstring impactText,
                         bool showOrigin)
{
    m_differences = std::move(differences);
    m_showOrigin = showOrigin;
    m_impact.clear();
    m_impact.reserve(m_differences.size());
    for (const AddressSpaceDifference& d : m_differences)
        m_impact.push_back(!CHistorianImpact::Affects(d) ? std::wstring()
                           : impactText.empty()          ? impact.CellText(d)
                                                         : impactText);
    m_shown.resize(m_differences.size());
    for (size_t i = 0; i < m_shown.size(); ++i)
        m_shown[i] = i;
}

bool CReviewRows::PathMatches(const std::wstring& filter, const std::wstring& path)
{
    if (filter.empty())
        return true;
    const std::wstring query = Lower(filter);
    const std::wstring text = Lower(path);
    if (!CAddressSpaceSearch::IsPattern(query))
        return text.find(query) != std::wstring::npos;
    const size_t dot = text.rfind(L'.');
    return CAddressSpaceSearch::Matches(query, text) ||
           (dot != std::wstring::npos && CAddressSpaceSearch::Matches(query, text.substr(dot + 1)));
}

void CReviewRows::SetFilter(const std::wstring& filter)
{
    m_shown.clear();
    for (size_t i = 0; i < m_differences.size(); ++i) {
        const AddressSpaceDifference& d = m_differences[i];
        if (PathMatches(filter, d.path) || (d.kind == DifferenceKind::Moved && PathMatches(filter, d.before)))
            m_shown.push_back(i);
    }
}

std::wstring CReviewRows::KindText(const AddressSpaceDifference& d)
{
    std::wstring subject = DifferenceSubjectText(d.subject);
    for (wchar_t& c : subject)
        c = static_cast<wchar_t>(std::towlower(c));
    return std::wstring(DifferenceKindText(d.kind)) + L" " + subject;
}

std::wstring CReviewRows::CellText(size_t row, int column) const
{
    const size_t index = m_shown.at(row);
    const AddressSpaceDifference& d = m_differences[index];
    switch (column) {
    case kKind: return KindText(d);
    case kOrigin:
        if (!m_showOrigin)
            return {};
        return d.Conflict() ? L"Both: conflict" : DifferenceOriginText(d.origin);
    case kPath: return d.path;
    case kField: return d.field;
    case kBefore: return d.before;
    case kAfter: return d.after;
    case kImpact: return m_impact[index];
    default: return {};
    }
}
