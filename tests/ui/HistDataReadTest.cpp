// The historical data window's reads beyond "Show data": "Next" with the
// bounds' boxes unchecked reaches every value exactly once, "Save data..."
// keeps what a read that fails part way had read (the range read logs the
// failure and keeps the values, as "Show data" does) and says so, and the
// status line shows its text again after the progress of long work.
#include "HistWinFixture.h"
#include "HistDataWindow.h"
#include "HistExportSupport.h"

#include "common/Exception.h"
#include "common/Text.h"
#include "common/ui/WorkProgress.h"

using namespace histwin_test;

namespace {

constexpr double kBase = 45000.0;   // 15.03.2023 00:00 UTC

// n values a second apart from 10:00 UTC, in runs of perRun; value i is i.
void WriteSeconds(CL::CHistoricDataWriter& writer, const std::wstring& itemId, int n, int perRun)
{
    for (int start = 0; start < n; start += perRun) {
        std::vector<CL::CHistoricValue> run;
        for (int i = start; i < std::min(n, start + perRun); ++i)
            run.push_back({kBase + 10 * kHour + i * kSecond, 192, CL::CVariant::R8(i)});
        writer.AppendRun(itemId, run);
    }
}

std::vector<std::wstring> Numbers(int first, int count)
{
    std::vector<std::wstring> numbers;
    for (int i = first; i < first + count; ++i)
        numbers.push_back(std::to_wstring(i));
    return numbers;
}

size_t LineCount(const std::string& text)
{
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

// Progress shown at once; the step observer cleared again afterwards.
class ProgressAtOnce {
public:
    ProgressAtOnce() { CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(0)); }
    ~ProgressAtOnce()
    {
        CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(500));
        CL::CWorkProgress::SetStepObserver(nullptr);
    }
};

using HistDataUncheckedPaging = HistorianWindowTest;
using HistDataSave = HistorianWindowTest;

} // namespace

// The pickers stand a day before every value; with both boxes unchecked
// "Show data" shows the first page and "Next" reaches the rest, once each.
TEST_P(HistDataUncheckedPaging, NextReachesTheValuesAfterTheUncheckedPickersTime)
{
    WriteSeconds(*m_writer, L"t", 8, 3);
    HistDataWindow window(m_historian, L"t", kBase - 2, kBase - 1);
    ASSERT_TRUE(window.Open());
    window.SetMax(3);
    window.ShowAll();
    std::vector<std::wstring> seen = Column(window.List(), 0);
    EXPECT_EQ(seen, Numbers(0, 3));
    for (int page = 0; page < 5 && ::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)); ++page) {
        window.Click(IDC_HISTDATA_NEXT);
        const std::vector<std::wstring> shown = Column(window.List(), 0);
        seen.insert(seen.end(), shown.begin(), shown.end());
    }
    EXPECT_EQ(seen, Numbers(0, 8)) << "every value once, in order";
    EXPECT_FALSE(::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)));
}

// Only "To:" unchecked, its picker before the last values, "From:" checked
// before every value: "Next" reaches what "Show data" shows without a
// maximum.
TEST_P(HistDataUncheckedPaging, NextWithOnlyFromCheckedReachesWhatShowDataShowsWithoutAMaximum)
{
    WriteSeconds(*m_writer, L"t", 8, 3);
    HistDataWindow window(m_historian, L"t", kBase - 1, kBase + 2);
    ASSERT_TRUE(window.Open());
    if (Checked(window.Hwnd(), IDC_TIMEPERIOD_CHK_TO))
        window.Click(IDC_TIMEPERIOD_CHK_TO);
    if (!Checked(window.Hwnd(), IDC_TIMEPERIOD_CHK_FROM))
        window.Click(IDC_TIMEPERIOD_CHK_FROM);
    window.SetMax(0);
    window.Click(IDC_HISTDATA_BTN_REFRESH);
    const std::vector<std::wstring> all = Column(window.List(), 0);
    ASSERT_FALSE(all.empty());
    window.SetMax(3);
    window.Click(IDC_HISTDATA_BTN_REFRESH);
    std::vector<std::wstring> seen = Column(window.List(), 0);
    for (int page = 0; page < 5 && ::IsWindowEnabled(window.Item(IDC_HISTDATA_NEXT)); ++page) {
        window.Click(IDC_HISTDATA_NEXT);
        const std::vector<std::wstring> shown = Column(window.List(), 0);
        seen.insert(seen.end(), shown.begin(), shown.end());
    }
    EXPECT_EQ(seen, all);
}

// After a save that showed its progress, the status line shows again what
// it showed before the save.
TEST_P(HistDataSave, TheStatusTextComesBackAfterTheProgress)
{
    WriteSeconds(*m_writer, L"t", 30, 10);
    test::TempDir folder;
    const std::wstring path = folder.File(L"values.csv");
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(0);
    window.ShowAll();
    const std::wstring before = window.Status();
    ASSERT_EQ(before, L"30 value(s) retrieved for 't'");
    ProgressAtOnce atOnce;
    std::vector<std::wstring> texts;
    CL::CWorkProgress::SetStepObserver([&] { texts.push_back(window.Status()); });
    test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
    window.Click(IDC_HISTDATA_OPEN_FILE);
    EXPECT_TRUE(OtherBoxes(answerer).empty());
    EXPECT_NE(std::find_if(texts.begin(), texts.end(),
                           [](const std::wstring& text) { return text.find(L"read...") != std::wstring::npos; }),
              texts.end())
        << "the save showed its progress";
    EXPECT_EQ(window.Status(), before);
    EXPECT_FALSE(::IsWindowVisible(window.Item(IDC_HISTDATA_CANCEL)));
}

// The read fails after two of the three runs (the connection lost): what
// was read is saved, the status line says the read stopped early, and no
// error report interrupts.
TEST_P(HistDataSave, AReadThatFailsPartWaySavesWhatWasReadAndSaysSo)
{
    WriteSeconds(*m_writer, L"t", 30, 10);
    test::TempDir folder;
    const std::wstring whole = folder.File(L"whole.csv");
    const std::wstring part = folder.File(L"part.csv");
    HistDataWindow window(m_historian, L"t");
    ASSERT_TRUE(window.Open());
    window.SetMax(0);
    window.UncheckBounds();
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(whole));
        window.Click(IDC_HISTDATA_OPEN_FILE);
        ASSERT_TRUE(OtherBoxes(answerer).empty());
    }
    int steps = 0;
    // Before each run the read steps once: the third step is the third run.
    CL::CWorkProgress::SetStepObserver([&] {
        if (++steps == 3)
            throw CL::CException(E_FAIL, L"the connection was lost");
    });
    std::vector<test::MessageBoxInfo> others;
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(part));
        window.Click(IDC_HISTDATA_OPEN_FILE);
        others = OtherBoxes(answerer);
    }
    CL::CWorkProgress::SetStepObserver(nullptr);
    EXPECT_TRUE(others.empty()) << (others.empty() ? "" : CL::Narrow(others[0].text));
    ASSERT_TRUE(FileExists(part)) << "what was read is saved";
    EXPECT_EQ(LineCount(test::ReadFileBytes(part)) + 10, LineCount(test::ReadFileBytes(whole)));
    EXPECT_EQ(window.Status(), L"The read stopped early (see the log): the 20 value(s) read before were saved");
}

INSTANTIATE_TEST_SUITE_P(Db, HistDataUncheckedPaging, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
INSTANTIATE_TEST_SUITE_P(Db, HistDataSave, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
