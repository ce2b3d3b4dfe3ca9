// The tick timer through its four functions and real windows: rounding to whole ticks,
// the table's rules, windows that go away, and messages that queue up while their
// thread is busy. Nothing here measures time: periods are told apart by counting.
#include "utils/runtime/TicTimer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

class TicTimerTest : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
    HWND window = nullptr;

    void SetUp() override {
        window = NewWindow();
        ASSERT_NE(window, nullptr);
    }
    // A desktop keeps a test's windows and the messages queued for them after the test;
    // the next test must not read this one's ticks.
    void TearDown() override {
        DestroyTicTimerThread();
        DestroyWindow(window);
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        }
    }

    static HWND NewWindow() { return kiv_test::MakePlainWindow(10, 10); }

    // Reads timer messages until `id` has arrived `count` times; returns how often each
    // identifier arrived meanwhile.
    std::map<WPARAM, int> CountUntil(WPARAM id, int count) {
        std::map<WPARAM, int> seen;
        MSG msg;
        while (seen[id] < count && GetMessageW(&msg, nullptr, 0, 0) > 0) {
            if (msg.message != WM_TIC_TIMER) continue;
            EXPECT_EQ(msg.hwnd, window);
            EXPECT_EQ(msg.lParam, 0);
            ++seen[msg.wParam];
        }
        return seen;
    }
};

}  // namespace

TEST_F(TicTimerTest, NothingWorksBeforeTheThreadRuns) {
    EXPECT_FALSE(SetTicTimer(window, 1, 100));
    EXPECT_FALSE(KillTicTimer(window, 1));
    EXPECT_FALSE(DestroyTicTimerThread());
    ASSERT_TRUE(CreateTicTimerThread(10));
    EXPECT_TRUE(CreateTicTimerThread(50));  // already running
    EXPECT_FALSE(SetTicTimer(reinterpret_cast<HWND>(0x4242), 1, 100));  // not a window
    EXPECT_FALSE(KillTicTimer(window, 1));
    EXPECT_TRUE(DestroyTicTimerThread());
    EXPECT_FALSE(DestroyTicTimerThread());
    EXPECT_FALSE(SetTicTimer(window, 1, 100));
}

TEST_F(TicTimerTest, ElapseIsRoundedToWholeTicks) {
    ASSERT_TRUE(CreateTicTimerThread(100));
    // At 100 ms: 149 ms is one tick, 150 ms two, 49 ms none (it never fires).
    ASSERT_TRUE(SetTicTimer(window, 149, 149));
    ASSERT_TRUE(SetTicTimer(window, 150, 150));
    ASSERT_TRUE(SetTicTimer(window, 49, 49));
    const auto seen = CountUntil(150, 3);
    // The three were set within one tick or straddling one: the one-tick timer fired
    // twice as often, give or take the tick it was set in.
    EXPECT_GE(seen.count(149) ? seen.at(149) : 0, 5);
    EXPECT_LE(seen.count(149) ? seen.at(149) : 0, 7);
    EXPECT_EQ(seen.count(49), 0u);
}

TEST_F(TicTimerTest, ResolutionBelowTenIsRaisedToTen) {
    ASSERT_TRUE(CreateTicTimerThread(5));
    // At 5 ms a 4 ms elapse would be one tick; at 10 ms it rounds to none.
    ASSERT_TRUE(SetTicTimer(window, 4, 4));
    ASSERT_TRUE(SetTicTimer(window, 10, 10));
    const auto seen = CountUntil(10, 5);
    EXPECT_EQ(seen.count(4), 0u);
}

TEST_F(TicTimerTest, TableHoldsOneHundredTimersAndReplacesInPlace) {
    ASSERT_TRUE(CreateTicTimerThread(10));
    ASSERT_TRUE(SetTicTimer(window, 0, 50));
    ASSERT_TRUE(SetTicTimer(window, 0, 20));  // the same timer again: its slot, a new period
    for (UINT id = 1; id < 100; ++id) ASSERT_TRUE(SetTicTimer(window, id, 1000000)) << id;
    EXPECT_FALSE(SetTicTimer(window, 100, 10));  // the 101st
    EXPECT_TRUE(SetTicTimer(window, 42, 10));    // replacing still works when full
    EXPECT_TRUE(KillTicTimer(window, 7));
    EXPECT_TRUE(SetTicTimer(window, 100, 10));
    const auto seen = CountUntil(100, 4);
    EXPECT_GE(seen.count(0) ? seen.at(0) : 0, 1);  // the replaced period (two ticks) fires; 5 ticks would not yet
    EXPECT_EQ(seen.count(1), 0u);
}

TEST_F(TicTimerTest, FreedEarlierSlotTakesASecondEntryForTheSameTimer) {
    ASSERT_TRUE(CreateTicTimerThread(10));
    ASSERT_TRUE(SetTicTimer(window, 1, 1000));
    ASSERT_TRUE(SetTicTimer(window, 2, 1000));
    ASSERT_TRUE(KillTicTimer(window, 1));
    ASSERT_TRUE(SetTicTimer(window, 2, 1000));  // lands in the first slot, before the old one
    EXPECT_TRUE(KillTicTimer(window, 2));
    EXPECT_TRUE(KillTicTimer(window, 2));
    EXPECT_FALSE(KillTicTimer(window, 2));
}

TEST_F(TicTimerTest, DestroyedWindowLosesItsSlotAtTheNextTick) {
    ASSERT_TRUE(CreateTicTimerThread(10));
    HWND doomed = NewWindow();
    ASSERT_TRUE(SetTicTimer(doomed, 9, 10));  // the first slot, scanned before the others
    for (UINT id = 1; id < 100; ++id) ASSERT_TRUE(SetTicTimer(window, id, id == 1 ? 10 : 1000000));
    EXPECT_FALSE(SetTicTimer(window, 100, 10));
    ASSERT_TRUE(DestroyWindow(doomed));
    // Two ticks seen by the live window: the first slot was scanned after the destroy.
    CountUntil(1, 2);
    EXPECT_FALSE(KillTicTimer(doomed, 9));
    EXPECT_TRUE(SetTicTimer(window, 100, 10));
}

TEST_F(TicTimerTest, MessagesQueueUpWhileTheWindowsThreadIsBusy) {
    ASSERT_TRUE(CreateTicTimerThread(10));
    ASSERT_TRUE(SetTicTimer(window, 3, 10));
    // This thread reads nothing while another one sets and kills timers and waits for
    // five ticks of its own window's timer, which sits after ours in the table.
    std::atomic<bool> done{false};
    std::thread other([&] {
        HWND own = NewWindow();
        SetTicTimer(own, 4, 10);
        for (int i = 0; i < 200; ++i) {
            SetTicTimer(own, 1000 + i % 7, 20);
            KillTicTimer(own, 1000 + (i + 3) % 7);
        }
        MSG msg;
        int ticks = 0;
        while (ticks < 5 && GetMessageW(&msg, nullptr, 0, 0) > 0) ticks += msg.message == WM_TIC_TIMER && msg.wParam == 4;
        DestroyWindow(own);
        done = true;
    });
    while (!done) Sleep(1);
    other.join();
    MSG msg;
    int queued = 0;
    while (PeekMessageW(&msg, window, WM_TIC_TIMER, WM_TIC_TIMER, PM_REMOVE)) queued += msg.wParam == 3;
    EXPECT_GE(queued, 5);
}
