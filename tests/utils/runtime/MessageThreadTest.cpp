// The message thread through real threads and windows: order of work items and window
// messages, both stop modes with work queued, and no item left behind.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/runtime/KivEvent.h"
#include "utils/runtime/MessageThread.h"

namespace {

class MessageThread : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
};

TEST_F(MessageThread, RunsOneHundredThousandItemsInTheOrderPosted) {
    CKivMessageThread thread;
    ASSERT_TRUE(thread.Start());
    std::vector<int> seen;  // touched by the message thread only, read after it ends
    seen.reserve(100000);
    DWORD ranOn = 0;
    for (int i = 0; i < 100000; ++i) {
        ASSERT_TRUE(thread.Post([&seen, &ranOn, i] {
            seen.push_back(i);
            ranOn = GetCurrentThreadId();
        }));
    }
    ASSERT_TRUE(thread.Stop(CKivMessageThread::eRunQueued));
    ASSERT_EQ(seen.size(), 100000u) << "every item queued before the stop runs";
    for (int i = 0; i < 100000; ++i) ASSERT_EQ(seen[i], i);
    EXPECT_EQ(ranOn, thread.GetThreadId());
    EXPECT_NE(ranOn, GetCurrentThreadId());
    EXPECT_FALSE(thread.Post([] {})) << "a stopped thread accepts nothing";
    EXPECT_FALSE(thread.Start()) << "a thread object runs once";
}

// Records the messages of its window in a shared log, on the window's thread.
std::vector<int>* windowLog = nullptr;
LRESULT CALLBACK LoggingProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_USER + 1) {
        windowLog->push_back(static_cast<int>(wParam));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST_F(MessageThread, InterleavesWindowMessagesAndWorkItemsInQueueOrder) {
    WNDCLASSW wc{};
    wc.lpfnWndProc = LoggingProcedure;
    wc.lpszClassName = L"MessageThreadTestWindow";
    ASSERT_NE(RegisterClassW(&wc), 0);
    std::vector<int> log;
    windowLog = &log;

    CKivMessageThread thread;
    ASSERT_TRUE(thread.Start());
    CKivEvent created(CKivEvent::eManualReset);
    HWND window = nullptr;
    thread.Post([&] {
        window = CreateWindowExW(0, L"MessageThreadTestWindow", L"", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
        created.Set();
    });
    ASSERT_TRUE(created.Wait());
    ASSERT_NE(window, nullptr);
    for (int i = 0; i < 1000; ++i) {
        if (i % 2) ASSERT_TRUE(PostMessageW(window, WM_USER + 1, i, 0));
        else ASSERT_TRUE(thread.Post([&log, i] { log.push_back(i); }));
    }
    ASSERT_TRUE(thread.Stop());
    ASSERT_EQ(log.size(), 1000u);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(log[i], i);
    EXPECT_FALSE(IsWindow(window)) << "the thread's windows end with it";
    windowLog = nullptr;
}

// Counts how many of its copies are alive, so a test can tell that every queued item
// was destroyed, run or not.
struct Token {
    std::shared_ptr<int> alive;
};

TEST_F(MessageThread, DiscardingStopDestroysQueuedItemsUnrunAndRunningStopRunsThem) {
    for (auto mode : {CKivMessageThread::eDiscardQueued, CKivMessageThread::eRunQueued}) {
        CKivMessageThread thread;
        ASSERT_TRUE(thread.Start());
        CKivEvent started(CKivEvent::eManualReset), proceed(CKivEvent::eManualReset);
        std::atomic<int> ran{0};
        auto alive = std::make_shared<int>(0);
        thread.Post([&] {
            started.Set();
            proceed.Wait();
        });
        ASSERT_TRUE(started.Wait());
        for (int i = 0; i < 500; ++i) ASSERT_TRUE(thread.Post([&ran, token = Token{alive}] { ++ran; }));
        EXPECT_EQ(alive.use_count(), 501);

        thread.RequestStop(mode);  // the blocking item is still running: all 500 are queued
        EXPECT_FALSE(thread.Post([&ran] { ++ran; })) << "nothing is accepted once a stop is asked";
        proceed.Set();
        ASSERT_TRUE(thread.WaitForEnd());
        EXPECT_EQ(ran.load(), mode == CKivMessageThread::eDiscardQueued ? 0 : 500);
        EXPECT_EQ(alive.use_count(), 1) << "every queued item was destroyed";
    }
}

TEST_F(MessageThread, ItemsPostedAfterAWindowQuitsTheLoopStillRun) {
    CKivMessageThread thread;
    ASSERT_TRUE(thread.Start());
    std::atomic<int> ran{0};
    CKivEvent quitPosted(CKivEvent::eManualReset), proceed(CKivEvent::eManualReset);
    // PostQuitMessage, as a main window's WM_DESTROY would, while items keep coming.
    thread.Post([&] {
        PostQuitMessage(0);
        quitPosted.Set();
        proceed.Wait();
    });
    ASSERT_TRUE(quitPosted.Wait());
    for (int i = 0; i < 100; ++i) thread.Post([&ran] { ++ran; });
    proceed.Set();
    ASSERT_TRUE(thread.WaitForEnd());
    EXPECT_EQ(ran.load(), 100) << "the queue is emptied before the quit is taken";
    EXPECT_FALSE(thread.IsRunning());
}

TEST_F(MessageThread, StopFromAWorkItemAsksWithoutWaitingForItself) {
    CKivMessageThread thread;
    ASSERT_TRUE(thread.Start());
    std::atomic<bool> answered{true};
    thread.Post([&] { answered = thread.Stop(); });
    ASSERT_TRUE(thread.WaitForEnd());
    EXPECT_FALSE(answered.load());
}

}  // namespace
