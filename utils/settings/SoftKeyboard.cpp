// The soft keyboard's character modes: the default mode of each kind of entry field, and
// switching the keyboard window (class "Keybord Window") between numbers, upper-case and
// lower-case letters through its WM_COMMAND protocol and the Caps Lock toggle.
#include "platform/win32/Win32.h"
#include "utils/settings/SettingsStore.h"

namespace {

constexpr WPARAM kQueryAlphaMode = 7;  // answers non-zero when letters are on
constexpr WPARAM kSetAlphaMode = 8;    // lParam 1 letters on, 0 off

bool CapsLockOn() { return (GetKeyState(VK_CAPITAL) & 1) != 0; }

void ToggleCapsLock() {
    keybd_event(VK_CAPITAL, 0, 0, 0);
    keybd_event(VK_CAPITAL, 0, KEYEVENTF_KEYUP, 0);
}

}  // namespace

void CtrlChar(CHARACTOR_TYPE type) {
    const HWND keyboard = FindWindowW(L"Keybord Window", nullptr);
    if (keyboard == nullptr) return;
    const bool alphaOn = SendMessageW(keyboard, WM_COMMAND, kQueryAlphaMode, 0) != 0;
    switch (type) {
        case eCharNumeric:
            if (alphaOn) SendMessageW(keyboard, WM_COMMAND, kSetAlphaMode, 0);
            break;
        case eCharUpper:
        case eCharLower:
            if (!alphaOn) SendMessageW(keyboard, WM_COMMAND, kSetAlphaMode, 1);
            // Upper case wants Caps Lock on, lower case wants it off.
            if (CapsLockOn() != (type == eCharUpper)) ToggleCapsLock();
            break;
        default:
            break;
    }
}
