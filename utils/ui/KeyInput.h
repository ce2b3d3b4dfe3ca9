// The on-screen keyboard module: whether a tapped control wants the soft keyboard, and
// the keyboard's window (class "Keybord Window"), which answers WM_COMMAND 7 with its
// alpha state and takes WM_COMMAND 8 to set it.
#pragma once

#include "platform/win32/Controls.h"
#include "platform/win32/Win32.h"

constexpr const wchar_t* kSoftKeyboardClass = L"Keybord Window";
constexpr WPARAM kSoftKeyboardQueryAlpha = 7;
constexpr WPARAM kSoftKeyboardSetAlpha = 8;

// `message` is the tap (WM_LBUTTONUP) with the tapped window in its hwnd field. An edit
// field that takes typing (enabled, not read-only) wants the keyboard: its window is
// shown and the result is TRUE. Anything else, or no keyboard window, gives FALSE.
BOOL showKeyboardIfNeeded(HWND dialog, const MSG* message);

namespace kiv_ui {
// Makes the keyboard's window (hidden, top-level, titled "SIP") when there is none and
// returns it; the alpha state starts off.
HWND CreateSoftKeyboardWindow();
}  // namespace kiv_ui
