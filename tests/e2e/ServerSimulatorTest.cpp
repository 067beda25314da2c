// The server simulator honours the server's side of the contracts: it runs
// as a real service, keeps an address space that it loads at start and on
// code 128 and writes back on code 129, and records " /u" and " /i".
#include <gtest/gtest.h>

#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "tools/server-sim/SimFiles.h"

using namespace std::chrono_literals;

namespace {

const std::string kPlant =
    "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Item Name=\"Speed\"/></Branch>"
    "<Item Name=\"Top\"/></Morvane_OPCDAAddressSpace>";

uint64_t LastWriteTime(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return 0;
    return (static_cast<uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
           data.ftLastWriteTime.dwLowDateTime;
}

} // namespace

TEST(ServerSimulator, RunsAsServiceNamedInItsSettingsFile)
{
    test::SimulatedServer server;
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    ASSERT_TRUE(server.Start());
    EXPECT_TRUE(server.WaitForEvent("started " + CL::Narrow(server.ServiceName())));
    ASSERT_TRUE(server.Stop());
    EXPECT_TRUE(server.HasEvent("stop requested"));
    EXPECT_TRUE(server.WaitForEvent("stopped"));
}

TEST(ServerSimulator, LoadsExchangeFileAtStart)
{
    test::SimulatedServer server;
    server.WriteExchangeFile(kPlant);
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForLoadCount(1));
    EXPECT_TRUE(server.HasEvent("loaded #1 " + std::to_string(kPlant.size()) +
                                " bytes root=Morvane_OPCDAAddressSpace branches=1 items=2 conditions=0"));
    EXPECT_EQ(server.LoadedBytes(), kPlant);
}

TEST(ServerSimulator, ReloadsOnCode128)
{
    test::SimulatedServer server;
    ASSERT_TRUE(server.Start());
    EXPECT_TRUE(server.WaitForEvent("load failed #1 missing file (error 2)"));
    server.WriteExchangeFile(kPlant);
    ASSERT_TRUE(server.Control(128));
    ASSERT_TRUE(server.WaitForLoadCount(1));
    EXPECT_TRUE(server.HasEvent("control 128"));
    EXPECT_EQ(server.LoadedBytes(), kPlant);
}

TEST(ServerSimulator, MalformedFileKeepsPreviousAddressSpace)
{
    test::SimulatedServer server;
    server.WriteExchangeFile(kPlant);
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForLoadCount(1));
    server.WriteExchangeFile("<Morvane_OPCDAAddressSpace");
    ASSERT_TRUE(server.Control(128));
    ASSERT_TRUE(server.WaitForEvent("load failed #2 not well-formed"));
    ASSERT_TRUE(server.Control(129));
    ASSERT_TRUE(server.WaitForEvent("wrote " + std::to_string(kPlant.size()) + " bytes"));
    EXPECT_EQ(server.ExchangeFile(), kPlant);
}

TEST(ServerSimulator, WritesItsAddressSpaceOnCode129AndTouchesTheFile)
{
    test::SimulatedServer server;
    server.WriteExchangeFile(kPlant);
    ASSERT_TRUE(server.Start());
    ASSERT_TRUE(server.WaitForLoadCount(1));
    // The file on disk changes behind the server's back; 129 writes what the
    // server holds.
    server.WriteExchangeFile("<Morvane_OPCDAAddressSpace Name=\"\"/>");
    const uint64_t before = LastWriteTime(server.File(sim::kExchangeFile));
    ASSERT_TRUE(server.Control(129));
    ASSERT_TRUE(server.WaitForEvent("wrote " + std::to_string(kPlant.size()) + " bytes"));
    EXPECT_EQ(server.ExchangeFile(), kPlant);
    EXPECT_GT(LastWriteTime(server.File(sim::kExchangeFile)), before);
}

TEST(ServerSimulator, IgnoresCode129WhenTold)
{
    test::SimulatedServer server;
    server.SetKnob(sim::kKnobIgnoreWriteRequest, 1);
    server.WriteExchangeFile(kPlant);
    ASSERT_TRUE(server.Start());
    const uint64_t before = LastWriteTime(server.File(sim::kExchangeFile));
    ASSERT_TRUE(server.Control(129));
    ASSERT_TRUE(server.WaitForEvent("ignored 129"));
    ::Sleep(300);
    EXPECT_EQ(LastWriteTime(server.File(sim::kExchangeFile)), before);
}

TEST(ServerSimulator, ReportsConfiguredStopWaitHintAndTakesItsTime)
{
    test::SimulatedServer server;
    server.SetKnob(sim::kKnobStopWaitHint, 45000);
    server.SetKnob(sim::kKnobStopDelay, 1500);
    ASSERT_TRUE(server.Start());
    CL::UniqueServiceHandle scm(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    CL::UniqueServiceHandle service(
        ::OpenServiceW(scm.get(), server.ServiceName().c_str(), SERVICE_ALL_ACCESS));
    ASSERT_TRUE(service);
    SERVICE_STATUS status = {};
    ASSERT_TRUE(::ControlService(service.get(), SERVICE_CONTROL_STOP, &status));
    ASSERT_TRUE(::QueryServiceStatus(service.get(), &status));
    EXPECT_EQ(status.dwCurrentState, static_cast<DWORD>(SERVICE_STOP_PENDING));
    EXPECT_EQ(status.dwWaitHint, 45000u);
    EXPECT_FALSE(test::WaitForServiceState(server.ServiceName(), SERVICE_STOPPED, 700ms));
    EXPECT_TRUE(test::WaitForServiceState(server.ServiceName(), SERVICE_STOPPED, 5s));
}

TEST(ServerSimulator, RecordsUnregisterAndRegisterCallsAndExitsZero)
{
    test::SimulatedServer::Options options;
    options.registerService = false;
    test::SimulatedServer server(options);
    {
        test::Process call(server.ServerExePath(), L"/u");
        EXPECT_EQ(call.Wait(10s), 0u);
    }
    {
        test::Process call(server.ServerExePath(), L"/i");
        EXPECT_EQ(call.Wait(10s), 0u);
    }
    EXPECT_EQ(server.CommandLineCalls(), (std::vector<std::string>{"/u", "/i"}));
}

TEST(ServerSimulator, RegistersAndDeletesItsServiceForTheDemo)
{
    test::SimulatedServer::Options options;
    options.registerService = false;
    test::SimulatedServer server(options);
    EXPECT_EQ(server.State(), 0u);
    {
        test::Process call(server.ServerExePath(), sim::kRegisterSwitch);
        EXPECT_EQ(call.Wait(10s), 0u);
    }
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    ASSERT_TRUE(server.Start());
    {
        test::Process call(server.ServerExePath(), sim::kDeleteSwitch);
        EXPECT_EQ(call.Wait(20s), 0u);
    }
    EXPECT_TRUE(test::WaitUntil([&] { return server.State() == 0; }, 5s));
}
