// The message thread's loop over GetMessageW. A work item travels as a thread message
// whose lParam owns it; whoever takes the message off the queue (the loop, or the drain
// after it) runs or destroys it, and nothing is accepted once the drain has begun, so
// no item outlives the thread unrun and undestroyed.
#include "utils/runtime/MessageThread.h"

#include <exception>
#include <new>
#include <utility>

#include "platform/kivutils/KivLog.h"

struct CKivMessageThread::WorkItem {
    std::function<void()> work;
};

CKivMessageThread::~CKivMessageThread() {
    Stop(eRunQueued);
    if (thread_) CloseHandle(thread_);
}

bool CKivMessageThread::Start() {
    std::lock_guard g(lock_);
    if (state_ != eIdle) return false;
    // A thread takes posted messages only once it has a queue, so Start returns when the
    // thread has made its own and a Post straight after it cannot be refused.
    HANDLE queueMade = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!queueMade) return false;
    queueMade_ = queueMade;
    // Created suspended so that the identifier is known before the thread can end.
    DWORD id = 0;
    HANDLE thread = CreateThread(nullptr, 0, ThreadMain, this, CREATE_SUSPENDED, &id);
    if (thread) {
        thread_ = thread;
        threadId_ = id;
        state_ = eRunning;
        ResumeThread(thread);
        // The thread sets the event before anything else it does, and Loop takes no lock
        // before it, so waiting here under the lock cannot stall it.
        WaitForSingleObject(queueMade, INFINITE);
    }
    queueMade_ = nullptr;
    CloseHandle(queueMade);
    return thread != nullptr;
}

bool CKivMessageThread::Post(std::function<void()> work) {
    auto* item = new (std::nothrow) WorkItem{std::move(work)};
    if (!item) return false;
    {
        std::lock_guard g(lock_);
        if (state_ == eRunning &&
            PostThreadMessageW(threadId_, kWorkItemMessage, 0, reinterpret_cast<LPARAM>(item))) {
            return true;
        }
    }
    delete item;  // outside the lock: the item's captures may do anything as they go
    return false;
}

void CKivMessageThread::RequestStop(EStopMode mode) {
    std::lock_guard g(lock_);
    if (state_ != eRunning) return;
    state_ = eStopping;
    stopMode_ = mode;
    // WM_QUIT queued like any other message: everything before it is taken first.
    PostThreadMessageW(threadId_, WM_QUIT, 0, 0);
}

bool CKivMessageThread::WaitForEnd(DWORD milliseconds) {
    HANDLE thread = nullptr;
    {
        std::lock_guard g(lock_);
        thread = thread_;
    }
    return !thread || WaitForSingleObject(thread, milliseconds) == WAIT_OBJECT_0;
}

bool CKivMessageThread::Stop(EStopMode mode) {
    RequestStop(mode);
    if (IsCurrentThread()) return false;
    return WaitForEnd(INFINITE);
}

bool CKivMessageThread::IsRunning() const {
    std::lock_guard g(lock_);
    return state_ == eRunning || state_ == eStopping;
}

DWORD WINAPI CKivMessageThread::ThreadMain(LPVOID self) {
    static_cast<CKivMessageThread*>(self)->Loop();
    return 0;
}

void CKivMessageThread::RunOrDiscard(LPARAM message) {
    auto* item = reinterpret_cast<WorkItem*>(message);
    bool discard = false;
    {
        std::lock_guard g(lock_);
        discard = state_ != eRunning && stopMode_ == eDiscardQueued;
    }
    if (!discard && item->work) {
        // A failing item must not end the thread and strand the items behind it. Only
        // library errors are caught: a thread cancellation passes on.
        try {
            item->work();
        } catch (const std::exception& e) {
            LOGMESSAGE(1, L"message thread: a work item failed: %hs", e.what());
        }
    }
    delete item;
}

void CKivMessageThread::Loop() {
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes this thread's queue
    SetEvent(queueMade_);
    OnStart();
    // 0 is WM_QUIT: the stop's own, or a window's PostQuitMessage, which comes once
    // the queue is empty. -1 cannot happen without a window filter.
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.hwnd) DispatchMessageW(&message);
        else if (message.message == kWorkItemMessage) RunOrDiscard(message.lParam);
        else OnThreadMessage(message);
    }
    {
        std::lock_guard g(lock_);
        if (state_ == eRunning) stopMode_ = eRunQueued;  // ended by PostQuitMessage: nothing was asked
        state_ = eEnded;
    }
    // Items that came after a window's PostQuitMessage ended the loop are still queued;
    // from here on Post refuses, so this drain leaves the queue without items.
    while (PeekMessageW(&message, reinterpret_cast<HWND>(-1), kWorkItemMessage, kWorkItemMessage, PM_REMOVE)) {
        if (message.message == kWorkItemMessage) RunOrDiscard(message.lParam);
    }
    OnEnd();
}
