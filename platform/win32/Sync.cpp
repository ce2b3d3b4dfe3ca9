// Events, critical sections, threads and time on the host. Every blocking call goes
// through BlockUntil, which is also where TerminateThread catches up with a thread.
#include "platform/win32/Sync.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string>
#include <thread>
#include <unordered_map>

#include "platform/host/Host.h"
#include "platform/win32/ThreadContext.h"

namespace kiv_win32::detail {

std::atomic<void (*)(ThreadContext&)> onThreadEnd{nullptr};

namespace {

struct ThreadRegistry {
    std::mutex lock;
    std::atomic<DWORD> nextId{0x100};
    std::unordered_map<DWORD, std::shared_ptr<ThreadContext>> live;
};

ThreadRegistry& Threads() {
    static ThreadRegistry* registry = new ThreadRegistry;  // used by threads ending after main
    return *registry;
}

void Register(const std::shared_ptr<ThreadContext>& context) {
    std::lock_guard g(Threads().lock);
    Threads().live[context->id] = context;
}

void Forget(DWORD id) {
    std::shared_ptr<ThreadContext> gone;  // released outside the lock: it may own a queue
    {
        std::lock_guard g(Threads().lock);
        auto it = Threads().live.find(id);
        if (it == Threads().live.end()) return;
        gone = std::move(it->second);
        Threads().live.erase(it);
    }
    std::lock_guard g(gone->lock);
    gone->queue.reset();
}

// Holds the calling thread's context; a thread that this subset did not create is
// forgotten when it ends.
struct Registration {
    std::shared_ptr<ThreadContext> context;
    ~Registration() {
        if (context && !context->createdHere) Forget(context->id);
    }
};
thread_local Registration registration;

}  // namespace

ThreadContext& CurrentThread() {
    if (!registration.context) {
        auto context = std::make_shared<ThreadContext>();
        context->id = Threads().nextId.fetch_add(1);
        Register(context);
        registration.context = std::move(context);
    }
    return *registration.context;
}

std::shared_ptr<ThreadContext> FindThread(DWORD id) {
    std::lock_guard g(Threads().lock);
    auto it = Threads().live.find(id);
    return it == Threads().live.end() ? nullptr : it->second;
}

void ForEachThread(const std::function<void(ThreadContext&)>& visit) {
    std::vector<std::shared_ptr<ThreadContext>> all;
    {
        std::lock_guard g(Threads().lock);
        for (auto& [id, context] : Threads().live) all.push_back(context);
    }
    for (auto& context : all) visit(*context);
}

void CancellationPoint() {
    ThreadContext& self = CurrentThread();
    if (self.createdHere && self.cancelRequested.load()) throw ThreadCancelled{self.cancelExitCode.load()};
}

bool BlockUntil(const std::shared_ptr<WaitPoint>& point, std::unique_lock<std::mutex>& held, DWORD milliseconds,
                const std::function<bool()>& ready) {
    ThreadContext& self = CurrentThread();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    {
        std::lock_guard g(self.lock);
        self.waitingOn = point;
    }
    auto leave = [&self] {
        std::lock_guard g(self.lock);
        self.waitingOn.reset();
    };
    for (;;) {
        // Checked after waitingOn is published: TerminateThread sets the flag before it
        // reads waitingOn, so either it wakes this wait or this check sees the flag.
        if (self.createdHere && self.cancelRequested.load()) {
            leave();
            throw ThreadCancelled{self.cancelExitCode.load()};
        }
        if (ready()) {
            leave();
            return true;
        }
        if (milliseconds == INFINITE) {
            point->changed.wait(held);
        } else {
            if (std::chrono::steady_clock::now() >= deadline) {
                leave();
                return false;
            }
            point->changed.wait_until(held, deadline);
        }
    }
}

}  // namespace kiv_win32::detail

using kiv_win32::detail::BlockUntil;
using kiv_win32::detail::ThreadContext;
using kiv_win32::detail::ThreadCancelled;
using kiv_win32::detail::WaitPoint;

// ---- events ---------------------------------------------------------------------------

namespace {

struct EventCore {
    std::shared_ptr<WaitPoint> point = std::make_shared<WaitPoint>();
    bool manualReset = false;
    bool signalled = false;
    std::uint64_t pulses = 0;   // a manual-reset pulse releases the waiters of earlier generations
    int pulseTickets = 0;       // an auto-reset pulse releases one waiter
    int waiters = 0;
};

class EventHandle : public kiv_win32::HandleObject {
public:
    explicit EventHandle(std::shared_ptr<EventCore> core) : core_(std::move(core)) {}
    EventCore& core() { return *core_; }

    DWORD Wait(DWORD milliseconds) override {
        EventCore& e = *core_;
        std::unique_lock held(e.point->lock);
        const std::uint64_t generation = e.pulses;
        ++e.waiters;
        bool released = false;
        try {
            released = BlockUntil(e.point, held, milliseconds, [&] {
                if (e.signalled) {
                    if (!e.manualReset) e.signalled = false;
                    return true;
                }
                if (e.manualReset) return e.pulses != generation;
                if (e.pulseTickets > 0) {
                    --e.pulseTickets;
                    return true;
                }
                return false;
            });
        } catch (...) {
            --e.waiters;
            throw;
        }
        if (--e.waiters == 0) e.pulseTickets = 0;
        return released ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    }

private:
    std::shared_ptr<EventCore> core_;
};

// Names live as long as some handle holds the event; expired names are swept as the
// table grows, so the sweep costs amortised constant time per creation.
struct EventNames {
    std::mutex lock;
    std::unordered_map<std::wstring, std::weak_ptr<EventCore>> names;
    size_t sweepAt = 64;
};

EventNames& Names() {
    static EventNames* names = [] {
        kiv_host::AddResetHook("win32.events", [] {
            std::lock_guard g(Names().lock);
            Names().names.clear();
        });
        return new EventNames;
    }();
    return *names;
}

std::shared_ptr<EventCore> FindNamed(const std::wstring& name) {
    auto it = Names().names.find(name);
    return it == Names().names.end() ? nullptr : it->second.lock();
}

void Remember(const std::wstring& name, const std::shared_ptr<EventCore>& core) {
    auto& table = Names();
    table.names[name] = core;
    if (table.names.size() < table.sweepAt) return;
    std::erase_if(table.names, [](const auto& entry) { return entry.second.expired(); });
    table.sweepAt = std::max<size_t>(64, table.names.size() * 2);
}

std::shared_ptr<EventHandle> FindEvent(HANDLE handle) {
    auto event = kiv_win32::FindHandleAs<EventHandle>(handle);
    if (!event) SetLastError(ERROR_INVALID_HANDLE);
    return event;
}

BOOL Change(HANDLE handle, DWORD action) {
    auto event = FindEvent(handle);
    if (!event) return FALSE;
    EventCore& e = event->core();
    {
        std::lock_guard g(e.point->lock);
        switch (action) {
            case EVENT_SET: e.signalled = true; break;
            case EVENT_RESET: e.signalled = false; break;
            case EVENT_PULSE:
                if (e.manualReset) ++e.pulses;
                else if (e.waiters > 0) e.pulseTickets = 1;
                e.signalled = false;
                break;
            default: SetLastError(ERROR_INVALID_PARAMETER); return FALSE;
        }
    }
    e.point->changed.notify_all();
    return TRUE;
}

}  // namespace

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    std::shared_ptr<EventCore> core;
    bool existed = false;
    if (name && *name) {
        std::lock_guard g(Names().lock);
        core = FindNamed(name);
        existed = core != nullptr;
        if (!core) {
            core = std::make_shared<EventCore>();
            core->manualReset = manualReset != FALSE;
            core->signalled = initialState != FALSE;
            Remember(name, core);
        }
    } else {
        core = std::make_shared<EventCore>();
        core->manualReset = manualReset != FALSE;
        core->signalled = initialState != FALSE;
    }
    HANDLE handle = kiv_win32::AddHandle(std::make_shared<EventHandle>(std::move(core)));
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

HANDLE OpenEventW(DWORD, BOOL, LPCWSTR name) {
    if (!name || !*name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::shared_ptr<EventCore> core;
    {
        std::lock_guard g(Names().lock);
        core = FindNamed(name);
    }
    if (!core) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    return kiv_win32::AddHandle(std::make_shared<EventHandle>(std::move(core)));
}

BOOL EventModify(HANDLE event, DWORD action) { return Change(event, action); }
BOOL SetEvent(HANDLE event) { return Change(event, EVENT_SET); }
BOOL ResetEvent(HANDLE event) { return Change(event, EVENT_RESET); }
BOOL PulseEvent(HANDLE event) { return Change(event, EVENT_PULSE); }

// ---- critical sections -------------------------------------------------------------------

namespace {
static_assert(sizeof(std::recursive_mutex) <= sizeof(CRITICAL_SECTION::opaque));
static_assert(alignof(std::recursive_mutex) <= alignof(CRITICAL_SECTION));

std::recursive_mutex& MutexOf(LPCRITICAL_SECTION section) {
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(section->opaque));
}
}  // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    if (section) new (section->opaque) std::recursive_mutex;
}
void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    if (section) MutexOf(section).~recursive_mutex();
}
void EnterCriticalSection(LPCRITICAL_SECTION section) { MutexOf(section).lock(); }
void LeaveCriticalSection(LPCRITICAL_SECTION section) { MutexOf(section).unlock(); }
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) { return MutexOf(section).try_lock() ? TRUE : FALSE; }

// ---- threads ----------------------------------------------------------------------------------

namespace {

// A stack smaller than this overflows in the host's own libraries (and far sooner under
// the sanitizers); smaller requests, such as the device's 32 KB, are raised to it.
constexpr size_t kMinimumStack = 256 * 1024;

// The state a thread shares with its handle; it outlives whichever of the two goes first.
struct ThreadRun {
    std::shared_ptr<WaitPoint> point = std::make_shared<WaitPoint>();
    std::shared_ptr<ThreadContext> context;
    LPTHREAD_START_ROUTINE start = nullptr;
    LPVOID parameter = nullptr;
    bool resumed = false;  // the three below are guarded by point->lock
    bool finished = false;
    DWORD exitCode = STILL_ACTIVE;
    std::atomic<int> priority{THREAD_PRIORITY_NORMAL};
    std::atomic<pid_t> hostId{0};  // 0 until the thread runs
};

class ThreadHandle : public kiv_win32::HandleObject {
public:
    explicit ThreadHandle(std::shared_ptr<ThreadRun> run) : run_(std::move(run)) {}
    ThreadRun& run() { return *run_; }

    DWORD Wait(DWORD milliseconds) override {
        std::unique_lock held(run_->point->lock);
        return BlockUntil(run_->point, held, milliseconds, [this] { return run_->finished; }) ? WAIT_OBJECT_0
                                                                                                 : WAIT_TIMEOUT;
    }

private:
    std::shared_ptr<ThreadRun> run_;
};

int NiceFor(int priority) {
    static constexpr int nice[] = {-10, -5, -2, 0, 2, 5, 10, 19};
    return nice[priority < 0 ? 0 : priority > 7 ? 7 : priority];
}

// Raising a priority needs privileges the host may not grant; the thread then keeps
// running at its current priority.
void ApplyPriority(ThreadRun& run) {
    if (pid_t id = run.hostId.load()) ::setpriority(PRIO_PROCESS, static_cast<id_t>(id), NiceFor(run.priority.load()));
}

void* ThreadMain(void* argument) {
    using namespace kiv_win32::detail;
    std::shared_ptr<ThreadRun> run = std::move(*std::unique_ptr<std::shared_ptr<ThreadRun>>(
        static_cast<std::shared_ptr<ThreadRun>*>(argument)));
    ThreadContext& context = *run->context;
    registration.context = run->context;
    run->hostId = ::gettid();
    DWORD exitCode = 0;
    try {
        {
            std::unique_lock held(run->point->lock);
            BlockUntil(run->point, held, INFINITE, [&] { return run->resumed; });
        }
        ApplyPriority(*run);
        exitCode = run->start(run->parameter);
    } catch (const ThreadCancelled& cancelled) {
        exitCode = cancelled.exitCode;
    }
    // The thread's windows are destroyed by the thread itself; a cancellation that came
    // too late to matter must not cut that short.
    context.cancelRequested = false;
    if (auto end = onThreadEnd.load()) {
        try {
            end(context);
        } catch (const ThreadCancelled&) {
        }
    }
    Forget(context.id);
    registration.context.reset();
    {
        std::lock_guard g(run->point->lock);
        run->finished = true;
        run->exitCode = exitCode;
    }
    run->point->changed.notify_all();
    return nullptr;
}

std::shared_ptr<ThreadHandle> FindThreadHandle(HANDLE handle) {
    auto thread = kiv_win32::FindHandleAs<ThreadHandle>(handle);
    if (!thread) SetLastError(ERROR_INVALID_HANDLE);
    return thread;
}

size_t StackSizeFor(SIZE_T requested) {
    const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    const size_t size = std::max<size_t>(requested, kMinimumStack);
    return (size + page - 1) / page * page;
}

}  // namespace

HANDLE CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T stackSize, LPTHREAD_START_ROUTINE start, LPVOID parameter,
                    DWORD creationFlags, LPDWORD threadId) {
    using namespace kiv_win32::detail;
    if (!start) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto run = std::make_shared<ThreadRun>();
    run->context = std::make_shared<ThreadContext>();
    run->context->id = Threads().nextId.fetch_add(1);
    run->context->createdHere = true;
    run->start = start;
    run->parameter = parameter;
    run->resumed = (creationFlags & CREATE_SUSPENDED) == 0;
    Register(run->context);  // so that PostThreadMessageW works before the thread first runs

    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stackSize != 0) ::pthread_attr_setstacksize(&attributes, StackSizeFor(stackSize));
    auto* argument = new std::shared_ptr<ThreadRun>(run);
    pthread_t thread;
    const int failed = ::pthread_create(&thread, &attributes, ThreadMain, argument);
    ::pthread_attr_destroy(&attributes);
    if (failed) {
        delete argument;
        Forget(run->context->id);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (threadId) *threadId = run->context->id;
    return kiv_win32::AddHandle(std::make_shared<ThreadHandle>(std::move(run)));
}

DWORD ResumeThread(HANDLE handle) {
    auto thread = FindThreadHandle(handle);
    if (!thread) return 0xFFFFFFFF;
    ThreadRun& run = thread->run();
    {
        std::lock_guard g(run.point->lock);
        if (run.resumed) return 0;
        run.resumed = true;
    }
    run.point->changed.notify_all();
    return 1;
}

BOOL TerminateThread(HANDLE handle, DWORD exitCode) {
    auto thread = FindThreadHandle(handle);
    if (!thread) return FALSE;
    ThreadContext& target = *thread->run().context;
    if (&target == &kiv_win32::detail::CurrentThread()) throw ThreadCancelled{exitCode};
    if (!target.cancelRequested.load()) {
        target.cancelExitCode = exitCode;
        target.cancelRequested = true;
    }
    std::shared_ptr<WaitPoint> waiting;
    {
        std::lock_guard g(target.lock);
        waiting = target.waitingOn;
    }
    if (waiting) {
        std::lock_guard g(waiting->lock);
        waiting->changed.notify_all();
    }
    return TRUE;
}

void ExitThread(DWORD exitCode) {
    if (kiv_win32::detail::CurrentThread().createdHere) throw ThreadCancelled{exitCode};
}

BOOL GetExitCodeThread(HANDLE handle, LPDWORD exitCode) {
    auto thread = FindThreadHandle(handle);
    if (!thread || !exitCode) return FALSE;
    ThreadRun& run = thread->run();
    std::lock_guard g(run.point->lock);
    *exitCode = run.finished ? run.exitCode : STILL_ACTIVE;
    return TRUE;
}

BOOL SetThreadPriority(HANDLE handle, int priority) {
    auto thread = FindThreadHandle(handle);
    if (!thread) return FALSE;
    if (priority < THREAD_PRIORITY_TIME_CRITICAL || priority > THREAD_PRIORITY_IDLE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    thread->run().priority = priority;
    ApplyPriority(thread->run());
    return TRUE;
}

int GetThreadPriority(HANDLE handle) {
    auto thread = FindThreadHandle(handle);
    return thread ? thread->run().priority.load() : THREAD_PRIORITY_ERROR_RETURN;
}

DWORD GetCurrentThreadId() { return kiv_win32::detail::CurrentThread().id; }

// ---- time ---------------------------------------------------------------------------------------

void Sleep(DWORD milliseconds) {
    ThreadContext& self = kiv_win32::detail::CurrentThread();
    if (milliseconds == 0) {
        kiv_win32::detail::CancellationPoint();
        std::this_thread::yield();
        return;
    }
    std::unique_lock held(self.sleepPoint->lock);
    BlockUntil(self.sleepPoint, held, milliseconds, [] { return false; });
}

DWORD GetTickCount() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}
