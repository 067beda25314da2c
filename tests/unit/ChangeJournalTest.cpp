// The change journal: records in RFC 4180 form with their header and byte
// order mark, read back field by field; every entry also to the event log
// sink; two processes appending at the same moment lose no entry; a journal
// that cannot be written does not throw, logs an error and warns the user.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "LogCapture.h"
#include "TestSupport.h"
#include "common/ChangeJournal.h"
#include "common/Csv.h"
#include "common/Text.h"

using CL::CChangeJournal;
using CL::CJournalEntry;

namespace {

class RecordingEventLog final : public CL::IEventLogSink {
public:
    bool Report(const std::wstring& text) override
    {
        events.push_back(text);
        return true;
    }
    std::vector<std::wstring> events;
};

constexpr wchar_t kWriterVariable[] = L"MORVANE_JOURNAL_WRITER";
constexpr wchar_t kGoEvent[] = L"MorvaneJournalWritersGo";

std::wstring Variable(const wchar_t* name)
{
    wchar_t value[1024] = {};
    const DWORD length = ::GetEnvironmentVariableW(name, value, 1024);
    return std::wstring(value, length);
}

} // namespace

TEST(ChangeJournal, FirstEntryWritesBomHeaderAndRecord)
{
    test::TempDir dir;
    auto events = std::make_shared<RecordingEventLog>();
    CChangeJournal journal(dir.File(L"ChangeJournal.csv"), events);
    ASSERT_TRUE(journal.Record(CL::kJournalServiceStarted, L"Service 'Morvane' started, \"quoted\"\r\nsecond line"));
    const std::string bytes = test::ReadFileBytes(dir.File(L"ChangeJournal.csv"));
    ASSERT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF");
    EXPECT_EQ(bytes.substr(3, bytes.find("\r\n") - 3),
              "Time (UTC),Account,Computer,Program,Action,Details,File,Previous file");
    EXPECT_NE(bytes.find("\"Service 'Morvane' started, \"\"quoted\"\"\r\nsecond line\""), std::string::npos);

    const std::vector<CJournalEntry> entries = journal.ReadAll();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].action, L"Service started");
    EXPECT_EQ(entries[0].details, L"Service 'Morvane' started, \"quoted\"\r\nsecond line");
    EXPECT_EQ(entries[0].time.size(), 19u);                       // YYYY-MM-DD hh:mm:ss
    EXPECT_NE(entries[0].account.find(L'\\'), std::wstring::npos) << CL::Narrow(entries[0].account);
    EXPECT_EQ(entries[0].computer, CChangeJournal::ComputerName());
    EXPECT_EQ(entries[0].program.rfind(L"unit_tests.exe ", 0), 0u) << CL::Narrow(entries[0].program);

    ASSERT_EQ(events->events.size(), 1u);
    EXPECT_EQ(events->events[0].rfind(L"Service started by " + entries[0].account, 0), 0u);
    EXPECT_NE(events->events[0].find(L"second line"), std::wstring::npos);
}

TEST(ChangeJournal, LaterEntriesAreAppendedWithoutAnotherHeader)
{
    test::TempDir dir;
    CChangeJournal journal(dir.File(L"j.csv"), nullptr);
    ASSERT_TRUE(journal.Record(CL::kJournalSettingsChanged, L"one", L"C:\\x\\Morvane.ini.xml.2026_01_01-00_00_00"));
    ASSERT_TRUE(journal.Record(CL::kJournalAddressSpaceSaved, L"two", L"v2.xml", L"v1.xml"));
    const std::string bytes = test::ReadFileBytes(dir.File(L"j.csv"));
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 3);
    const std::vector<CJournalEntry> entries = journal.ReadAll();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].file, L"C:\\x\\Morvane.ini.xml.2026_01_01-00_00_00");
    EXPECT_EQ(entries[1].details, L"two");
    EXPECT_EQ(entries[1].file, L"v2.xml");
    EXPECT_EQ(entries[1].previousFile, L"v1.xml");
}

TEST(ChangeJournal, TextOutsideAsciiIsUtf8)
{
    test::TempDir dir;
    CChangeJournal journal(dir.File(L"j.csv"), nullptr);
    ASSERT_TRUE(journal.Record(CL::kJournalValuesDeleted, L"Items: Anlage.Fl\u00fcgel\u00b0C"));
    const std::string bytes = test::ReadFileBytes(dir.File(L"j.csv"));
    EXPECT_NE(bytes.find("Anlage.Fl\xC3\xBCgel\xC2\xB0"), std::string::npos);
    EXPECT_EQ(journal.ReadAll().at(0).details, L"Items: Anlage.Fl\u00fcgel\u00b0C");
}

TEST(ChangeJournal, MissingFileReadsAsNoEntries)
{
    test::TempDir dir;
    CChangeJournal journal(dir.File(L"none.csv"), nullptr);
    EXPECT_TRUE(journal.ReadAll().empty());
}

TEST(ChangeJournal, UnwritableJournalLogsAnErrorWarnsAndDoesNotThrow)
{
    test::TempDir dir;
    auto events = std::make_shared<RecordingEventLog>();
    // A folder of that name: the file cannot be opened for writing.
    ASSERT_TRUE(::CreateDirectoryW(dir.File(L"j.csv").c_str(), nullptr));
    CChangeJournal journal(dir.File(L"j.csv"), events);
    std::vector<std::wstring> warnings;
    journal.SetWarningPresenter([&warnings](const std::wstring& text) { warnings.push_back(text); });
    test::LogCapture log;
    EXPECT_FALSE(journal.Record(CL::kJournalServiceStopped, L"Service 'Morvane' stopped"));
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_EQ(warnings[0].rfind(L"The change was made, but it could not be recorded in the change journal " +
                                    dir.File(L"j.csv"),
                                0),
              0u);
    EXPECT_TRUE(log.Contains("The change was made but not recorded in the change journal"));
    // The event log still gets the entry.
    EXPECT_EQ(events->events.size(), 1u);
}

// One of the two writer processes of the next test: appends the number of
// entries the variable names, tagged with its own name.
TEST(ChangeJournalWriter, AppendsTaggedEntries)
{
    const std::wstring job = Variable(kWriterVariable);
    if (job.empty())
        GTEST_SKIP() << "run by ChangeJournal.TwoProcessesWritingAtOnceLoseNoEntry";
    // "<path>|<tag>|<count>"
    const size_t first = job.find(L'|');
    const size_t second = job.find(L'|', first + 1);
    CChangeJournal journal(job.substr(0, first), nullptr);
    const std::wstring tag = job.substr(first + 1, second - first - 1);
    const int count = std::stoi(job.substr(second + 1));
    // Both writers start at the same moment.
    const HANDLE go = ::OpenEventW(SYNCHRONIZE, FALSE, kGoEvent);
    ASSERT_NE(go, nullptr);
    ASSERT_EQ(::WaitForSingleObject(go, 60000), WAIT_OBJECT_0);
    ::CloseHandle(go);
    // The identity is looked up once: the writes themselves follow each
    // other as fast as they can, so that the two writers' overlap.
    CJournalEntry entry = CChangeJournal::NewEntry(CL::kJournalServiceStarted, L"");
    for (int i = 0; i < count; ++i) {
        entry.details = tag + L" " + std::to_wstring(i);
        ASSERT_TRUE(journal.Append(entry));
    }
}

TEST(ChangeJournal, TwoProcessesWritingAtOnceLoseNoEntry)
{
    test::TempDir dir;
    const std::wstring path = dir.File(L"ChangeJournal.csv");
    constexpr int kCount = 1000;
    const HANDLE go = ::CreateEventW(nullptr, TRUE, FALSE, kGoEvent);
    ASSERT_NE(go, nullptr);
    std::vector<std::unique_ptr<test::Process>> writers;
    for (const wchar_t* tag : {L"A", L"B"}) {
        const std::wstring job = path + L"|" + tag + L"|" + std::to_wstring(kCount);
        ASSERT_TRUE(::SetEnvironmentVariableW(kWriterVariable, job.c_str()));
        writers.push_back(std::make_unique<test::Process>(test::ProgramFolder() + L"unit_tests.exe",
                                                          L"--gtest_filter=ChangeJournalWriter.*"));
    }
    ::SetEnvironmentVariableW(kWriterVariable, nullptr);
    ::Sleep(1500);   // both are waiting by now
    ::SetEvent(go);
    for (auto& writer : writers)
        ASSERT_EQ(writer->Wait(std::chrono::seconds(120)), 0u);
    ::CloseHandle(go);

    const std::vector<CJournalEntry> entries = CChangeJournal(path, nullptr).ReadAll();
    std::set<std::wstring> details;
    for (const CJournalEntry& entry : entries)
        details.insert(entry.details);
    EXPECT_EQ(entries.size(), 2u * kCount);
    EXPECT_EQ(details.size(), 2u * kCount);
    for (int i = 0; i < kCount; ++i) {
        EXPECT_EQ(details.count(L"A " + std::to_wstring(i)), 1u);
        EXPECT_EQ(details.count(L"B " + std::to_wstring(i)), 1u);
    }
    // One header only, and every line a whole record.
    const std::string bytes = test::ReadFileBytes(path);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 2 * kCount + 1);
}
