// The address space exchange against the server simulator registered as a
// real service in Wine's service control manager: control codes 129 and 128
// through the system's manager, the exchange file in the server's folder.
#include <gtest/gtest.h>

#include <chrono>

#include "addressspace/AddressSpaceExchange.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "config/Settings.h"
#include "support/SettingsServiceName.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "tools/server-sim/SimFiles.h"
#include "support/ProcessState.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

std::string SpaceWithItem(const std::string& name)
{
    return "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Item Name=\"" + name +
           "\" CanonicalDataType=\"5\" Quality=\"192\" Writable=\"-1\" Readable=\"-1\" ScanRate=\"1000\" "
           "Archive=\"0\" ValueTime=\"133500000000000000\"><Value>12.5</Value></Item></Branch>"
           "</Morvane_OPCDAAddressSpace>";
}

long long Since(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

bool HasControlEvent(const test::SimulatedServer& server)
{
    for (const std::string& line : server.Events())
        if (line.rfind("control", 0) == 0 || line.rfind("ignored", 0) == 0)
            return true;
    return false;
}

class AddressSpaceExchangeWithServer : public ::testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_Settings.ServiceName = server.ServiceName();
    }
    void TearDown() override { ::CoUninitialize(); }

    std::wstring FirstItemInPlant() const
    {
        auto plant = document.Model()->RootBranch()->FindBranch(L"Plant");
        if (!plant || plant->Items().empty())
            return L"(none)";
        return plant->Items().front()->Name();
    }

    test::SimulatedServer server;
    CAddressSpaceDocument document;
    CAddressSpaceExchange exchange{test::SettingsServiceName, server.File(kExchangeFileName)};
};

const wchar_t kLoadQuestion[] =
    L"The server didn't return the Address Space within the timeout, probably it's too busy.\n\n"
    L"Do you want to load the Address Space saved before?";

} // namespace

TEST_F(AddressSpaceExchangeWithServer, StoppedServerLoadsAtOnceWithoutControlCode)
{
    server.WriteExchangeFile(SpaceWithItem("Stored"));
    const auto start = Clock::now();
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_LT(Since(start), 1000);
    EXPECT_EQ(FirstItemInPlant(), L"Stored");
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    EXPECT_FALSE(HasControlEvent(server));
}

TEST_F(AddressSpaceExchangeWithServer, RunningServerAnswers129AndItsAddressSpaceIsLoaded)
{
    server.WriteExchangeFile(SpaceWithItem("Live"));
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForLoadCount(1));
    // The file on disk goes stale behind the server's back: what is loaded
    // must be what the server writes on 129.
    server.WriteExchangeFile(SpaceWithItem("Stale"));
    const auto start = Clock::now();
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_LT(Since(start), 5000);
    EXPECT_TRUE(server.HasEvent("control 129"));
    EXPECT_TRUE(server.HasEvent("wrote " + std::to_string(SpaceWithItem("Live").size()) + " bytes"));
    EXPECT_EQ(FirstItemInPlant(), L"Live");
    EXPECT_FALSE(document.IsDirty());
}

TEST_F(AddressSpaceExchangeWithServer, ServerIgnoring129AndAnswerNoLeavesTheModel)
{
    server.SetKnob(sim::kKnobIgnoreWriteRequest, 1);
    server.WriteExchangeFile(SpaceWithItem("SavedBefore"));
    ASSERT_TRUE(server.Start());
    const auto model = document.Model();
    document.SetDirty();
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDNO; });
    const auto start = Clock::now();
    EXPECT_FALSE(exchange.LoadFromServer(document));
    const long long elapsed = Since(start);
    EXPECT_GE(elapsed, 10000);
    EXPECT_LT(elapsed, 20000);
    EXPECT_TRUE(server.HasEvent("ignored 129"));
    const auto seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Load");
    EXPECT_EQ(seen[0].text, kLoadQuestion);
    EXPECT_EQ(document.Model().get(), model.get());
    EXPECT_EQ(FirstItemInPlant(), L"(none)");
    EXPECT_TRUE(document.IsDirty());
}

TEST_F(AddressSpaceExchangeWithServer, ServerIgnoring129AndAnswerYesLoadsTheSavedFile)
{
    server.SetKnob(sim::kKnobIgnoreWriteRequest, 1);
    server.WriteExchangeFile(SpaceWithItem("SavedBefore"));
    ASSERT_TRUE(server.Start());
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo&) { return IDYES; });
    EXPECT_TRUE(exchange.LoadFromServer(document));
    EXPECT_EQ(answerer.Seen().size(), 1u);
    EXPECT_EQ(FirstItemInPlant(), L"SavedBefore");
    EXPECT_FALSE(document.IsDirty());
}

TEST_F(AddressSpaceExchangeWithServer, MissingExchangeFileWhileServerRunsEndsInTheErrorReport)
{
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForEvent("load failed #1 missing file (error 2)"));
    const auto model = document.Model();
    test::MessageBoxAnswerer answerer;
    CL::RunReported([&] { exchange.LoadFromServer(document); });
    const auto seen = answerer.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"CException");
    EXPECT_NE(seen[0].text.find(L"Error=0x80070002"), std::wstring::npos) << CL::Narrow(seen[0].text);
    EXPECT_NE(seen[0].text.find(L"Source='hFile.get()'"), std::wstring::npos) << CL::Narrow(seen[0].text);
    EXPECT_FALSE(server.HasEvent("control 129"));
    EXPECT_EQ(document.Model().get(), model.get());
}

TEST_F(AddressSpaceExchangeWithServer, SaveToServerMakesTheServerReloadWhatWasSaved)
{
    server.WriteExchangeFile(SpaceWithItem("Original"));
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForLoadCount(1));
    ASSERT_TRUE(exchange.LoadFromServer(document));
    auto item = CL::CSmartPtr<COPCItem>::Make(COPCItem::kReadable, 500, true, WORD(192), VARTYPE(VT_I4), nullptr);
    item->Rename(L"Added");
    document.Model()->RootBranch()->FindBranch(L"Plant")->AddItem(item);
    document.SetDirty();
    exchange.SaveToServer(document);
    EXPECT_FALSE(document.IsDirty());
    ASSERT_TRUE(server.WaitForLoadCount(2));
    EXPECT_TRUE(server.HasEvent("control 128"));
    const std::string saved = server.ExchangeFile();
    EXPECT_EQ(server.LoadedBytes(), saved);
    EXPECT_TRUE(server.HasEvent("loaded #2 " + std::to_string(saved.size()) +
                                " bytes root=Morvane_OPCDAAddressSpace branches=1 items=2 conditions=0"));
    EXPECT_NE(saved.find("<Item Name=\"Added\""), std::string::npos);
}

TEST_F(AddressSpaceExchangeWithServer, SaveToStoppedServerOnlyWritesTheFileWhichItReadsAtStart)
{
    auto item = CL::CSmartPtr<COPCItem>::Make(COPCItem::kReadable, 500, false, WORD(192), VARTYPE(VT_I4), nullptr);
    item->Rename(L"Offline");
    document.Model()->RootBranch()->AddItem(item);
    exchange.SaveToServer(document);
    EXPECT_FALSE(HasControlEvent(server));
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForLoadCount(1));
    EXPECT_EQ(server.LoadedBytes(), server.ExchangeFile());
    EXPECT_NE(server.LoadedBytes().find("<Item Name=\"Offline\""), std::string::npos);
}
