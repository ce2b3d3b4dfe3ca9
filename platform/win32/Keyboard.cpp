// The process's keyboard state and the key messages it produces. The state is a table
// of 256 bytes (bit 7 down, bit 0 toggled) as on the device.
#include "platform/win32/Keyboard.h"

#include <mutex>

#include "platform/host/Host.h"

namespace {

struct KeyState {
    std::mutex lock;
    BYTE keys[256] = {};
};

KeyState& Keys() {
    static KeyState* state = [] {
        kiv_host::AddResetHook("win32.keyboard", [] {
            std::lock_guard g(Keys().lock);
            std::fill(std::begin(Keys().keys), std::end(Keys().keys), BYTE{0});
        });
        return new KeyState;
    }();
    return *state;
}

BYTE StateOf(int virtualKey) {
    if (virtualKey < 0 || virtualKey > 255) return 0;
    std::lock_guard g(Keys().lock);
    return Keys().keys[virtualKey];
}

// The character a key types, or 0.
wchar_t CharacterOf(WPARAM key) {
    if (key >= 'A' && key <= 'Z') {
        const bool shift = (StateOf(VK_SHIFT) & 0x80) != 0;
        const bool caps = (StateOf(VK_CAPITAL) & 0x01) != 0;
        return static_cast<wchar_t>(shift != caps ? key : key + 32);
    }
    if (key >= '0' && key <= '9') return static_cast<wchar_t>(key);
    switch (key) {
        case VK_SPACE: return L' ';
        case VK_RETURN: return L'\r';
        case VK_BACK: return L'\b';
        case VK_TAB: return L'\t';
        case VK_ESCAPE: return 0x1B;
        default: return 0;
    }
}

}  // namespace

SHORT GetKeyState(int virtualKey) {
    const BYTE s = StateOf(virtualKey);
    return static_cast<SHORT>(((s & 0x80) ? 0x8000 : 0) | (s & 0x01));
}

SHORT GetAsyncKeyState(int virtualKey) { return static_cast<SHORT>((StateOf(virtualKey) & 0x80) ? 0x8000 : 0); }

void keybd_event(BYTE virtualKey, BYTE scanCode, DWORD flags, ULONG_PTR) {
    const bool up = (flags & KEYEVENTF_KEYUP) != 0;
    bool wasDown = false;
    {
        std::lock_guard g(Keys().lock);
        BYTE& s = Keys().keys[virtualKey];
        wasDown = (s & 0x80) != 0;
        if (up) {
            s &= static_cast<BYTE>(~0x80);
        } else {
            if (!wasDown) s ^= 0x01;  // a held key repeating does not toggle again
            s |= 0x80;
        }
    }
    // lParam: repeat count 1, the scan code, bit 30 the previous state, bit 31 a release.
    LPARAM lParam = 1 | (static_cast<LPARAM>(scanCode) << 16);
    if (flags & KEYEVENTF_EXTENDEDKEY) lParam |= LPARAM{1} << 24;
    if (up || wasDown) lParam |= LPARAM{1} << 30;
    if (up) lParam |= LPARAM{1} << 31;
    if (HWND focus = GetFocus()) PostMessageW(focus, up ? WM_KEYUP : WM_KEYDOWN, virtualKey, lParam);
}

BOOL TranslateMessage(const MSG* message) {
    if (!message) return FALSE;
    const UINT m = message->message;
    if (m != WM_KEYDOWN && m != WM_KEYUP && m != WM_SYSKEYDOWN && m != WM_SYSKEYUP) return FALSE;
    if (m == WM_KEYDOWN) {
        if (wchar_t c = CharacterOf(message->wParam); c && !(StateOf(VK_CONTROL) & 0x80))
            PostMessageW(message->hwnd, WM_CHAR, static_cast<WPARAM>(c), message->lParam);
    }
    return TRUE;
}
