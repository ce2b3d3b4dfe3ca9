// Desktop keys, text and mouse buttons into the message queues of the focused or tapped
// windows.
#include "platform/display/InputFeed.h"

namespace kiv_display {

namespace {

constexpr WPARAM kLeftButtonDown = 0x0001;  // MK_LBUTTON

bool Down(int virtualKey) { return GetKeyState(virtualKey) < 0; }

void Tap(BYTE virtualKey) {
    FeedKey(virtualKey, true);
    FeedKey(virtualKey, false);
}

// A letter through its key when the key types it in this case (Shift against Caps Lock,
// as TranslateMessage reads them); otherwise as the character alone, since the key
// state is read when the key message is translated, after this call has returned.
void TypeLetter(char32_t ch) {
    const bool upper = ch >= U'A' && ch <= U'Z';
    const bool caps = (GetKeyState(VK_CAPITAL) & 1) != 0;
    if ((Down(VK_SHIFT) != caps) == upper && !Down(VK_CONTROL))
        return Tap(static_cast<BYTE>(upper ? ch : ch - U'a' + U'A'));
    if (HWND focus = GetFocus()) PostMessageW(focus, WM_CHAR, static_cast<WPARAM>(ch), 1);
}

}  // namespace

void FeedKey(BYTE virtualKey, bool down) { keybd_event(virtualKey, 0, down ? 0 : KEYEVENTF_KEYUP, 0); }

void FeedCharacter(char32_t ch) {
    if ((ch >= U'a' && ch <= U'z') || (ch >= U'A' && ch <= U'Z')) TypeLetter(ch);
    else if ((ch >= U'0' && ch <= U'9') || ch == U' ') Tap(static_cast<BYTE>(ch));
    else if (ch >= 0x20 && ch != 0x7F && ch <= 0x10FFFF)
        if (HWND focus = GetFocus()) PostMessageW(focus, WM_CHAR, static_cast<WPARAM>(ch), 1);
}

HWND WindowAt(HWND top, POINT point, POINT& local) {
    HWND found = top;
    local = point;
    // Later siblings lie over earlier ones, so the last child that holds the point wins.
    for (bool deeper = true; deeper;) {
        deeper = false;
        HWND hit = nullptr;
        POINT hitLocal{};
        for (HWND child = GetWindow(found, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
            if (!(GetWindowLongW(child, GWL_STYLE) & WS_VISIBLE)) continue;
            POINT p = point;
            ClientToScreen(top, &p);
            ScreenToClient(child, &p);
            RECT r{};
            GetClientRect(child, &r);
            if (p.x >= 0 && p.y >= 0 && p.x < r.right && p.y < r.bottom) {
                hit = child;
                hitLocal = p;
            }
        }
        if (hit) {
            found = hit;
            local = hitLocal;
            deeper = true;
        }
    }
    return found;
}

LPARAM CMouseFeed::LocalTo(HWND top, HWND target, POINT point) {
    POINT p = point;
    ClientToScreen(top, &p);
    ScreenToClient(target, &p);
    return MAKELPARAM(static_cast<short>(p.x), static_cast<short>(p.y));
}

void CMouseFeed::Press(HWND top, POINT point) {
    POINT local{};
    HWND target = WindowAt(top, point, local);
    if (!IsWindowEnabled(top) || !IsWindowEnabled(target)) return;
    captured_ = target;
    PostMessageW(target, WM_LBUTTONDOWN, kLeftButtonDown, MAKELPARAM(static_cast<short>(local.x), static_cast<short>(local.y)));
}

void CMouseFeed::Move(HWND top, POINT point) {
    if (captured_ && IsWindow(captured_)) PostMessageW(captured_, WM_MOUSEMOVE, kLeftButtonDown, LocalTo(top, captured_, point));
}

void CMouseFeed::Release(HWND top, POINT point) {
    HWND target = captured_;
    captured_ = nullptr;
    if (target && IsWindow(target)) PostMessageW(target, WM_LBUTTONUP, 0, LocalTo(top, target, point));
}

}  // namespace kiv_display
