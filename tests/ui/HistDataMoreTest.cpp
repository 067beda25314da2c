// The historical data window beyond its first read: "More values follow
// after <time>" and "Next" when a read stopped at the maximum, the CSV
// export of "Save data..." (byte for byte against the hand-written file of
// the zone the test runs in), copying rows as tab-separated text, and long
// work with its progress, Esc and Cancel (no file left, the target as it
// was), on SQLite and PostgreSQL.
#include "HistWinFixture.h"
#include "HistDataWindow.h"
#include "HistExportSupport.h"

#include "common/Text.h"
#include "common/ui/WorkProgress.h"
#include "support/FileDialogAnswer.h"

using namespace histwin_test;

namespace {

constexpr double kBase = 45000.0;   // 15.03.2023 00:00 UTC

std::vector<DATE> Seconds(int n)
{
    std::vector<DATE> times;
    for (int i = 0; i < n; ++i)
        times.push_back(kBase + 10 * kHour + i * kSecond);
    return times;
}

void WriteSeconds(CL::CHistoricDataWriter& writer, const std::wstring& itemId, int n, int perRun)
{
    const std::vector<DATE> times = Seconds(n);
    for (int start = 0; start < n; start += perRun) {
        std::vector<CL::CHistoricValue> run;
        for (int i = start; i < std::min(n, start + perRun); ++i)
            run.push_back({times[static_cast<size_t>(i)], 192, CL::CVariant::R8(i)});
        writer.AppendRun(itemId, run);
    }
}

// The expected CSV of the zone the test runs in ("+0100" in Berlin in winter).
std::wstring ExpectedCsv()
{
    const long minutes = test::LocalOffsetMinutesNow();
    return CL::Format(L"Z:" MORVANE_TEST_DATA_DIR L"/histwin/export-mixed%+03ld%02ld.csv", minutes / 60,
                      std::labs(minutes % 60));
}

// Progress shown at once and the step observer cleared again afterwards.
class ProgressAtOnce {
public:
    ProgressAtOnce() { CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(0)); }
    ~ProgressAtOnce()
    {
        CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(500));
        CL::CWorkProgress::SetStepObserver(nullptr);
    }
};

using HistDataPaging = HistorianWindowTest;
using HistDataCsv = HistorianWindowTest;
using HistDataCopy = HistorianWindowTest;
using HistDataProgress = HistorianWindowTest;

} // namespace

TEST_P(HistDataPaging, AReadStoppedAtTheMaximumSaysMoreFollowAndNextShowsTheFollowingValues)
{
    WriteSeconds(*m_writer, L"t", 7, 3);
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    EXPECT_EQ(test::WindowText(window.Item(IDC_HISTDATA_NEXT)), L"&Next");
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)));
    window.SetMax(3);
    window.ShowAll();
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"0", L"1", L"2"}));
    EXPECT_EQ(window.Status(), L"3 value(s) retrieved for 't'");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_MORE),
              L"More values follow after " + LocalText(kBase + 10 * kHour + 2 * kSecond));
    ASSERT_TRUE(::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)));

    window.Click(IDC_HISTDATA_NEXT);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"3", L"4", L"5"}));
    EXPECT_EQ(window.Status(), L"3 value(s) retrieved for 't'");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_MORE),
              L"More values follow after " + LocalText(kBase + 10 * kHour + 5 * kSecond));

    window.Click(IDC_HISTDATA_NEXT);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"6"}));
    EXPECT_EQ(window.Status(), L"1 value(s) retrieved for 't'");
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_MORE), L"");
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)));
}

TEST_P(HistDataPaging, ValuesAtTheSameTimeAsTheLastOneShownAreNotLostAtThePageBreak)
{
    const DATE t = kBase + 10 * kHour;
    WriteValues(L"t", {{t, 192, CL::CVariant::R8(0)},
                       {t + kSecond, 192, CL::CVariant::R8(1)},
                       {t + kSecond, 192, CL::CVariant::R8(2)},
                       {t + kSecond, 192, CL::CVariant::R8(3)},
                       {t + 2 * kSecond, 192, CL::CVariant::R8(4)}});
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(2);
    window.ShowAll();
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"0", L"1"}));
    window.Click(IDC_HISTDATA_NEXT);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"2", L"3"}));
    window.Click(IDC_HISTDATA_NEXT);
    EXPECT_EQ(Column(window.List(), 0), (std::vector<std::wstring>{L"4"}));
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)));
}

TEST_P(HistDataPaging, EverythingShownLeavesNothingToFollow)
{
    WriteSeconds(*m_writer, L"t", 3, 3);
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(3);
    window.ShowAll();
    EXPECT_EQ(RowCount(window.List()), 3);
    EXPECT_EQ(test::DialogItemText(window.Hwnd(), IDC_HISTDATA_MORE), L"");
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)));
}

TEST_P(HistDataCsv, SaveDataAsCsvWritesTheHandWrittenFileOfTheZoneByteForByte)
{
    WriteValues(L"Anlage.Beh\u00E4lter-1.Temp <A&B>", MixedValues());
    test::TempDir folder;
    const std::wstring path = folder.File(L"export.csv");
    HistDataWindow window(m_historian, L"Anlage.Beh\u00E4lter-1.Temp <A&B>");
    ASSERT_TRUE(window.Open());
    window.SetMax(0);
    window.UncheckBounds();
    test::FileDialogAnswer answer(path);
    window.Click(IDC_HISTDATA_OPEN_FILE);
    ASSERT_TRUE(answer.Answered());
    const std::string expected = test::ReadFileBytes(ExpectedCsv());
    ASSERT_FALSE(expected.empty()) << "no expected file for this zone offset";
    EXPECT_EQ(test::ReadFileBytes(path), expected);
    EXPECT_FALSE(FileExists(path + L".saving"));
}

TEST_P(HistDataCopy, CtrlACtrlCCopiesEveryRowWithTheColumnTitlesAsTabSeparatedText)
{
    WriteValues(L"t", {{kBase + 10 * kHour, 192, CL::CVariant(L"a\tb")},
                       {kBase + 10 * kHour + kSecond, 64, CL::CVariant::R8(2.5)}});
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    {
        CtrlDown ctrl;
        PressKey(window.List(), 'A');
        PressKey(window.List(), 'C');
    }
    const std::wstring expected = L"Value\tTime (UTC)\tVar. type\tQuality\r\n\"a\tb\"\t" +
                                  LocalText(kBase + 10 * kHour) + L"\tVT_BSTR\tGOOD\r\n2.5\t" +
                                  LocalText(kBase + 10 * kHour + kSecond) + L"\tVT_R8\tNOT GOOD\r\n";
    EXPECT_EQ(CL::GetClipboardText(window.Hwnd()), expected);
}

TEST_P(HistDataCopy, CopyTakesTheSelectedRowsInTheOrderShown)
{
    WriteSeconds(*m_writer, L"t", 3, 3);
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.ShowAll();
    ClickHeader(window.List(), 0);
    ClickHeader(window.List(), 0);   // descending: 2, 1, 0
    SelectRows(window.List(), {0, 2});
    ::SendMessageW(window.Hwnd(), WM_COMMAND, MAKEWPARAM(ID_HISTDATA_COPY, 0), 0);
    const std::wstring text = CL::GetClipboardText(window.Hwnd());
    EXPECT_EQ(text, L"Value\tTime (UTC)\tVar. type\tQuality\r\n2\t" + LocalText(kBase + 10 * kHour + 2 * kSecond) +
                        L"\tVT_R8\tGOOD\r\n0\t" + LocalText(kBase + 10 * kHour) + L"\tVT_R8\tGOOD\r\n");
}

TEST_P(HistDataProgress, LongWorkShowsItsProgressAndTheCancelButton)
{
    WriteSeconds(*m_writer, L"t", 30, 10);
    ProgressAtOnce atOnce;
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    const auto cancelVisible = [&] {
        return (::GetWindowLongW(window.Item(IDC_HISTDATA_CANCEL), GWL_STYLE) & WS_VISIBLE) != 0;
    };
    EXPECT_FALSE(cancelVisible());
    std::vector<std::wstring> texts;
    bool cancelShown = false;
    CL::CWorkProgress::SetStepObserver([&] {
        texts.push_back(window.Status());
        cancelShown = cancelShown || (::GetWindowLongW(window.Item(IDC_HISTDATA_CANCEL), GWL_STYLE) & WS_VISIBLE);
    });
    window.SetMax(0);
    window.ShowAll();
    EXPECT_TRUE(cancelShown);
    // The first step's text, seen at the next step (later ones are drawn a
    // tenth of a second apart at most).
    EXPECT_NE(std::find(texts.begin(), texts.end(), L"0 value(s) read..."), texts.end());
    EXPECT_EQ(window.Status(), L"30 value(s) retrieved for 't'");
    EXPECT_FALSE(cancelVisible());
}

TEST_P(HistDataProgress, EscDuringShowDataStopsTheReadAndShowsNothing)
{
    WriteSeconds(*m_writer, L"t", 30, 10);
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    CL::CWorkProgress::SetStepObserver([&] { ::PostMessageW(window.List(), WM_KEYDOWN, VK_ESCAPE, 0); });
    ProgressAtOnce atOnce;
    window.SetMax(0);
    window.ShowAll();
    EXPECT_EQ(RowCount(window.List()), 0);
    EXPECT_EQ(window.Status(), L"Cancelled: nothing was read");
    EXPECT_TRUE(::IsWindow(window.Hwnd()));   // Esc cancelled the work, not the window
}

TEST_P(HistDataProgress, CancelledSaveLeavesNoFileAndTheTargetAsItWas)
{
    WriteSeconds(*m_writer, L"t", 30, 10);
    test::TempDir folder;
    const std::wstring path = folder.File(L"old.csv");
    WriteFileText(path, "old contents");
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(0);
    window.UncheckBounds();
    ProgressAtOnce atOnce;
    CL::CWorkProgress::SetStepObserver([&] { ::PostMessageW(window.List(), WM_KEYDOWN, VK_ESCAPE, 0); });
    test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
    window.Click(IDC_HISTDATA_OPEN_FILE);
    EXPECT_TRUE(OtherBoxes(answerer).empty());
    EXPECT_EQ(test::ReadFileBytes(path), "old contents");
    EXPECT_FALSE(FileExists(path + L".saving"));
    EXPECT_EQ(window.Status(), L"Cancelled: nothing was saved");
}

// Esc while the file is being written, after every value was read: the
// save's last step is one of its writing (a save of these values steps
// more often than reading them alone does, and writing comes after the
// read), and Esc there leaves no file and the target as it was.
TEST_P(HistDataProgress, EscWhileWritingTheSaveLeavesNoFileAndTheTargetAsItWas)
{
    WriteSeconds(*m_writer, L"t", 10000, 2500);
    test::TempDir folder;
    const std::wstring path = folder.File(L"old.csv");
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(0);
    window.UncheckBounds();
    ProgressAtOnce atOnce;
    int steps = 0;
    CL::CWorkProgress::SetStepObserver([&] { ++steps; });
    window.ShowAll();
    const int readSteps = steps;
    steps = 0;
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(folder.File(L"whole.csv")));
        window.Click(IDC_HISTDATA_OPEN_FILE);
        ASSERT_TRUE(OtherBoxes(answerer).empty());
    }
    const int saveSteps = steps;
    ASSERT_GT(saveSteps, readSteps) << "the save steps no more often than a read: no step of its writing";
    ASSERT_TRUE(::DeleteFileW(folder.File(L"whole.csv").c_str()));
    WriteFileText(path, "old contents");
    steps = 0;
    CL::CWorkProgress::SetStepObserver([&] {
        if (++steps == saveSteps)
            ::PostMessageW(window.List(), WM_KEYDOWN, VK_ESCAPE, 0);
    });
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
        window.Click(IDC_HISTDATA_OPEN_FILE);
        EXPECT_TRUE(OtherBoxes(answerer).empty());
    }
    EXPECT_EQ(steps, saveSteps);
    EXPECT_EQ(test::ReadFileBytes(path), "old contents");
    EXPECT_EQ(FilesIn(folder.Path()), std::vector<std::wstring>{L"old.csv"});
    EXPECT_EQ(window.Status(), L"Cancelled: nothing was saved");
}

TEST_P(HistDataProgress, AReadOnlyTargetEndsInTheErrorReportWithNothingWritten)
{
    WriteSeconds(*m_writer, L"t", 3, 3);
    test::TempDir folder;
    for (const wchar_t* name : {L"locked.csv", L"locked.xml"}) {
        const std::wstring path = folder.File(name);
        WriteFileText(path, "old contents");
        ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
        HistDataWindow window(m_historian, L"t");
        ASSERT_TRUE(window.Open());
        {
            test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
            window.Click(IDC_HISTDATA_OPEN_FILE);
            const auto boxes = OtherBoxes(answerer);
            ASSERT_EQ(boxes.size(), 1u) << CL::Narrow(path);
            EXPECT_NE(boxes[0].text.find(L"Access denied"), std::wstring::npos) << CL::Narrow(boxes[0].text);
        }
        ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        EXPECT_EQ(test::ReadFileBytes(path), "old contents");
        EXPECT_FALSE(FileExists(path + L".saving"));
    }
}

INSTANTIATE_TEST_SUITE_P(Db, HistDataPaging, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
INSTANTIATE_TEST_SUITE_P(Db, HistDataCsv, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
INSTANTIATE_TEST_SUITE_P(Db, HistDataCopy, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
INSTANTIATE_TEST_SUITE_P(Db, HistDataProgress, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
