// The journal entries of each subsystem: a settings change names every
// attribute old -> new and the backup (a restore says so, a retention
// change gets its own entry); a historian deletion names the items, the
// period and the number of values; the change history lists the entries
// newest first and filters them as the explorer filters its items.
#include <gtest/gtest.h>

#include "app/ChangeHistoryRows.h"
#include "common/ChangeJournal.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "config/SettingsJournal.h"
#include "historian/DeletionJournal.h"
#include "support/ComApartment.h"
#include "support/TestSupport.h"

namespace {

// The process journal pointed at a temporary file for one test.
class JournalInTemp {
public:
    JournalInTemp() : m_saved(CL::CChangeJournal::Instance().Path())
    {
        CL::CChangeJournal::Instance().SetPath(m_dir.File(L"ChangeJournal.csv"));
        CL::CChangeJournal::Instance().SetEventLog(nullptr);
    }
    test::ComApartment com;   // the settings files go through MSXML
    ~JournalInTemp() { CL::CChangeJournal::Instance().SetPath(m_saved); }
    std::vector<CL::CJournalEntry> Entries() const { return CL::CChangeJournal::Instance().ReadAll(); }
    const test::TempDir& Dir() const { return m_dir; }

private:
    test::TempDir m_dir;
    std::wstring m_saved;
};

CL::CJournalEntry Entry(const wchar_t* time, const wchar_t* action, const wchar_t* details,
                        const wchar_t* file = L"")
{
    return {time, L"PLANT\\operator", L"SCADA1", L"MorvaneGui.exe 8.6.0.978", action, details, file, L""};
}

} // namespace

TEST(SettingsJournal, DifferencesNameEveryChangedAttributeOldToNew)
{
    CSettings before;
    CSettings after;
    after.Title = L"Plant";
    after.XmlDaPort = 9000;
    after.EnableUa = false;
    const std::vector<std::wstring> differences = SettingsDifferences(before, after);
    ASSERT_EQ(differences.size(), 3u);
    EXPECT_EQ(differences[0], L"Title: 'Varnel' -> 'Plant'");
    EXPECT_EQ(differences[1], L"XmlDaPort: '8082' -> '9000'");
    EXPECT_EQ(differences[2].rfind(L"EnableUa: '", 0), 0u);
    EXPECT_TRUE(SettingsDifferences(before, before).empty());
}

TEST(SettingsJournal, ChangeIsRecordedWithTheBackup)
{
    JournalInTemp journal;
    const std::wstring backup = journal.Dir().File(L"Morvane.ini.xml.2026_11_23-10_00_00");
    CSettings before;
    SaveSettingsTo(backup, before);
    CSettings after;
    after.ServiceName = L"MorvaneB";
    JournalSettingsChange(backup, after);
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Settings changed");
    EXPECT_EQ(entries[0].details,
              L"ServiceName: 'Morvane' -> 'MorvaneB'. Previous settings saved in " + backup + L".");
    EXPECT_EQ(entries[0].file, backup);
}

TEST(SettingsJournal, RetentionOptionsGetAnEntryOfTheirOwn)
{
    JournalInTemp journal;
    const std::wstring backup = journal.Dir().File(L"Morvane.ini.xml.2026_11_23-10_00_00");
    SaveSettingsTo(backup, CSettings());
    CSettings after;
    after.DbKeepAllValues = false;
    after.DbKeepLastValues = true;
    after.DbLastValues = 500;
    JournalSettingsChange(backup, after);
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].action, L"Retention changed");
    EXPECT_EQ(entries[1].details,
              L"Historian retention: keep the last 500 values of each item; delete the oldest 50 % of an item's "
              L"values when it is pruned (was: keep all values; delete the oldest 50 % of an item's values when it "
              L"is pruned).");
}

TEST(SettingsJournal, RestoreOfABackupIsNamed)
{
    JournalInTemp journal;
    const std::wstring backup = journal.Dir().File(L"Morvane.ini.xml.2026_11_23-10_00_00");
    SaveSettingsTo(backup, CSettings());
    CSettings after;
    after.TraceLevel = 3;
    {
        CSettingsRestoreNote restoring(L"C:\\Server\\Morvane.ini.xml.2026_11_01-08_00_00");
        JournalSettingsChange(backup, after);
    }
    JournalSettingsChange(backup, after);
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].action, L"Settings restored");
    EXPECT_EQ(entries[0].details.rfind(L"Restored from C:\\Server\\Morvane.ini.xml.2026_11_01-08_00_00. TraceLevel", 0),
              0u)
        << CL::Narrow(entries[0].details);
    EXPECT_EQ(entries[1].action, L"Settings changed");
}

TEST(SettingsJournal, UnreadableBackupStillRecordsTheChange)
{
    JournalInTemp journal;
    JournalSettingsChange(journal.Dir().File(L"missing"), CSettings());
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Settings changed");
}

TEST(DeletionJournal, DetailsNameItemsPeriodAndValuesDeleted)
{
    CL::CDeletion deletion;
    deletion.itemIds = {L"Plant.Line1.Speed", L"Plant.Line1.Torque"};
    deletion.hasFrom = true;
    deletion.from = 46349.5;   // 23.11.2026 12:00 UTC
    deletion.hasTo = false;
    deletion.valuesBefore = 1234567;
    deletion.valuesAfter = 1000;
    EXPECT_EQ(CL::DeletionDetails(deletion),
              L"Items: Plant.Line1.Speed, Plant.Line1.Torque (2); period: from 2026-11-23 12:00:00 UTC to before the "
              L"last value; values deleted: 1,233,567 (of 1,234,567).");
    CL::CDeletion all;
    all.itemsBefore = 3;
    all.valuesBefore = 90;
    EXPECT_EQ(CL::DeletionDetails(all),
              L"All items (3); period: the whole time; values deleted: 90 (of 90).");
    all.countKnown = false;
    EXPECT_NE(CL::DeletionDetails(all).find(L"values deleted: unknown"), std::wstring::npos);
}

TEST(DeletionJournal, LongListsNameTwentyItems)
{
    CL::CDeletion deletion;
    for (int i = 0; i < 25; ++i)
        deletion.itemIds.push_back(L"I" + std::to_wstring(i));
    const std::wstring details = CL::DeletionDetails(deletion);
    EXPECT_NE(details.find(L"I19 and 5 more (25)"), std::wstring::npos) << CL::Narrow(details);
    EXPECT_EQ(details.find(L"I20"), std::wstring::npos);
}

TEST(ChangeHistoryRows, NewestFirstAndFilteredLikeTheExplorer)
{
    CL::CChangeHistoryRows rows;
    rows.Assign({Entry(L"2026-11-20 08:00:00", CL::kJournalServiceStarted, L"Service 'Morvane' started"),
                 Entry(L"2026-11-21 09:00:00", CL::kJournalAddressSpaceSaved, L"Saved; 3 added", L"v1.xml"),
                 Entry(L"2026-11-22 10:00:00", CL::kJournalSettingsChanged, L"Title: 'a' -> 'b'", L"bak")});
    ASSERT_EQ(rows.RowCount(), 3u);
    EXPECT_EQ(rows.CellText(0, CL::CChangeHistoryRows::kTime), L"2026-11-22 10:00:00");
    EXPECT_EQ(rows.CellText(2, CL::CChangeHistoryRows::kAction), L"Service started");
    // A text anywhere, letter case ignored.
    rows.SetFilter(L"TITLE");
    ASSERT_EQ(rows.RowCount(), 1u);
    EXPECT_EQ(rows.Entry(0).action, L"Settings changed");
    rows.SetFilter(L"scada1");
    EXPECT_EQ(rows.RowCount(), 3u);
    // A pattern matches one field whole.
    rows.SetFilter(L"Service*");
    ASSERT_EQ(rows.RowCount(), 1u);
    EXPECT_EQ(rows.Entry(0).action, L"Service started");
    rows.SetFilter(L"ervice*");
    EXPECT_EQ(rows.RowCount(), 0u);
    rows.SetFilter(L"");
    EXPECT_EQ(rows.RowCount(), 3u);
}

TEST(ChangeHistoryRows, PreviousVersionComesFromTheEntryOrTheSaveBeforeIt)
{
    CL::CChangeHistoryRows rows;
    CL::CJournalEntry second = Entry(L"2026-11-22 10:00:00", CL::kJournalAddressSpaceSaved, L"b", L"v2.xml");
    CL::CJournalEntry third = Entry(L"2026-11-23 10:00:00", CL::kJournalAddressSpaceSaved, L"c", L"v3.xml");
    third.previousFile = L"elsewhere.xml";
    rows.Assign({Entry(L"2026-11-21 09:00:00", CL::kJournalAddressSpaceSaved, L"a", L"v1.xml"),
                 Entry(L"2026-11-21 09:30:00", CL::kJournalServiceStopped, L"x"), second, third});
    EXPECT_EQ(rows.PreviousVersion(0), L"elsewhere.xml");
    EXPECT_EQ(rows.PreviousVersion(1), L"v1.xml");
    EXPECT_EQ(rows.PreviousVersion(3), L"");
    const std::wstring text = CL::CChangeHistoryRows::DetailText(
        Entry(L"2026-11-22 10:00:00", CL::kJournalSettingsChanged, L"Title: 'a' -> 'b'; TraceLevel: '1' -> '3'",
              L"C:\\s\\Morvane.ini.xml.2026_11_22-10_00_00"));
    EXPECT_NE(text.find(L"Title: 'a' -> 'b'\r\nTraceLevel: '1' -> '3'\r\n"), std::wstring::npos);
    EXPECT_NE(text.find(L"Backup of the settings before: C:\\s\\Morvane.ini.xml.2026_11_22-10_00_00"),
              std::wstring::npos);
}
