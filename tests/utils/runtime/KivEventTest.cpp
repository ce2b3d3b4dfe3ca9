// The event wrapper through real threads: one waiter per Set for auto-reset, all for
// manual reset, and timeouts.
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "utils/runtime/KivEvent.h"

namespace {

struct Waiters {
    CKivEvent* event;
    std::atomic<int> woken{0};
    CKivEvent anyWoken{CKivEvent::eAutoReset};
};

DWORD WINAPI WaitOnce(LPVOID parameter) {
    auto* w = static_cast<Waiters*>(parameter);
    if (!w->event->Wait()) return 1;
    ++w->woken;
    w->anyWoken.Set();
    return 0;
}

std::vector<HANDLE> StartWaiters(Waiters& waiters, int count) {
    std::vector<HANDLE> threads;
    for (int i = 0; i < count; ++i) threads.push_back(CreateThread(nullptr, 0, WaitOnce, &waiters, 0, nullptr));
    return threads;
}

void Join(const std::vector<HANDLE>& threads) {
    for (HANDLE t : threads) {
        WaitForSingleObject(t, INFINITE);
        CloseHandle(t);
    }
}

TEST(KivEvent, AutoResetSetWakesExactlyOneWaiter) {
    CKivEvent event(CKivEvent::eAutoReset);
    Waiters waiters{&event};
    const auto threads = StartWaiters(waiters, 4);

    ASSERT_TRUE(event.Set());
    ASSERT_TRUE(waiters.anyWoken.Wait());
    EXPECT_EQ(waiters.woken.load(), 1);
    EXPECT_FALSE(event.Wait(0)) << "the Set was spent on the one waiter it woke";
    // Setting an event that is already set adds nothing, so each Set waits for its waiter.
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(event.Set());
        ASSERT_TRUE(waiters.anyWoken.Wait());
    }
    Join(threads);
    EXPECT_EQ(waiters.woken.load(), 4);
}

TEST(KivEvent, ManualResetStaysSetForEveryWaiterUntilReset) {
    CKivEvent event(CKivEvent::eManualReset);
    EXPECT_FALSE(event.Wait(10));
    Waiters waiters{&event};
    const auto threads = StartWaiters(waiters, 4);
    event.Set();
    Join(threads);
    EXPECT_EQ(waiters.woken.load(), 4);
    EXPECT_TRUE(event.Wait(0));
    event.Reset();
    EXPECT_FALSE(event.Wait(0));
}

}  // namespace
