#include "app/ChangeHistoryRows.h"

#include "historian/ItemFilter.h"

namespace CL {

namespace {

std::vector<std::wstring> SearchedFields(const CJournalEntry& entry)
{
    return {entry.time, entry.action, entry.account, entry.computer, entry.details, entry.file, entry.previousFile};
}

// The details as one line for the list.
std::wstring OneLine(std::wstring text)
{
    for (wchar_t& c : text)
        if (c == L'\r' || c == L'\n')
            c = L' ';
    return text;
}

} // namespace

void CChangeHistoryRows::Assign(std::vector<CJournalEntry> entries)
{
    m_entries = std::move(entries);
    m_folded.clear();
    m_folded.reserve(m_entries.size());
    for (const CJournalEntry& entry : m_entries) {
        std::wstring joined;
        for (const std::wstring& field : SearchedFields(entry))
            joined += CItemFilter::FoldCase(field) + L'\n';
        m_folded.push_back(std::move(joined));
    }
    ApplyFilter();
}

void CChangeHistoryRows::SetFilter(const std::wstring& text)
{
    m_filterText = text;
    ApplyFilter();
}

void CChangeHistoryRows::ApplyFilter()
{
    const CItemFilter filter(m_filterText);
    m_shown.clear();
    for (size_t i = m_entries.size(); i-- > 0;) {
        bool passes = filter.IsEmpty();
        // A pattern must match one field whole; a text may be in any.
        const std::wstring& folded = m_folded[i];
        for (size_t start = 0; !passes && start < folded.size();) {
            const size_t end = folded.find(L'\n', start);
            passes = filter.Matches(std::wstring_view(folded).substr(start, end - start));
            start = end + 1;
        }
        if (passes)
            m_shown.push_back(i);
    }
}

std::wstring CChangeHistoryRows::CellText(size_t row, int column) const
{
    const CJournalEntry& entry = Entry(row);
    switch (column) {
    case kTime: return entry.time;
    case kAction: return entry.action;
    case kAccount: return entry.account;
    case kComputer: return entry.computer;
    default: return OneLine(entry.details);
    }
}

bool CChangeHistoryRows::IsAddressSpaceEntry(const CJournalEntry& entry)
{
    return entry.action == kJournalAddressSpaceSaved || entry.action == kJournalAddressSpaceRestored;
}

bool CChangeHistoryRows::IsSettingsEntry(const CJournalEntry& entry)
{
    return entry.action == kJournalSettingsChanged || entry.action == kJournalSettingsRestored;
}

std::wstring CChangeHistoryRows::PreviousVersion(size_t row) const
{
    const size_t index = m_shown.at(row);
    if (!m_entries[index].previousFile.empty())
        return m_entries[index].previousFile;
    for (size_t i = index; i-- > 0;)
        if (m_entries[i].action == kJournalAddressSpaceSaved && !m_entries[i].file.empty())
            return m_entries[i].file;
    return L"";
}

std::wstring CChangeHistoryRows::DetailText(const CJournalEntry& entry)
{
    std::wstring text = entry.action + L", " + entry.time + L" UTC, by " + entry.account + L" on " + entry.computer +
                        L" (" + entry.program + L")\r\n";
    // One part per line: the attributes of a settings change, the
    // sentences of a save.
    std::wstring details = entry.details;
    for (size_t at = 0; (at = details.find(L"; ", at)) != std::wstring::npos;)
        details.replace(at, 2, L"\r\n");
    text += details + L"\r\n";
    const wchar_t* fileLabel = IsSettingsEntry(entry) ? L"Backup of the settings before: " : L"File: ";
    if (!entry.file.empty())
        text += fileLabel + entry.file + L"\r\n";
    if (!entry.previousFile.empty())
        text += L"Previous version: " + entry.previousFile + L"\r\n";
    return text;
}

} // namespace CL
