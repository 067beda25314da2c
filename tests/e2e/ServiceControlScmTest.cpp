// Service control against the system's service control manager, with the
// server simulator registered as the service.
#include <gtest/gtest.h>

#include "common/ServiceControl.h"
#include "common/Exception.h"
#include "support/ServerSimulator.h"
#include "support/TestSupport.h"
#include "tools/server-sim/SimFiles.h"

using namespace std::chrono_literals;

namespace {
constexpr DWORD kTimeout = 30000;
}

TEST(ServiceControlWithScm, StartServiceAndWaitStartsTheServerAndReturnsZero)
{
    test::SimulatedServer server;
    server.SetKnob(sim::kKnobStartWaitHint, 100);
    EXPECT_EQ(CL::StartServiceAndWait(server.ServiceName(), L"", 0, kTimeout), 0u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_RUNNING));
    EXPECT_TRUE(CL::IsServiceRunning(server.ServiceName()));
}

TEST(ServiceControlWithScm, StartingARunningServiceReturnsZero)
{
    test::SimulatedServer server;
    ASSERT_TRUE(server.Start());
    EXPECT_EQ(CL::StartServiceAndWait(server.ServiceName(), L"", 0, kTimeout), 0u);
}

TEST(ServiceControlWithScm, StartThatTakesLongerThanTheTimeOutReturnsOne)
{
    test::SimulatedServer server;
    server.SetKnob(sim::kKnobStartWaitHint, 100);
    server.SetKnob(sim::kKnobStartDelay, 2500);
    EXPECT_EQ(CL::StartServiceAndWait(server.ServiceName(), L"", 0, 500), 1u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_START_PENDING));
    EXPECT_TRUE(test::WaitForServiceState(server.ServiceName(), SERVICE_RUNNING));
}

TEST(ServiceControlWithScm, StopServiceAndWaitStopsTheServerAndReturnsZero)
{
    test::SimulatedServer server;
    server.SetKnob(sim::kKnobStopWaitHint, 100);
    server.SetKnob(sim::kKnobStopDelay, 300);
    ASSERT_TRUE(server.Start());
    EXPECT_EQ(CL::StopServiceAndWait(server.ServiceName(), L"", 0, kTimeout), 0u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOPPED));
    EXPECT_FALSE(CL::IsServiceRunning(server.ServiceName()));
}

TEST(ServiceControlWithScm, StoppingAStoppedServiceReturnsZero)
{
    test::SimulatedServer server;
    EXPECT_EQ(CL::StopServiceAndWait(server.ServiceName(), L"", 0, kTimeout), 0u);
}

TEST(ServiceControlWithScm, StoppingAServiceThatIsNotInstalledReturnsZero)
{
    EXPECT_EQ(CL::StopServiceAndWait(test::UniqueServiceName(L"MvMissing"), L"", 0, kTimeout), 0u);
}

TEST(ServiceControlWithScm, StopThatTakesLongerThanTheTimeOutReturnsOne)
{
    test::SimulatedServer server;
    server.SetKnob(sim::kKnobStopWaitHint, 100);
    server.SetKnob(sim::kKnobStopDelay, 2500);
    ASSERT_TRUE(server.Start());
    EXPECT_EQ(CL::StopServiceAndWait(server.ServiceName(), L"", 0, 500), 1u);
    EXPECT_EQ(server.State(), static_cast<DWORD>(SERVICE_STOP_PENDING));
    EXPECT_TRUE(test::WaitForServiceState(server.ServiceName(), SERVICE_STOPPED));
}

TEST(ServiceControlWithScm, IsServiceRunningIsFalseForAMissingService)
{
    EXPECT_FALSE(CL::IsServiceRunning(test::UniqueServiceName(L"MvMissing")));
}

TEST(ServiceControlWithScm, StartingAMissingServiceThrowsWithServiceSource)
{
    try {
        CL::StartServiceAndWait(test::UniqueServiceName(L"MvMissing"), L"", 0, kTimeout);
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x80070424ul);
        EXPECT_EQ(e.Source(), L"hService.get()");
    }
}

TEST(ServiceControlWithScm, ControlCodesReachTheServer)
{
    test::SimulatedServer server;
    ASSERT_TRUE(server.Start());
    CL::ControlServiceCode(server.ServiceName(), CL::kControlReloadAddressSpace);
    CL::ControlServiceCode(server.ServiceName(), CL::kControlWriteAddressSpace);
    EXPECT_TRUE(server.WaitForEvent("control 128"));
    EXPECT_TRUE(server.WaitForEvent("control 129"));
    EXPECT_TRUE(server.WaitForEvent("wrote 38 bytes")) << "the empty address space it started with";
}

TEST(ServiceControlWithScm, ControlCodeToAStoppedServiceThrowsWithControlSource)
{
    test::SimulatedServer server;
    try {
        CL::ControlServiceCode(server.ServiceName(), CL::kControlWriteAddressSpace);
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(e.Error(), CL::HResultFromWin32(ERROR_SERVICE_NOT_ACTIVE));
        EXPECT_EQ(e.Source(), L"::ControlService ((SC_HANDLE) hService.get(), dwCtrl, &ss)");
    }
}
