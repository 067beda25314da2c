// Opening and refreshing the database explorer on a large database shows
// its progress in the status bar and can be cancelled with Esc or the
// status bar's Cancel button, like the other long work.
#include "HistWinFixture.h"

#include "common/Text.h"
#include "common/ui/WorkProgress.h"
#include "historian/dlgDBExplorer.h"
#include "res/resource.h"

using namespace histwin_test;

namespace {

class DBExplorerProgress : public HistorianWindowTest {
protected:
    void TearDown() override
    {
        CL::CWorkProgress::SetStepObserver(nullptr);
        CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(500));
        HistorianWindowTest::TearDown();
    }
    void WriteItems(int count)
    {
        for (int i = 0; i < count; ++i)
            WriteRun(CL::Format(L"item%02d", i), {Date(2023, 3, 15, 10, 0, 0)});
    }
    HWND List() const { return m_explorer.List().Hwnd(); }
    std::wstring Status() const
    {
        wchar_t text[512] = {};
        ::SendMessageW(m_explorer.Bars().StatusBar(), SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text));
        return text;
    }

    CdlgDBExplorer m_explorer{m_historian};
};

} // namespace

TEST_P(DBExplorerProgress, OpeningShowsTheItemsReadSoFarAndTheCancelButton)
{
    WriteItems(5);
    CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(0));
    std::vector<std::wstring> texts;
    bool cancelShown = false;
    bool windowShown = false;
    CL::CWorkProgress::SetStepObserver([&] {
        texts.push_back(Status());
        windowShown = windowShown || ::IsWindowVisible(m_explorer);
        cancelShown = cancelShown || ::IsWindowVisible(m_explorer.CancelButton());
    });
    ASSERT_NE(m_explorer.Create(), nullptr);
    EXPECT_GE(texts.size(), 5u) << "a step before each item";
    EXPECT_TRUE(windowShown) << "the window shows while it reads";
    EXPECT_TRUE(cancelShown);
    EXPECT_NE(std::find(texts.begin(), texts.end(), L"0 archived item(s) read... (Esc cancels)"), texts.end())
        << "the first step's text, seen at the next step";
    EXPECT_EQ(RowCount(List()), 5);
    EXPECT_EQ(Status(), L"5 archived item(s)");
    EXPECT_FALSE(::IsWindowVisible(m_explorer.CancelButton()));
}

TEST_P(DBExplorerProgress, EscDuringRefreshStopsTheReadWithNothingListed)
{
    WriteItems(5);
    ASSERT_NE(m_explorer.Create(), nullptr);
    ASSERT_EQ(RowCount(List()), 5);
    int steps = 0;
    CL::CWorkProgress::SetStepObserver([&] {
        if (++steps == 3)
            ::PostMessageW(List(), WM_KEYDOWN, VK_ESCAPE, 0);
    });
    ::SendMessageW(m_explorer, WM_COMMAND, MAKEWPARAM(ID_DBEXPLORER_REFRESH, 0), 0);
    EXPECT_GE(steps, 3);
    EXPECT_EQ(RowCount(List()), 0);
    EXPECT_EQ(Status(), L"Cancelled: nothing was read");
    EXPECT_TRUE(::IsWindow(m_explorer)) << "Esc cancelled the read, not the window";
}

INSTANTIATE_TEST_SUITE_P(Db, DBExplorerProgress, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
