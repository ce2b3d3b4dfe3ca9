// The tick timer's table of 100 slots, its thread, and the start and stop handshakes
// through the named events "Tic Timer Started" and "Tic Timer Stopped".
#include "utils/runtime/TicTimer.h"

#include <atomic>
#include <new>
#include <mutex>
#include <shared_mutex>

#include "platform/host/Host.h"
#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivLog.h"
#include "platform/mfc/SyncObjects.h"
#include "platform/mfc/WinThread.h"
#include "platform/win32/MessageBatch.h"

namespace {

constexpr int kSlots = 100;
constexpr UINT kMinResolution = 10;
constexpr DWORD kHandshakeMs = 1000;
constexpr wchar_t kStartedEvent[] = L"Tic Timer Started";
constexpr wchar_t kStoppedEvent[] = L"Tic Timer Stopped";

struct Slot {
    HWND window = nullptr;  // null: free
    UINT id = 0;
    UINT elapse = 0;
    UINT reload = 0;     // the period in ticks
    UINT countdown = 0;  // ticks until the next message
};

struct TicTimer : SharedHeapObject {
    explicit TicTimer(UINT resolution) : resolution(resolution < kMinResolution ? kMinResolution : resolution) {}

    Slot slots[kSlots];
    CCriticalSection lock;  // guards slots and active
    // One word written by the destroying thread and read between slots; atomic so that
    // the reader sees it without taking the table lock.
    std::atomic<LONG> stop{0};
    const UINT resolution;
    int active = 0;
};

// The process-wide timer and its thread. Set and Kill may be called from any thread
// while another destroys the timer: they hold the lifetime lock shared, so the object
// is freed only after every call in flight has left it.
std::shared_mutex lifetime;
TicTimer* timer = nullptr;
CWinThread* thread = nullptr;

void Log(const wchar_t* text) { kiv_err_log("TicTimer", __LINE__, text); }

// One pass over the table: count down every live timer and post to those that are due.
// The scan ends after as many occupied slots as there are timers. The due messages are
// posted together as the scan ends, still under the table lock and in table order, each
// to its own window: one lock of the receiving queue and one wake-up for all of them,
// where a post per slot took and woke it for each.
void Tick(TicTimer& t) {
    MSG due[kSlots];
    int dueCount = 0;
    CSingleLock guard(&t.lock, TRUE);
    int remaining = t.active;
    for (Slot& slot : t.slots) {
        if (remaining < 1 || t.stop.load(std::memory_order_relaxed)) break;
        if (!slot.window) continue;
        if (IsWindow(slot.window)) {
            // Decremented before the test, so a reload of 0 (an elapse below half a tick)
            // wraps and never fires. Kept: screens rely on such a timer staying silent.
            if (--slot.countdown == 0) {
                slot.countdown = slot.reload;
                due[dueCount++] = MSG{slot.window, WM_TIC_TIMER, slot.id, 0, 0, {0, 0}};
            }
        } else {
            // The window went without killing its timers.
            slot = Slot{};
            --t.active;
        }
        --remaining;
    }
    kiv_win32::PostMessages(due, dueCount);
}

void SignalNamed(const wchar_t* name) {
    HANDLE event = CreateEventW(nullptr, TRUE, TRUE, name);
    if (!event) return;
    SetEvent(event);
    CloseHandle(event);
}

UINT TimerThread(LPVOID parameter) {
    HANDLE started = CreateEventW(nullptr, TRUE, TRUE, kStartedEvent);
    if (!started) {
        Log(L"Tic timer thread: cannot create its start event");
        return 0;
    }
    SetEvent(started);
    CloseHandle(started);
    auto* t = static_cast<TicTimer*>(parameter);
    if (!t) return static_cast<UINT>(-1);

    Sleep(t->resolution);
    DWORD t0 = GetTickCount();
    while (!t->stop.load(std::memory_order_relaxed)) {
        Tick(*t);
        if (t->stop.load(std::memory_order_relaxed)) break;
        // Sleep only what is left of the tick, measured from the start of the pass: a
        // slow pass shortens the next sleep instead of delaying every timer.
        const DWORD elapsed = GetTickCount() - t0;
        if (elapsed < t->resolution) Sleep(t->resolution - elapsed);
        t0 = GetTickCount();
    }
    SignalNamed(kStoppedEvent);
    return 0;
}

// Forgets everything on a host reset, as if the process had ended and started again.
void RegisterReset() {
    static const bool once = [] {
        kiv_host::AddResetHook("utils.runtime.tictimer", [] { DestroyTicTimerThread(); });
        return true;
    }();
    (void)once;
}

}  // namespace

BOOL CreateTicTimerThread(UINT resolution) {
    RegisterReset();
    std::unique_lock guard(lifetime);
    if (timer && thread) return TRUE;
    HANDLE started = CreateEventW(nullptr, TRUE, FALSE, kStartedEvent);
    if (!started) {
        Log(L"CreateTicTimerThread: cannot create the start event");
        return FALSE;
    }
    ResetEvent(started);  // a handshake left from an earlier thread must not count
    TicTimer* created = new (std::nothrow) TicTimer(resolution);
    // Above normal priority and a small stack, as on the device; the object is kept
    // after the thread ends so that destroying the timer can wait for the thread.
    CWinThread* started_thread =
        created ? AfxBeginThread(TimerThread, created, THREAD_PRIORITY_ABOVE_NORMAL, 32767, CREATE_SUSPENDED) : nullptr;
    if (started_thread) {
        started_thread->m_bAutoDelete = FALSE;
        started_thread->ResumeThread();
        WaitForSingleObject(started, kHandshakeMs);
    }
    CloseHandle(started);
    if (!started_thread) {
        delete created;
        return FALSE;
    }
    timer = created;
    thread = started_thread;
    return timer != nullptr;
}

BOOL DestroyTicTimerThread() {
    // Set and Kill wait while the thread stops (at most the handshake's second); the
    // timer thread itself never takes the lifetime lock.
    std::unique_lock guard(lifetime);
    if (!timer || !thread) return FALSE;
    HANDLE stopped = CreateEventW(nullptr, TRUE, FALSE, kStoppedEvent);
    if (stopped) ResetEvent(stopped);
    timer->stop.store(1, std::memory_order_relaxed);
    const DWORD waited = stopped ? WaitForSingleObject(stopped, kHandshakeMs) : WAIT_FAILED;
    if (stopped) CloseHandle(stopped);
    if (waited != WAIT_OBJECT_0) {
        Log(L"DestroyTicTimerThread: the timer thread did not stop; terminating it");
        TerminateThread(thread->m_hThread, static_cast<DWORD>(-1));
    }
    // The thread may still be between its last pass and its end: the table goes only
    // once the thread has ended, and is left to the process if it never does.
    const bool ended = WaitForSingleObject(thread->m_hThread, kHandshakeMs) == WAIT_OBJECT_0;
    if (ended) {
        delete thread;
        delete timer;
    } else {
        Log(L"DestroyTicTimerThread: the timer thread did not end; its table is left in memory");
    }
    thread = nullptr;
    timer = nullptr;
    return TRUE;
}

BOOL SetTicTimer(HWND window, UINT id, UINT elapse) {
    std::shared_lock guard(lifetime);
    if (!timer || !IsWindow(window)) return FALSE;
    TicTimer& t = *timer;
    CSingleLock table(&t.lock, TRUE);
    const UINT ticks = (elapse + t.resolution / 2) / t.resolution;
    // The first slot that is free or holds this timer takes it. A free slot before the
    // timer's own one therefore gets a second entry for the same timer, and the count
    // grows on every set, replacements included; both are the table's kept behaviour.
    for (Slot& slot : t.slots) {
        if (slot.window && !(slot.window == window && slot.id == id)) continue;
        slot = Slot{window, id, elapse, ticks, ticks};
        ++t.active;
        return TRUE;
    }
    return FALSE;
}

BOOL KillTicTimer(HWND window, UINT id) {
    std::shared_lock guard(lifetime);
    if (!timer) return FALSE;
    TicTimer& t = *timer;
    CSingleLock table(&t.lock, TRUE);
    for (Slot& slot : t.slots) {
        if (slot.window != window || slot.id != id || !window) continue;
        slot = Slot{};
        --t.active;
        return TRUE;
    }
    return FALSE;
}
