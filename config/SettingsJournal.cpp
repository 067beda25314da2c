#include "config/SettingsJournal.h"

#include "common/ChangeJournal.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"

namespace {

std::wstring g_restoring;

bool IsRetentionKey(const std::wstring& name)
{
    return name.rfind(L"Db", 0) == 0;
}

std::wstring Join(const std::vector<std::wstring>& parts, const wchar_t* separator)
{
    std::wstring text;
    for (const std::wstring& part : parts)
        text += (text.empty() ? L"" : separator) + part;
    return text;
}

} // namespace

std::vector<std::wstring> SettingsDifferences(const CSettings& before, const CSettings& after)
{
    const auto old = SettingsAttributeTexts(before);
    const auto now = SettingsAttributeTexts(after);
    std::vector<std::wstring> differences;
    for (size_t i = 0; i < old.size() && i < now.size(); ++i)
        if (old[i].second != now[i].second)
            differences.push_back(old[i].first + L": '" + old[i].second + L"' -> '" + now[i].second + L"'");
    return differences;
}

std::wstring DescribeHistorianRetention(const CSettings& settings)
{
    std::vector<std::wstring> rules;
    if (settings.DbKeepAllValues)
        rules.push_back(L"keep all values");
    if (settings.DbKeepLastValues)
        rules.push_back(L"keep the last " + std::to_wstring(settings.DbLastValues) + L" values of each item");
    if (settings.DbKeepLastMinutesValues)
        rules.push_back(L"keep the values of the last " + std::to_wstring(settings.DbLastMinutesValues) + L" minutes");
    if (rules.empty())
        rules.push_back(L"no rule chosen");
    return Join(rules, L", ") + L"; delete the oldest " + std::to_wstring(settings.DbDeletePercent) +
           L" % of an item's values when it is pruned";
}

void JournalSettingsChange(const std::wstring& backup, const CSettings& after) noexcept
{
    CL::CChangeJournal& journal = CL::CChangeJournal::Instance();
    try {
        CSettings before;
        LoadSettingsFrom(backup, before);
        const std::vector<std::wstring> differences = SettingsDifferences(before, after);
        const std::wstring& restoring = CSettingsRestoreNote::Current();
        std::wstring details = differences.empty() ? L"No attribute changed." : Join(differences, L"; ") + L".";
        details += L" Previous settings saved in " + backup + L".";
        if (!restoring.empty())
            details = L"Restored from " + restoring + L". " + details;
        journal.Record(restoring.empty() ? CL::kJournalSettingsChanged : CL::kJournalSettingsRestored, details, backup);
        bool retentionChanged = false;
        for (const std::wstring& difference : differences)
            retentionChanged = retentionChanged || IsRetentionKey(difference);
        if (retentionChanged)
            journal.Record(CL::kJournalRetentionChanged,
                           L"Historian retention: " + DescribeHistorianRetention(after) + L" (was: " +
                               DescribeHistorianRetention(before) + L").",
                           backup);
    } catch (...) {
        // The backup could not be read: the change is still recorded.
        const std::wstring failure = CL::DescribeCurrentException().text;
        Log(0, "The settings before the change could not be read from " + CL::Narrow(backup) + ": " +
                   CL::Narrow(failure) + MV_POS());
        journal.Record(CL::kJournalSettingsChanged,
                       L"New settings applied; the previous settings in " + backup + L" could not be read.", backup);
    }
}

CSettingsRestoreNote::CSettingsRestoreNote(std::wstring backup)
{
    g_restoring = std::move(backup);
}

CSettingsRestoreNote::~CSettingsRestoreNote()
{
    g_restoring.clear();
}

const std::wstring& CSettingsRestoreNote::Current()
{
    return g_restoring;
}
