// The arrow button: an arrow on the face, and the arrow key posted to the focused
// control of its dialog (or the dialog) when it is clicked.
#include "utils/ui/ArrowButton.h"

#include <algorithm>

BYTE CKivArrowButton::GetVirtualKey() const {
    switch (direction_) {
        case eDown: return VK_DOWN;
        case eLeft: return VK_LEFT;
        case eRight: return VK_RIGHT;
        default: return VK_UP;
    }
}

LRESULT CKivArrowButton::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // A tap (and BM_CLICK, which the button turns into one) presses on WM_LBUTTONDOWN,
    // which focuses the button, and clicks on WM_LBUTTONUP; the key belongs to the control
    // the user was in before the press.
    if (message == WM_LBUTTONDOWN) focusBeforeTap_ = ::GetFocus();
    const bool tap = message == WM_LBUTTONUP && (SendMessage(BM_GETSTATE) & BST_PUSHED);
    const bool click = tap || (message == WM_KEYDOWN && wParam == VK_SPACE);
    const LRESULT r = CKivOwnerDrawButton::WindowProc(message, wParam, lParam);
    if (click && ::IsWindow(m_hWnd)) {
        HWND previous = tap ? focusBeforeTap_ : nullptr;
        if (previous && previous != m_hWnd && ::IsWindow(previous)) ::SetFocus(previous);
        SendArrow();
    }
    if (message == WM_LBUTTONUP) focusBeforeTap_ = nullptr;
    return r;
}

void CKivArrowButton::SendArrow() {
    HWND dialog = ::GetParent(m_hWnd);
    HWND to = ::GetFocus();
    if (!to || to == m_hWnd || (dialog && to != dialog && !::IsChild(dialog, to))) to = dialog;
    if (!to) return;
    // Posted, so that the key goes through the dialog's key handling like a real one.
    ::PostMessageW(to, WM_KEYDOWN, GetVirtualKey(), 1);
    ::PostMessageW(to, WM_KEYUP, GetVirtualKey(), static_cast<LPARAM>(0xC0000001u));
}

void CKivArrowButton::DrawItem(HDC dc, const RECT& rect, const TButtonState& state) {
    const RECT in = DrawFace(dc, rect, state, state.pushed ? RGB(170, 190, 215) : RGB(232, 238, 246));
    const int cx = (in.left + in.right) / 2, cy = (in.top + in.bottom) / 2;
    const int s = std::max(3, static_cast<int>(std::min(in.right - in.left, in.bottom - in.top) / 3));
    POINT tri[3];
    switch (direction_) {
        case eUp: tri[0] = {cx, cy - s}; tri[1] = {cx + s, cy + s / 2}; tri[2] = {cx - s, cy + s / 2}; break;
        case eDown: tri[0] = {cx, cy + s}; tri[1] = {cx - s, cy - s / 2}; tri[2] = {cx + s, cy - s / 2}; break;
        case eLeft: tri[0] = {cx - s, cy}; tri[1] = {cx + s / 2, cy - s}; tri[2] = {cx + s / 2, cy + s}; break;
        case eRight: tri[0] = {cx + s, cy}; tri[1] = {cx - s / 2, cy + s}; tri[2] = {cx - s / 2, cy - s}; break;
    }
    const COLORREF c = state.enabled ? RGB(22, 64, 112) : ::GetSysColor(COLOR_GRAYTEXT);
    HBRUSH b = ::CreateSolidBrush(c);
    HPEN p = ::CreatePen(PS_SOLID, 1, c);
    HGDIOBJ ob = ::SelectObject(dc, b), op = ::SelectObject(dc, p);
    ::Polygon(dc, tri, 3);
    ::SelectObject(dc, ob);
    ::SelectObject(dc, op);
    ::DeleteObject(b);
    ::DeleteObject(p);
}
