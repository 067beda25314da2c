// Service control against a scripted service control manager: the
// dependents, the time-outs on one start tick, the wait hints and every
// failure's source text. (The system's manager is exercised with the server
// simulator in the end-to-end tests.)
#include <gtest/gtest.h>

#include <functional>

#include "common/ServiceControl.h"
#include "common/Exception.h"
#include "support/FakeServiceManager.h"

using CL::CException;
using test::FakeServiceManager;

namespace {

constexpr DWORD kTimeout = 30000;
const std::wstring kServer = L"Morvane";

HRESULT Win32(DWORD error)
{
    return CL::HResultFromWin32(static_cast<long>(error));
}

// Runs the call and returns the CException it throws (fails the test when
// it throws nothing).
CException Thrown(const std::function<void()>& call)
{
    try {
        call();
    } catch (const CException& e) {
        return e;
    }
    ADD_FAILURE() << "no CException thrown";
    return CException(S_OK, L"(nothing thrown)");
}

class ServiceControlTest : public testing::Test {
protected:
    ServiceControlTest() : m_scope(scm) {}
    void TearDown() override { EXPECT_EQ(scm.openHandles(), 0) << "every handle is closed"; }

    DWORD Start(DWORD noWait = 0, DWORD timeout = kTimeout)
    {
        return CL::StartServiceAndWait(kServer, L"", noWait, timeout);
    }
    DWORD Stop(DWORD noWait = 0, DWORD timeout = kTimeout)
    {
        return CL::StopServiceAndWait(kServer, L"", noWait, timeout);
    }
    // The running server with one running dependent, "Historian"; the
    // dependent's record.
    FakeServiceManager::Service& AddServerWithRunningDependent()
    {
        scm.Add(kServer, SERVICE_RUNNING).dependents = {L"Historian"};
        return scm.Add(L"Historian", SERVICE_RUNNING);
    }
    size_t IndexOf(const std::wstring& call) const
    {
        for (size_t i = 0; i < scm.calls.size(); ++i)
            if (scm.calls[i] == call)
                return i;
        return SIZE_MAX;
    }

    FakeServiceManager scm;

private:
    test::ScopedServiceManager m_scope;
};

using IsServiceRunning = ServiceControlTest;
using StartServiceAndWait = ServiceControlTest;
using StopServiceAndWait = ServiceControlTest;
using ControlServiceCode = ServiceControlTest;

} // namespace

// ---- IsServiceRunning ------------------------------------------------------

TEST_F(IsServiceRunning, TrueWhenStateIsRunning)
{
    scm.Add(kServer, SERVICE_RUNNING);
    EXPECT_TRUE(CL::IsServiceRunning(kServer));
}

TEST_F(IsServiceRunning, FalseWhenStoppedOrPending)
{
    auto& server = scm.Add(kServer, SERVICE_STOPPED);
    EXPECT_FALSE(CL::IsServiceRunning(kServer));
    server.state = SERVICE_START_PENDING;
    server.startDuration = FakeServiceManager::kNever;
    EXPECT_FALSE(CL::IsServiceRunning(kServer));
}

TEST_F(IsServiceRunning, FalseWithoutErrorWhenServiceCannotBeOpened)
{
    EXPECT_FALSE(CL::IsServiceRunning(kServer));
    scm.Add(kServer, SERVICE_RUNNING).openError = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(CL::IsServiceRunning(kServer));
}

TEST_F(IsServiceRunning, ManagerThatCannotBeOpenedThrowsWithManagerSource)
{
    scm.managerOpenError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([] { CL::IsServiceRunning(kServer); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x80070005ul);
    EXPECT_EQ(e.Source(), L"hSCM.get()");
}

TEST_F(IsServiceRunning, FailedStatusQueryThrowsWithItsSource)
{
    scm.Add(kServer, SERVICE_RUNNING).queryError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([] { CL::IsServiceRunning(kServer); });
    EXPECT_EQ(e.Error(), Win32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(e.Source(), L"::QueryServiceStatus ((SC_HANDLE) hService.get(), &ss)");
}

TEST_F(IsServiceRunning, OpensLocalManagerAndServiceWithAllAccess)
{
    scm.Add(kServer, SERVICE_RUNNING);
    CL::IsServiceRunning(kServer);
    EXPECT_EQ(scm.lastMachine, L"(null)");
    EXPECT_EQ(scm.lastManagerAccess, static_cast<DWORD>(SC_MANAGER_ALL_ACCESS));
    EXPECT_NE(IndexOf(L"OpenService Morvane f01ff"), SIZE_MAX);
}

TEST_F(IsServiceRunning, MachineNameIsHandedToTheManager)
{
    scm.Add(kServer, SERVICE_RUNNING);
    CL::IsServiceRunning(kServer, L"\\\\plant7");
    EXPECT_EQ(scm.lastMachine, L"\\\\plant7");
}

// ---- StartServiceAndWait ---------------------------------------------------

TEST_F(StartServiceAndWait, AlreadyRunningReturnsZeroAfterOneStatusQuery)
{
    scm.Add(kServer, SERVICE_RUNNING);
    EXPECT_EQ(Start(), 0u);
    EXPECT_EQ(scm.queryCount(kServer), 1);
    EXPECT_TRUE(scm.sleeps.empty());
}

TEST_F(StartServiceAndWait, WaitsWithTheWaitHintUntilRunning)
{
    auto& server = scm.Add(kServer);
    server.startWaitHint = 300;
    server.startDuration = 1000;
    EXPECT_EQ(Start(), 0u);
    EXPECT_EQ(scm.sleeps, (std::vector<DWORD>{300, 300, 300, 300}));
    EXPECT_EQ(server.state, static_cast<DWORD>(SERVICE_RUNNING));
}

TEST_F(StartServiceAndWait, ReturnsOneOnlyWhenMoreThanTheTimeOutHasPassed)
{
    auto& server = scm.Add(kServer);
    server.startWaitHint = 1000;
    server.startDuration = FakeServiceManager::kNever;
    EXPECT_EQ(Start(0, 3000), 1u);
    // After 3000 ms exactly the wait goes on; the fourth sleep passes it.
    EXPECT_EQ(scm.sleeps.size(), 4u);
}

TEST_F(StartServiceAndWait, ServiceRunningExactlyAtTheTimeOutReturnsZero)
{
    auto& server = scm.Add(kServer);
    server.startWaitHint = 1000;
    server.startDuration = 4000;
    EXPECT_EQ(Start(0, 3000), 0u);
}

TEST_F(StartServiceAndWait, WaitHintOfZeroPollsWithoutSleeping)
{
    auto& server = scm.Add(kServer);
    server.startWaitHint = 0;
    server.startDuration = 5;
    scm.queryCost = 1;
    EXPECT_EQ(Start(), 0u);
    // Queries at +1 ... +5 ms; the fifth sees the service running.
    EXPECT_EQ(scm.sleeps, std::vector<DWORD>(4, 0));
    EXPECT_EQ(scm.queryCount(kServer), 5);
}

TEST_F(StartServiceAndWait, LargeWaitHintIsSleptUnclamped)
{
    auto& server = scm.Add(kServer);
    server.startWaitHint = 45000;
    server.startDuration = FakeServiceManager::kNever;
    EXPECT_EQ(Start(), 1u);
    EXPECT_EQ(scm.sleeps, (std::vector<DWORD>{45000}));
}

TEST_F(StartServiceAndWait, TickCountWrapDoesNotEndTheWait)
{
    scm.tick = 0xFFFFFF00u;
    auto& server = scm.Add(kServer);
    server.startWaitHint = 200;
    server.startDuration = 1000;
    EXPECT_EQ(Start(), 0u);
    EXPECT_EQ(scm.sleeps.size(), 5u);
}

TEST_F(StartServiceAndWait, NoWaitThreadReturnsOneRightAfterTheRequest)
{
    auto& server = scm.Add(kServer);
    server.startDuration = 500;
    EXPECT_EQ(Start(::GetCurrentThreadId()), 1u);
    EXPECT_EQ(scm.queryCount(kServer), 0);
    EXPECT_EQ(server.state, static_cast<DWORD>(SERVICE_START_PENDING));
}

TEST_F(StartServiceAndWait, NoWaitThreadOfAnotherThreadStillWaits)
{
    scm.Add(kServer).startDuration = 0;
    EXPECT_EQ(Start(::GetCurrentThreadId() + 1), 0u);
    EXPECT_EQ(scm.queryCount(kServer), 1);
}

TEST_F(StartServiceAndWait, FailedStartRequestThrowsWithSourceZero)
{
    scm.Add(kServer).startError = ERROR_SERVICE_DISABLED;
    const CException e = Thrown([this] { Start(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_SERVICE_DISABLED));
    EXPECT_EQ(e.Source(), L"0");
}

TEST_F(StartServiceAndWait, MissingServiceThrowsWithServiceSource)
{
    const CException e = Thrown([this] { Start(); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x80070424ul);
    EXPECT_EQ(e.Source(), L"hService.get()");
}

TEST_F(StartServiceAndWait, ManagerThatCannotBeOpenedThrowsWithManagerSource)
{
    scm.managerOpenError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([this] { Start(); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x80070005ul);
    EXPECT_EQ(e.Source(), L"hSCM.get()");
}

TEST_F(StartServiceAndWait, FailedStatusQueryWhileStartingThrowsWithItsSource)
{
    auto& server = scm.Add(kServer);
    server.startDuration = 5000;
    server.startWaitHint = 100;
    server.queryError = ERROR_INVALID_HANDLE;
    server.queryErrorAfter = 2;
    const CException e = Thrown([this] { Start(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_INVALID_HANDLE));
    EXPECT_EQ(e.Source(), L"QueryServiceStatus ((SC_HANDLE) hService.get(), &ss)");
}

// ---- StopServiceAndWait ----------------------------------------------------

TEST_F(StopServiceAndWait, ServiceNotInstalledReturnsZeroWithoutError)
{
    EXPECT_EQ(Stop(), 0u);
    EXPECT_EQ(IndexOf(L"Control Morvane 1"), SIZE_MAX);
}

TEST_F(StopServiceAndWait, StoppedServiceIsNoErrorAndReturnsZeroAtTheFirstCheck)
{
    scm.Add(kServer, SERVICE_STOPPED);
    EXPECT_EQ(Stop(), 0u);
    EXPECT_EQ(scm.queryCount(kServer), 0);
    EXPECT_TRUE(scm.sleeps.empty());
}

TEST_F(StopServiceAndWait, WaitsWithTheWaitHintUntilStopped)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopWaitHint = 250;
    server.stopDuration = 1000;
    EXPECT_EQ(Stop(), 0u);
    EXPECT_EQ(scm.sleeps, (std::vector<DWORD>{250, 250, 250, 250}));
    EXPECT_EQ(server.controls, (std::vector<DWORD>{SERVICE_CONTROL_STOP}));
}

TEST_F(StopServiceAndWait, ServiceNotStoppingInTimeReturnsOne)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopWaitHint = 1000;
    server.stopDuration = FakeServiceManager::kNever;
    EXPECT_EQ(Stop(0, 3000), 1u);
    EXPECT_EQ(scm.sleeps.size(), 4u) << "strictly more than the time-out";
}

TEST_F(StopServiceAndWait, WaitHintOfZeroPollsWithoutSleeping)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopWaitHint = 0;
    server.stopDuration = 3;
    scm.queryCost = 1;
    EXPECT_EQ(Stop(), 0u);
    EXPECT_EQ(scm.sleeps, std::vector<DWORD>(3, 0));
    EXPECT_EQ(scm.queryCount(kServer), 3);
}

TEST_F(StopServiceAndWait, WithoutDependentsOneEnumerationWithEmptyBuffer)
{
    scm.Add(kServer, SERVICE_RUNNING);
    EXPECT_EQ(Stop(), 0u);
    EXPECT_EQ(scm.enumerationBufferSizes, (std::vector<DWORD>{0}));
}

TEST_F(StopServiceAndWait, ActiveDependentsAreStoppedFirstInTheirOrder)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.dependents = {L"Historian", L"Gateway", L"Idle"};
    scm.Add(L"Historian", SERVICE_RUNNING).stopDuration = 0;
    auto& gateway = scm.Add(L"Gateway", SERVICE_RUNNING);
    gateway.stopWaitHint = 100;
    gateway.stopDuration = 300;
    scm.Add(L"Idle", SERVICE_STOPPED);
    EXPECT_EQ(Stop(), 0u);

    const size_t historian = IndexOf(L"Control Historian 1");
    const size_t gatewayStop = IndexOf(L"Control Gateway 1");
    const size_t serverStop = IndexOf(L"Control Morvane 1");
    ASSERT_NE(historian, SIZE_MAX);
    ASSERT_NE(gatewayStop, SIZE_MAX);
    ASSERT_NE(serverStop, SIZE_MAX);
    EXPECT_LT(historian, gatewayStop);
    EXPECT_LT(gatewayStop, serverStop);
    EXPECT_EQ(gateway.state, static_cast<DWORD>(SERVICE_STOPPED));
    EXPECT_EQ(scm.Get(L"Idle").controls.size(), 0u) << "a stopped dependent is not listed";
    EXPECT_NE(IndexOf(L"OpenService Gateway 24"), SIZE_MAX) << "stop and query-status rights";
}

TEST_F(StopServiceAndWait, MoreDataRepeatsTheEnumerationWithTheNeededSize)
{
    AddServerWithRunningDependent();
    EXPECT_EQ(Stop(), 0u);
    ASSERT_EQ(scm.enumerationBufferSizes.size(), 2u);
    EXPECT_EQ(scm.enumerationBufferSizes[0], 0u);
    EXPECT_EQ(scm.enumerationBufferSizes[1],
              static_cast<DWORD>(sizeof(ENUM_SERVICE_STATUSW) + 2 * sizeof(L"Historian")));
}

TEST_F(StopServiceAndWait, FirstEnumerationFailureThrowsWithSourceZero)
{
    scm.Add(kServer, SERVICE_RUNNING);
    scm.firstEnumerationError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(e.Source(), L"0");
    EXPECT_EQ(IndexOf(L"Control Morvane 1"), SIZE_MAX);
}

TEST_F(StopServiceAndWait, SecondEnumerationFailureThrowsWithItsSource)
{
    AddServerWithRunningDependent();
    scm.secondEnumerationError = ERROR_NOT_ENOUGH_MEMORY;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(e.Source(), L"::EnumDependentServicesW ((SC_HANDLE) hService.get(), 0x00000001, pDependencies, "
                          L"dwBytesNeeded, &dwBytesNeeded, &dwCount)");
}

TEST_F(StopServiceAndWait, DependentThatCannotBeOpenedThrowsWithDependentSource)
{
    AddServerWithRunningDependent().openError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(e.Source(), L"hDepService.get()");
}

TEST_F(StopServiceAndWait, DependentStopRequestFailureThrowsWithSourceZero)
{
    AddServerWithRunningDependent().controlError = ERROR_DEPENDENT_SERVICES_RUNNING;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_DEPENDENT_SERVICES_RUNNING));
    EXPECT_EQ(e.Source(), L"0");
}

TEST_F(StopServiceAndWait, DependentNoLongerActiveIsNoError)
{
    auto& historian = AddServerWithRunningDependent();
    // It stops by itself between the enumeration and the stop request.
    historian.controlError = ERROR_SERVICE_NOT_ACTIVE;
    EXPECT_EQ(Stop(), 0u);
    EXPECT_EQ(scm.Get(kServer).state, static_cast<DWORD>(SERVICE_STOPPED));
}

TEST_F(StopServiceAndWait, FailedDependentStatusQueryThrowsWithItsSource)
{
    auto& historian = AddServerWithRunningDependent();
    historian.stopDuration = 1000;
    historian.queryError = ERROR_INVALID_HANDLE;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_INVALID_HANDLE));
    EXPECT_EQ(e.Source(), L"QueryServiceStatus ((SC_HANDLE) hDepService.get(), &ss)");
}

TEST_F(StopServiceAndWait, DependentStillStoppingAfterTimeOutThrowsTimeOutEvenIfServiceWouldStopQuickly)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopDuration = 0;
    server.dependents = {L"Historian"};
    auto& historian = scm.Add(L"Historian", SERVICE_RUNNING);
    historian.stopWaitHint = 5000;
    historian.stopDuration = 40000;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x800705B4ul);
    EXPECT_EQ(e.Source(), L"");
    EXPECT_TRUE(server.controls.empty()) << "the service itself was not asked to stop";
    EXPECT_EQ(scm.sleeps.size(), 7u) << "35000 ms is the first check beyond 30000 ms";
}

TEST_F(StopServiceAndWait, OneStartTickServesDependentsAndServiceAlike)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopWaitHint = 500;
    server.stopDuration = FakeServiceManager::kNever;
    server.dependents = {L"Historian"};
    auto& historian = scm.Add(L"Historian", SERVICE_RUNNING);
    historian.stopWaitHint = 500;
    historian.stopDuration = 2000;
    const DWORD begin = scm.tick;
    EXPECT_EQ(Stop(0, 3000), 1u);
    // 2000 ms for the dependent, then the service's wait ends at the first
    // check beyond 3000 ms counted from the same start: 1500 ms more.
    EXPECT_EQ(scm.tick - begin, 3500u);
}

TEST_F(StopServiceAndWait, NoWaitThreadReturnsOneAfterTheStopRequest)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopDuration = 1000;
    EXPECT_EQ(Stop(::GetCurrentThreadId()), 1u);
    EXPECT_EQ(server.controls, (std::vector<DWORD>{SERVICE_CONTROL_STOP}));
    EXPECT_EQ(scm.queryCount(kServer), 0);
}

TEST_F(StopServiceAndWait, NoWaitThreadStillWaitsForDependents)
{
    auto& historian = AddServerWithRunningDependent();
    historian.stopWaitHint = 100;
    historian.stopDuration = 200;
    EXPECT_EQ(Stop(::GetCurrentThreadId()), 1u);
    EXPECT_EQ(historian.state, static_cast<DWORD>(SERVICE_STOPPED));
}

TEST_F(StopServiceAndWait, FailedStopRequestThrowsWithSourceZero)
{
    scm.Add(kServer, SERVICE_RUNNING).controlError = ERROR_INVALID_SERVICE_CONTROL;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Error(), Win32(ERROR_INVALID_SERVICE_CONTROL));
    EXPECT_EQ(e.Source(), L"0");
}

TEST_F(StopServiceAndWait, ServiceThatCannotBeOpenedThrowsWithServiceSource)
{
    scm.Add(kServer, SERVICE_RUNNING).openError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(static_cast<unsigned long>(e.Error()), 0x80070005ul);
    EXPECT_EQ(e.Source(), L"hService.get()");
}

TEST_F(StopServiceAndWait, FailedStatusQueryWhileStoppingThrowsWithItsSource)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    server.stopDuration = 1000;
    server.queryError = ERROR_INVALID_HANDLE;
    const CException e = Thrown([this] { Stop(); });
    EXPECT_EQ(e.Source(), L"QueryServiceStatus ((SC_HANDLE) hService.get(), &ss)");
}

// ---- ControlServiceCode ----------------------------------------------------

TEST_F(ControlServiceCode, SendsTheCodeToTheService)
{
    auto& server = scm.Add(kServer, SERVICE_RUNNING);
    CL::ControlServiceCode(kServer, 128);
    CL::ControlServiceCode(kServer, 129);
    EXPECT_EQ(server.controls, (std::vector<DWORD>{128, 129}));
}

TEST_F(ControlServiceCode, FailureThrowsWithControlSource)
{
    scm.Add(kServer, SERVICE_STOPPED);
    const CException e = Thrown([] { CL::ControlServiceCode(kServer, 129); });
    EXPECT_EQ(e.Error(), Win32(ERROR_SERVICE_NOT_ACTIVE));
    EXPECT_EQ(e.Source(), L"::ControlService ((SC_HANDLE) hService.get(), dwCtrl, &ss)");
}

TEST_F(ControlServiceCode, MissingServiceThrowsWithServiceSource)
{
    const CException e = Thrown([] { CL::ControlServiceCode(kServer, 128); });
    EXPECT_EQ(e.Error(), Win32(ERROR_SERVICE_DOES_NOT_EXIST));
    EXPECT_EQ(e.Source(), L"hService.get()");
}

TEST_F(ControlServiceCode, ManagerThatCannotBeOpenedThrowsWithManagerSource)
{
    scm.managerOpenError = ERROR_ACCESS_DENIED;
    const CException e = Thrown([] { CL::ControlServiceCode(kServer, 128); });
    EXPECT_EQ(e.Source(), L"hSCM.get()");
}
