// The address space editor against the server simulator running as a real
// service: the tray opens the editor on the simulator's live address space
// (code 129), an item added in the editor and saved reaches the simulator
// (code 128), and Reload asks only after a change.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "addressspace/MainFrm.h"
#include "app/AddressSpaceEditor.h"
#include "app/DummyWnd.h"
#include "common/Text.h"
#include "common/historian/Historian.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/SettingsServiceName.h"
#include "support/DialogScript.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

using test::DialogScript;

namespace {

const std::string kLiveSpace =
    "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Item Name=\"Speed\" CanonicalDataType=\"5\" "
    "Quality=\"192\" Writable=\"-1\" Readable=\"-1\" ScanRate=\"1000\" Archive=\"0\" "
    "ValueTime=\"133500000000000000\"><Value>12.5</Value></Item></Branch></Morvane_OPCDAAddressSpace>";

class EditorWithServer : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_Settings.ServiceName = server.ServiceName();
        server.WriteExchangeFile(kLiveSpace);
        ASSERT_TRUE(server.Start());
        ASSERT_TRUE(server.WaitForLoadCount(1));
        auto real = std::make_unique<CL::CAddressSpaceEditor>(historian,
                                                              CAddressSpaceExchange(test::SettingsServiceName, server.File(kExchangeFileName)));
        editor = real.get();
        tray.SetAddressSpaceEditor(std::move(real));
        ASSERT_TRUE(tray.CreateEx());
    }
    void TearDown() override
    {
        if (editor)
            editor->Frame().Document().SetDirty(false);
        tray.DestroyWindow();
        ::CoUninitialize();
    }
    CMainFrame& Frame() { return editor->Frame(); }
    void Command(WORD id) { ::SendMessageW(Frame(), WM_COMMAND, MAKEWPARAM(id, 0), 0); }
    size_t WriteRequests() const { return server.EventsStartingWith("control 129").size(); }
    std::vector<std::wstring> ListNames()
    {
        std::vector<std::wstring> names;
        for (int i = 0; i < ListView_GetItemCount(Frame().List()); ++i) {
            wchar_t text[260] = {};
            ListView_GetItemText(Frame().List(), i, 0, text, 260);
            names.push_back(text);
        }
        return names;
    }
    void SelectPlant()
    {
        const HWND tree = Frame().Tree();
        TreeView_SelectItem(tree, TreeView_GetChild(tree, TreeView_GetRoot(tree)));
    }

    test::SimulatedServer server;
    CL::CHistorian historian;
    CDummyWnd tray{CL::MenuFlags{}};
    CL::CAddressSpaceEditor* editor = nullptr;
};

} // namespace

TEST_F(EditorWithServer, TheTrayOpensTheEditorOnTheServersLiveAddressSpace)
{
    // What is on disk is stale: the editor must show what the server writes on 129.
    server.WriteExchangeFile("<Morvane_OPCDAAddressSpace Name=\"\"></Morvane_OPCDAAddressSpace>");
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_CONTROL, 0), 0);
    ASSERT_NE(editor->Window(), nullptr);
    EXPECT_EQ(WriteRequests(), 1u);
    SelectPlant();
    EXPECT_EQ(ListNames(), std::vector<std::wstring>{L"Speed"});
    EXPECT_FALSE(Frame().Document().IsDirty());
}

TEST_F(EditorWithServer, AnItemAddedAndSavedReachesTheServer)
{
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_CONTROL, 0), 0);
    ASSERT_NE(editor->Window(), nullptr);
    SelectPlant();
    DialogScript add({{L"Add Item", [](HWND d) {
                           test::SetItemText(d, IDC_ITEM_NAME, L"Level");
                           test::SelectComboData(d, IDC_ITEM_TYPE, VT_I4);
                           test::SetItemText(d, IDC_ITEM_VALUE, L"42");
                           test::ClickButton(d, IDOK);
                       }}});
    Command(ID_AS_EDIT_NEW_ITEM);
    ASSERT_TRUE(add.Finished()) << CL::Narrow(add.Report());
    EXPECT_EQ(ListNames(), (std::vector<std::wstring>{L"Speed", L"Level"}));

    DialogScript save({{L"Save", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_SAVE);
    ASSERT_TRUE(save.Finished()) << CL::Narrow(save.Report());
    ASSERT_TRUE(server.WaitForLoadCount(2)) << "code 128 made the server reload";
    EXPECT_TRUE(server.HasEvent("control 128"));
    const std::string saved = server.ExchangeFile();
    EXPECT_EQ(server.LoadedBytes(), saved);
    EXPECT_TRUE(server.HasEvent("loaded #2 " + std::to_string(saved.size()) +
                                " bytes root=Morvane_OPCDAAddressSpace branches=1 items=2 conditions=0"));
    EXPECT_NE(saved.find("<Item Name=\"Level\""), std::string::npos);
    EXPECT_FALSE(Frame().Document().IsDirty());
}

TEST_F(EditorWithServer, ReloadWithoutAChangeDoesNotAskAndAfterAChangeAsks)
{
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_CONTROL, 0), 0);
    ASSERT_NE(editor->Window(), nullptr);
    {
        test::MessageBoxAnswerer answerer;
        Command(ID_AS_FILE_RELOAD);
        EXPECT_TRUE(answerer.Seen().empty());
    }
    EXPECT_EQ(WriteRequests(), 2u) << "the reload asked the server again";

    SelectPlant();
    ListView_SetItemState(Frame().List(), 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    ::SetFocus(Frame().List());
    Command(ID_AS_EDIT_DELETE);
    ASSERT_TRUE(Frame().Document().IsDirty());
    DialogScript no({{L"Reload", [](HWND box) { test::ClickButton(box, IDNO); }}});
    Command(ID_AS_FILE_RELOAD);
    ASSERT_TRUE(no.Finished()) << CL::Narrow(no.Report());
    EXPECT_EQ(no.Texts()[0], L"Do you want to overwrite your changes with the current configuration of the server?");
    EXPECT_EQ(WriteRequests(), 2u) << "No: the server is not asked";
    EXPECT_TRUE(ListNames().empty());

    DialogScript yes({{L"Reload", [](HWND box) { test::ClickButton(box, IDYES); }}});
    Command(ID_AS_FILE_RELOAD);
    ASSERT_TRUE(yes.Finished()) << CL::Narrow(yes.Report());
    EXPECT_EQ(WriteRequests(), 3u);
    SelectPlant();
    EXPECT_EQ(ListNames(), std::vector<std::wstring>{L"Speed"});
    EXPECT_FALSE(Frame().Document().IsDirty());
}
