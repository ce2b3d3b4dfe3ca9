// Events, threads, critical sections and time, driven through their Win32 functions.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <vector>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

using Clock = std::chrono::steady_clock;

class Sync : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
};

struct Handshake {
    const wchar_t* requestName;
    const wchar_t* answerName;
    std::atomic<int> seen{0};
};

DWORD WINAPI AnswerRequests(LPVOID parameter) {
    auto* h = static_cast<Handshake*>(parameter);
    HANDLE request = OpenEventW(SYNCHRONIZE, FALSE, h->requestName);
    HANDLE answer = CreateEventW(nullptr, FALSE, FALSE, h->answerName);
    if (!request || !answer) return 1;
    for (int i = 0; i < 3; ++i) {
        if (WaitForSingleObject(request, INFINITE) != WAIT_OBJECT_0) return 2;
        ++h->seen;
        SetEvent(answer);
    }
    CloseHandle(request);
    CloseHandle(answer);
    return 0;
}

DWORD WINAPI SleepForever(LPVOID parameter) {
    static_cast<std::atomic<bool>*>(parameter)->store(true);
    Sleep(INFINITE);
    return 7;  // never reached: the thread is terminated while it sleeps
}

DWORD ExitCode(HANDLE thread) {
    DWORD code = 0;
    GetExitCodeThread(thread, &code);
    return code;
}

DWORD WINAPI WaitOnEvent(LPVOID parameter) {
    return WaitForSingleObject(static_cast<HANDLE>(parameter), INFINITE) == WAIT_OBJECT_0 ? 1 : 0;
}

// Threads waiting on one event, counted as they are released. Each says it is about to
// wait just before it does; a short settle after the last one lets them all block.
struct Waiters {
    explicit Waiters(HANDLE e) : event(e) {}
    ~Waiters() { CloseHandle(event); }

    HANDLE event;
    std::atomic<int> ready{0};
    std::atomic<int> released{0};
    std::vector<HANDLE> threads;

    static DWORD WINAPI Wait(LPVOID parameter) {
        auto* w = static_cast<Waiters*>(parameter);
        ++w->ready;
        if (WaitForSingleObject(w->event, 10000) != WAIT_OBJECT_0) return 0;
        ++w->released;
        return 1;
    }
    void Start(int count) {
        const int target = ready + count;
        for (int i = 0; i < count; ++i) threads.push_back(CreateThread(nullptr, 0, Wait, this, 0, nullptr));
        while (ready < target) Sleep(1);
        Sleep(100);  // time to get from "ready" into the wait, even on a loaded machine
    }
    // Waits (generously) for `count` releases in all, then a little longer for any extra.
    int ReleasedAfter(int count) {
        for (int i = 0; i < 10000 && released < count; ++i) Sleep(1);
        Sleep(30);
        return released;
    }
    // Joins every thread; the number that were released.
    int Join() {
        int total = 0;
        for (HANDLE t : threads) {
            EXPECT_EQ(WaitForSingleObject(t, 20000), WAIT_OBJECT_0);
            total += static_cast<int>(ExitCode(t));
            CloseHandle(t);
        }
        threads.clear();
        return total;
    }
};

struct Counter {
    CRITICAL_SECTION section;
    long value = 0;
    std::atomic<int> ready{0};
};

DWORD WINAPI EnterAndCount(LPVOID parameter) {
    auto* c = static_cast<Counter*>(parameter);
    ++c->ready;
    EnterCriticalSection(&c->section);
    ++c->value;
    LeaveCriticalSection(&c->section);
    return 0;
}

}  // namespace

// ---- named events ----------------------------------------------------------------------

TEST_F(Sync, NamedEventHandshakeBetweenTwoThreads) {
    Handshake h{L"Request", L"Answer"};
    HANDLE request = CreateEventW(nullptr, FALSE, FALSE, h.requestName);
    HANDLE answer = CreateEventW(nullptr, FALSE, FALSE, h.answerName);
    HANDLE thread = CreateThread(nullptr, 0, AnswerRequests, &h, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(EventModify(request, EVENT_SET));
        ASSERT_EQ(WaitForSingleObject(answer, INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(h.seen.load(), i);
    }
    ASSERT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(thread), 0u);
    CloseHandle(thread);
    CloseHandle(request);
    CloseHandle(answer);
}

// ---- event states --------------------------------------------------------------------------

TEST_F(Sync, AutoResetSetAndPulseReleaseOneWaiterEachHoweverQuickly) {
    Waiters w(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    w.Start(4);
    SetEvent(w.event);
    SetEvent(w.event);
    EXPECT_EQ(w.ReleasedAfter(2), 2);
    EXPECT_EQ(WaitForSingleObject(w.event, 0), WAIT_TIMEOUT);  // both went to waiters
    PulseEvent(w.event);
    PulseEvent(w.event);
    EXPECT_EQ(w.ReleasedAfter(4), 4);
    EXPECT_EQ(w.Join(), 4);
    EXPECT_EQ(WaitForSingleObject(w.event, 0), WAIT_TIMEOUT);
}

TEST_F(Sync, WaitsAndSleepsLastAtLeastTheirRequestAndTickCountFollows) {
    HANDLE e = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    for (DWORD ms : {1u, 20u, 60u}) {
        const auto start = Clock::now();
        EXPECT_EQ(WaitForSingleObject(e, ms), WAIT_TIMEOUT);
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(ms));
    }
    CloseHandle(e);
    const DWORD before = GetTickCount();
    const auto start = Clock::now();
    Sleep(25);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(25));
    // The tick count advances in the system timer's steps, up to 16 ms on Windows.
    EXPECT_GE(static_cast<DWORD>(GetTickCount() - before) + 16u, 25u);
}

// ---- threads ------------------------------------------------------------------------------------

TEST_F(Sync, ThreadTerminatedWhileSleepingOrWaitingEndsWithTheGivenCode) {
    std::atomic<bool> started{false};
    HANDLE thread = CreateThread(nullptr, 32767, SleepForever, &started, 0, nullptr);
    while (!started) Sleep(1);
    Sleep(10);  // most likely asleep by now; a terminate before the sleep works as well
    EXPECT_EQ(ExitCode(thread), STILL_ACTIVE);
    EXPECT_TRUE(TerminateThread(thread, static_cast<DWORD>(-1)));
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(thread), static_cast<DWORD>(-1));
    CloseHandle(thread);

    HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    thread = CreateThread(nullptr, 0, WaitOnEvent, never, 0, nullptr);
    Sleep(10);
    TerminateThread(thread, 3);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(thread), 3u);
    CloseHandle(thread);
    CloseHandle(never);
}

TEST_F(Sync, ThreadTerminatedWhileEnteringACriticalSectionEndsWithoutIt) {
    Counter c;
    InitializeCriticalSection(&c.section);
    EnterCriticalSection(&c.section);
    HANDLE first = CreateThread(nullptr, 0, EnterAndCount, &c, 0, nullptr);
    HANDLE second = CreateThread(nullptr, 0, EnterAndCount, &c, 0, nullptr);
    while (c.ready < 2) Sleep(1);
    Sleep(200);  // time to get from "ready" into the wait, even on a loaded machine
    // Leaving at once may hand the wake-up to the thread being terminated; it must pass
    // it on to the one still waiting.
    TerminateThread(first, 6);
    LeaveCriticalSection(&c.section);
    ASSERT_EQ(WaitForSingleObject(first, 10000), WAIT_OBJECT_0);
    ASSERT_EQ(WaitForSingleObject(second, 10000), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(first), 6u);
    EXPECT_EQ(c.value, 1);
#ifndef _WIN32
    // The host forgets the terminated waiter, so the section is free again. The system's
    // section goes on counting it as waiting, and is never free to TryEnter again.
    EXPECT_TRUE(TryEnterCriticalSection(&c.section));
    LeaveCriticalSection(&c.section);
#endif
    DeleteCriticalSection(&c.section);
    CloseHandle(first);
    CloseHandle(second);
}
