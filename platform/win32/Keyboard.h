// The keyboard state of the Win32 subset: virtual-key codes, GetKeyState, keybd_event
// (which also delivers the key to the focused window) and TranslateMessage.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"
#include "platform/win32/Windows.h"

using SHORT = std::int16_t;

constexpr BYTE VK_LBUTTON = 0x01;
constexpr BYTE VK_BACK = 0x08;
constexpr BYTE VK_TAB = 0x09;
constexpr BYTE VK_RETURN = 0x0D;
constexpr BYTE VK_SHIFT = 0x10;
constexpr BYTE VK_CONTROL = 0x11;
constexpr BYTE VK_MENU = 0x12;
constexpr BYTE VK_CAPITAL = 0x14;
constexpr BYTE VK_ESCAPE = 0x1B;
constexpr BYTE VK_SPACE = 0x20;
constexpr BYTE VK_PRIOR = 0x21;
constexpr BYTE VK_NEXT = 0x22;
constexpr BYTE VK_END = 0x23;
constexpr BYTE VK_HOME = 0x24;
constexpr BYTE VK_LEFT = 0x25;
constexpr BYTE VK_UP = 0x26;
constexpr BYTE VK_RIGHT = 0x27;
constexpr BYTE VK_DOWN = 0x28;
constexpr BYTE VK_INSERT = 0x2D;
constexpr BYTE VK_DELETE = 0x2E;
constexpr BYTE VK_F1 = 0x70;
constexpr BYTE VK_F2 = 0x71;
constexpr BYTE VK_F3 = 0x72;
constexpr BYTE VK_F4 = 0x73;
constexpr BYTE VK_F5 = 0x74;
constexpr BYTE VK_F6 = 0x75;
constexpr BYTE VK_F7 = 0x76;
constexpr BYTE VK_F8 = 0x77;
constexpr BYTE VK_F9 = 0x78;
constexpr BYTE VK_F10 = 0x79;
constexpr BYTE VK_F11 = 0x7A;
constexpr BYTE VK_F12 = 0x7B;
constexpr BYTE VK_F24 = 0x87;  // the controller's alpha key
constexpr BYTE VK_NUMLOCK = 0x90;

constexpr DWORD KEYEVENTF_EXTENDEDKEY = 0x0001;
constexpr DWORD KEYEVENTF_KEYUP = 0x0002;

// High bit: the key is down. Low bit: the key's toggle, which flips on every press (the
// Caps Lock state for VK_CAPITAL).
SHORT GetKeyState(int virtualKey);
SHORT GetAsyncKeyState(int virtualKey);
// A key press or release: updates the key state and posts WM_KEYDOWN or WM_KEYUP (with
// the device's repeat, scan-code and transition bits) to the window with the focus;
// without a focused window only the state changes.
void keybd_event(BYTE virtualKey, BYTE scanCode, DWORD flags, ULONG_PTR extraInfo);
// Posts WM_CHAR after the WM_KEYDOWN of a key that types a character (letters by Shift
// and Caps Lock, digits, space, Enter, Backspace, Tab, Escape). Non-zero for key messages.
BOOL TranslateMessage(const MSG* message);
#endif  // _WIN32
