#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "common/DiagnosticLog.h"
#include "common/Exception.h"
#include "common/Handle.h"
#include "config/Settings.h"
#include "support/ProcessState.h"

namespace {

class FakeClock : public CL::ILogClock {
public:
    SYSTEMTIME now = {2026, 11, 5, 15, 9, 14, 3, 412};
    SYSTEMTIME LocalNow() const override { return now; }
};

class DiagnosticLogTest : public ::testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override { g_Settings.TraceLevel = 4; }
    std::wstring Base() const { return dir.File(L"MorvaneGui"); }
    std::wstring DayFile(int day, int counter) const
    {
        wchar_t suffix[64];
        swprintf(suffix, 64, L".2026-11-%02d_%03d.log", day, counter);
        return Base() + suffix;
    }
    test::TempDir dir;
    FakeClock clock;
};

std::string Line(const char* text, unsigned level = 3)
{
    return CL::DiagnosticLog::FormatLine(SYSTEMTIME{2026, 11, 5, 15, 9, 14, 3, 412}, ::GetCurrentThreadId(),
                                         level, text) + "\r\n";
}

void FillFile(const std::wstring& path, DWORD size)
{
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    ::SetFilePointer(file, static_cast<LONG>(size), nullptr, FILE_BEGIN);
    ::SetEndOfFile(file);
    ::CloseHandle(file);
}

} // namespace

TEST_F(DiagnosticLogTest, LineHasTimeMillisecondsThreadIdLevelAndCrLf)
{
    CL::DiagnosticLog log(Base(), clock);
    log.Write(3, "CDummyWnd::OnMnOptions [DummyWnd, 296]");
    char expected[128];
    snprintf(expected, sizeof expected, "09:14:03:0412 (%08x) [3] CDummyWnd::OnMnOptions [DummyWnd, 296]\r\n",
             static_cast<unsigned>(::GetCurrentThreadId()));
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 0)), expected);
}

TEST_F(DiagnosticLogTest, ThreadIdIsEightLowerCaseHexDigits)
{
    EXPECT_EQ(CL::DiagnosticLog::FormatLine(clock.now, 0x1a2c, 3, "x"), "09:14:03:0412 (00001a2c) [3] x");
    EXPECT_EQ(CL::DiagnosticLog::FormatLine(clock.now, 0xABCDEF12, 0, "y"), "09:14:03:0412 (abcdef12) [0] y");
}

TEST_F(DiagnosticLogTest, FileNameHoldsDateAndThreeDigitCounter)
{
    CL::DiagnosticLog log(L"C:\\Dir\\MorvaneGui", clock);
    EXPECT_EQ(log.FileName(clock.now, 0), L"C:\\Dir\\MorvaneGui.2026-11-15_000.log");
    EXPECT_EQ(log.FileName(SYSTEMTIME{2027, 1, 0, 2, 0, 0, 0, 0}, 12), L"C:\\Dir\\MorvaneGui.2027-01-02_012.log");
}

TEST_F(DiagnosticLogTest, MessageAboveTraceLevelCreatesNoFile)
{
    g_Settings.TraceLevel = 1;
    CL::DiagnosticLog log(Base(), clock);
    log.Write(3, "CDummyWnd::OnCreate [DummyWnd, 143]");
    EXPECT_FALSE(test::FileExists(DayFile(15, 0)));
}

TEST_F(DiagnosticLogTest, MessageAtTraceLevelIsWritten)
{
    g_Settings.TraceLevel = 1;
    CL::DiagnosticLog log(Base(), clock);
    log.Write(1, "warning");
    log.Write(0, "error");
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 0)), Line("warning", 1) + Line("error", 0));
}

TEST_F(DiagnosticLogTest, LevelAboveMaximumLevelIsDroppedWhateverTheTraceLevel)
{
    g_Settings.TraceLevel = 1000;
    CL::DiagnosticLog log(Base(), clock);
    log.Write(100, "too high");
    EXPECT_FALSE(test::FileExists(DayFile(15, 0)));
    log.Write(99, "highest");
    EXPECT_TRUE(test::FileExists(DayFile(15, 0)));
}

TEST_F(DiagnosticLogTest, ExistingFileIsAppendedTo)
{
    test::WriteFileBytes(DayFile(15, 0), "earlier line\r\n");
    CL::DiagnosticLog log(Base(), clock);
    log.Write(2, "later line");
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 0)), "earlier line\r\n" + Line("later line", 2));
}

TEST_F(DiagnosticLogTest, NewFileStartsWithTheFirstLine)
{
    CL::DiagnosticLog log(Base(), clock);
    log.Write(2, "first");
    log.Write(2, "second");
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 0)), Line("first", 2) + Line("second", 2));
}

TEST_F(DiagnosticLogTest, FullFileSendsTheWriteToTheNextCounterWhichStays)
{
    FillFile(DayFile(15, 0), 10240000);
    CL::DiagnosticLog log(Base(), clock);
    log.Write(2, "one");
    EXPECT_EQ(log.FileCounter(), 1u);
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 1)), Line("one", 2));
    log.Write(2, "two");
    EXPECT_EQ(log.FileCounter(), 1u);
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 1)), Line("one", 2) + Line("two", 2));
}

TEST_F(DiagnosticLogTest, FileJustBelowTheLimitIsStillUsed)
{
    FillFile(DayFile(15, 0), 10239999);
    CL::DiagnosticLog log(Base(), clock);
    log.Write(2, "fits");
    EXPECT_EQ(log.FileCounter(), 0u);
    EXPECT_FALSE(test::FileExists(DayFile(15, 1)));
}

TEST_F(DiagnosticLogTest, SeveralFullFilesAreSkippedToTheFirstFreeCounter)
{
    FillFile(DayFile(15, 0), 10240000);
    FillFile(DayFile(15, 1), 20000000);
    test::WriteFileBytes(DayFile(15, 2), "small\r\n");
    CL::DiagnosticLog log(Base(), clock);
    log.Write(2, "x");
    EXPECT_EQ(log.FileCounter(), 2u);
    EXPECT_EQ(test::ReadFileBytes(DayFile(15, 2)), "small\r\n" + Line("x", 2));
}

TEST_F(DiagnosticLogTest, CounterCarriesIntoTheNextDay)
{
    FillFile(DayFile(15, 0), 10240000);
    CL::DiagnosticLog log(Base(), clock);
    log.Write(2, "day one");
    clock.now.wDay = 16;
    log.Write(2, "day two");
    EXPECT_FALSE(test::FileExists(DayFile(16, 0)));
    EXPECT_TRUE(test::FileExists(DayFile(16, 1)));
    EXPECT_EQ(log.FileCounter(), 1u);
}

TEST_F(DiagnosticLogTest, UnwritableFileLosesTheLineSilently)
{
    CL::DiagnosticLog log(dir.File(L"no-such-folder\\MorvaneGui"), clock);
    log.Write(2, "lost");   // must neither throw nor create anything
    EXPECT_FALSE(test::FileExists(dir.File(L"no-such-folder")));
}

TEST_F(DiagnosticLogTest, ConcurrentWritersNeverInterleaveLines)
{
    CL::DiagnosticLog log(Base(), clock);
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t) {
        writers.emplace_back([&log, t] {
            if (t % 2)
                ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_LOWEST);
            for (int i = 0; i < 200; ++i)
                log.Write(2, std::string(40, static_cast<char>('a' + t)));
        });
    }
    for (auto& w : writers)
        w.join();
    const std::string content = test::ReadFileBytes(DayFile(15, 0));
    size_t lines = 0, pos = 0;
    while ((pos = content.find("\r\n", pos)) != std::string::npos) {
        ++lines;
        pos += 2;
    }
    EXPECT_EQ(lines, 800u);
    for (int t = 0; t < 4; ++t) {
        const std::string run = "] " + std::string(40, static_cast<char>('a' + t)) + "\r\n";
        size_t count = 0, at = 0;
        while ((at = content.find(run, at)) != std::string::npos) {
            ++count;
            at += run.size();
        }
        EXPECT_EQ(count, 200u) << "thread " << t;
    }
}

TEST_F(DiagnosticLogTest, WriterWaitingForTheLockRunsTimeCriticalThenGetsItsOwnPriorityBack)
{
    using namespace std::chrono_literals;
    CL::DiagnosticLog log(Base(), clock);
    log.Lock();   // another writer holds the lock
    std::atomic<DWORD> writerId{0};
    std::atomic<int> priorityAfter{THREAD_PRIORITY_ERROR_RETURN};
    std::thread writer([&] {
        ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_LOWEST);
        writerId = ::GetCurrentThreadId();
        log.Write(2, "waited");
        priorityAfter = ::GetThreadPriority(::GetCurrentThread());
    });
    ASSERT_TRUE(test::WaitUntil([&] { return writerId != 0; }, 5s));
    CL::UniqueKernelHandle thread(::OpenThread(THREAD_QUERY_INFORMATION, FALSE, writerId));
    ASSERT_TRUE(thread);
    const bool boosted = test::WaitUntil(
        [&] { return ::GetThreadPriority(thread.get()) == THREAD_PRIORITY_TIME_CRITICAL; }, 5s);
    const bool wroteWhileLocked = test::FileExists(DayFile(15, 0));
    log.Unlock();
    writer.join();
    EXPECT_TRUE(boosted) << "the waiting writer is raised to time-critical priority";
    EXPECT_FALSE(wroteWhileLocked) << "nothing is written while another writer holds the lock";
    EXPECT_EQ(priorityAfter.load(), THREAD_PRIORITY_LOWEST) << "the writer's own priority is restored";
    const std::string content = test::ReadFileBytes(DayFile(15, 0));
    EXPECT_EQ(content.substr(0, 14), "09:14:03:0412 ");
    EXPECT_EQ(content.substr(content.size() - 12), "[2] waited\r\n") << "the line follows once the lock is free";
}

TEST(DiagnosticLogInstance, UnreadableModuleNameThrowsWithTheCallAsSource)
{
    try {
        CL::ModuleBasePath(reinterpret_cast<HMODULE>(static_cast<uintptr_t>(0x10)));
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(e.Source(), L"::GetModuleFileNameW (0, path_buffer, 260)");
        EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x8007007Eul) << "ERROR_MOD_NOT_FOUND as an HRESULT";
    }
}

TEST(DiagnosticLogInstance, BasePathIsTheExecutablePathWithoutExtension)
{
    wchar_t module[MAX_PATH];
    ::GetModuleFileNameW(nullptr, module, MAX_PATH);
    std::wstring expected(module);
    expected.erase(expected.rfind(L'.'));
    EXPECT_EQ(CL::DiagnosticLog::Instance().BasePath(), expected);
    EXPECT_EQ(CL::DiagnosticLog::Instance().FileCounter(), 0u);
}

TEST(StripExtension, RemovesOnlyTheLastComponentsExtension)
{
    EXPECT_EQ(CL::StripExtension(L"C:\\Dir\\MorvaneGui.exe"), L"C:\\Dir\\MorvaneGui");
    EXPECT_EQ(CL::StripExtension(L"C:\\Dir.v2\\MorvaneGui"), L"C:\\Dir.v2\\MorvaneGui");
    EXPECT_EQ(CL::StripExtension(L"C:\\Dir\\Morvane.Gui.exe"), L"C:\\Dir\\Morvane.Gui");
}

TEST(SourcePosition, IsFileNameWithoutFolderAndExtensionAndLine)
{
    EXPECT_EQ(CL::SourcePosition("C:\\src\\app\\DummyWnd.cpp", 87), " [DummyWnd, 87]");
    EXPECT_EQ(CL::SourcePosition("/work/common/Util_Variant.cpp", 326), " [Util_Variant, 326]");
}

TEST(CheckedCall, FailureIsLoggedAtLevelZeroAndSuccessIsNot)
{
    const test::SettingsKeeper keepSettings;
    g_Settings.TraceLevel = 0;
    // A text no earlier run can have written.
    const std::string stamp = std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(::GetTickCount64());
    const std::string failed = "::GetCursorPos (&point) != 0 /*" + stamp + "*/";
    const std::string passed = "::Succeeded () /*" + stamp + "*/";
    EXPECT_TRUE(CL::CheckedCall(true, passed.c_str(), "DummyWnd.cpp", 87));
    EXPECT_FALSE(CL::CheckedCall(false, failed.c_str(), "DummyWnd.cpp", 87));
    // The process log is written beside the test program.
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    const std::wstring file = CL::DiagnosticLog::Instance().FileName(now, CL::DiagnosticLog::Instance().FileCounter());
    const std::string content = test::ReadFileBytes(file);
    EXPECT_NE(content.find("[0] " + failed + " [DummyWnd, 87]\r\n"), std::string::npos);
    EXPECT_EQ(content.find(passed), std::string::npos);
}
