// CWinThread, AfxBeginThread and the MFC synchronisation classes.
#include <gtest/gtest.h>

#include <atomic>

#include "platform/mfc/SyncObjects.h"
#include "platform/mfc/WinThread.h"
#include "tests/support/TestSupport.h"

namespace {

struct Shared {
    CCriticalSection lock;
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

DWORD ExitCode(HANDLE thread) {
    DWORD code = 0;
    GetExitCodeThread(thread, &code);
    return code;
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
