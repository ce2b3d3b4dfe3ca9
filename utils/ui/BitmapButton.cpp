// The bitmap button's face: the bitmap for its state, centred or beside the text.
#include "utils/ui/BitmapButton.h"

#include "utils/ui/UiBitmaps.h"

CKivBitmapButton::~CKivBitmapButton() { Free(); }

void CKivBitmapButton::Free() {
    for (HBITMAP* b : {&normal_, &pressed_, &disabled_})
        if (*b) {
            ::DeleteObject(*b);
            *b = nullptr;
        }
}

void CKivBitmapButton::SetBitmaps(HBITMAP normal, HBITMAP pressed, HBITMAP disabled) {
    Free();
    normal_ = normal;
    pressed_ = pressed;
    disabled_ = disabled;
    Redraw();
}

BOOL CKivBitmapButton::LoadBitmaps(UINT normal, UINT pressed, UINT disabled) {
    HBITMAP n = kiv_ui::LoadUiBitmap(normal);
    if (!n) return FALSE;
    SetBitmaps(n, pressed ? kiv_ui::LoadUiBitmap(pressed) : nullptr, disabled ? kiv_ui::LoadUiBitmap(disabled) : nullptr);
    return TRUE;
}

void CKivBitmapButton::DrawItem(HDC dc, const RECT& rect, const TButtonState& state) {
    RECT inner = DrawFace(dc, rect, state, state.pushed ? RGB(170, 190, 215) : RGB(232, 238, 246));
    HBITMAP shown = !state.enabled && disabled_ ? disabled_ : state.pushed && pressed_ ? pressed_ : normal_;
    if (!shown) return DrawLabel(dc, inner, state);
    BITMAP bm{};
    ::GetObjectW(shown, sizeof bm, &bm);
    CKivStringT text;
    GetWindowText(text);
    const int h = inner.bottom - inner.top, w = inner.right - inner.left;
    const int x = text.IsEmpty() ? inner.left + (w - bm.bmWidth) / 2 : inner.left + 2;
    const int y = inner.top + (h - bm.bmHeight) / 2;
    HDC src = ::CreateCompatibleDC(dc);
    HGDIOBJ old = ::SelectObject(src, shown);
    ::BitBlt(dc, x, y, bm.bmWidth, bm.bmHeight, src, 0, 0, SRCCOPY);
    ::SelectObject(src, old);
    ::DeleteDC(src);
    if (!state.enabled && !disabled_) {
        // Greyed: every other pixel of the bitmap takes the face colour.
        for (int py = 0; py < bm.bmHeight; ++py)
            for (int px = (py & 1); px < bm.bmWidth; px += 2) ::SetPixel(dc, x + px, y + py, RGB(232, 238, 246));
    }
    if (!text.IsEmpty()) {
        RECT t{x + bm.bmWidth + 4, inner.top, inner.right, inner.bottom};
        ::SetTextColor(dc, state.enabled ? RGB(16, 32, 64) : ::GetSysColor(COLOR_GRAYTEXT));
        ::DrawTextW(dc, text, -1, &t, DT_SINGLELINE | DT_LEFT | DT_VCENTER | DT_NOPREFIX);
    }
}
