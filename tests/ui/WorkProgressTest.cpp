// Long work on the one thread looks at its window's input between steps,
// not at every step (a look is a round trip to the window server), yet Esc
// stops it at once: the first step looks, and a later Esc is seen within a
// few milliseconds of work.
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>

#include "common/WorkCancelled.h"
#include "common/ui/WorkProgress.h"

namespace {

class WorkProgress : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_window = ::CreateWindowExW(0, L"STATIC", L"work", WS_OVERLAPPED, 0, 0, 200, 100, nullptr, nullptr,
                                     ::GetModuleHandleW(nullptr), nullptr);
        ASSERT_NE(m_window, nullptr);
    }
    void TearDown() override
    {
        MSG msg;
        while (::PeekMessageW(&msg, m_window, 0, 0, PM_REMOVE)) {
        }
        ::DestroyWindow(m_window);
    }
    void PressEsc() const { ::PostMessageW(m_window, WM_KEYDOWN, VK_ESCAPE, 0); }

    HWND m_window = nullptr;
};

} // namespace

TEST_F(WorkProgress, AnEscWaitingBeforeTheWorkCancelsItAtItsFirstStep)
{
    PressEsc();
    CL::CWorkProgress progress(m_window, nullptr);
    EXPECT_THROW(progress.Step([] { return std::wstring(); }), CL::CWorkCancelled);
}

TEST_F(WorkProgress, AnEscDuringTheWorkCancelsItWithinMillisecondsOfSteps)
{
    CL::CWorkProgress progress(m_window, nullptr);
    progress.Step([] { return std::wstring(); });
    PressEsc();
    const auto pressed = std::chrono::steady_clock::now();
    bool cancelled = false;
    long long steps = 0;
    while (!cancelled && std::chrono::steady_clock::now() - pressed < std::chrono::seconds(2)) {
        try {
            progress.Step([] { return std::wstring(); });
            ++steps;
        } catch (const CL::CWorkCancelled&) {
            cancelled = true;
        }
    }
    const auto waited = std::chrono::steady_clock::now() - pressed;
    EXPECT_TRUE(cancelled);
    EXPECT_LT(waited, std::chrono::milliseconds(100));
    EXPECT_GT(steps, 0) << "the steps right after a look do not look again";
}
