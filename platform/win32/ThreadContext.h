// Internal to the win32 library: what the subset knows about each thread (its identifier,
// its message queue, a pending cancellation) and the one blocking wait that every
// waiting function uses, so that TerminateThread can reach a thread wherever it waits.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/win32/Win32Types.h"

namespace kiv_win32::detail {

struct MessageQueue;  // defined by the windows and messages family

// A mutex and a condition that waiters block on. TerminateThread wakes the one its
// target blocks on.
struct WaitPoint {
    std::mutex lock;
    std::condition_variable changed;
};

// Thrown through a cancelled thread's stack and caught where the thread began. It is
// deliberately not a std::exception, so handlers of library errors let it pass.
struct ThreadCancelled {
    DWORD exitCode;
};

struct ThreadContext {
    DWORD id = 0;
    bool createdHere = false;  // by CreateThread, so that a cancellation can unwind to its start
    std::atomic<bool> cancelRequested{false};
    std::atomic<DWORD> cancelExitCode{0};
    // Set once the thread's start routine is over: what remains (destroying its windows)
    // runs to the end whatever TerminateThread asks.
    std::atomic<bool> ending{false};

    // Sleep waits on this word alone, to an absolute deadline; TerminateThread changes
    // it and wakes the sleeper. A sleeping thread thus costs one wait per Sleep, with no
    // lock to take and nothing to wake when the time runs out.
    std::atomic<std::uint32_t> sleepWord{0};

    std::mutex lock;  // guards the two members below
    std::shared_ptr<WaitPoint> waitingOn;
    std::shared_ptr<MessageQueue> queue;
};

// The calling thread's context, registered on first use.
ThreadContext& CurrentThread();
// A live thread by identifier; null once the thread has ended.
std::shared_ptr<ThreadContext> FindThread(DWORD id);
void ForEachThread(const std::function<void(ThreadContext&)>& visit);

// Blocks on `point` (whose lock `held` holds) until `ready()` is true or `milliseconds`
// pass (INFINITE: no limit); never returns false before the time has passed. Returns
// ready(). Throws ThreadCancelled when the calling thread was terminated, before or
// during the wait, unless the thread is ending or its stack is already unwinding (a
// second exception out of a destructor would end the process); such a wait just waits.
bool BlockUntil(const std::shared_ptr<WaitPoint>& point, std::unique_lock<std::mutex>& held, DWORD milliseconds,
                const std::function<bool()>& ready);

// Throws ThreadCancelled when the calling thread has a cancellation pending, under the
// same conditions as BlockUntil.
void CancellationPoint();

// Run by a thread of this subset as it ends, before its context is forgotten: the
// windows family destroys the thread's windows here. Set once by that family.
extern std::atomic<void (*)(ThreadContext&)> onThreadEnd;

}  // namespace kiv_win32::detail
