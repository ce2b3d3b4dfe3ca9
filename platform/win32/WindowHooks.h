// What a live display attached to the host needs from the windows family: word that a
// window's pixels or placement changed, and a turn on the GUI thread while that thread
// waits for messages. Not a Win32 API: on the device the screen was simply there.
// Without a display both hooks are null and each call site costs one load.
#pragma once

#include <atomic>

#include "platform/win32/Win32Types.h"

namespace kiv_win32 {

enum class WindowChange {
    Pixels,       // a device context of the window was released: it may have drawn
    Placement,    // shown, hidden or moved
    Destroyed,    // about to go; the handle is still valid during the call
    Invalidated,  // the window asked to be painted again (CWnd::Invalidate)
};

// Called on the thread that made the change, with no lock of the windows family held.
using WindowChangeHook = void (*)(HWND window, WindowChange change);
void SetWindowChangeHook(WindowChangeHook hook);

// Called on the thread that installed it, each time GetMessageW is about to wait and
// each time PeekMessageW finds nothing; while it is installed, GetMessageW waits at most
// `intervalMs` before it calls the hook again. Null removes it.
using MessageWaitHook = void (*)();
void SetMessageWaitHook(MessageWaitHook hook, DWORD intervalMs);

namespace detail {
inline std::atomic<WindowChangeHook> windowChangeHook{nullptr};
inline void NotifyWindowChange(HWND window, WindowChange change) {
    if (WindowChangeHook hook = windowChangeHook.load(std::memory_order_acquire)) hook(window, change);
}
}  // namespace detail

}  // namespace kiv_win32
