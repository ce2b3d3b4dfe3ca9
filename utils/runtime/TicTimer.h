// The tick timer: one background thread per process that posts WM_TIC_TIMER to the
// windows registered with SetTicTimer, at multiples of its resolution. The messages
// come from this thread, so they keep arriving while a window's own thread is busy.
#pragma once

#include "platform/win32/Win32.h"

// wParam is the timer identifier, lParam 0.
constexpr UINT WM_TIC_TIMER = 8524;

// Starts the thread with a resolution in milliseconds (at least 10). Non-zero when the
// thread runs; a second call while it runs keeps the first resolution.
BOOL CreateTicTimerThread(UINT resolution);
// Non-zero when a running thread was stopped.
BOOL DestroyTicTimerThread();
// The period is `elapse` rounded to the nearest whole number of ticks. Setting a timer
// again replaces it. From any thread; 0 when no timer thread runs, the window does not
// exist, or all 100 slots are taken.
BOOL SetTicTimer(HWND window, UINT id, UINT elapse);
BOOL KillTicTimer(HWND window, UINT id);
