// The change history window over a journal of known entries: newest first,
// the explorer's filter, the details of the selected entry, the buttons
// that fit it; Restore of an address space version (question, then the
// editor takes it as one undoable change) and of a settings backup (the
// Options dialog filled from it, whose OK runs the settings change and is
// journalled as a restore); the tray's part (the editor opened first, the
// options rule kept); the number of versions kept; service starts and stops
// from the tray menu journalled.
#include <gtest/gtest.h>

#include <string>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "FakeTrayParts.h"
#include "OptionsTestSupport.h"
#include "addressspace/AddressSpaceVersions.h"
#include "addressspace/VersionRetention.h"
#include "addressspace/dlgVersionRetention.h"
#include "app/DummyWnd.h"
#include "app/dlgChangeHistory.h"
#include "common/ChangeJournal.h"
#include "common/RegistryKey.h"
#include "config/SettingsJournal.h"
#include "config/dlgOptions.h"
#include "support/ComApartment.h"
#include "support/ServerSimulator.h"

namespace {

// One key per test process: CTest runs tests of other processes at the same
// time, and a key they shared would let one test's setting reach another.
const std::wstring kRetentionKey = L"Software\\MorvaneTests\\HistoryRetention" + std::to_wstring(::GetCurrentProcessId());

// The process journal pointed at a fresh file for one test.
class JournalInTemp {
public:
    JournalInTemp() : m_saved(CL::CChangeJournal::Instance().Path())
    {
        CL::CChangeJournal::Instance().SetPath(dir.File(L"ChangeJournal.csv"));
    }
    ~JournalInTemp() { CL::CChangeJournal::Instance().SetPath(m_saved); }
    CL::CChangeJournal& Journal() { return CL::CChangeJournal::Instance(); }
    std::vector<CL::CJournalEntry> Entries() { return Journal().ReadAll(); }

    test::TempDir dir;

private:
    std::wstring m_saved;
};

std::wstring ListText(HWND list, int row, int column)
{
    wchar_t text[512] = {};
    ListView_GetItemText(list, row, column, text, 512);
    return text;
}

void SelectRow(HWND list, int row)
{
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED);
    ListView_SetItemState(list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
}

bool Enabled(HWND dialog, int id)
{
    return ::IsWindowEnabled(::GetDlgItem(dialog, id)) != FALSE;
}

// A journal of four entries (oldest first): the service started, an address
// space save with its two versions, a settings change with its backup, a
// historian deletion.
class ChangeHistory : public testing::Test {
protected:
    void SetUp() override
    {
        CL::CRegistryKey::Delete(HKEY_CURRENT_USER, kRetentionKey.c_str());
        exchangeFile = journal.dir.File(L"DefaultAddressSpace.xml");
        CAddressSpaceVersions versions(exchangeFile);
        SYSTEMTIME first = {2026, 11, 0, 20, 8, 0, 0, 0};
        SYSTEMTIME second = {2026, 11, 0, 21, 9, 0, 0, 0};
        older = versions.KeepAt(test::EditorSampleSpace(), first);
        newer = versions.KeepAt("<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"Restored\" CanonicalDataType=\"3\">"
                                "<Value>1</Value></Item></Morvane_OPCDAAddressSpace>",
                                second);
        backup = journal.dir.File(L"Morvane.ini.xml.2026_11_22-10_00_00");
        CSettings old;
        old.Title = L"Before";
        SaveSettingsTo(backup, old);
        Append(L"2026-11-20 08:00:00", CL::kJournalServiceStarted, L"Service 'Morvane' started from the tray menu.");
        Append(L"2026-11-21 09:00:00", CL::kJournalAddressSpaceSaved, L"Saved to " + exchangeFile + L".", newer,
               older);
        Append(L"2026-11-22 10:00:00", CL::kJournalSettingsChanged,
               L"Title: 'Before' -> 'Varnel'. Previous settings saved in " + backup + L".", backup);
        Append(L"2026-11-23 11:00:00", CL::kJournalValuesDeleted,
               L"Items: Plant.Line1.Speed (1); period: the whole time; values deleted: 60 (of 60).");
    }
    void TearDown() override { CL::CRegistryKey::Delete(HKEY_CURRENT_USER, kRetentionKey.c_str()); }

    void Append(const wchar_t* time, const wchar_t* action, const std::wstring& details, const std::wstring& file = L"",
                const std::wstring& previous = L"")
    {
        ASSERT_TRUE(journal.Journal().Append(
            {time, L"PLANT\\operator", L"SCADA1", L"MorvaneGui.exe 8.6.0.978", action, details, file, previous}));
    }

    HWND Open(CL::ChangeHistoryActions actions = {})
    {
        dialog = std::make_unique<CL::CdlgChangeHistory>(journal.Journal(), exchangeFile,
                                                         CVersionRetention(HKEY_CURRENT_USER, kRetentionKey.c_str()),
                                                         std::move(actions));
        const HWND hwnd = dialog->Create(nullptr);
        // Hidden, so that the message box answerers leave it alone.
        EXPECT_NE(hwnd, nullptr);
        return hwnd;
    }
    HWND List() { return ::GetDlgItem(dialog->Hwnd(), IDC_HISTORY_LIST); }

    test::ComApartment com;   // the settings and address space files go through MSXML
    JournalInTemp journal;
    std::wstring exchangeFile;
    std::wstring older;
    std::wstring newer;
    std::wstring backup;
    std::unique_ptr<CL::CdlgChangeHistory> dialog;
};

CL::ChangeHistoryActions EveryAction(std::vector<std::wstring>& calls)
{
    CL::ChangeHistoryActions actions;
    actions.restoreAddressSpace = [&calls](HWND, const std::wstring& v) {
        calls.push_back(L"restore " + v);
        return true;
    };
    actions.restoreSettings = [&calls](HWND, const std::wstring& b) {
        calls.push_back(L"settings " + b);
        return true;
    };
    actions.compareFiles = [&calls](HWND, const std::wstring& a, const std::wstring& b) {
        calls.push_back(L"compare " + a + L" " + b);
    };
    return actions;
}

} // namespace

TEST_F(ChangeHistory, ListsTheJournalNewestFirst)
{
    const HWND hwnd = Open();
    ASSERT_EQ(ListView_GetItemCount(List()), 4);
    EXPECT_EQ(ListText(List(), 0, 0), L"2026-11-23 11:00:00");
    EXPECT_EQ(ListText(List(), 0, 1), L"Historian values deleted");
    EXPECT_EQ(ListText(List(), 3, 1), L"Service started");
    EXPECT_EQ(ListText(List(), 1, 2), L"PLANT\\operator");
    EXPECT_EQ(ListText(List(), 1, 3), L"SCADA1");
    EXPECT_EQ(test::ItemText(hwnd, IDC_HISTORY_COUNT), L"4 change(s)");
    // The newest is selected and its details shown.
    EXPECT_EQ(test::ItemText(hwnd, IDC_HISTORY_DETAILS).rfind(
                  L"Historian values deleted, 2026-11-23 11:00:00 UTC, by PLANT\\operator on SCADA1", 0),
              0u);
}

TEST_F(ChangeHistory, FilterNarrowsTheListAsTheExplorersDoes)
{
    const HWND hwnd = Open();
    test::SetItemText(hwnd, IDC_HISTORY_FILTER, L"title");
    ASSERT_EQ(ListView_GetItemCount(List()), 1);
    EXPECT_EQ(ListText(List(), 0, 1), L"Settings changed");
    EXPECT_EQ(test::ItemText(hwnd, IDC_HISTORY_COUNT), L"1 of 4 change(s)");
    test::SetItemText(hwnd, IDC_HISTORY_FILTER, L"*saved");
    ASSERT_EQ(ListView_GetItemCount(List()), 1);
    EXPECT_EQ(ListText(List(), 0, 1), L"Address space saved");
    test::SetItemText(hwnd, IDC_HISTORY_FILTER, L"nothing like it");
    EXPECT_EQ(ListView_GetItemCount(List()), 0);
    EXPECT_EQ(test::ItemText(hwnd, IDC_HISTORY_DETAILS), L"");
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_RESTORE));
}

TEST_F(ChangeHistory, ButtonsFollowTheSelectedEntry)
{
    std::vector<std::wstring> calls;
    const HWND hwnd = Open(EveryAction(calls));
    SelectRow(List(), 0);   // a deletion
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_RESTORE));
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_COMPARE_PREV));
    SelectRow(List(), 1);   // a settings change
    EXPECT_TRUE(Enabled(hwnd, IDC_HISTORY_RESTORE));
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_COMPARE_PREV));
    EXPECT_NE(test::ItemText(hwnd, IDC_HISTORY_DETAILS).find(L"Title: 'Before' -> 'Varnel'. Previous settings"),
              std::wstring::npos);
    EXPECT_NE(test::ItemText(hwnd, IDC_HISTORY_DETAILS).find(L"Backup of the settings before: " + backup),
              std::wstring::npos);
    SelectRow(List(), 2);   // an address space save
    EXPECT_TRUE(Enabled(hwnd, IDC_HISTORY_RESTORE));
    EXPECT_TRUE(Enabled(hwnd, IDC_HISTORY_COMPARE_PREV));
    // No compare with the editor or the server was given.
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_COMPARE_EDITOR));
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_COMPARE_SERVER));
    test::Click(hwnd, IDC_HISTORY_COMPARE_PREV);
    EXPECT_EQ(calls, std::vector<std::wstring>{L"compare " + older + L" " + newer});
    // A version that is gone cannot be restored.
    ASSERT_TRUE(::DeleteFileW(newer.c_str()));
    SelectRow(List(), 1);
    SelectRow(List(), 2);
    EXPECT_FALSE(Enabled(hwnd, IDC_HISTORY_RESTORE));
}

TEST_F(ChangeHistory, RestoreOfAVersionAsksFirst)
{
    std::vector<std::wstring> calls;
    const HWND hwnd = Open(EveryAction(calls));
    SelectRow(List(), 2);
    {
        test::MessageBoxAnswerer no([](const test::MessageBoxInfo&) { return IDNO; });
        test::Click(hwnd, IDC_HISTORY_RESTORE);
        ASSERT_EQ(no.Seen().size(), 1u);
        EXPECT_EQ(no.Seen()[0].title, L"Restore");
        EXPECT_EQ(no.Seen()[0].text, CL::CdlgChangeHistory::RestoreVersionQuestion(newer));
    }
    EXPECT_TRUE(calls.empty());
    test::MessageBoxAnswerer yes([](const test::MessageBoxInfo&) { return IDYES; });
    test::Click(hwnd, IDC_HISTORY_RESTORE);
    EXPECT_EQ(calls, std::vector<std::wstring>{L"restore " + newer});
    EXPECT_FALSE(::IsWindow(hwnd)) << "the history steps aside for the editor";
}

TEST_F(ChangeHistory, RestoreOfSettingsRunsTheOptionsFromTheBackup)
{
    std::vector<std::wstring> calls;
    const HWND hwnd = Open(EveryAction(calls));
    SelectRow(List(), 1);
    test::Click(hwnd, IDC_HISTORY_RESTORE);
    EXPECT_EQ(calls, std::vector<std::wstring>{L"settings " + backup});
    EXPECT_TRUE(::IsWindow(hwnd));
}

TEST_F(ChangeHistory, VersionsKeptIsTheControlPanelsOwnSettingAndJournalled)
{
    const HWND hwnd = Open();
    test::DialogScript script({{L"Address Space Versions", [](HWND d) {
                                    EXPECT_EQ(test::ItemText(d, IDC_RETENTION_COUNT), L"50");
                                    test::SetItemText(d, IDC_RETENTION_COUNT, L"1");
                                    test::ClickButton(d, IDOK);
                                }}});
    test::Click(hwnd, IDC_HISTORY_RETENTION);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    EXPECT_EQ(CVersionRetention(HKEY_CURRENT_USER, kRetentionKey.c_str()).Kept(), 1u);
    EXPECT_EQ(CAddressSpaceVersions(exchangeFile).List(), std::vector<std::wstring>{newer});
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 5u);
    EXPECT_EQ(entries.back().action, L"Retention changed");
    EXPECT_EQ(entries.back().details,
              L"Address space versions: keep the newest 1 version (was: the newest 50 versions). 1 old version(s) "
              L"removed.");
    // The list shows the new entry at the top.
    EXPECT_EQ(ListText(List(), 0, 1), L"Retention changed");
}

// The Options dialog as the history's Restore opens it: filled from the
// backup; OK runs the settings change, journalled as the restore.
TEST_F(ChangeHistory, OptionsFilledFromTheBackupApplyAsARestore)
{
    g_Settings = CSettings();
    test::TempDir folder;
    SaveSettingsTo(folder.File(L"Morvane.ini.xml"), g_Settings);
    test::FakeServerControl server(folder.Path());
    CSettings fromBackup = g_Settings;
    LoadSettingsFrom(backup, fromBackup);
    CdlgOptions options(server, folder.Path());
    options.SetInitialValues(fromBackup);
    test::MessageBoxAnswerer answers([](const test::MessageBoxInfo& box) {
        return box.text.find(L"Do you want to continue?") != std::wstring::npos ? IDYES : IDOK;
    });
    const HWND hwnd = options.Create(nullptr, IDD_OPTIONS);
    ASSERT_NE(hwnd, nullptr);
    EXPECT_EQ(test::ItemText(hwnd, IDC_ED_TITLE), L"Before");
    {
        CSettingsRestoreNote restoring(backup);
        test::Click(hwnd, IDOK);
    }
    EXPECT_TRUE(options.Applied());
    EXPECT_EQ(g_Settings.Title, L"Before");
    const CL::CJournalEntry entry = journal.Entries().back();
    EXPECT_EQ(entry.action, L"Settings restored");
    EXPECT_EQ(entry.details.rfind(L"Restored from " + backup + L". Title: 'Varnel' -> 'Before'.", 0), 0u)
        << CL::Narrow(entry.details);
    EXPECT_EQ(entry.file, options.BackupPath());
    g_Settings = CSettings();
}

// ---- the tray's part -------------------------------------------------------

namespace {

class HistoryTray : public testing::Test {
protected:
    test::EditorCounters editor;
    test::OptionsCounters options;
    CDummyWnd window{CL::MenuFlags{}};
};

} // namespace

TEST_F(HistoryTray, RestoreOfAVersionOpensTheEditorFirst)
{
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    ASSERT_TRUE(window.CreateEx());
    const CL::ChangeHistoryActions actions = window.HistoryActions();
    ASSERT_TRUE(actions.restoreAddressSpace);
    EXPECT_TRUE(actions.restoreAddressSpace(nullptr, L"C:\\v.xml"));
    EXPECT_EQ(editor.prepared, 1);
    EXPECT_EQ(editor.created, 1);
    EXPECT_EQ(editor.restored, std::vector<std::wstring>{L"C:\\v.xml"});
}

TEST_F(HistoryTray, ComparesGoToTheEditorWhichIsOpenedForTheEditorsCompare)
{
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    ASSERT_TRUE(window.CreateEx());
    const CL::ChangeHistoryActions actions = window.HistoryActions();
    actions.compareFiles(nullptr, L"a.xml", L"b.xml");
    actions.compareWithServer(nullptr, L"b.xml");
    EXPECT_EQ(editor.created, 0) << "comparing versions or the server needs no editor window";
    actions.compareWithEditor(nullptr, L"b.xml");
    EXPECT_EQ(editor.created, 1);
    EXPECT_EQ(editor.compared,
              (std::vector<std::wstring>{L"versions a.xml b.xml", L"server b.xml", L"editor b.xml"}));
}

TEST_F(HistoryTray, RestoreOfAVersionDeclinedLoadRestoresNothing)
{
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor, false));
    ASSERT_TRUE(window.CreateEx());
    EXPECT_FALSE(window.HistoryActions().restoreAddressSpace(nullptr, L"C:\\v.xml"));
    EXPECT_TRUE(editor.restored.empty());
}

TEST_F(HistoryTray, RestoreOfSettingsKeepsTheOptionsRule)
{
    window.SetAddressSpaceEditor(std::make_unique<test::FakeEditor>(editor));
    window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, true));
    ASSERT_TRUE(window.CreateEx());
    ::SendMessageW(window, WM_COMMAND, ID_MN_CONTROL, 0);   // the editor is open
    {
        test::MessageBoxAnswerer answers;
        EXPECT_FALSE(window.HistoryActions().restoreSettings(nullptr, L"C:\\b"));
        ASSERT_EQ(answers.Seen().size(), 1u);
        EXPECT_EQ(answers.Seen()[0].text, L"Please, close the OPC Address Space window and try again.");
    }
    EXPECT_TRUE(options.backups.empty());
    ::DestroyWindow(editor.window);
    EXPECT_TRUE(window.HistoryActions().restoreSettings(nullptr, L"C:\\b"));
    EXPECT_EQ(options.backups, std::vector<std::wstring>{L"C:\\b"});
    EXPECT_EQ(editor.reloaded, 1) << "the settings in force: the editor's model is reloaded";
}

// Start and Stop of the tray menu are journalled with the service's name.
TEST(ServiceJournal, TrayStartAndStopAreJournalled)
{
    JournalInTemp journal;
    test::SimulatedServer server;
    const std::wstring saved = g_Settings.ServiceName;
    g_Settings.ServiceName = server.ServiceName();
    {
        CDummyWnd window{CL::MenuFlags{}};
        ASSERT_TRUE(window.CreateEx());
        test::MessageBoxAnswerer yes([](const test::MessageBoxInfo&) { return IDYES; });
        ::SendMessageW(window, WM_COMMAND, ID_MN_START_SERVER, 0);
        ::SendMessageW(window, WM_COMMAND, ID_MN_STOP_SERVER, 0);
    }
    g_Settings.ServiceName = saved;
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].action, L"Service started");
    EXPECT_EQ(entries[0].details, L"Service '" + server.ServiceName() + L"' started from the tray menu.");
    EXPECT_EQ(entries[1].action, L"Service stopped");
    EXPECT_EQ(entries[1].details, L"Service '" + server.ServiceName() + L"' stopped from the tray menu.");
}

// ---- Restore in the editor -------------------------------------------------

namespace {

class EditorRestore : public test::EditorFixture {
protected:
    JournalInTemp journal;
};

} // namespace

TEST_F(EditorRestore, VersionIsOneUndoableChange)
{
    const std::wstring version = journal.dir.File(L"DefaultAddressSpace.2026_11_21-09_00_00.xml");
    test::WriteFileBytes(version, "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"Restored\" CanonicalDataType=\"3\">"
                                  "<Value>1</Value></Item></Morvane_OPCDAAddressSpace>");
    editor->RestoreVersion(version);
    const auto& root = *F().Document().Model()->RootBranch();
    ASSERT_EQ(root.Items().size(), 1u);
    EXPECT_EQ(root.Items()[0]->Name(), L"Restored");
    EXPECT_TRUE(root.Branches().empty());
    EXPECT_TRUE(Dirty());
    EXPECT_EQ(F().Document().History().UndoDescription(),
              L"Restore Version 'DefaultAddressSpace.2026_11_21-09_00_00.xml'");
    const std::vector<CL::CJournalEntry> entries = journal.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Address space restored");
    EXPECT_EQ(entries[0].file, version);

    Command(ID_AS_EDIT_UNDO);
    EXPECT_FALSE(Dirty()) << "back to the address space loaded from the server";
    EXPECT_EQ(F().Document().Model()->RootBranch()->Branches().size(), 1u);   // Plant
}

TEST_F(EditorRestore, VersionThatCannotBeLoadedChangesNothing)
{
    EXPECT_THROW(editor->RestoreVersion(journal.dir.File(L"missing.xml")), CL::CException);
    EXPECT_FALSE(Dirty());
    EXPECT_FALSE(F().Document().History().CanUndo());
}
