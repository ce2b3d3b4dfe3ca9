// CWinThread, AfxBeginThread and the MFC synchronisation classes.
#include <gtest/gtest.h>

#include <atomic>

#include "platform/mfc/SyncObjects.h"
#include "platform/mfc/WinThread.h"
#include "tests/support/TestSupport.h"

namespace {

struct Shared {
    CCriticalSection lock;
    CEvent done{FALSE, TRUE};
    long value = 0;
};

UINT AddUnderLock(LPVOID parameter) {
    auto* s = static_cast<Shared*>(parameter);
    for (int i = 0; i < 5000; ++i) {
        CSingleLock guard(&s->lock, TRUE);
        ++s->value;
    }
    return 11;
}

UINT SignalAndReturn(LPVOID parameter) {
    static_cast<Shared*>(parameter)->done.SetEvent();
    return 0;
}

UINT EndEarly(LPVOID) {
    AfxEndThread(9, FALSE);
    return 1;  // never reached
}

DWORD ExitCode(HANDLE thread) {
    DWORD code = 0;
    GetExitCodeThread(thread, &code);
    return code;
}

UINT SleepLong(LPVOID) {
    Sleep(INFINITE);
    return 0;
}

// What auto-deleting thread objects saw of themselves as their threads began.
struct Sightings {
    HANDLE deleted = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::atomic<int> withHandle{0};
    std::atomic<int> withId{0};
};

class Probe : public CWinThread {
public:
    explicit Probe(Sightings* seen) : seen_(seen) {}
    BOOL InitInstance() override {
        if (m_hThread) ++seen_->withHandle;
        if (m_nThreadID == GetCurrentThreadId()) ++seen_->withId;
        return FALSE;
    }
    void Delete() override {
        HANDLE deleted = seen_->deleted;
        CWinThread::Delete();
        SetEvent(deleted);
    }

private:
    Sightings* seen_;
};

}  // namespace

TEST(WinThread, ObjectKnowsItsHandleAndIdBeforeItsThreadRunsAndMayDeleteItself) {
    Sightings seen;
    constexpr int kRounds = 50;
    for (int i = 0; i < kRounds; ++i) {
        auto* thread = new Probe(&seen);
        ASSERT_TRUE(thread->CreateThread());  // `thread` may be gone once this returns
        ASSERT_EQ(WaitForSingleObject(seen.deleted, 10000), WAIT_OBJECT_0);
    }
    EXPECT_EQ(seen.withHandle.load(), kRounds);
    EXPECT_EQ(seen.withId.load(), kRounds);
    CloseHandle(seen.deleted);
}

TEST(WinThread, BeginThreadWithTheDeviceStackAndPriorityRunsAndEndsWithItsCode) {
    Shared s;
    CWinThread* thread = AfxBeginThread(AddUnderLock, &s, THREAD_PRIORITY_ABOVE_NORMAL, 32767, CREATE_SUSPENDED);
    ASSERT_NE(thread, nullptr);
    thread->m_bAutoDelete = FALSE;
    EXPECT_EQ(thread->GetThreadPriority(), THREAD_PRIORITY_ABOVE_NORMAL);
    thread->ResumeThread();
    AddUnderLock(&s);
    ASSERT_EQ(WaitForSingleObject(thread->m_hThread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(*thread), 11u);
    EXPECT_EQ(s.value, 10000);
    delete thread;
}

TEST(WinThread, AutoDeletedThreadSignalsThroughCEvent) {
    Shared s;
    ASSERT_NE(AfxBeginThread(SignalAndReturn, &s), nullptr);
    CSingleLock wait(&s.done);
    EXPECT_TRUE(wait.Lock(INFINITE));
    EXPECT_TRUE(wait.IsLocked());
}

TEST(WinThread, EndedOrTerminatedThreadsReportTheirCodeAndKeepTheObjectWhenAsked) {
    CWinThread* ended = AfxBeginThread(EndEarly, nullptr);
    ASSERT_NE(ended, nullptr);
    ASSERT_EQ(WaitForSingleObject(ended->m_hThread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(ended->m_hThread), 9u);
    EXPECT_FALSE(ended->m_bAutoDelete);
    delete ended;

    CWinThread* sleeper = AfxBeginThread(SleepLong, nullptr);
    ASSERT_NE(sleeper, nullptr);
    sleeper->m_bAutoDelete = FALSE;
    EXPECT_TRUE(TerminateThread(sleeper->m_hThread, static_cast<DWORD>(-1)));
    ASSERT_EQ(WaitForSingleObject(sleeper->m_hThread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ExitCode(sleeper->m_hThread), static_cast<DWORD>(-1));
    delete sleeper;
}

TEST(SingleLock, ReleasesOnScopeEndAndTimesOutOnAnUnsignalledEvent) {
    CEvent e(FALSE, FALSE);
    {
        CSingleLock lock(&e);
        EXPECT_FALSE(lock.Lock(5));
        EXPECT_FALSE(lock.IsLocked());
    }
    e.SetEvent();
    CSingleLock lock(&e, TRUE);
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_TRUE(lock.Unlock());
    EXPECT_FALSE(lock.IsLocked());
}
