#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "common/PriorityCriticalSection.h"
#include "support/TestSupport.h"

using namespace std::chrono_literals;

TEST(PriorityCriticalSection, FreeSectionIsTakenWithoutChangingPriority)
{
    CL::CPriorityCriticalSection section;
    ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
    {
        CL::CPriorityCriticalSection::Guard guard(section);
        EXPECT_EQ(::GetThreadPriority(::GetCurrentThread()), THREAD_PRIORITY_BELOW_NORMAL);
    }
    ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_NORMAL);
}

TEST(PriorityCriticalSection, WaiterRunsTimeCriticalUntilItHoldsTheLock)
{
    CL::CPriorityCriticalSection section;
    section.Enter();
    std::atomic<int> priorityInside{-100};
    std::atomic<HANDLE> waiterHandle{nullptr};
    std::thread waiter([&] {
        ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
        waiterHandle = ::OpenThread(THREAD_QUERY_INFORMATION, FALSE, ::GetCurrentThreadId());
        CL::CPriorityCriticalSection::Guard guard(section);
        priorityInside = ::GetThreadPriority(::GetCurrentThread());
    });
    const bool boosted = test::WaitUntil(
        [&] { return waiterHandle.load() && ::GetThreadPriority(waiterHandle.load()) == THREAD_PRIORITY_TIME_CRITICAL; }, 5000ms);
    section.Leave();
    waiter.join();
    ::CloseHandle(waiterHandle.load());
    EXPECT_TRUE(boosted) << "the waiting thread was not raised to time critical";
    EXPECT_EQ(priorityInside.load(), THREAD_PRIORITY_BELOW_NORMAL) << "the old priority is back once it holds the lock";
}
