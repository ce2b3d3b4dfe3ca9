// The mutex wrapper under contention from real threads, with timeouts, names and
// abandonment.
#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/TestSupport.h"
#include "utils/runtime/KivEvent.h"
#include "utils/runtime/KivMutex.h"

namespace {

struct Counter {
    CKivMutex mutex;
    long value = 0;  // guarded by the mutex only
    static constexpr int kRounds = 20000;
};

DWORD WINAPI CountUnderLock(LPVOID parameter) {
    auto* counter = static_cast<Counter*>(parameter);
    for (int i = 0; i < Counter::kRounds; ++i) {
        CKivMutexLock lock(counter->mutex);
        // A read, a yield and a write: an unguarded counter loses increments here.
        const long seen = counter->value;
        if (i % 1000 == 0) Sleep(0);
        counter->value = seen + 1;
    }
    return 0;
}

TEST(KivMutex, KeepsACounterExactUnderEightContendingThreads) {
    Counter counter;
    HANDLE threads[8];
    for (HANDLE& t : threads) {
        t = CreateThread(nullptr, 0, CountUnderLock, &counter, 0, nullptr);
        ASSERT_NE(t, nullptr);
    }
    for (HANDLE t : threads) {
        EXPECT_EQ(WaitForSingleObject(t, INFINITE), WAIT_OBJECT_0);
        CloseHandle(t);
    }
    EXPECT_EQ(counter.value, 8L * Counter::kRounds);
}

struct Holder {
    CKivMutex* mutex;
    CKivEvent taken{CKivEvent::eManualReset};
    CKivEvent release{CKivEvent::eManualReset};
    bool giveBack = true;
};

DWORD WINAPI HoldUntilReleased(LPVOID parameter) {
    auto* h = static_cast<Holder*>(parameter);
    if (!h->mutex->Lock()) return 1;
    h->taken.Set();
    h->release.Wait();
    if (h->giveBack) h->mutex->Unlock();
    return 0;
}

TEST(KivMutex, TimesOutWhileAnotherThreadHoldsItAndIsRecursiveForItsOwner) {
    CKivMutex mutex;
    Holder holder{&mutex};
    HANDLE thread = CreateThread(nullptr, 0, HoldUntilReleased, &holder, 0, nullptr);
    ASSERT_TRUE(holder.taken.Wait());

    CKivMutexLock blocked(mutex, 20);
    EXPECT_FALSE(blocked.IsLocked());
    EXPECT_FALSE(mutex.Unlock()) << "a thread that does not own the mutex cannot give it back";

    holder.release.Set();
    CKivMutexLock outer(mutex);
    ASSERT_TRUE(outer.IsLocked());
    {
        CKivMutexLock inner(mutex, 0);
        EXPECT_TRUE(inner.IsLocked());
    }
    // Still owned after the inner scope: another thread cannot take it.
    Holder second{&mutex};
    HANDLE other = CreateThread(nullptr, 0, HoldUntilReleased, &second, 0, nullptr);
    EXPECT_FALSE(second.taken.Wait(20));
    outer.Unlock();
    EXPECT_TRUE(second.taken.Wait());
    second.release.Set();
    for (HANDLE t : {thread, other}) {
        WaitForSingleObject(t, INFINITE);
        CloseHandle(t);
    }
}

TEST(KivMutex, NamedMutexesAreOneAndAnAbandonedOneIsTakenWithNotice) {
    kiv_test::TempDeviceRoot root;
    CKivMutex first(L"job lock");
    CKivMutex second(L"job lock");
    CKivMutex unrelated(L"other lock");
    EXPECT_FALSE(first.AlreadyExisted());
    EXPECT_TRUE(second.AlreadyExisted());

    Holder holder{&first};
    holder.giveBack = false;  // the thread ends owning it
    holder.release.Set();
    HANDLE thread = CreateThread(nullptr, 0, HoldUntilReleased, &holder, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);

    EXPECT_TRUE(unrelated.Lock(0));
    ASSERT_TRUE(second.Lock(INFINITE)) << "the same mutex by its name, abandoned by its owner";
    EXPECT_TRUE(second.WasAbandoned());
    EXPECT_TRUE(second.Unlock());
    ASSERT_TRUE(first.Lock(0));
    EXPECT_FALSE(first.WasAbandoned()) << "the notice goes to the first taker only";
    first.Unlock();
    unrelated.Unlock();
}

}  // namespace
