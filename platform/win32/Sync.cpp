// Events, critical sections, threads and time on the host. Every blocking call goes
// through BlockUntil, which is also where TerminateThread catches up with a thread.
#include "platform/win32/Sync.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <list>
#include <new>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

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

namespace {
bool CancelPending(const ThreadContext& self) {
    return self.createdHere && self.cancelRequested.load() && !self.ending.load() && std::uncaught_exceptions() == 0;
}
}  // namespace

void CancellationPoint() {
    ThreadContext& self = CurrentThread();
    if (CancelPending(self)) throw ThreadCancelled{self.cancelExitCode.load()};
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
        if (CancelPending(self)) {
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

// ---- names ----------------------------------------------------------------------------

namespace {

// The process-wide names of one kind of object (events, mutexes). A name lives as long as
// some handle holds its object; expired names are swept as the table grows, so the sweep
// costs amortised constant time per creation. Callers hold `lock`.
template <class Core>
struct NameTable {
    explicit NameTable(const char* resetKey) {
        kiv_host::AddResetHook(resetKey, [this] {
            std::lock_guard g(lock);
            names.clear();
        });
    }
    std::shared_ptr<Core> Find(const std::wstring& name) const {
        auto it = names.find(name);
        return it == names.end() ? nullptr : it->second.lock();
    }
    void Remember(const std::wstring& name, const std::shared_ptr<Core>& core) {
        names[name] = core;
        if (names.size() < sweepAt) return;
        std::erase_if(names, [](const auto& entry) { return entry.second.expired(); });
        sweepAt = std::max<size_t>(64, names.size() * 2);
    }

    std::mutex lock;
    std::unordered_map<std::wstring, std::weak_ptr<Core>> names;
    size_t sweepAt = 64;
};

}  // namespace

// ---- events ---------------------------------------------------------------------------

namespace {

// A thread blocked on an event. Each Set or Pulse of an auto-reset event releases the
// oldest record, so two quick Sets release two waiters and a thread that starts waiting
// after a pulse cannot take the release meant for one that was already waiting.
struct EventWaiter {
    bool released = false;
    bool bySet = false;  // released by SetEvent rather than by a pulse
};

// Guarded by point->lock.
struct EventCore {
    std::shared_ptr<WaitPoint> point = std::make_shared<WaitPoint>();
    bool manualReset = false;
    bool signalled = false;
    std::list<EventWaiter*> waiters;  // not yet released, oldest first

    void ReleaseOldest(bool bySet) {
        EventWaiter* w = waiters.front();
        waiters.pop_front();
        w->released = true;
        w->bySet = bySet;
    }
    void ReleaseAll() {
        for (EventWaiter* w : waiters) w->released = true;
        waiters.clear();
    }
    void Set() {
        if (manualReset) {
            signalled = true;
            ReleaseAll();
        } else if (!waiters.empty()) {
            ReleaseOldest(true);
        } else {
            signalled = true;
        }
    }
    void Pulse() {
        if (manualReset) ReleaseAll();
        else if (!waiters.empty()) ReleaseOldest(false);
        signalled = false;
    }
};

class EventHandle : public kiv_win32::HandleObject {
public:
    explicit EventHandle(std::shared_ptr<EventCore> core) : core_(std::move(core)) {}
    EventCore& core() { return *core_; }

    DWORD Wait(DWORD milliseconds) override {
        EventCore& e = *core_;
        std::unique_lock held(e.point->lock);
        EventWaiter me;
        bool queued = false;
        std::list<EventWaiter*>::iterator place;
        // A queued waiter is only ever released through its record: a Set or Pulse that
        // finds waiters leaves the event as it was.
        auto ready = [&] {
            if (me.released) return true;
            if (queued) return false;
            if (e.signalled) {
                if (!e.manualReset) e.signalled = false;
                return true;
            }
            place = e.waiters.insert(e.waiters.end(), &me);
            queued = true;
            return false;
        };
        bool released = false;
        try {
            released = BlockUntil(e.point, held, milliseconds, ready);
        } catch (...) {
            if (queued && !me.released) e.waiters.erase(place);
            // A thread cancelled just after a Set released it hands the Set on, so that
            // the event does not lose it.
            if (me.released && me.bySet && !e.manualReset) {
                e.Set();
                e.point->changed.notify_all();
            }
            throw;
        }
        if (queued && !me.released) e.waiters.erase(place);
        return released ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    }

private:
    std::shared_ptr<EventCore> core_;
};

using EventNames = NameTable<EventCore>;

EventNames& Names() {
    static auto* names = new EventNames("win32.events");
    return *names;
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
            case EVENT_SET: e.Set(); break;
            case EVENT_RESET: e.signalled = false; break;
            case EVENT_PULSE: e.Pulse(); break;
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
        core = Names().Find(name);
        existed = core != nullptr;
        if (!core) {
            core = std::make_shared<EventCore>();
            core->manualReset = manualReset != FALSE;
            core->signalled = initialState != FALSE;
            Names().Remember(name, core);
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
        core = Names().Find(name);
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

// ---- mutexes -----------------------------------------------------------------------------

namespace {

// Guarded by point->lock. `abandoned` is handed to the next thread that takes the mutex.
struct MutexCore {
    std::shared_ptr<WaitPoint> point = std::make_shared<WaitPoint>();
    DWORD owner = 0;
    unsigned depth = 0;
    bool abandoned = false;
};

// The mutexes the calling thread owns. Only the owner adds or removes its entries, so the
// list needs no lock; its destructor runs as the thread ends, however it ends (returning,
// ExitThread, TerminateThread, or a thread this subset did not create), and abandons
// whatever is still owned.
struct OwnedMutexes {
    std::vector<std::shared_ptr<MutexCore>> cores;
    ~OwnedMutexes() {
        for (auto& core : cores) {
            {
                std::lock_guard g(core->point->lock);
                core->owner = 0;
                core->depth = 0;
                core->abandoned = true;
            }
            core->point->changed.notify_all();
        }
    }
};
thread_local OwnedMutexes ownedMutexes;

class MutexHandle : public kiv_win32::HandleObject {
public:
    explicit MutexHandle(std::shared_ptr<MutexCore> core) : core_(std::move(core)) {}
    MutexCore& core() { return *core_; }

    DWORD Wait(DWORD milliseconds) override {
        MutexCore& m = *core_;
        const DWORD self = kiv_win32::detail::CurrentThread().id;
        std::unique_lock held(m.point->lock);
        bool abandoned = false;
        const bool taken = BlockUntil(m.point, held, milliseconds, [&] {
            if (m.owner == self) {
                ++m.depth;
                return true;
            }
            if (m.owner != 0) return false;
            m.owner = self;
            m.depth = 1;
            abandoned = std::exchange(m.abandoned, false);
            ownedMutexes.cores.push_back(core_);
            return true;
        });
        if (!taken) return WAIT_TIMEOUT;
        return abandoned ? WAIT_ABANDONED : WAIT_OBJECT_0;
    }

private:
    std::shared_ptr<MutexCore> core_;
};

NameTable<MutexCore>& NamedMutexes() {
    static auto* names = new NameTable<MutexCore>("win32.mutexes");
    return *names;
}

}  // namespace

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) {
    // A new mutex is owned before anybody else can reach it through its name.
    auto make = [initialOwner] {
        auto core = std::make_shared<MutexCore>();
        if (initialOwner) {
            core->owner = kiv_win32::detail::CurrentThread().id;
            core->depth = 1;
            ownedMutexes.cores.push_back(core);
        }
        return core;
    };
    std::shared_ptr<MutexCore> core;
    bool existed = false;
    if (name && *name) {
        auto& table = NamedMutexes();
        std::lock_guard g(table.lock);
        core = table.Find(name);
        existed = core != nullptr;
        if (!core) {
            core = make();
            table.Remember(name, core);
        }
    } else {
        core = make();
    }
    HANDLE handle = kiv_win32::AddHandle(std::make_shared<MutexHandle>(std::move(core)));
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

HANDLE OpenMutexW(DWORD, BOOL, LPCWSTR name) {
    if (!name || !*name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::shared_ptr<MutexCore> core;
    {
        std::lock_guard g(NamedMutexes().lock);
        core = NamedMutexes().Find(name);
    }
    if (!core) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    return kiv_win32::AddHandle(std::make_shared<MutexHandle>(std::move(core)));
}

BOOL ReleaseMutex(HANDLE handle) {
    auto mutex = kiv_win32::FindHandleAs<MutexHandle>(handle);
    if (!mutex) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    MutexCore& m = mutex->core();
    {
        std::lock_guard g(m.point->lock);
        if (m.owner != kiv_win32::detail::CurrentThread().id) {
            SetLastError(ERROR_NOT_OWNER);
            return FALSE;
        }
        if (--m.depth > 0) return TRUE;
        m.owner = 0;
    }
    std::erase_if(ownedMutexes.cores, [&m](const auto& core) { return core.get() == &m; });
    m.point->changed.notify_all();
    return TRUE;
}

// ---- critical sections -------------------------------------------------------------------

namespace {

// A recursive lock whose wait goes through BlockUntil, so that TerminateThread reaches a
// thread blocked here; the thread then ends without having entered. Guarded by point->lock.
struct Section {
    std::shared_ptr<WaitPoint> point = std::make_shared<WaitPoint>();
    DWORD owner = 0;
    unsigned depth = 0;
    unsigned waiting = 0;
};
static_assert(sizeof(Section) <= sizeof(CRITICAL_SECTION::opaque));
static_assert(alignof(Section) <= alignof(CRITICAL_SECTION));

Section& SectionOf(LPCRITICAL_SECTION section) {
    return *std::launder(reinterpret_cast<Section*>(section->opaque));
}

}  // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    if (section) new (section->opaque) Section;
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    if (section) SectionOf(section).~Section();
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    Section& s = SectionOf(section);
    const DWORD self = kiv_win32::detail::CurrentThread().id;
    std::unique_lock held(s.point->lock);
    if (s.owner == self) {
        ++s.depth;
        return;
    }
    // Only a thread that has to wait can be cancelled here: entering a free section
    // never throws, which keeps it safe in destructors.
    if (s.owner != 0) {
        ++s.waiting;
        try {
            BlockUntil(s.point, held, INFINITE, [&s] { return s.owner == 0; });
        } catch (...) {
            --s.waiting;
            if (s.owner == 0 && s.waiting > 0) s.point->changed.notify_one();  // the wake-up meant for this thread
            throw;
        }
        --s.waiting;
    }
    s.owner = self;
    s.depth = 1;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    Section& s = SectionOf(section);
    const DWORD self = kiv_win32::detail::CurrentThread().id;
    std::lock_guard g(s.point->lock);
    if (s.owner != self || --s.depth > 0) return;
    s.owner = 0;
    if (s.waiting > 0) s.point->changed.notify_one();
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) {
    Section& s = SectionOf(section);
    const DWORD self = kiv_win32::detail::CurrentThread().id;
    std::lock_guard g(s.point->lock);
    if (s.owner != 0 && s.owner != self) return FALSE;
    s.owner = self;
    ++s.depth;
    return TRUE;
}

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
    // The thread's windows are destroyed by the thread itself; neither a cancellation
    // that came too late to matter nor a second TerminateThread may cut that short.
    context.ending = true;
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
    Register(run->context);  // known by its identifier before the thread first runs

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

namespace {

timespec MonotonicNow() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

bool Reached(const timespec& now, const timespec& deadline) {
    return now.tv_sec != deadline.tv_sec ? now.tv_sec > deadline.tv_sec : now.tv_nsec >= deadline.tv_nsec;
}

// A 32-bit build with a 64-bit time_t hands the kernel 64-bit times through the call
// made for them; the older call would read half a timespec.
#if defined(SYS_futex_time64)
constexpr long kFutexCall = sizeof(timespec::tv_sec) > sizeof(long) ? SYS_futex_time64 : SYS_futex;
#else
constexpr long kFutexCall = SYS_futex;
#endif

// Waits while `word` holds `seen`, until woken or the monotonic clock reaches `deadline`
// (null: no limit). Returns early on any signal; callers look again.
void WaitOnWord(std::atomic<std::uint32_t>& word, std::uint32_t seen, const timespec* deadline) {
    static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));
    ::syscall(kFutexCall, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG, seen,
              deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
}

void WakeWord(std::atomic<std::uint32_t>& word) {
    word.fetch_add(1);
    ::syscall(kFutexCall, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAKE | FUTEX_PRIVATE_FLAG, INT32_MAX, nullptr,
              nullptr, 0);
}

}  // namespace

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
    WakeWord(target.sleepWord);  // a thread in Sleep waits there instead
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
    using kiv_win32::detail::CancelPending;
    ThreadContext& self = kiv_win32::detail::CurrentThread();
    if (milliseconds == 0) {
        kiv_win32::detail::CancellationPoint();
        std::this_thread::yield();
        return;
    }
    timespec deadline = MonotonicNow();
    deadline.tv_sec += static_cast<time_t>(milliseconds / 1000);
    deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        ++deadline.tv_sec;
        deadline.tv_nsec -= 1000000000L;
    }
    for (;;) {
        // The word is read before the cancellation is checked: TerminateThread asks first
        // and changes the word after, so either this check sees the request or the wait
        // finds the word changed and returns at once.
        const std::uint32_t seen = self.sleepWord.load();
        if (CancelPending(self)) throw ThreadCancelled{self.cancelExitCode.load()};
        if (milliseconds != INFINITE && Reached(MonotonicNow(), deadline)) return;
        WaitOnWord(self.sleepWord, seen, milliseconds == INFINITE ? nullptr : &deadline);
    }
}

DWORD GetTickCount() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}
