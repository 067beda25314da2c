// Versions, the change journal and the change history against the server
// simulator running as a real service: the editor's Save keeps the loaded
// and the saved address space and journals the Save; a change made
// elsewhere (the exchange file rewritten and code 128 sent) is kept as the
// version the Save replaced and named in its entry; Restore in the change
// history takes a kept version into the editor as one undoable change, and
// the next Save gives it to the server.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "addressspace/AddressSpaceVersions.h"
#include "addressspace/MainFrm.h"
#include "app/AddressSpaceEditor.h"
#include "app/DummyWnd.h"
#include "app/dlgChangeHistory.h"
#include "common/ChangeJournal.h"
#include "common/ServiceControl.h"
#include "common/Text.h"
#include "common/historian/Historian.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/ProcessState.h"
#include "support/ServerSimulator.h"
#include "support/SettingsServiceName.h"
#include "support/TestSupport.h"

namespace {

std::string SpaceWithItem(const std::string& name, const std::string& scanRate = "1000")
{
    return "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Item Name=\"" + name +
           "\" CanonicalDataType=\"3\" Quality=\"192\" Writable=\"0\" Readable=\"-1\" ScanRate=\"" + scanRate +
           "\" Archive=\"0\"><Value>7</Value></Item></Branch></Morvane_OPCDAAddressSpace>";
}

class HistoryWithServer : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        savedJournal = CL::CChangeJournal::Instance().Path();
        CL::CChangeJournal::Instance().SetPath(server.File(L"ChangeJournal.csv"));
        g_Settings.ServiceName = server.ServiceName();
        server.WriteExchangeFile(SpaceWithItem("Loaded"));
        ASSERT_TRUE(server.Start());
        ASSERT_TRUE(server.WaitForLoadCount(1));
        auto real = std::make_unique<CL::CAddressSpaceEditor>(
            historian, CAddressSpaceExchange(test::SettingsServiceName, server.File(kExchangeFileName)));
        editor = real.get();
        tray.SetAddressSpaceEditor(std::move(real));
        ASSERT_TRUE(tray.CreateEx());
        ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_CONTROL, 0), 0);
        ASSERT_NE(editor->Window(), nullptr);
    }
    void TearDown() override
    {
        if (editor)
            editor->Frame().Document().SetDirty(false);
        tray.DestroyWindow();
        CL::CChangeJournal::Instance().SetPath(savedJournal);
        ::CoUninitialize();
    }
    CAddressSpaceDocument& Document() { return editor->Frame().Document(); }
    void AddItem(const wchar_t* name)
    {
        auto item = CL::CSmartPtr<COPCItem>::Make(COPCItem::kReadable, 500, false, WORD(192), VARTYPE(VT_I4), nullptr);
        item->Rename(name);
        Document().Model()->RootBranch()->FindBranch(L"Plant")->AddItem(item);
        Document().SetDirty();
    }
    void Save() { ::SendMessageW(editor->Frame(), WM_COMMAND, MAKEWPARAM(ID_AS_FILE_SAVE, 0), 0); }
    std::vector<std::wstring> Versions() { return CAddressSpaceVersions(server.File(kExchangeFileName)).List(); }
    std::vector<CL::CJournalEntry> Entries() { return CL::CChangeJournal::Instance().ReadAll(); }

    test::SimulatedServer server;
    std::wstring savedJournal;
    CL::CHistorian historian;
    CDummyWnd tray{CL::MenuFlags{}};
    CL::CAddressSpaceEditor* editor = nullptr;
};

} // namespace

TEST_F(HistoryWithServer, SaveKeepsTheLoadedAndTheSavedVersionAndJournalsIt)
{
    AddItem(L"Added");
    test::MessageBoxAnswerer yes([](const test::MessageBoxInfo&) { return IDYES; });
    Save();
    ASSERT_TRUE(server.WaitForLoadCount(2));
    const std::vector<std::wstring> versions = Versions();
    ASSERT_EQ(versions.size(), 2u);
    EXPECT_NE(test::ReadFileBytes(versions[1]).find("\"Loaded\""), std::string::npos);
    EXPECT_EQ(test::ReadFileBytes(versions[0]), server.LoadedBytes());
    const std::vector<CL::CJournalEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Address space saved");
    EXPECT_EQ(entries[0].account, CL::CChangeJournal::CurrentAccount());
    EXPECT_EQ(entries[0].file, versions[0]);
    EXPECT_EQ(entries[0].previousFile, versions[1]);
    EXPECT_EQ(entries[0].details,
              L"Saved to " + server.File(kExchangeFileName) + L". 1 added, 0 removed, 0 changed, 0 moved.");
}

TEST_F(HistoryWithServer, ChangeMadeElsewhereIsKeptAndItsConflictNamedInTheSave)
{
    // Another control panel gives the server its address space meanwhile:
    // the item's scan rate changed there.
    ::Sleep(50);
    server.WriteExchangeFile(SpaceWithItem("Loaded", "250"));
    CL::ControlServiceCode(server.ServiceName(), CL::kControlReloadAddressSpace);
    ASSERT_TRUE(server.WaitForLoadCount(2));
    // Here the same item is removed, and one added.
    Document().Model()->RootBranch()->FindBranch(L"Plant")->RemoveItem(L"Loaded");
    AddItem(L"Mine");
    test::MessageBoxAnswerer yes([](const test::MessageBoxInfo&) { return IDYES; });
    Save();
    ASSERT_TRUE(server.WaitForLoadCount(3));
    const std::vector<std::wstring> versions = Versions();
    ASSERT_EQ(versions.size(), 3u);
    EXPECT_NE(test::ReadFileBytes(versions[1]).find("ScanRate=\"250\""), std::string::npos);
    const CL::CJournalEntry entry = Entries().at(0);
    EXPECT_EQ(entry.previousFile, versions[1]);
    EXPECT_EQ(entry.details, L"Saved to " + server.File(kExchangeFileName) +
                                 L". 1 added, 1 removed, 0 changed, 0 moved. The server's address space had been "
                                 L"changed elsewhere since it was loaded (1 change(s)); those changes were "
                                 L"overridden. 1 conflict(s) overridden: Plant.Loaded.");
}

TEST_F(HistoryWithServer, RestoreFromTheHistoryThenSaveGivesTheVersionBackToTheServer)
{
    AddItem(L"Added");
    test::MessageBoxAnswerer yes([](const test::MessageBoxInfo&) { return IDYES; });
    Save();
    ASSERT_TRUE(server.WaitForLoadCount(2));
    const std::wstring loadedVersion = Versions().at(1);

    // The history over the real tray's actions; the save's entry selected
    // with its previous version: the one loaded before it.
    CL::CdlgChangeHistory history(CL::CChangeJournal::Instance(), server.File(kExchangeFileName),
                                  CVersionRetention(), tray.HistoryActions());
    const HWND hwnd = history.Create(nullptr);
    ASSERT_NE(hwnd, nullptr);
    const HWND list = ::GetDlgItem(hwnd, IDC_HISTORY_LIST);
    ASSERT_EQ(ListView_GetItemCount(list), 1);
    ASSERT_EQ(history.Rows().PreviousVersion(0), loadedVersion);
    // Restore takes the version the Save wrote; here the loaded one is
    // wanted, so a restore entry of it is made first through the editor.
    editor->RestoreVersion(loadedVersion);
    EXPECT_TRUE(Document().IsDirty());
    EXPECT_EQ(Document().Model()->RootBranch()->FindBranch(L"Plant")->Items().size(), 1u);
    history.Reload();
    ASSERT_EQ(ListView_GetItemCount(list), 2);
    // The newest entry is the restore; Restore of it from the window.
    ListView_SetItemState(list, 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    ::SendMessageW(hwnd, WM_COMMAND, MAKEWPARAM(IDC_HISTORY_RESTORE, BN_CLICKED),
                   reinterpret_cast<LPARAM>(::GetDlgItem(hwnd, IDC_HISTORY_RESTORE)));
    EXPECT_FALSE(::IsWindow(hwnd)) << "the history closed for the editor";
    EXPECT_EQ(Document().History().UndoDescription(), L"Restore Version '" +
                                                          loadedVersion.substr(loadedVersion.rfind(L'\\') + 1) + L"'");
    Save();
    ASSERT_TRUE(server.WaitForLoadCount(3));
    EXPECT_NE(server.LoadedBytes().find("\"Loaded\""), std::string::npos);
    EXPECT_EQ(server.LoadedBytes().find("\"Added\""), std::string::npos);
    const std::vector<CL::CJournalEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[1].action, L"Address space restored");
    EXPECT_EQ(entries[3].action, L"Address space saved");
    EXPECT_NE(entries[3].details.find(L"Restored from " + loadedVersion), std::wstring::npos)
        << CL::Narrow(entries[3].details);
}
