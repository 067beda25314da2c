// The review of changes over the real editor: its three sources (my
// changes, the server now through the exchange file, a file), the server's
// own changes and a conflict, revert as one undoable step, Save through the
// editor's Save, the historian impact against SQLite and PostgreSQL and
// without a database, the "Modified" pane's count and double-click, the
// menu entry and key, copy and CSV export.
#include <gtest/gtest.h>

#include <algorithm>

#include "EditorFixture.h"
#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/AddressSpaceWorkbook.h"
#include "addressspace/EditorStatus.h"
#include "addressspace/dlgReviewChanges.h"
#include "common/historian/HistoricDataWriter.h"
#include "common/ui/ClipboardText.h"
#include "support/FileDialogAnswer.h"
#include "support/HistorianTestDb.h"

using test::DbKind;

namespace {

class ReviewChanges : public test::EditorFixture {
protected:
    // The review over the editor, modeless on the test's thread.
    CdlgReviewChanges& Open()
    {
        m_review = std::make_unique<CdlgReviewChanges>(F().Document(), F().MakeReviewServices());
        EXPECT_NE(m_review->Create(Frame()), nullptr);
        return *m_review;
    }
    void TearDown() override
    {
        if (m_review && m_review->IsWindow())
            ::DestroyWindow(m_review->Hwnd());
        m_review.reset();
        EditorFixture::TearDown();
    }
    // The texts of a column of the review's list, top to bottom.
    std::vector<std::wstring> ReviewColumn(int column) { return ColumnOf(m_review->List(), column); }
    static std::vector<std::wstring> ColumnOf(HWND list, int column)
    {
        std::vector<std::wstring> texts;
        const int count = ListView_GetItemCount(list);
        for (int i = 0; i < count; ++i) {
            wchar_t text[2100] = {};
            ListView_GetItemText(list, i, column, text, 2100);
            texts.push_back(text);
        }
        return texts;
    }
    int ReviewLineOf(const std::wstring& path, const std::wstring& field = L"")
    {
        const auto paths = ReviewColumn(CReviewRows::kPath);
        const auto fields = ReviewColumn(CReviewRows::kField);
        for (size_t i = 0; i < paths.size(); ++i)
            if (paths[i] == path && (field.empty() || fields[i] == field))
                return static_cast<int>(i);
        return -1;
    }
    std::wstring Cell(int line, int column)
    {
        wchar_t text[2100] = {};
        ListView_GetItemText(m_review->List(), line, column, text, 2100);
        return text;
    }
    void SelectReviewLines(const std::vector<int>& lines)
    {
        ListView_SetItemState(m_review->List(), -1, 0, LVIS_SELECTED);
        for (int line : lines)
            ListView_SetItemState(m_review->List(), line, LVIS_SELECTED, LVIS_SELECTED);
    }
    std::wstring ModifiedPane()
    {
        wchar_t text[128] = {};
        ::SendMessageW(F().Bars().StatusBar(), SB_GETTEXTW, CEditorStatus::kModifiedPane, reinterpret_cast<LPARAM>(text));
        return text;
    }
    // My changes: Count's scan rate 500 -> 250, Label removed.
    void MakeMyChanges()
    {
        Item(L"Plant/Line1", L"Count")->SetScanRate(250);
        F().Document().SetDirty();   // outside the history: as Open does
        SelectBranch(L"Plant/Line1");
        SelectRows({L"Label"});
        FocusList();
        Command(ID_AS_EDIT_DELETE);
    }
    // The server's address space as another control panel saved it: Count's
    // scan rate 500 -> 2000 (a conflict with mine), Heartbeat removed, Pump added.
    void ChangeTheServersFile()
    {
        std::string space = test::EditorSampleSpace();
        auto replace = [&space](const std::string& from, const std::string& to) {
            const size_t at = space.find(from);
            ASSERT_NE(at, std::string::npos) << from;
            space.replace(at, from.size(), to);
        };
        replace("ScanRate=\"500\"", "ScanRate=\"2000\"");
        const size_t heartbeat = space.find("<Item Name=\"Heartbeat\"");
        const size_t end = space.find("</Item>", heartbeat) + 7;
        space.erase(heartbeat, end - heartbeat);
        replace("<Branch Name=\"Line2\"></Branch>",
                "<Branch Name=\"Line2\"><Item Name=\"Pump\" CanonicalDataType=\"11\" Quality=\"192\" Writable=\"-1\" "
                "Readable=\"-1\" ScanRate=\"1000\" Archive=\"0\" ValueTime=\"134080704000000000\"><Value>0</Value>"
                "</Item></Branch>");
        test::WriteFileBytes(exchangeFile, space);
    }
    // Values of Plant.Line1.Speed (90) and Heartbeat (10) in the database.
    void ArchiveValues(const test::HistorianTestDb& db)
    {
        historian.Configure(db.ConnectionString(), CL::CHistorian::kNoLimit, CL::CHistorian::kNoLimit, 50);
        std::vector<CL::CHistoricValue> speed, heartbeat;
        for (int i = 0; i < 90; ++i)
            speed.push_back({45000.0 + i / 1440.0, WORD(192), CL::CVariant::R8(i)});
        for (int i = 0; i < 10; ++i)
            heartbeat.push_back({45001.0 + i / 1440.0, WORD(192), CL::CVariant::I4(i)});
        CL::CHistoricDataWriter writer(db.ConnectionString());
        writer.AppendRun(L"Plant.Line1.Speed", speed);
        writer.AppendRun(L"Heartbeat", heartbeat);
    }

    std::unique_ptr<CdlgReviewChanges> m_review;
};

TEST_F(ReviewChanges, MyChangesListEveryDifferenceFromTheLoadedAddressSpace)
{
    MakeMyChanges();
    CdlgReviewChanges& review = Open();
    EXPECT_EQ(review.CurrentSource(), CdlgReviewChanges::Source::MyChanges);
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_SOURCE), CdlgReviewChanges::kMyChanges);
    EXPECT_EQ(ReviewColumn(CReviewRows::kPath), (std::vector<std::wstring>{L"Plant.Line1.Count", L"Plant.Line1.Label"}));
    const int count = ReviewLineOf(L"Plant.Line1.Count");
    EXPECT_EQ(Cell(count, CReviewRows::kKind), L"Changed item");
    EXPECT_EQ(Cell(count, CReviewRows::kField), L"Scan rate");
    EXPECT_EQ(Cell(count, CReviewRows::kBefore), L"500");
    EXPECT_EQ(Cell(count, CReviewRows::kAfter), L"250");
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line1.Label"), CReviewRows::kKind), L"Removed item");
    EXPECT_NE(CL::ItemText(review.Hwnd(), IDC_REVIEW_SUMMARY).find(L"2 difference(s)"), std::wstring::npos);
    // The status pane counts the same differences.
    EXPECT_EQ(ModifiedPane(), L"Modified: 2 changes");
}

TEST_F(ReviewChanges, RevertingSelectedRowsIsOneUndoableStep)
{
    MakeMyChanges();
    const size_t undoBefore = F().Document().History().UndoCount();
    CdlgReviewChanges& review = Open();
    SelectReviewLines({ReviewLineOf(L"Plant.Line1.Count"), ReviewLineOf(L"Plant.Line1.Label")});
    ::SendDlgItemMessageW(review.Hwnd(), IDC_REVIEW_REVERT, BM_CLICK, 0, 0);
    EXPECT_EQ(ListView_GetItemCount(review.List()), 0);
    ASSERT_TRUE(Item(L"Plant/Line1", L"Label"));
    EXPECT_EQ(Item(L"Plant/Line1", L"Count")->ScanRate(), 500u);
    EXPECT_EQ(F().Document().History().UndoCount(), undoBefore + 1);
    EXPECT_EQ(F().Document().History().UndoDescription(), L"Revert 2 change(s)");
    // The editor's list shows the restored item.
    SelectBranch(L"Plant/Line1");
    EXPECT_GE(LineOf(L"Label"), 0);

    Command(ID_AS_EDIT_UNDO);
    EXPECT_FALSE(Item(L"Plant/Line1", L"Label"));
    EXPECT_EQ(Item(L"Plant/Line1", L"Count")->ScanRate(), 250u);
}

TEST_F(ReviewChanges, TheServerNowShowsItsOwnChangesApartAndMarksAConflict)
{
    MakeMyChanges();
    ChangeTheServersFile();   // the service is stopped: the file is the server's address space
    CdlgReviewChanges& review = Open();
    ASSERT_TRUE(review.ShowSource(CdlgReviewChanges::Source::ServerNow));
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_SOURCE), CdlgReviewChanges::kServerNow);
    const int count = ReviewLineOf(L"Plant.Line1.Count");
    ASSERT_GE(count, 0);
    EXPECT_EQ(Cell(count, CReviewRows::kOrigin), L"Both: conflict");
    EXPECT_EQ(Cell(count, CReviewRows::kBefore), L"2000");
    EXPECT_EQ(Cell(count, CReviewRows::kAfter), L"250");
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line1.Label"), CReviewRows::kOrigin), L"Editor");
    EXPECT_EQ(Cell(ReviewLineOf(L"Heartbeat"), CReviewRows::kOrigin), L"Server");
    EXPECT_EQ(Cell(ReviewLineOf(L"Heartbeat"), CReviewRows::kKind), L"Added item");
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line2.Pump"), CReviewRows::kOrigin), L"Server");
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line2.Pump"), CReviewRows::kKind), L"Removed item");
    const std::wstring summary = CL::ItemText(review.Hwnd(), IDC_REVIEW_SUMMARY);
    EXPECT_NE(summary.find(L"2 changed on the server"), std::wstring::npos) << CL::Narrow(summary);
    EXPECT_NE(summary.find(L"1 conflict(s)"), std::wstring::npos) << CL::Narrow(summary);
    // Sorted by "Changed on", the server's rows stand together.
    test::ClickHeader(review.List(), CReviewRows::kOrigin);
    const auto origins = ReviewColumn(CReviewRows::kOrigin);
    EXPECT_EQ(origins, (std::vector<std::wstring>{L"Both: conflict", L"Editor", L"Server", L"Server"}));
    // Neither the editor's model nor its dirty flag was touched.
    EXPECT_TRUE(Dirty());
    EXPECT_TRUE(Item(L"", L"Heartbeat"));
    EXPECT_FALSE(Item(L"Plant/Line2", L"Pump"));

    // Reverting the server's addition takes the server's item into the editor.
    SelectReviewLines({ReviewLineOf(L"Plant.Line2.Pump")});
    EXPECT_EQ(review.RevertRows(m_review->ReportList().SelectedRows()), 1u);
    EXPECT_TRUE(Item(L"Plant/Line2", L"Pump"));
    EXPECT_EQ(ReviewLineOf(L"Plant.Line2.Pump"), -1);
}

TEST_F(ReviewChanges, CompareWithAnXmlOrCsvFile)
{
    CdlgReviewChanges& review = Open();
    EXPECT_EQ(ListView_GetItemCount(review.List()), 0);
    // A CSV as a spreadsheet left it: Count's value lost nothing, Speed's
    // scan rate differs, Heartbeat is missing.
    const std::wstring csv = dir.File(L"items.csv");
    test::WriteFileBytes(csv, "Path,Data type,Value,Readable,Writable,Archive,Scan rate\r\n"
                              "Plant.Line1.Speed,VT_R8,12.5,1,1,1,100\r\n"
                              "Plant.Line1.Count,VT_I4,7,1,0,0,500\r\n"
                              "Plant.Line1.Label,VT_BSTR,abc,0,1,0,2000\r\n");
    {
        test::FileDialogAnswer answer(csv);
        ::SendDlgItemMessageW(review.Hwnd(), IDC_REVIEW_FILE, BM_CLICK, 0, 0);
        ASSERT_TRUE(answer.Answered());
    }
    EXPECT_EQ(review.CurrentSource(), CdlgReviewChanges::Source::File);
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_SOURCE), L"File: items.csv");
    const int speed = ReviewLineOf(L"Plant.Line1.Speed");
    ASSERT_GE(speed, 0);
    EXPECT_EQ(Cell(speed, CReviewRows::kBefore), L"100");
    EXPECT_EQ(Cell(speed, CReviewRows::kAfter), L"1000");
    EXPECT_EQ(Cell(ReviewLineOf(L"Heartbeat"), CReviewRows::kKind), L"Added item");
    EXPECT_EQ(ListView_GetItemCount(review.List()), 3);   // Speed, Line2 added, Heartbeat added

    // The same address space as XML: no differences at all.
    const std::wstring xml = dir.File(L"copy.xml");
    F().Document().Model()->Save(xml);
    ASSERT_TRUE(review.ShowFile(xml));
    EXPECT_EQ(ListView_GetItemCount(review.List()), 0);
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_SUMMARY), L"No differences from copy.xml.");
}

TEST_F(ReviewChanges, CompareWithAWorkbookFile)
{
    CdlgReviewChanges& review = Open();
    // The editor's own address space as a workbook: a workbook, like a CSV,
    // holds items, so only the empty branch Line2 is missing from it.
    const std::wstring same = dir.File(L"same.xlsx");
    CL::ExportAddressSpaceWorkbook(*F().Document().Model(), same);
    ASSERT_TRUE(review.ShowFile(same));
    EXPECT_EQ(ListView_GetItemCount(review.List()), 1);
    const int line2 = ReviewLineOf(L"Plant.Line2");
    ASSERT_GE(line2, 0);
    EXPECT_EQ(Cell(line2, CReviewRows::kKind), L"Added branch");

    // A workbook of an address space whose Speed scans at another rate.
    auto other = CL::CopyAddressSpace(*F().Document().Model());
    other->RootBranch()->FindBranch(L"Plant")->FindBranch(L"Line1")->FindItem(L"Speed")->SetScanRate(250);
    const std::wstring changed = dir.File(L"changed.xlsx");
    CL::ExportAddressSpaceWorkbook(*other, changed);
    ASSERT_TRUE(review.ShowFile(changed));
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_SOURCE), L"File: changed.xlsx");
    ASSERT_EQ(ListView_GetItemCount(review.List()), 2);   // Speed's scan rate, Line2
    const int speed = ReviewLineOf(L"Plant.Line1.Speed");
    ASSERT_GE(speed, 0);
    EXPECT_EQ(Cell(speed, CReviewRows::kField), L"Scan rate");
    EXPECT_EQ(Cell(speed, CReviewRows::kAfter), L"1000");
    EXPECT_EQ(Cell(speed, CReviewRows::kBefore), L"250");
}

TEST_F(ReviewChanges, ReadOnlyCompareOfTwoAddressSpacesOffersNoRevertAndNoSave)
{
    auto before = CL::CopyAddressSpace(*F().Document().Model());
    auto after = CL::CopyAddressSpace(*before);
    after->RootBranch()->RemoveItem(L"Heartbeat");
    CdlgReviewChanges review(before, L"version A", after, L"version B", F().MakeReviewServices());
    ASSERT_NE(review.Create(Frame()), nullptr);
    EXPECT_EQ(ColumnOf(review.List(), CReviewRows::kPath), std::vector<std::wstring>{L"Heartbeat"});
    EXPECT_FALSE(::IsWindowVisible(::GetDlgItem(review.Hwnd(), IDC_REVIEW_REVERT)));
    EXPECT_FALSE(::IsWindowVisible(::GetDlgItem(review.Hwnd(), IDC_REVIEW_SAVE)));
    EXPECT_FALSE(::IsWindowVisible(::GetDlgItem(review.Hwnd(), IDC_REVIEW_FILE)));
    EXPECT_FALSE(::IsWindowEnabled(::GetDlgItem(review.Hwnd(), IDC_REVIEW_SOURCE)));
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_SOURCE), L"version A \x2192 version B");
    EXPECT_EQ(review.RevertRows({0}), 0u);
    ::DestroyWindow(review.Hwnd());
}

TEST_F(ReviewChanges, SaveInTheReviewRunsTheEditorsSaveWithItsQuestion)
{
    MakeMyChanges();
    CdlgReviewChanges& review = Open();
    ASSERT_TRUE(::IsWindowEnabled(::GetDlgItem(review.Hwnd(), IDC_REVIEW_SAVE)));
    test::DialogScript script({{L"Save", [](HWND box) { test::ClickButton(box, IDYES); }}});
    ::SendDlgItemMessageW(review.Hwnd(), IDC_REVIEW_SAVE, BM_CLICK, 0, 0);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    EXPECT_FALSE(Dirty());
    EXPECT_EQ(test::ReadFileBytes(exchangeFile).find("Label"), std::string::npos);
    // Saved: nothing differs from the address space as last saved.
    EXPECT_EQ(review.CurrentSource(), CdlgReviewChanges::Source::MyChanges);
    EXPECT_EQ(ListView_GetItemCount(review.List()), 0);
    EXPECT_EQ(ModifiedPane(), L"");
}

TEST_F(ReviewChanges, SaveAnsweredNoChangesNothing)
{
    MakeMyChanges();
    CdlgReviewChanges& review = Open();
    test::DialogScript script({{L"Save", [](HWND box) { test::ClickButton(box, IDNO); }}});
    ::SendDlgItemMessageW(review.Hwnd(), IDC_REVIEW_SAVE, BM_CLICK, 0, 0);
    ASSERT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    EXPECT_TRUE(Dirty());
    EXPECT_EQ(ListView_GetItemCount(review.List()), 2);
}

TEST_F(ReviewChanges, FilterCopyAndExport)
{
    MakeMyChanges();
    CdlgReviewChanges& review = Open();
    ::SetDlgItemTextW(review.Hwnd(), IDC_REVIEW_FILTER, L"*.lab*");
    EXPECT_EQ(ReviewColumn(CReviewRows::kPath), std::vector<std::wstring>{L"Plant.Line1.Label"});
    ::SetDlgItemTextW(review.Hwnd(), IDC_REVIEW_FILTER, L"count");
    EXPECT_EQ(ReviewColumn(CReviewRows::kPath), std::vector<std::wstring>{L"Plant.Line1.Count"});
    ::SetDlgItemTextW(review.Hwnd(), IDC_REVIEW_FILTER, L"");
    SelectReviewLines({ReviewLineOf(L"Plant.Line1.Count")});
    ::SetFocus(review.List());
    {
        test::CtrlHeld ctrl;
        NMLVKEYDOWN key = {};
        key.hdr.hwndFrom = review.List();
        key.hdr.idFrom = IDC_REVIEW_LIST;
        key.hdr.code = LVN_KEYDOWN;
        key.wVKey = 'C';
        ::SendMessageW(review.Hwnd(), WM_NOTIFY, IDC_REVIEW_LIST, reinterpret_cast<LPARAM>(&key));
    }
    const std::wstring copied = CL::GetClipboardText(review.Hwnd());
    EXPECT_EQ(copied, L"Kind\tChanged on\tPath\tField\tBefore\tAfter\tHistorian impact\r\n"
                      L"Changed item\t\tPlant.Line1.Count\tScan rate\t500\t250\t\r\n");
    const std::wstring csv = dir.File(L"changes.csv");
    {
        test::FileDialogAnswer answer(csv);
        ::SendDlgItemMessageW(review.Hwnd(), IDC_REVIEW_EXPORT, BM_CLICK, 0, 0);
        ASSERT_TRUE(answer.Answered());
    }
    const std::string bytes = test::ReadFileBytes(csv);
    EXPECT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF");
    EXPECT_NE(bytes.find("Kind,Changed on,Path,Field,Before,After,Historian impact\r\n"), std::string::npos);
    EXPECT_NE(bytes.find("Removed item,,Plant.Line1.Label,,"), std::string::npos) << bytes;
}

TEST_F(ReviewChanges, MenuEntryKeyAndModifiedPaneOpenTheReview)
{
    MakeMyChanges();
    EXPECT_EQ(ModifiedPane(), L"Modified: 2 changes");
    auto closeReview = [](HWND review) {
        EXPECT_GT(ListView_GetItemCount(::GetDlgItem(review, IDC_REVIEW_LIST)), 0);
        test::ClickButton(review, IDCANCEL);
    };
    {
        test::DialogScript script({{L"Review Changes", closeReview}});
        Command(ID_AS_FILE_REVIEW);
        EXPECT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    }
    {
        test::DialogScript script({{L"Review Changes", closeReview}});
        NMMOUSE click = {};
        click.hdr.hwndFrom = F().Bars().StatusBar();
        click.hdr.idFrom = static_cast<UINT_PTR>(::GetDlgCtrlID(F().Bars().StatusBar()));
        click.hdr.code = NM_DBLCLK;
        click.dwItemSpec = CEditorStatus::kModifiedPane;
        ::SendMessageW(Frame(), WM_NOTIFY, click.hdr.idFrom, reinterpret_cast<LPARAM>(&click));
        EXPECT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    }
    {
        test::DialogScript script({{L"Review Changes", closeReview}});
        MSG msg = {Frame(), WM_KEYDOWN, 'R', 0, 0, {}};
        BYTE state[256] = {};
        ::GetKeyboardState(state);
        BYTE held[256];
        std::copy(std::begin(state), std::end(state), held);
        held[VK_CONTROL] = held[VK_SHIFT] = 0x80;
        ::SetKeyboardState(held);
        const bool translated = F().PreTranslateMessage(msg);
        ::SetKeyboardState(state);
        EXPECT_TRUE(translated);
        EXPECT_TRUE(script.Finished()) << CL::Narrow(script.Report());
    }
}

TEST_F(ReviewChanges, WithoutADatabaseTheImpactColumnSaysSo)
{
    historian.Configure(L"Driver={No Such Driver};Database=nothing;", CL::CHistorian::kNoLimit,
                        CL::CHistorian::kNoLimit, 50);
    MakeMyChanges();
    CdlgReviewChanges& review = Open();
    EXPECT_FALSE(review.HistorianOpened());
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line1.Label"), CReviewRows::kImpact), CdlgReviewChanges::kNoHistorian);
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line1.Count"), CReviewRows::kImpact), L"");
    EXPECT_NE(CL::ItemText(review.Hwnd(), IDC_REVIEW_IMPACT).find(L"cannot be opened"), std::wstring::npos);
    // The review still works: revert goes through.
    SelectReviewLines({ReviewLineOf(L"Plant.Line1.Label")});
    EXPECT_EQ(review.RevertRows(review.ReportList().SelectedRows()), 1u);
}

class ReviewImpact : public ReviewChanges, public testing::WithParamInterface<DbKind> {};

TEST_P(ReviewImpact, RemovedRenamedAndUnarchivedItemsShowTheirArchivedValues)
{
    test::HistorianTestDb db(GetParam());
    ArchiveValues(db);
    // Speed stops being archived, Heartbeat is renamed, Count removed (no values).
    Item(L"Plant/Line1", L"Speed")->SetArchive(false);
    Item(L"", L"Heartbeat")->Rename(L"Pulse");
    F().Document().SetDirty();
    SelectBranch(L"Plant/Line1");
    SelectRows({L"Count"});
    FocusList();
    Command(ID_AS_EDIT_DELETE);
    CdlgReviewChanges& review = Open();
    ASSERT_TRUE(review.HistorianOpened());
    const std::wstring speed = Cell(ReviewLineOf(L"Plant.Line1.Speed", L"Archive"), CReviewRows::kImpact);
    EXPECT_EQ(speed.substr(0, 11), L"90 values, ") << CL::Narrow(speed);
    const std::wstring pulse = Cell(ReviewLineOf(L"Pulse"), CReviewRows::kImpact);
    EXPECT_EQ(pulse.substr(0, 11), L"10 values, ") << CL::Narrow(pulse);
    EXPECT_EQ(Cell(ReviewLineOf(L"Pulse"), CReviewRows::kKind), L"Moved item");
    EXPECT_EQ(Cell(ReviewLineOf(L"Plant.Line1.Count"), CReviewRows::kImpact), L"none");
    EXPECT_EQ(CL::ItemText(review.Hwnd(), IDC_REVIEW_IMPACT),
              L"Saving removes 1 item that has 10 archived values; those values stay in the database under item "
              L"IDs that no item will have. 1 item that has 90 archived values stops being archived or gets "
              L"another data type; its values stay as they are. Nothing is deleted.");
    // Nothing was deleted.
    EXPECT_EQ(db.RowCount(), 2);
}

INSTANTIATE_TEST_SUITE_P(Db, ReviewImpact, testing::Values(DbKind::Sqlite, DbKind::PostgreSql),
                         [](const testing::TestParamInfo<DbKind>& info) { return test::DbKindName(info.param); });

} // namespace
