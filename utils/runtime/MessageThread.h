// CKivMessageThread: a thread with its own message queue. It runs the work items posted
// to it and the messages of the windows it owns, one at a time and in the order they
// were queued, until it is stopped.
#pragma once

#include <functional>
#include <mutex>

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"

class CKivMessageThread : public SharedHeapObject {
public:
    // The thread message that carries a work item; other thread messages go to
    // OnThreadMessage.
    static constexpr UINT kWorkItemMessage = WM_APP + 0x3A01;

    // What Stop does with the work items queued before it.
    enum EStopMode {
        eRunQueued,      // every item posted before the stop runs, then the thread ends
        eDiscardQueued,  // items not yet started are destroyed without running
    };

    CKivMessageThread() = default;
    // Stops the thread as Stop(eRunQueued) does.
    virtual ~CKivMessageThread();
    CKivMessageThread(const CKivMessageThread&) = delete;
    CKivMessageThread& operator=(const CKivMessageThread&) = delete;

    // Starts the thread; false when it runs already, has been stopped (a thread object
    // runs once), or cannot be created.
    bool Start();
    // Queues `work` behind everything queued so far. False, with `work` destroyed
    // unrun, when the thread is not running or a stop has been asked for.
    bool Post(std::function<void()> work);

    // Asks the thread to stop and returns at once: no item is accepted from now on, the
    // items queued so far run or are discarded as `mode` says, window messages queued
    // before the stop are still dispatched, and the item running now finishes. Asked
    // again, the first mode holds.
    void RequestStop(EStopMode mode = eRunQueued);
    // Waits until the thread has ended; true when it has (or never ran).
    bool WaitForEnd(DWORD milliseconds = INFINITE);
    // RequestStop, then WaitForEnd. Called on the thread itself (from a work item or a
    // window procedure) it only asks, since the thread cannot wait for its own end.
    bool Stop(EStopMode mode = eRunQueued);

    bool IsRunning() const;
    // The thread's identifier, for PostThreadMessageW; 0 before Start.
    DWORD GetThreadId() const { return threadId_; }
    // Whether the calling thread is this object's thread.
    bool IsCurrentThread() const { return threadId_ != 0 && GetCurrentThreadId() == threadId_; }

protected:
    // Runs on the thread before the first message, e.g. to create the windows it owns.
    virtual void OnStart() {}
    // A thread message that is no work item (window messages are dispatched to their
    // windows and never come here).
    virtual void OnThreadMessage(const MSG& message) { (void)message; }
    // Runs on the thread after the last message; its windows are destroyed after this.
    virtual void OnEnd() {}

private:
    enum EState { eIdle, eRunning, eStopping, eEnded };
    struct WorkItem;
    static DWORD WINAPI ThreadMain(LPVOID self);
    void Loop();
    void RunOrDiscard(LPARAM item);

    mutable std::mutex lock_;  // guards the state and orders posts against the stop
    EState state_ = eIdle;
    EStopMode stopMode_ = eRunQueued;
    HANDLE thread_ = nullptr;
    HANDLE queueMade_ = nullptr;  // set by the thread once it can take messages; Start waits for it
    DWORD threadId_ = 0;
};
