// The tray window with the real address space editor plugged in, as the
// program plugs it: "OPC Address Space..." and a double-click on the icon
// load the server's address space and open the editor, a second command
// raises it, and the options are refused while it is open.
#include <gtest/gtest.h>

#include "EditorFixture.h"
#include "FakeTrayParts.h"
#include "support/SettingsServiceName.h"
#include "app/DummyWnd.h"
#include "support/ProcessState.h"

namespace {

class TrayWithEditor : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_Settings.ServiceName = L"MvTrayEditorNotInstalled";
        test::WriteFileBytes(exchangeFile, test::EditorSampleSpace());
        auto real = std::make_unique<CL::CAddressSpaceEditor>(historian, CAddressSpaceExchange(test::SettingsServiceName, exchangeFile));
        editor = real.get();
        window.SetAddressSpaceEditor(std::move(real));
        window.SetOptionsDialog(std::make_unique<test::FakeOptions>(options, true));
        ASSERT_TRUE(window.CreateEx());
    }
    void TearDown() override
    {
        editor->Frame().Document().SetDirty(false);
        window.DestroyWindow();
        ::CoUninitialize();
    }
    void Command(WORD id) { ::SendMessageW(window, WM_COMMAND, MAKEWPARAM(id, 0), 0); }
    std::vector<std::wstring> TopBranches()
    {
        std::vector<std::wstring> names;
        for (const auto& branch : editor->Frame().Document().Model()->RootBranch()->Branches())
            names.push_back(branch->Name());
        return names;
    }

    test::TempDir dir;
    std::wstring exchangeFile = dir.File(L"DefaultAddressSpace.xml");
    CL::CHistorian historian;
    test::OptionsCounters options;
    CDummyWnd window{CL::MenuFlags{}};
    CL::CAddressSpaceEditor* editor = nullptr;
};

} // namespace

TEST_F(TrayWithEditor, OpcAddressSpaceOpensTheEditorOnTheServersAddressSpace)
{
    Command(ID_MN_CONTROL);
    const HWND frame = editor->Window();
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(::IsWindowVisible(frame));
    EXPECT_EQ(test::WindowText(frame), L" OPC Address Space");
    EXPECT_EQ(TopBranches(), std::vector<std::wstring>{L"Plant"});
    EXPECT_EQ(TreeView_GetCount(editor->Frame().Tree()), 4u) << "root, Plant, Line1, Line2";
}

TEST_F(TrayWithEditor, DoubleClickOnTheTrayIconOpensTheEditor)
{
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_LBUTTONDBLCLK);
    ASSERT_NE(editor->Window(), nullptr);
    EXPECT_TRUE(::IsWindowVisible(editor->Window()));
}

TEST_F(TrayWithEditor, ASecondCommandRaisesTheOpenEditorAndRestoresItWhenMinimised)
{
    Command(ID_MN_CONTROL);
    const HWND frame = editor->Window();
    ASSERT_NE(frame, nullptr);
    // A change in the open editor survives: nothing is loaded again.
    editor->Frame().Document().Model()->RootBranch()->AddBranch(CMainFrame::BranchPtr::Make(L"Unsaved"));
    ::ShowWindow(frame, SW_MINIMIZE);
    ASSERT_TRUE(::IsIconic(frame));
    ::SendMessageW(window, CDummyWnd::kShellNoteMessage, CDummyWnd::kTrayIconId, WM_LBUTTONDBLCLK);
    EXPECT_EQ(editor->Window(), frame) << "no second editor";
    EXPECT_FALSE(::IsIconic(frame));
    EXPECT_TRUE(::IsWindowVisible(frame));
    EXPECT_EQ(TopBranches(), (std::vector<std::wstring>{L"Plant", L"Unsaved"}));
}

TEST_F(TrayWithEditor, OptionsAreRefusedWhileTheEditorIsOpenAndRunOnceItIsClosed)
{
    Command(ID_MN_CONTROL);
    ASSERT_NE(editor->Window(), nullptr);
    {
        test::MessageBoxAnswerer answerer;
        Command(ID_MN_OPTIONS);
        const auto seen = answerer.Seen();
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[0].title, L"Options");
        EXPECT_EQ(seen[0].text, L"Please, close the OPC Address Space window and try again.");
        EXPECT_EQ(options.runs, 0);
    }
    ::SendMessageW(editor->Window(), WM_CLOSE, 0, 0);
    ASSERT_EQ(editor->Window(), nullptr);
    Command(ID_MN_OPTIONS);
    EXPECT_EQ(options.runs, 1);
}

TEST_F(TrayWithEditor, AfterTheOptionsTheEditorsAddressSpaceIsReloadedFromTheExchangeFile)
{
    test::WriteFileBytes(exchangeFile, "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"AfterOptions\"></Branch>"
                                       "</Morvane_OPCDAAddressSpace>");
    Command(ID_MN_OPTIONS);
    EXPECT_EQ(options.runs, 1);
    EXPECT_EQ(TopBranches(), std::vector<std::wstring>{L"AfterOptions"});
}
