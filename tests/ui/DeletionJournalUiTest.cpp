// The explorer's deletions in the change journal, on SQLite and PostgreSQL:
// Delete all names every item and the values deleted; Delete selected the
// items, the period in UTC and the values the deletion took (runs
// straddling a bound stay, so fewer than the item had); a deletion answered
// No writes nothing.
#include "HistWinFixture.h"

#include "common/ChangeJournal.h"
#include "common/Text.h"
#include "historian/dlgDBExplorer.h"
#include "res/resource.h"

using namespace histwin_test;

namespace {

class ExplorerJournal : public HistorianWindowTest {
protected:
    void SetUp() override
    {
        HistorianWindowTest::SetUp();
        m_saved = CL::CChangeJournal::Instance().Path();
        CL::CChangeJournal::Instance().SetPath(m_dir.File(L"ChangeJournal.csv"));
    }
    void TearDown() override
    {
        CL::CChangeJournal::Instance().SetPath(m_saved);
        HistorianWindowTest::TearDown();
    }
    void Open()
    {
        ASSERT_NE(m_explorer.Create(), nullptr);
        ::ShowWindow(m_explorer, SW_SHOW);
    }
    void Command(WORD id) { ::SendMessageW(m_explorer, WM_COMMAND, MAKEWPARAM(id, 0), 0); }
    std::vector<CL::CJournalEntry> Entries() { return CL::CChangeJournal::Instance().ReadAll(); }

    test::TempDir m_dir;
    std::wstring m_saved;
    CdlgDBExplorer m_explorer{m_historian};
};

} // namespace

TEST_P(ExplorerJournal, DeleteAllIsJournalledWithTheValuesDeleted)
{
    WriteRun(L"a", {Date(2023, 1, 1, 0, 0, 0), Date(2023, 1, 1, 0, 1, 0)});
    WriteRun(L"b", {Date(2023, 1, 1, 0, 0, 0)});
    Open();
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDYES; });
    Command(ID_DBEXPLORER_DELETE_ALL);
    const std::vector<CL::CJournalEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Historian values deleted");
    EXPECT_EQ(entries[0].details, L"All items (2); period: the whole time; values deleted: 3 (of 3).");
}

TEST_P(ExplorerJournal, DeleteSelectedNamesItemsPeriodAndValuesTaken)
{
    // "x": a run inside the period and one straddling its end.
    WriteRun(L"x", {Date(2023, 3, 15, 10, 0, 0), Date(2023, 3, 15, 11, 0, 0)});
    WriteRun(L"x", {Date(2023, 3, 15, 11, 30, 0), Date(2023, 3, 16, 12, 0, 0), Date(2023, 3, 16, 13, 0, 0)});
    WriteRun(L"y", {Date(2023, 3, 15, 11, 0, 0)});
    Open();
    SelectRows(m_explorer.List().Hwnd(), {0});
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo& box) {
        if (box.title == L"Delete selected items values from database") {
            // The period: the row's first value to the end of 15 March (local).
            SYSTEMTIME to = {2023, 3, 0, 15, 23, 59, 0, 0};
            DateTime_SetSystemtime(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_TO), GDT_VALID, &to);
            return IDOK;
        }
        return IDYES;
    });
    Command(ID_DBEXPLORER_DELETE);
    const std::vector<CL::CJournalEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 1u);
    const std::wstring& details = entries[0].details;
    EXPECT_EQ(details.rfind(L"Items: x (1); period: from ", 0), 0u) << CL::Narrow(details);
    EXPECT_NE(details.find(L" UTC to before "), std::wstring::npos) << CL::Narrow(details);
    EXPECT_NE(details.find(L"; values deleted: 2 (of 5)."), std::wstring::npos) << CL::Narrow(details);
}

TEST_P(ExplorerJournal, DeletionAnsweredNoWritesNothing)
{
    WriteRun(L"a", {Date(2023, 1, 1, 0, 0, 0)});
    Open();
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDNO; });
    Command(ID_DBEXPLORER_DELETE_ALL);
    EXPECT_TRUE(Entries().empty());
}

INSTANTIATE_TEST_SUITE_P(Db, ExplorerJournal, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
