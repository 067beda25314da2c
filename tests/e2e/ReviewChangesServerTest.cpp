// The review of changes against the server simulator running as a real
// service: a change made elsewhere (the exchange file rewritten and code
// 128 sent, as another control panel's Save does) shows in "The server now"
// as the server's change, and an item changed on both sides as a conflict;
// asking the server (code 129) leaves the editor's model and changed state
// alone.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "addressspace/MainFrm.h"
#include "addressspace/dlgReviewChanges.h"
#include "app/AddressSpaceEditor.h"
#include "app/DummyWnd.h"
#include "common/historian/Historian.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/ProcessState.h"
#include "support/ServerSimulator.h"
#include "support/SettingsServiceName.h"
#include "support/TestSupport.h"

namespace {

std::string Space(int speedScanRate, bool withLevel)
{
    std::string space =
        "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Item Name=\"Speed\" CanonicalDataType=\"5\" "
        "Quality=\"192\" Writable=\"-1\" Readable=\"-1\" ScanRate=\"" + std::to_string(speedScanRate) +
        "\" Archive=\"0\" ValueTime=\"133500000000000000\"><Value>12.5</Value></Item>";
    if (withLevel)
        space += "<Item Name=\"Level\" CanonicalDataType=\"3\" Quality=\"192\" Writable=\"0\" Readable=\"-1\" "
                 "ScanRate=\"500\" Archive=\"0\" ValueTime=\"133500000000000000\"><Value>4</Value></Item>";
    return space + "</Branch></Morvane_OPCDAAddressSpace>";
}

class ReviewWithServer : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_Settings.ServiceName = server.ServiceName();
        server.WriteExchangeFile(Space(1000, false));
        ASSERT_TRUE(server.Start());
        ASSERT_TRUE(server.WaitForLoadCount(1));
        auto real = std::make_unique<CL::CAddressSpaceEditor>(
            historian, CAddressSpaceExchange(test::SettingsServiceName, server.File(kExchangeFileName)));
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
    std::wstring Cell(HWND list, int line, int column)
    {
        wchar_t text[512] = {};
        ListView_GetItemText(list, line, column, text, 512);
        return text;
    }
    int LineOf(HWND list, const std::wstring& path)
    {
        for (int i = 0; i < ListView_GetItemCount(list); ++i)
            if (Cell(list, i, CReviewRows::kPath) == path)
                return i;
        return -1;
    }

    test::SimulatedServer server;
    CL::CHistorian historian;
    CDummyWnd tray{CL::MenuFlags{}};
    CL::CAddressSpaceEditor* editor = nullptr;
};

} // namespace

TEST_F(ReviewWithServer, AChangeMadeElsewhereShowsAsTheServersAndAConflict)
{
    ::SendMessageW(tray, WM_COMMAND, MAKEWPARAM(ID_MN_CONTROL, 0), 0);
    ASSERT_NE(editor->Window(), nullptr);
    CAddressSpaceDocument& document = editor->Frame().Document();
    // The editor changes Speed's scan rate.
    document.Model()->RootBranch()->FindBranch(L"Plant")->FindItem(L"Speed")->SetScanRate(250);
    document.SetDirty();
    // Elsewhere: Speed gets 2000 ms and Level is added; the server reloads.
    server.WriteExchangeFile(Space(2000, true));
    ASSERT_TRUE(server.Control(128));
    ASSERT_TRUE(server.WaitForLoadCount(2));

    const size_t asked = server.EventsStartingWith("control 129").size();
    CdlgReviewChanges review(document, editor->Frame().MakeReviewServices());
    review.StartWithServer();
    ASSERT_NE(review.Create(editor->Window()), nullptr);
    EXPECT_EQ(review.CurrentSource(), CdlgReviewChanges::Source::ServerNow);
    EXPECT_EQ(server.EventsStartingWith("control 129").size(), asked + 1) << "the server was asked for its address space";
    const HWND list = review.List();
    const int speed = LineOf(list, L"Plant.Speed");
    ASSERT_GE(speed, 0);
    EXPECT_EQ(Cell(list, speed, CReviewRows::kOrigin), L"Both: conflict");
    EXPECT_EQ(Cell(list, speed, CReviewRows::kBefore), L"2000");
    EXPECT_EQ(Cell(list, speed, CReviewRows::kAfter), L"250");
    const int level = LineOf(list, L"Plant.Level");
    ASSERT_GE(level, 0);
    EXPECT_EQ(Cell(list, level, CReviewRows::kOrigin), L"Server");
    EXPECT_EQ(Cell(list, level, CReviewRows::kKind), L"Removed item");
    EXPECT_EQ(ListView_GetItemCount(list), 2);
    // The editor's model and changed state are as they were.
    EXPECT_TRUE(document.IsDirty());
    EXPECT_FALSE(document.Model()->RootBranch()->FindBranch(L"Plant")->FindItem(L"Level"));
    EXPECT_EQ(document.Model()->RootBranch()->FindBranch(L"Plant")->FindItem(L"Speed")->ScanRate(), 250u);
    ::DestroyWindow(review.Hwnd());
}
