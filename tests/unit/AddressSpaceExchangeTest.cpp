// The exchange of the address space with the server, against a scripted
// service control manager whose "server" answers code 129 by rewriting the
// exchange file (or not). The real service manager and the server simulator
// are used by the end-to-end tests.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "addressspace/AddressSpaceExchange.h"
#include "app/AddressSpaceEditor.h"
#include "common/ServiceControl.h"
#include "config/Settings.h"
#include "support/SettingsServiceName.h"
#include "support/FakeServiceManager.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

const wchar_t kService[] = L"MvExchangeServer";

std::string SpaceWithItem(const std::string& name)
{
    return "<Morvane_OPCDAAddressSpace Name=\"\"><Item Name=\"" + name +
           "\" CanonicalDataType=\"3\"><Value>7</Value></Item></Morvane_OPCDAAddressSpace>";
}

// Moves the file's last-write time one second past what it was, as a server
// that writes the file does.
void TouchLater(const std::wstring& path)
{
    HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ | FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    FILETIME time;
    ::GetFileTime(file, nullptr, nullptr, &time);
    ULARGE_INTEGER u;
    u.LowPart = time.dwLowDateTime;
    u.HighPart = time.dwHighDateTime;
    u.QuadPart += 10000000;
    time = FILETIME{u.LowPart, u.HighPart};
    ::SetFileTime(file, nullptr, nullptr, &time);
    ::CloseHandle(file);
}

// The scripted manager with a server behind it: on code 129 it writes
// `answer` to the exchange file, unless told to stay silent.
class ServerBehindFakeManager : public test::FakeServiceManager {
public:
    std::wstring exchangeFile;
    std::string answer;
    bool answers = true;

    BOOL ControlService(SC_HANDLE handle, DWORD control, SERVICE_STATUS* status) override
    {
        const BOOL ok = FakeServiceManager::ControlService(handle, control, status);
        if (ok && control == CL::kControlWriteAddressSpace && answers) {
            test::WriteFileBytes(exchangeFile, answer);
            TouchLater(exchangeFile);
        }
        return ok;
    }
};

class RecordingViews : public IAddressSpaceViews {
public:
    explicit RecordingViews(CAddressSpaceDocument& document) : m_document(document) {}
    void ClearViews() override { calls.push_back(L"clear " + FirstItem()); }
    void FillViews() override { calls.push_back(L"fill " + FirstItem()); }
    std::vector<std::wstring> calls;

private:
    std::wstring FirstItem() const
    {
        const auto items = m_document.Model()->RootBranch()->Items();
        return items.empty() ? L"(none)" : items.front()->Name();
    }
    CAddressSpaceDocument& m_document;
};

class AddressSpaceExchange : public ::testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_Settings.ServiceName = kService;
        scm.exchangeFile = exchangeFile;
        scm.Add(kService, SERVICE_STOPPED);
    }
    void TearDown() override { ::CoUninitialize(); }

    void ServerRuns() { scm.Get(kService).state = SERVICE_RUNNING; }
    std::vector<DWORD> Controls() { return scm.Get(kService).controls; }
    std::wstring FirstItemName() const
    {
        const auto items = document.Model()->RootBranch()->Items();
        return items.empty() ? L"(none)" : items.front()->Name();
    }
    static long long Since(Clock::time_point start)
    {
        return std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
    }

    test::TempDir dir;
    std::wstring exchangeFile = dir.File(kExchangeFileName);
    ServerBehindFakeManager scm;
    test::ScopedServiceManager useScm{scm};
    CAddressSpaceDocument document;
    CAddressSpaceExchange exchange{test::SettingsServiceName, exchangeFile};
};

const wchar_t kLoadQuestion[] =
    L"The server didn't return the Address Space within the timeout, probably it's too busy.\n\n"
    L"Do you want to load the Address Space saved before?";

} // namespace

// --- LoadFromServer ----------------------------------------------------------

TEST_F(AddressSpaceExchange, StoppedServerLoadsTheFileAtOnceWithoutControlCode)
{
    test::WriteFileBytes(exchangeFile, SpaceWithItem("AsItStands"));
    document.SetDirty();
    const auto start = Clock::now();
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_LT(Since(start), 100) << "no wait for a stopped server";
    EXPECT_TRUE(Controls().empty());
    EXPECT_EQ(FirstItemName(), L"AsItStands");
    EXPECT_FALSE(document.IsDirty());
    EXPECT_EQ(document.Model()->State(), COPCServerAddressSpace::kStateLoaded);
}

TEST_F(AddressSpaceExchange, ServerThatIsNotInstalledCountsAsStopped)
{
    g_Settings.ServiceName = L"MvNoSuchService";
    test::WriteFileBytes(exchangeFile, SpaceWithItem("Local"));
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_EQ(FirstItemName(), L"Local");
}

TEST_F(AddressSpaceExchange, RunningServerIsAskedWithCode129AndItsNewFileIsLoaded)
{
    ServerRuns();
    test::WriteFileBytes(exchangeFile, SpaceWithItem("Old"));
    scm.answer = SpaceWithItem("Live");
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_EQ(Controls(), std::vector<DWORD>{129});
    EXPECT_EQ(FirstItemName(), L"Live");
    EXPECT_FALSE(document.IsDirty());
}

TEST_F(AddressSpaceExchange, FileChangingByTheFirstPollEndsTheWaitAfterAbout100ms)
{
    ServerRuns();
    test::WriteFileBytes(exchangeFile, SpaceWithItem("Old"));
    scm.answer = SpaceWithItem("Live");
    const auto start = Clock::now();
    EXPECT_TRUE(exchange.LoadFromServer(document));
    const long long elapsed = Since(start);
    EXPECT_GE(elapsed, 90);
    EXPECT_LT(elapsed, 600);
    EXPECT_EQ(exchange.PollsOfLastWait(), 1) << "the change is seen at the first look";
}

TEST_F(AddressSpaceExchange, PollThatCannotReadTheFileCountsAsNoChange)
{
    ServerRuns();
    test::WriteFileBytes(exchangeFile, SpaceWithItem("Old"));
    scm.answers = false;
    // The "server" holds the file open without sharing for a while, then
    // writes the new address space.
    HANDLE locked = INVALID_HANDLE_VALUE;
    std::thread server([&] {
        ::Sleep(50);
        locked = ::CreateFileW(exchangeFile.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        ::Sleep(400);
        ::CloseHandle(locked);
        test::WriteFileBytes(exchangeFile, SpaceWithItem("AfterLock"));
        TouchLater(exchangeFile);
    });
    const auto start = Clock::now();
    const bool loaded = exchange.LoadFromServer(document);
    server.join();
    ASSERT_NE(locked, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(FirstItemName(), L"AfterLock");
    EXPECT_GE(Since(start), 450);
}

TEST_F(AddressSpaceExchange, SilentServerLeadsToTheLoadQuestionAndNoLeavesTheModel)
{
    ServerRuns();
    test::WriteFileBytes(exchangeFile, SpaceWithItem("SavedBefore"));
    scm.answers = false;
    const auto model = document.Model();
    document.SetDirty();
    HICON icon = nullptr;
    test::MessageBoxAnswerer answerer([&icon](const test::MessageBoxInfo& box) {
        icon = reinterpret_cast<HICON>(::SendDlgItemMessageW(box.hwnd, 0x0440, STM_GETICON, 0, 0));
        return IDNO;
    });
    const auto start = Clock::now();
    EXPECT_FALSE(exchange.LoadFromServer(document));
    const long long elapsed = Since(start);
    EXPECT_GE(elapsed, 10000) << "100 polls of 100 ms";
    EXPECT_LT(elapsed, 20000);
    EXPECT_EQ(exchange.PollsOfLastWait(), 100);
    const auto seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Load");
    EXPECT_EQ(seen[0].text, kLoadQuestion);
    EXPECT_NE(icon, nullptr);
    EXPECT_EQ(icon, ::LoadIconW(nullptr, IDI_HAND)) << "stop icon";
    EXPECT_EQ(document.Model().get(), model.get());
    EXPECT_EQ(FirstItemName(), L"(none)");
    EXPECT_TRUE(document.IsDirty());
}

TEST_F(AddressSpaceExchange, LoadQuestionOffersYesNoAndCancelAndCancelLeavesTheModel)
{
    ServerRuns();
    test::WriteFileBytes(exchangeFile, SpaceWithItem("SavedBefore"));
    scm.answers = false;
    const auto model = document.Model();
    bool yes = false, no = false, cancel = false;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        yes = ::GetDlgItem(box.hwnd, IDYES) != nullptr;
        no = ::GetDlgItem(box.hwnd, IDNO) != nullptr;
        cancel = ::GetDlgItem(box.hwnd, IDCANCEL) != nullptr;
        return IDCANCEL;
    });
    EXPECT_FALSE(exchange.LoadFromServer(document));
    EXPECT_TRUE(yes && no && cancel);
    EXPECT_EQ(document.Model().get(), model.get());
}

TEST_F(AddressSpaceExchange, SilentServerAndYesLoadsTheFileSavedBefore)
{
    ServerRuns();
    test::WriteFileBytes(exchangeFile, SpaceWithItem("SavedBefore"));
    scm.answers = false;
    document.SetDirty();
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDYES; });
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_EQ(answerer.Seen().size(), 1u);
    EXPECT_EQ(FirstItemName(), L"SavedBefore");
    EXPECT_FALSE(document.IsDirty());
}

TEST_F(AddressSpaceExchange, MissingExchangeFileWhileServerRunsFailsBeforeAnyControlCode)
{
    ServerRuns();
    const auto model = document.Model();
    try {
        exchange.LoadFromServer(document);
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(e.Error(), CL::HResultFromWin32(ERROR_FILE_NOT_FOUND));
        EXPECT_EQ(e.Source(), L"hFile.get()");
    }
    EXPECT_TRUE(Controls().empty());
    EXPECT_EQ(document.Model().get(), model.get());
}

TEST_F(AddressSpaceExchange, FileThatFailsToLoadLeavesTheModelAndTheDirtyFlag)
{
    test::WriteFileBytes(exchangeFile, "<Morvane_OPCDAAddressSpace Name=\"\"><Item");
    const auto model = document.Model();
    document.SetDirty();
    try {
        exchange.LoadFromServer(document);
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(e.Error(), E_FAIL);
        EXPECT_EQ(e.Source(), L"Error loading OPC Address Space file.");
    }
    EXPECT_EQ(document.Model().get(), model.get());
    EXPECT_TRUE(document.IsDirty());
}

TEST_F(AddressSpaceExchange, LoadingReplacesTheModelAndReleasesTheOldOne)
{
    test::WriteFileBytes(exchangeFile, SpaceWithItem("New"));
    auto old = document.Model();
    EXPECT_EQ(old->RefCount(), 2);
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_NE(document.Model().get(), old.get());
    EXPECT_EQ(old->RefCount(), 1) << "only this test still holds the old model";
}

// --- ReloadFromFile ----------------------------------------------------------

TEST_F(AddressSpaceExchange, ReloadFromFileReplacesTheModelAndRefillsTheViews)
{
    ServerRuns();
    document.Model()->RootBranch()->AddItem([] {
        auto item = CL::CSmartPtr<COPCItem>::Make(1, 0, false, WORD(192), VARTYPE(VT_I4), nullptr);
        item->Rename(L"Edited");
        return item;
    }());
    document.SetDirty();
    RecordingViews views(document);
    document.AttachViews(&views);
    test::WriteFileBytes(exchangeFile, SpaceWithItem("FromFile"));
    exchange.ReloadFromFile(document);
    EXPECT_EQ(views.calls, (std::vector<std::wstring>{L"clear Edited", L"fill FromFile"}));
    EXPECT_EQ(FirstItemName(), L"FromFile");
    EXPECT_FALSE(document.IsDirty());
    EXPECT_TRUE(Controls().empty()) << "the server is not asked";
}

TEST_F(AddressSpaceExchange, ReloadFromFileWithoutAWindowOnlyReplacesTheModel)
{
    test::WriteFileBytes(exchangeFile, SpaceWithItem("FromFile"));
    const auto old = document.Model();
    exchange.ReloadFromFile(document);
    EXPECT_NE(document.Model().get(), old.get());
    EXPECT_EQ(FirstItemName(), L"FromFile");
}

TEST_F(AddressSpaceExchange, ReloadFromABadFileLeavesModelAndViews)
{
    test::WriteFileBytes(exchangeFile, "<Wrong/>");
    RecordingViews views(document);
    document.AttachViews(&views);
    const auto model = document.Model();
    document.SetDirty();
    EXPECT_THROW(exchange.ReloadFromFile(document), CL::CException);
    EXPECT_TRUE(views.calls.empty());
    EXPECT_EQ(document.Model().get(), model.get());
    EXPECT_TRUE(document.IsDirty());
}

// --- SaveToServer --------------------------------------------------------------

TEST_F(AddressSpaceExchange, SaveToServerWritesTheFileAndSends128ToARunningServer)
{
    ServerRuns();
    auto item = CL::CSmartPtr<COPCItem>::Make(1, 0, false, WORD(192), VARTYPE(VT_I4), nullptr);
    item->Rename(L"Saved");
    document.Model()->RootBranch()->AddItem(item);
    document.SetDirty();
    exchange.SaveToServer(document);
    EXPECT_EQ(Controls(), std::vector<DWORD>{128});
    EXPECT_NE(test::ReadFileBytes(exchangeFile).find("<Item Name=\"Saved\""), std::string::npos);
    EXPECT_FALSE(document.IsDirty());
}

TEST_F(AddressSpaceExchange, SaveToServerWithServerStoppedOnlyWritesTheFile)
{
    auto item = CL::CSmartPtr<COPCItem>::Make(1, 0, false, WORD(192), VARTYPE(VT_I4), nullptr);
    item->Rename(L"Offline");
    document.Model()->RootBranch()->AddItem(item);
    document.SetDirty();
    exchange.SaveToServer(document);
    EXPECT_TRUE(Controls().empty());
    EXPECT_NE(test::ReadFileBytes(exchangeFile).find("<Item Name=\"Offline\""), std::string::npos);
    EXPECT_FALSE(document.IsDirty());
}

TEST_F(AddressSpaceExchange, FailedSaveKeepsTheDirtyFlagAndSendsNothing)
{
    ServerRuns();
    CAddressSpaceExchange nowhere(test::SettingsServiceName, dir.File(L"missing\\DefaultAddressSpace.xml"));
    document.SetDirty();
    EXPECT_THROW(nowhere.SaveToServer(document), CL::CException);
    EXPECT_TRUE(document.IsDirty());
    EXPECT_TRUE(Controls().empty());
}

TEST_F(AddressSpaceExchange, ExchangeFileIsBesideTheExecutable)
{
    EXPECT_EQ(CL::CAddressSpaceEditor::InstalledServerExchange().ExchangeFile(),
              test::ProgramFolder() + L"DefaultAddressSpace.xml");
}

// The program's exchange asks the settings for the service at each call: a
// service renamed by the options dialog gets the control codes.
TEST_F(AddressSpaceExchange, ProgramsExchangeFollowsARenamedService)
{
    CAddressSpaceExchange installed = CL::CAddressSpaceEditor::InstalledServerExchange();
    scm.Add(L"MvExchangeRenamed", SERVICE_RUNNING);
    g_Settings.ServiceName = L"MvExchangeRenamed";
    CAddressSpaceDocument other;
    other.SetModel(CAddressSpaceDocument::ModelPtr::Make());
    const std::wstring file = installed.ExchangeFile();
    const bool existed = test::FileExists(file);
    const std::string before = existed ? test::ReadFileBytes(file) : std::string();
    installed.SaveToServer(other);
    EXPECT_EQ(scm.Get(L"MvExchangeRenamed").controls, (std::vector<DWORD>{CL::kControlReloadAddressSpace}));
    EXPECT_TRUE(Controls().empty());
    if (existed)
        test::WriteFileBytes(file, before);
    else
        ::DeleteFileW(file.c_str());
    g_Settings.ServiceName = kService;
}
