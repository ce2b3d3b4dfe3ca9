// Desktop input turned into the controller's: keys through keybd_event, as the device's
// keyboard driver delivers them to the focused window, typed characters through the keys
// that type them, and taps as mouse messages in the tapped window's client coordinates.
// Everything goes through the message queues; nothing is handled here.
#pragma once

#include "platform/win32/Win32.h"

namespace kiv_display {

// A controller key pressed or released (a held key repeats by pressing again).
void FeedKey(BYTE virtualKey, bool down);

// A character typed on the desktop's keyboard. Digits, space, and letters in the case the
// Shift and Caps Lock state gives them, are pressed and released through their keys, so
// the focused window sees WM_KEYDOWN, WM_CHAR (from TranslateMessage) and WM_KEYUP as the
// controller's keypad sends them; any other character arrives as WM_CHAR alone. The key
// state is read, and the WM_CHAR of a key posted, when the key message is translated:
// a caller lets the queue be read before it feeds the next key or character, or the
// state and the order would not be the ones typed.
void FeedCharacter(char32_t ch);

// The deepest visible child of the top-level window `top` under `point` (client
// coordinates of `top`), or `top` itself; `local` receives the point in that window's
// client coordinates.
HWND WindowAt(HWND top, POINT point, POINT& local);

// The main mouse button over top-level windows. A press goes to the window under the
// point, which keeps the mouse until the release: moves and the release go to it, in its
// own client coordinates, wherever the pointer is. Presses on a disabled window, or in a
// disabled top-level window (one a modal dialog has disabled), are dropped.
class CMouseFeed {
public:
    void Press(HWND top, POINT point);
    void Move(HWND top, POINT point);
    void Release(HWND top, POINT point);
    HWND Captured() const { return captured_; }

private:
    static LPARAM LocalTo(HWND top, HWND target, POINT point);
    HWND captured_ = nullptr;
};

}  // namespace kiv_display
