// Windows, classes and the per-thread message queues. Window procedures are never called
// with a lock held, so that they may call back into any function of this family; the
// one lock order is queue before window table.
#include "platform/win32/Windows.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <list>
#include <unordered_map>
#include <vector>

#include "platform/host/Host.h"
#include "platform/win32/GdiObjects.h"
#include "platform/win32/MessageBatch.h"
#include "platform/win32/RegistryTree.h"  // FoldName: class names ignore case as registry names do
#include "platform/win32/Sync.h"
#include "platform/win32/ThreadContext.h"
#include "platform/win32/WindowHooks.h"

namespace kiv_win32::detail {

struct SentMessage {
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    std::shared_ptr<WaitPoint> replyTo;  // the sender's queue; guards the two below
    LRESULT result = 0;
    bool done = false;

    void Complete(LRESULT value) {
        {
            std::lock_guard g(replyTo->lock);
            result = value;
            done = true;
        }
        replyTo->changed.notify_all();
    }
};

// Guarded by point->lock. `version` changes with every arrival, so a reader whose filter
// matched nothing sleeps until something new comes.
struct MessageQueue {
    std::shared_ptr<WaitPoint> point = std::make_shared<WaitPoint>();
    std::deque<MSG> posted;  // taken mostly from the front: no allocation per message
    std::list<std::shared_ptr<SentMessage>> sent;
    bool quit = false;
    int quitCode = 0;
    std::uint64_t version = 0;

    // A thread that ends leaves no sender waiting.
    ~MessageQueue() {
        for (auto& m : sent) m->Complete(0);
    }
};

}  // namespace kiv_win32::detail

using kiv_win32::detail::BlockUntil;
using kiv_win32::detail::MessageQueue;
using kiv_win32::detail::SentMessage;
using kiv_win32::detail::ThreadContext;
using kiv_win32::detail::Surface;
using kiv_win32::WindowChange;
using kiv_win32::detail::NotifyWindowChange;

namespace {

// The calling thread's live-display turn (see WindowHooks.h); null on every thread but
// the one a display is attached to.
thread_local kiv_win32::MessageWaitHook t_waitHook = nullptr;
thread_local DWORD t_waitHookInterval = 0;
thread_local bool t_inWaitHook = false;

void RunWaitHook() {
    if (!t_waitHook || t_inWaitHook) return;
    t_inWaitHook = true;
    try {
        t_waitHook();
    } catch (...) {
        t_inWaitHook = false;
        throw;
    }
    t_inWaitHook = false;
}

struct WindowClass {
    std::wstring name;
    WNDPROC procedure = nullptr;
    int windowExtra = 0;
    HINSTANCE instance = nullptr;
    HBRUSH background = nullptr;
    ATOM atom = 0;
};

struct Window {
    HWND handle = nullptr;
    std::shared_ptr<WindowClass> windowClass;
    WNDPROC procedure = nullptr;
    HWND parent = nullptr;  // the parent of a child, the owner of a top-level window
    LONG_PTR id = 0;
    std::wstring text;
    DWORD style = 0;
    DWORD exStyle = 0;
    RECT rect{};  // relative to the parent's client area for a child, else the screen
    DWORD thread = 0;
    // The owner thread's queue, so that a post finds it without the thread registry;
    // gone once the thread has ended.
    std::weak_ptr<MessageQueue> queue;
    HINSTANCE instance = nullptr;
    LONG_PTR userData = 0;
    std::unordered_map<int, LONG_PTR> extra;
    std::vector<HWND> children;  // children and owned windows, in creation order
    bool destroying = false;
    std::shared_ptr<kiv_win32::detail::Surface> surface;  // what its device contexts draw into
};

struct WindowTable {
    std::mutex lock;
    std::unordered_map<std::uintptr_t, std::shared_ptr<Window>> windows;
    std::vector<HWND> topLevel;  // creation order
    std::unordered_map<std::wstring, std::shared_ptr<WindowClass>> classes;
    ATOM nextAtom = 0xC000;
    std::uintptr_t nextHandle = 0x10000;
    HWND focus = nullptr;
    std::unordered_map<DWORD, HWND> active;  // each thread's active top-level window
};

void DestroyThreadWindows(ThreadContext& thread);

WindowTable& Table() {
    static WindowTable* table = [] {
        kiv_win32::detail::onThreadEnd = DestroyThreadWindows;
        kiv_host::AddResetHook("win32.windows", [] {
            {
                WindowTable& t = Table();
                std::lock_guard g(t.lock);
                t.windows.clear();
                t.topLevel.clear();
                t.classes.clear();
                t.focus = nullptr;
                t.active.clear();
            }
            kiv_win32::detail::ForEachThread([](ThreadContext& thread) {
                std::shared_ptr<MessageQueue> queue;
                {
                    std::lock_guard g(thread.lock);
                    queue = thread.queue;
                }
                if (!queue) return;
                std::lock_guard g(queue->point->lock);
                queue->posted.clear();
                queue->quit = false;
            });
        });
        return new WindowTable;
    }();
    return *table;
}

// Called with the table lock held.
Window* Find(WindowTable& t, HWND handle) {
    auto it = t.windows.find(reinterpret_cast<std::uintptr_t>(handle));
    return it == t.windows.end() ? nullptr : it->second.get();
}

// Reads or changes a window under the table lock; false (and ERROR_INVALID_WINDOW_HANDLE)
// when there is no such window.
template <class F>
bool WithWindow(HWND handle, F&& f) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* w = Find(t, handle);
    if (!w) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return false;
    }
    f(*w);
    return true;
}

bool IsDescendant(WindowTable& t, HWND ancestor, HWND window) {
    for (Window* w = Find(t, window); w && w->parent && (w->style & WS_CHILD); w = Find(t, w->parent))
        if (w->parent == ancestor) return true;
    return false;
}

// The top-level window that holds `window` (itself when it is one). Called with the lock.
HWND TopLevelOf(WindowTable& t, HWND window) {
    Window* w = Find(t, window);
    while (w && (w->style & WS_CHILD)) w = Find(t, w->parent);
    return w ? w->handle : nullptr;
}

// Makes `window` (a top-level window of the calling thread, or null) its thread's active
// window. The window that loses activation hears WM_ACTIVATE (WA_INACTIVE, the new one)
// first, then the new one WM_ACTIVATE (WA_ACTIVE, the old one). Windows of other threads
// are never told: their threads keep their own active windows, as each thread's queue
// does on the device, so no thread waits here for another.
HWND ChangeActive(HWND window) {
    const DWORD thread = GetCurrentThreadId();
    HWND previous = nullptr;
    {
        WindowTable& t = Table();
        std::lock_guard g(t.lock);
        if (auto it = t.active.find(thread); it != t.active.end()) previous = it->second;
        if (previous == window) return previous;
        if (window) t.active[thread] = window;
        else t.active.erase(thread);
    }
    if (previous && IsWindow(previous))
        SendMessageW(previous, WM_ACTIVATE, WA_INACTIVE, reinterpret_cast<LPARAM>(window));
    if (window) SendMessageW(window, WM_ACTIVATE, WA_ACTIVE, reinterpret_cast<LPARAM>(previous));
    return previous;
}

// A window that stops being active (hidden or destroyed) hands activation to its owner
// when the owner can take it (visible, enabled, staying); else no window of the thread
// is active.
void HandOnActivation(HWND window) {
    HWND next = nullptr;
    {
        WindowTable& t = Table();
        std::lock_guard g(t.lock);
        auto it = t.active.find(GetCurrentThreadId());
        if (it == t.active.end() || it->second != window) return;
        Window* w = Find(t, window);
        Window* owner = w && !(w->style & WS_CHILD) ? Find(t, w->parent) : nullptr;
        if (owner && (owner->style & WS_VISIBLE) && !(owner->style & WS_DISABLED) && !owner->destroying &&
            owner->thread == w->thread)
            next = TopLevelOf(t, owner->handle);
    }
    ChangeActive(next);
}

std::shared_ptr<MessageQueue> QueueOf(ThreadContext& thread) {
    std::lock_guard g(thread.lock);
    if (!thread.queue) thread.queue = std::make_shared<MessageQueue>();
    return thread.queue;
}

// Another thread's queue, only when that thread has made one (by a message call or a
// window of its own): posting to a thread that has none fails, as on Windows, so a
// thread that takes messages must make its queue before it says it is ready.
std::shared_ptr<MessageQueue> QueueOfThread(DWORD id) {
    auto thread = kiv_win32::detail::FindThread(id);
    if (!thread) return nullptr;
    std::lock_guard g(thread->lock);
    return thread->queue;
}

void Enqueue(MessageQueue& queue, const MSG& message) {
    {
        std::lock_guard g(queue.point->lock);
        queue.posted.push_back(message);
        ++queue.version;
    }
    queue.point->changed.notify_all();
}

LRESULT CallProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    WNDPROC procedure = nullptr;
    if (!WithWindow(window, [&](Window& w) { procedure = w.procedure; }) || !procedure) return 0;
    return procedure(window, message, wParam, lParam);
}

// Runs the messages other threads sent to this one, answering each even when its
// procedure is cut short by a cancellation.
void DeliverSent(MessageQueue& queue) {
    for (;;) {
        std::shared_ptr<SentMessage> m;
        {
            std::lock_guard g(queue.point->lock);
            if (queue.sent.empty()) return;
            m = std::move(queue.sent.front());
            queue.sent.pop_front();
        }
        LRESULT result = 0;
        try {
            result = CallProcedure(m->window, m->message, m->wParam, m->lParam);
        } catch (...) {
            m->Complete(0);
            throw;
        }
        m->Complete(result);
    }
}

// Takes a sent message back out of its owner's queue; false when the owner has already
// taken it (or its queue is gone, which answered every message it held).
bool Withdraw(const std::weak_ptr<MessageQueue>& owner, const std::shared_ptr<SentMessage>& m) {
    auto queue = owner.lock();
    if (!queue) return false;
    std::lock_guard g(queue->point->lock);
    auto it = std::find(queue->sent.begin(), queue->sent.end(), m);
    if (it == queue->sent.end()) return false;
    queue->sent.erase(it);
    return true;
}

// Waits, whatever cancellation is pending, until the owner has answered a message it
// took. Messages sent to this thread meanwhile are answered, so that an owner that asks
// back does not wait forever; what they throw is dropped, as this thread is already
// leaving with an exception of its own.
void AwaitReply(MessageQueue& mine, SentMessage& m) {
    for (;;) {
        try {
            DeliverSent(mine);
        } catch (...) {
        }
        std::unique_lock held(mine.point->lock);
        if (m.done) return;
        if (mine.sent.empty()) mine.point->changed.wait(held);
    }
}

bool InRange(UINT message, UINT low, UINT high) {
    return (low == 0 && high == 0) || (message >= low && message <= high);
}

// Takes (or copies) the first posted message that passes the filter, dropping on the way
// the messages of windows that no longer exist.
bool TakePosted(MessageQueue& queue, MSG& out, HWND filter, UINT low, UINT high, bool remove, std::uint64_t& seen) {
    std::lock_guard g(queue.point->lock);
    seen = queue.version;
    WindowTable& t = Table();
    for (auto it = queue.posted.begin(); it != queue.posted.end();) {
        const bool threadOnly = filter == reinterpret_cast<HWND>(-1);
        bool alive = true, wanted = !filter || (threadOnly && !it->hwnd);
        if (it->hwnd) {
            std::lock_guard tg(t.lock);
            alive = Find(t, it->hwnd) != nullptr;
            if (alive && filter && !threadOnly) wanted = it->hwnd == filter || IsDescendant(t, filter, it->hwnd);
        }
        if (!alive) {
            it = queue.posted.erase(it);
            continue;
        }
        if (wanted && InRange(it->message, low, high)) {
            out = *it;
            if (remove) queue.posted.erase(it);
            return true;
        }
        ++it;
    }
    // WM_QUIT passes every filter, so that a loop reading a range of messages still ends.
    if (queue.quit) {
        out = MSG{nullptr, WM_QUIT, static_cast<WPARAM>(queue.quitCode), 0, GetTickCount(), {0, 0}};
        if (remove) queue.quit = false;
        return true;
    }
    return false;
}

std::vector<HWND> TopLevelWindows() {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    return t.topLevel;
}

// The window's children (WS_CHILD) and, when asked, the top-level windows it owns, marking
// the window as being destroyed so that no second DestroyWindow starts over.
std::vector<HWND> ChildrenOf(HWND handle, std::vector<HWND>* owned) {
    std::vector<HWND> children;
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* w = Find(t, handle);
    if (!w) return children;
    w->destroying = true;
    for (HWND h : w->children) {
        Window* c = Find(t, h);
        if (c && (c->style & WS_CHILD)) children.push_back(h);
        else if (c && owned) owned->push_back(h);
    }
    return children;
}

// WM_DESTROY goes down the whole tree, parent before children, while every window of it
// still exists; the children are freed only afterwards.
void SendDestroyDown(HWND handle) {
    NotifyWindowChange(handle, WindowChange::Destroyed);
    HandOnActivation(handle);
    const std::vector<HWND> children = ChildrenOf(handle, nullptr);
    SendMessageW(handle, WM_DESTROY, 0, 0);
    for (HWND child : children) SendDestroyDown(child);
}

// WM_NCDESTROY comes up the tree: each window hears it after its children are gone.
void FreeUp(HWND handle) {
    for (HWND child : ChildrenOf(handle, nullptr)) FreeUp(child);
    SendMessageW(handle, WM_NCDESTROY, 0, 0);
    WindowTable& t = Table();
    std::shared_ptr<Window> gone;  // released after the lock
    std::lock_guard g(t.lock);
    auto it = t.windows.find(reinterpret_cast<std::uintptr_t>(handle));
    if (it == t.windows.end()) return;
    gone = std::move(it->second);
    t.windows.erase(it);
    if (Window* parent = Find(t, gone->parent)) std::erase(parent->children, handle);
    std::erase(t.topLevel, handle);
    if (t.focus == handle) t.focus = nullptr;
    if (auto a = t.active.find(gone->thread); a != t.active.end() && a->second == handle) t.active.erase(a);
}

// The windows owned by the window or by any of its children.
void CollectOwned(HWND handle, std::vector<HWND>& owned) {
    for (HWND child : ChildrenOf(handle, &owned)) CollectOwned(child, owned);
}

// Destroys a window without the owner-thread check. Owned windows go whole before the
// owner hears WM_DESTROY; then the window's own tree hears WM_DESTROY top down and
// WM_NCDESTROY bottom up.
void Destroy(HWND handle) {
    std::vector<HWND> owned;
    CollectOwned(handle, owned);
    for (HWND h : owned) Destroy(h);
    SendDestroyDown(handle);
    FreeUp(handle);
}

void DestroyThreadWindows(ThreadContext& thread) {
    std::vector<HWND> mine;
    {
        WindowTable& t = Table();
        std::lock_guard g(t.lock);
        for (HWND h : t.topLevel)
            if (Window* w = Find(t, h); w && w->thread == thread.id) mine.push_back(h);
    }
    for (HWND h : mine) Destroy(h);
}

}  // namespace

void kiv_win32::SetWindowChangeHook(WindowChangeHook hook) {
    kiv_win32::detail::windowChangeHook.store(hook, std::memory_order_release);
}

void kiv_win32::SetMessageWaitHook(MessageWaitHook hook, DWORD intervalMs) {
    t_waitHook = hook;
    t_waitHookInterval = intervalMs;
}

// ---- classes ------------------------------------------------------------------------------------

ATOM RegisterClassW(const WNDCLASSW* windowClass) {
    if (!windowClass || !windowClass->lpszClassName || !*windowClass->lpszClassName || !windowClass->lpfnWndProc) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    std::wstring key = kiv_win32::detail::FoldName(windowClass->lpszClassName);
    if (t.classes.count(key)) {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    auto c = std::make_shared<WindowClass>();
    c->name = windowClass->lpszClassName;
    c->procedure = windowClass->lpfnWndProc;
    c->windowExtra = std::max(0, windowClass->cbWndExtra);
    c->instance = windowClass->hInstance;
    c->background = windowClass->hbrBackground;
    c->atom = t.nextAtom++;
    const ATOM atom = c->atom;
    t.classes.emplace(std::move(key), std::move(c));
    return atom;
}

BOOL UnregisterClassW(LPCWSTR className, HINSTANCE) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    if (!className || t.classes.erase(kiv_win32::detail::FoldName(className)) == 0) {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return FALSE;
    }
    return TRUE;
}

int GetClassNameW(HWND window, LPWSTR name, int maxCount) {
    std::wstring className;
    if (!WithWindow(window, [&](Window& w) { className = w.windowClass->name; }) || !name || maxCount <= 0) return 0;
    const int count = std::min<int>(static_cast<int>(className.size()), maxCount - 1);
    std::copy_n(className.begin(), count, name);
    name[count] = L'\0';
    return count;
}

// ---- windows ------------------------------------------------------------------------------------

HWND CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) {
    if ((style & WS_CHILD) && !parent) {
        SetLastError(ERROR_TLW_WITH_WSCHILD);
        return nullptr;
    }
    const std::shared_ptr<MessageQueue> queue = QueueOf(kiv_win32::detail::CurrentThread());
    auto w = std::make_shared<Window>();
    {
        WindowTable& t = Table();
        std::lock_guard g(t.lock);
        auto c = className ? t.classes.find(kiv_win32::detail::FoldName(className)) : t.classes.end();
        if (c == t.classes.end()) {
            SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
            return nullptr;
        }
        Window* parentWindow = parent ? Find(t, parent) : nullptr;
        if (parent && !parentWindow) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return nullptr;
        }
        auto value = [](int v) { return v == CW_USEDEFAULT ? 0 : v; };
        w->handle = reinterpret_cast<HWND>(t.nextHandle);
        t.nextHandle += 4;
        w->windowClass = c->second;
        w->procedure = c->second->procedure;
        w->parent = parent;
        w->id = (style & WS_CHILD) ? reinterpret_cast<LONG_PTR>(menu) : 0;
        w->style = style;
        w->exStyle = exStyle;
        w->rect = RECT{value(x), value(y), value(x) + value(width), value(y) + value(height)};
        w->thread = GetCurrentThreadId();
        w->queue = queue;
        w->instance = instance;
        t.windows.emplace(reinterpret_cast<std::uintptr_t>(w->handle), w);
        if (parentWindow) parentWindow->children.push_back(w->handle);
        if (!(style & WS_CHILD)) t.topLevel.push_back(w->handle);
    }
    CREATESTRUCTW create{parameter, instance, menu, parent, height, width, y, x, static_cast<LONG>(style),
                         windowName, className, exStyle};
    const auto createArgument = reinterpret_cast<LPARAM>(&create);
    if (!SendMessageW(w->handle, WM_NCCREATE, 0, createArgument) ||
        SendMessageW(w->handle, WM_CREATE, 0, createArgument) == -1) {
        Destroy(w->handle);
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    // A top-level window made visible is shown as ShowWindow shows it: it becomes active.
    if ((style & (WS_VISIBLE | WS_CHILD | WS_DISABLED)) == WS_VISIBLE && IsWindow(w->handle)) ChangeActive(w->handle);
    return w->handle;
}

BOOL DestroyWindow(HWND window) {
    DWORD owner = 0;
    bool destroying = false;
    if (!WithWindow(window, [&](Window& w) {
            owner = w.thread;
            destroying = w.destroying;
        }))
        return FALSE;
    if (owner != GetCurrentThreadId()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (!destroying) Destroy(window);
    return TRUE;
}

BOOL IsWindow(HWND window) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    return window && Find(t, window) ? TRUE : FALSE;
}

BOOL IsChild(HWND parent, HWND window) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    return IsDescendant(t, parent, window) ? TRUE : FALSE;
}

HWND FindWindowW(LPCWSTR className, LPCWSTR windowName) {
    const std::wstring wantedClass = className ? kiv_win32::detail::FoldName(className) : std::wstring();
    const std::wstring wantedTitle = windowName ? kiv_win32::detail::FoldName(windowName) : std::wstring();
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    for (HWND h : t.topLevel) {
        Window* w = Find(t, h);
        if (!w) continue;
        if (className && kiv_win32::detail::FoldName(w->windowClass->name) != wantedClass) continue;
        if (windowName && kiv_win32::detail::FoldName(w->text) != wantedTitle) continue;
        return h;
    }
    return nullptr;
}

HWND GetParent(HWND window) {
    HWND parent = nullptr;
    WithWindow(window, [&](Window& w) {
        if (w.style & (WS_CHILD | WS_POPUP)) parent = w.parent;
    });
    return parent;
}

HWND GetDlgItem(HWND dialog, int id) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* d = Find(t, dialog);
    if (!d) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    for (HWND h : d->children)
        if (Window* c = Find(t, h); c && (c->style & WS_CHILD) && static_cast<int>(c->id) == id) return h;
    SetLastError(ERROR_CONTROL_ID_NOT_FOUND);
    return nullptr;
}

HWND GetWindow(HWND window, UINT command) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* w = Find(t, window);
    if (!w) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    auto childrenOf = [&](Window* p) {
        std::vector<HWND> list;
        for (HWND h : p->children)
            if (Window* c = Find(t, h); c && (c->style & WS_CHILD)) list.push_back(h);
        return list;
    };
    switch (command) {
        case GW_CHILD: {
            auto list = childrenOf(w);
            return list.empty() ? nullptr : list.front();
        }
        case GW_OWNER: return (w->style & WS_CHILD) ? nullptr : w->parent;
        case GW_HWNDNEXT:
        case GW_HWNDPREV: {
            Window* p = (w->style & WS_CHILD) ? Find(t, w->parent) : nullptr;
            if (!p) return nullptr;
            auto list = childrenOf(p);
            auto it = std::find(list.begin(), list.end(), window);
            if (it == list.end()) return nullptr;
            if (command == GW_HWNDNEXT) return ++it == list.end() ? nullptr : *it;
            return it == list.begin() ? nullptr : *--it;
        }
        default: return nullptr;
    }
}

BOOL EnumWindows(WNDENUMPROC visit, LPARAM argument) {
    if (!visit) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    for (HWND h : TopLevelWindows())
        if (IsWindow(h) && !visit(h, argument)) return FALSE;
    return TRUE;
}

int GetDlgCtrlID(HWND window) {
    int id = 0;
    WithWindow(window, [&](Window& w) { id = (w.style & WS_CHILD) ? static_cast<int>(w.id) : 0; });
    return id;
}

DWORD GetWindowThreadProcessId(HWND window, LPDWORD processId) {
    DWORD thread = 0;
    if (WithWindow(window, [&](Window& w) { thread = w.thread; }) && processId)
        *processId = static_cast<DWORD>(::getpid());
    return thread;
}

BOOL SetWindowTextW(HWND window, LPCWSTR text) {
    if (!IsWindow(window)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    return SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) ? TRUE : FALSE;
}

int GetWindowTextW(HWND window, LPWSTR text, int maxCount) {
    if (!text || maxCount <= 0) return 0;
    text[0] = L'\0';
    return static_cast<int>(SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(maxCount), reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthW(HWND window) { return static_cast<int>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)); }

BOOL EnableWindow(HWND window, BOOL enable) {
    bool wasDisabled = false, changed = false;
    WithWindow(window, [&](Window& w) {
        wasDisabled = (w.style & WS_DISABLED) != 0;
        changed = wasDisabled == (enable != FALSE);
        if (enable) w.style &= ~WS_DISABLED;
        else w.style |= WS_DISABLED;
    });
    if (changed) SendMessageW(window, WM_ENABLE, enable ? TRUE : FALSE, 0);
    return wasDisabled ? TRUE : FALSE;
}

BOOL IsWindowEnabled(HWND window) {
    bool enabled = false;
    WithWindow(window, [&](Window& w) { enabled = (w.style & WS_DISABLED) == 0; });
    return enabled ? TRUE : FALSE;
}

BOOL ShowWindow(HWND window, int command) {
    bool wasVisible = false, changed = false;
    const bool show = command != SW_HIDE;
    WithWindow(window, [&](Window& w) {
        wasVisible = (w.style & WS_VISIBLE) != 0;
        changed = wasVisible != show;
        if (show) w.style |= WS_VISIBLE;
        else w.style &= ~WS_VISIBLE;
    });
    if (changed) SendMessageW(window, WM_SHOWWINDOW, show ? TRUE : FALSE, 0);
    if (changed) NotifyWindowChange(window, WindowChange::Placement);
    // Showing a top-level window of this thread activates it, unless the command says not
    // to; hiding the active one hands activation on.
    bool topLevel = false, mine = false, enabled = false;
    WithWindow(window, [&](Window& w) {
        topLevel = !(w.style & WS_CHILD);
        mine = w.thread == GetCurrentThreadId();
        enabled = !(w.style & WS_DISABLED);
    });
    // SW_SHOW and SW_HIDE do nothing to a window already in that state; SW_SHOWNORMAL and
    // SW_RESTORE activate it again.
    if (topLevel && mine) {
        if (!show && wasVisible) HandOnActivation(window);
        else if (show && enabled &&
                 ((command == SW_SHOW && !wasVisible) || command == SW_SHOWNORMAL || command == SW_RESTORE))
            ChangeActive(window);
    }
    return wasVisible ? TRUE : FALSE;
}

BOOL IsWindowVisible(HWND window) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* w = Find(t, window);
    for (; w; w = (w->style & WS_CHILD) ? Find(t, w->parent) : nullptr) {
        if (!(w->style & WS_VISIBLE)) return FALSE;
        if (!(w->style & WS_CHILD)) return TRUE;
    }
    return FALSE;
}

HWND SetFocus(HWND window) {
    // Focus inside a top-level window of this thread that is not active activates it first.
    HWND top = nullptr;
    {
        WindowTable& t = Table();
        std::lock_guard g(t.lock);
        if (Window* w = Find(t, window); w && w->thread == GetCurrentThreadId()) {
            top = TopLevelOf(t, window);
            auto a = t.active.find(w->thread);
            if (a != t.active.end() && a->second == top) top = nullptr;
        }
    }
    if (top) ChangeActive(top);
    HWND previous = nullptr;
    {
        WindowTable& t = Table();
        std::lock_guard g(t.lock);
        if (window && !Find(t, window)) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return nullptr;
        }
        previous = t.focus;
        t.focus = window;
    }
    if (previous == window) return previous;
    if (previous) SendMessageW(previous, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), 0);
    if (window) SendMessageW(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(previous), 0);
    return previous;
}

namespace {
// The top-level window holding `window`, and whether the calling thread owns `window`;
// false when `window` is no window.
bool FindTopLevel(HWND window, HWND& top, bool& mine) {
    return WithWindow(window, [&](Window& w) {
        mine = w.thread == GetCurrentThreadId();
        top = TopLevelOf(Table(), window);
    });
}
}  // namespace

HWND SetActiveWindow(HWND window) {
    bool mine = false;
    HWND top = nullptr;
    if (!FindTopLevel(window, top, mine)) return nullptr;
    if (!mine) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return ChangeActive(top);
}

BOOL SetForegroundWindow(HWND window) {
    bool mine = false;
    HWND top = nullptr;
    if (!FindTopLevel(window, top, mine)) return FALSE;
    if (mine) ChangeActive(top);
    return TRUE;
}

HWND GetActiveWindow() {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    auto it = t.active.find(GetCurrentThreadId());
    return it == t.active.end() ? nullptr : it->second;
}

HWND GetFocus() {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    return t.focus;
}

namespace {
// The screen position of a window's client origin.
POINT Origin(WindowTable& t, Window* w) {
    POINT p{0, 0};
    for (; w; w = (w->style & WS_CHILD) ? Find(t, w->parent) : nullptr) {
        p.x += w->rect.left;
        p.y += w->rect.top;
    }
    return p;
}
}  // namespace

BOOL GetWindowRect(HWND window, LPRECT rect) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* w = Find(t, window);
    if (!w || !rect) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    const POINT o = Origin(t, w);
    *rect = RECT{o.x, o.y, o.x + w->rect.right - w->rect.left, o.y + w->rect.bottom - w->rect.top};
    return TRUE;
}

BOOL GetClientRect(HWND window, LPRECT rect) {
    return WithWindow(window, [&](Window& w) {
               if (rect) *rect = RECT{0, 0, w.rect.right - w.rect.left, w.rect.bottom - w.rect.top};
           }) && rect
               ? TRUE
               : FALSE;
}

std::shared_ptr<kiv_win32::detail::Surface> kiv_win32::detail::WindowSurface(HWND window) {
    std::shared_ptr<Surface> surface;
    WithWindow(window, [&](Window& w) {
        const int width = std::max<LONG>(1, w.rect.right - w.rect.left);
        const int height = std::max<LONG>(1, w.rect.bottom - w.rect.top);
        if (w.surface && w.surface->width == width && w.surface->height == height) {
            surface = w.surface;
            return;
        }
        // A resized window keeps what it showed at its top-left and starts white elsewhere.
        surface = MakeSurface(width, height, 32, true);
        if (!surface) return;
        surface->FillSpan(0, 0, width, 0xFFFFFF);
        for (int y = 1; y < height; ++y) std::memcpy(surface->Row(y), surface->Row(0), surface->stride);
        if (w.surface) {
            const int keepWidth = std::min(width, w.surface->width);
            for (int y = 0; y < std::min(height, w.surface->height); ++y)
                std::memcpy(surface->Row(y), w.surface->Row(y), static_cast<size_t>(keepWidth) * 4);
        }
        w.surface = surface;
    });
    return surface;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL) {
    if (!WithWindow(window, [&](Window& w) { w.rect = RECT{x, y, x + width, y + height}; })) return FALSE;
    SendMessageW(window, WM_MOVE, 0, MAKELPARAM(x, y));
    SendMessageW(window, WM_SIZE, SIZE_RESTORED, MAKELPARAM(width, height));
    NotifyWindowChange(window, WindowChange::Placement);
    return TRUE;
}

namespace {
// Moves `point` by the window's screen origin, times `direction` (+1 or -1).
BOOL OffsetByOrigin(HWND window, LPPOINT point, LONG direction) {
    WindowTable& t = Table();
    std::lock_guard g(t.lock);
    Window* w = Find(t, window);
    if (!w || !point) return FALSE;
    const POINT o = Origin(t, w);
    point->x += direction * o.x;
    point->y += direction * o.y;
    return TRUE;
}
}  // namespace

BOOL ClientToScreen(HWND window, LPPOINT point) { return OffsetByOrigin(window, point, 1); }
BOOL ScreenToClient(HWND window, LPPOINT point) { return OffsetByOrigin(window, point, -1); }

LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    LONG_PTR previous = 0;
    bool known = true;
    if (!WithWindow(window, [&](Window& w) {
            switch (index) {
                case GWL_WNDPROC:
                    previous = reinterpret_cast<LONG_PTR>(w.procedure);
                    w.procedure = reinterpret_cast<WNDPROC>(value);
                    break;
                case GWL_STYLE: previous = static_cast<LONG>(w.style); w.style = static_cast<DWORD>(value); break;
                case GWL_EXSTYLE: previous = static_cast<LONG>(w.exStyle); w.exStyle = static_cast<DWORD>(value); break;
                case GWL_ID: previous = w.id; w.id = value; break;
                case GWL_USERDATA: previous = w.userData; w.userData = value; break;
                default:
                    if (index < 0 || index + 4 > w.windowClass->windowExtra) {
                        known = false;
                        break;
                    }
                    previous = w.extra[index];
                    w.extra[index] = value;
            }
        }))
        return 0;
    if (!known) {
        SetLastError(ERROR_INVALID_INDEX);
        return 0;
    }
    SetLastError(ERROR_SUCCESS);  // so that a previous value of 0 can be told from a failure
    return previous;
}

LONG_PTR GetWindowLongPtrW(HWND window, int index) {
    LONG_PTR value = 0;
    bool known = true;
    if (!WithWindow(window, [&](Window& w) {
            switch (index) {
                case GWL_WNDPROC: value = reinterpret_cast<LONG_PTR>(w.procedure); break;
                case GWL_STYLE: value = static_cast<LONG>(w.style); break;
                case GWL_EXSTYLE: value = static_cast<LONG>(w.exStyle); break;
                case GWL_ID: value = w.id; break;
                case GWL_USERDATA: value = w.userData; break;
                case GWL_HINSTANCE: value = reinterpret_cast<LONG_PTR>(w.instance); break;
                case GWL_HWNDPARENT: value = reinterpret_cast<LONG_PTR>(w.parent); break;
                default:
                    if (index < 0 || index + 4 > w.windowClass->windowExtra) {
                        known = false;
                        break;
                    }
                    if (auto it = w.extra.find(index); it != w.extra.end()) value = it->second;
            }
        }))
        return 0;
    if (!known) SetLastError(ERROR_INVALID_INDEX);
    return value;
}

namespace {
bool HoldsPointerOnly(int index) {
    return sizeof(LONG_PTR) > sizeof(LONG) &&
           (index == GWLP_WNDPROC || index == GWLP_HINSTANCE || index == GWLP_HWNDPARENT);
}
}  // namespace

LONG SetWindowLongW(HWND window, int index, LONG value) {
    if (HoldsPointerOnly(index)) {
        SetLastError(ERROR_INVALID_INDEX);
        return 0;
    }
    return static_cast<LONG>(SetWindowLongPtrW(window, index, value));
}

LONG GetWindowLongW(HWND window, int index) {
    if (HoldsPointerOnly(index)) {
        SetLastError(ERROR_INVALID_INDEX);
        return 0;
    }
    return static_cast<LONG>(GetWindowLongPtrW(window, index));
}

LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return procedure ? procedure(window, message, wParam, lParam) : 0;
}

// ---- messages ------------------------------------------------------------------------------------

// Messages from WM_USER up to the registered range mean something to one window class
// only: a broadcast of one reports success and reaches no window.
namespace {
bool Broadcastable(UINT message) { return message < WM_USER || message >= 0xC000; }
}  // namespace

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (window == HWND_BROADCAST) {
        if (Broadcastable(message))
            for (HWND h : TopLevelWindows()) PostMessageW(h, message, wParam, lParam);
        return TRUE;
    }
    if (!window) return PostThreadMessageW(GetCurrentThreadId(), message, wParam, lParam);
    std::weak_ptr<MessageQueue> owner;
    if (!WithWindow(window, [&](Window& w) { owner = w.queue; })) return FALSE;
    auto queue = owner.lock();
    if (!queue) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);  // its thread has ended
        return FALSE;
    }
    Enqueue(*queue, MSG{window, message, wParam, lParam, GetTickCount(), {0, 0}});
    return TRUE;
}

int kiv_win32::PostMessages(const MSG* messages, int count) {
    int posted = 0;
    bool refused = false;
    std::vector<std::uint8_t> alive(static_cast<std::size_t>(std::max(count, 0)));
    const DWORD now = GetTickCount();
    for (int first = 0; first < count;) {
        const HWND window = messages[first].hwnd;
        if (!window || window == HWND_BROADCAST) {
            const MSG& m = messages[first++];
            if (PostMessageW(m.hwnd, m.message, m.wParam, m.lParam)) ++posted;
            continue;
        }
        // The run of messages for the windows of one thread, looked up under one lock of
        // the window table; windows that are gone stay in the run and are left out.
        int end = first;
        bool owned = false;
        DWORD owner = 0;
        std::weak_ptr<MessageQueue> target;
        {
            WindowTable& t = Table();
            std::lock_guard g(t.lock);
            for (; end < count; ++end) {
                const HWND h = messages[end].hwnd;
                if (!h || h == HWND_BROADCAST) break;
                const Window* w = Find(t, h);
                alive[end] = w != nullptr;
                if (!w) continue;
                if (!owned) {
                    owned = true;
                    owner = w->thread;
                    target = w->queue;
                } else if (w->thread != owner) {
                    break;
                }
            }
        }
        int queued = 0;
        if (auto queue = target.lock()) {
            {
                std::lock_guard g(queue->point->lock);
                for (int i = first; i < end; ++i) {
                    if (!alive[i]) continue;
                    const MSG& m = messages[i];
                    queue->posted.push_back(MSG{m.hwnd, m.message, m.wParam, m.lParam, now, {0, 0}});
                    ++queued;
                }
                queue->version += static_cast<std::uint64_t>(queued);
            }
            if (queued > 0) queue->point->changed.notify_all();
        }
        posted += queued;
        refused = refused || queued < end - first;
        first = end;
    }
    if (refused) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return posted;
}

BOOL PostThreadMessageW(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
    // The calling thread gets its queue from the call itself; another thread must have one.
    auto queue = threadId == GetCurrentThreadId() ? QueueOf(kiv_win32::detail::CurrentThread())
                                                  : QueueOfThread(threadId);
    if (!queue) {
        SetLastError(ERROR_INVALID_THREAD_ID);
        return FALSE;
    }
    Enqueue(*queue, MSG{nullptr, message, wParam, lParam, GetTickCount(), {0, 0}});
    return TRUE;
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (window == HWND_BROADCAST) {
        if (Broadcastable(message))
            for (HWND h : TopLevelWindows()) SendMessageW(h, message, wParam, lParam);
        return 0;
    }
    DWORD owner = 0;
    if (!WithWindow(window, [&](Window& w) { owner = w.thread; })) return 0;
    ThreadContext& self = kiv_win32::detail::CurrentThread();
    if (owner == self.id) return CallProcedure(window, message, wParam, lParam);

    auto mine = QueueOf(self);
    auto m = std::make_shared<SentMessage>(SentMessage{window, message, wParam, lParam, mine->point});
    std::weak_ptr<MessageQueue> weakTarget;
    {
        auto target = QueueOfThread(owner);
        if (!target) return 0;
        weakTarget = target;
        {
            std::lock_guard g(target->point->lock);
            target->sent.push_back(m);
            ++target->version;
        }
        target->point->changed.notify_all();
    }  // not held while waiting: a queue whose thread ends answers its senders as it goes
    try {
        for (;;) {
            DeliverSent(*mine);
            std::unique_lock held(mine->point->lock);
            BlockUntil(mine->point, held, INFINITE, [&] { return m->done || !mine->sent.empty(); });
            if (m->done) return m->result;
        }
    } catch (...) {
        // The message's arguments may point into this stack, which is about to go: the
        // owner must either never see the message or have finished with it.
        if (!Withdraw(weakTarget, m)) AwaitReply(*mine, *m);
        throw;
    }
}

BOOL PeekMessageW(LPMSG message, HWND window, UINT filterMin, UINT filterMax, UINT removeMessage) {
    if (!message) return FALSE;
    auto queue = QueueOf(kiv_win32::detail::CurrentThread());
    DeliverSent(*queue);
    std::uint64_t seen = 0;
    if (TakePosted(*queue, *message, window, filterMin, filterMax, (removeMessage & PM_REMOVE) != 0, seen)) return TRUE;
    if (!t_waitHook) return FALSE;
    // The display's turn may queue input; the caller sees it at once.
    RunWaitHook();
    DeliverSent(*queue);
    return TakePosted(*queue, *message, window, filterMin, filterMax, (removeMessage & PM_REMOVE) != 0, seen) ? TRUE
                                                                                                           : FALSE;
}

BOOL GetMessageW(LPMSG message, HWND window, UINT filterMin, UINT filterMax) {
    if (!message || (window && window != reinterpret_cast<HWND>(-1) && !IsWindow(window))) {
        SetLastError(message ? ERROR_INVALID_WINDOW_HANDLE : ERROR_INVALID_PARAMETER);
        return -1;
    }
    auto queue = QueueOf(kiv_win32::detail::CurrentThread());
    for (;;) {
        DeliverSent(*queue);
        std::uint64_t seen = 0;
        if (TakePosted(*queue, *message, window, filterMin, filterMax, true, seen))
            return message->message == WM_QUIT ? FALSE : TRUE;
        DWORD wait = INFINITE;
        if (t_waitHook && !t_inWaitHook) {
            // Input the display queues during its turn changes the version: no wait then.
            RunWaitHook();
            wait = t_waitHookInterval;
        }
        std::unique_lock held(queue->point->lock);
        BlockUntil(queue->point, held, wait, [&] { return queue->version != seen; });
    }
}

LRESULT DispatchMessageW(const MSG* message) {
    if (!message || !message->hwnd) return 0;
    return CallProcedure(message->hwnd, message->message, message->wParam, message->lParam);
}

void PostQuitMessage(int exitCode) {
    auto queue = QueueOf(kiv_win32::detail::CurrentThread());
    {
        std::lock_guard g(queue->point->lock);
        queue->quit = true;
        queue->quitCode = exitCode;
        ++queue->version;
    }
    queue->point->changed.notify_all();
}

LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCCREATE: {
            const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            const std::wstring text = create && create->lpszName ? create->lpszName : L"";
            WithWindow(window, [&](Window& w) { w.text = text; });
            return TRUE;
        }
        case WM_SETTEXT: {
            const std::wstring text = lParam ? reinterpret_cast<LPCWSTR>(lParam) : L"";
            return WithWindow(window, [&](Window& w) { w.text = text; }) ? TRUE : FALSE;
        }
        case WM_GETTEXT: {
            auto* buffer = reinterpret_cast<LPWSTR>(lParam);
            if (!buffer || wParam == 0) return 0;
            int count = 0;
            WithWindow(window, [&](Window& w) {
                count = static_cast<int>(std::min<size_t>(w.text.size(), wParam - 1));
                std::copy_n(w.text.begin(), count, buffer);
            });
            buffer[count] = L'\0';
            return count;
        }
        case WM_GETTEXTLENGTH: {
            LRESULT length = 0;
            WithWindow(window, [&](Window& w) { length = static_cast<LRESULT>(w.text.size()); });
            return length;
        }
        case WM_CLOSE: DestroyWindow(window); return 0;
        default: return 0;
    }
}
