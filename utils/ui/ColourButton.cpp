// The colour button: a swatch, its palette stepped by the arrow keys.
#include "utils/ui/ColourButton.h"

#include <algorithm>

CKivColourButton::CKivColourButton()
    // The colours of the application's layers and codes: the eight a small screen shows
    // apart in sunlight.
    : colour_(RGB(255, 0, 0)),
      palette_{RGB(255, 0, 0),   RGB(255, 160, 0), RGB(255, 255, 0), RGB(0, 170, 0),
               RGB(0, 200, 255), RGB(0, 0, 255),   RGB(160, 0, 200), RGB(0, 0, 0)} {}

void CKivColourButton::SetColour(COLORREF colour) {
    colour_ = colour;
    Redraw();
}

void CKivColourButton::SetPalette(const std::vector<COLORREF>& palette) {
    palette_ = palette;
    if (!palette_.empty() && std::find(palette_.begin(), palette_.end(), colour_) == palette_.end()) colour_ = palette_.front();
    Redraw();
}

void CKivColourButton::Step(int by) {
    if (palette_.empty()) return;
    const auto at = std::find(palette_.begin(), palette_.end(), colour_);
    const int n = static_cast<int>(palette_.size());
    const int i = at == palette_.end() ? 0 : (static_cast<int>(at - palette_.begin()) + by + n) % n;
    colour_ = palette_[static_cast<size_t>(i)];
    ::SendMessageW(::GetParent(m_hWnd), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(), BN_CLICKED), reinterpret_cast<LPARAM>(m_hWnd));
}

LRESULT CKivColourButton::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETDLGCODE) return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON | DLGC_WANTARROWS;
    if (message == WM_KEYDOWN && (wParam == VK_LEFT || wParam == VK_RIGHT)) {
        Step(wParam == VK_RIGHT ? 1 : -1);
        if (::IsWindow(m_hWnd)) Redraw();
        return 0;
    }
    return CKivOwnerDrawButton::WindowProc(message, wParam, lParam);
}

void CKivColourButton::DrawItem(HDC dc, const RECT& rect, const TButtonState& state) {
    RECT in = DrawFace(dc, rect, state, state.pushed ? RGB(170, 190, 215) : RGB(232, 238, 246));
    const int side = std::max(4, static_cast<int>(in.bottom - in.top) - 4);
    RECT swatch{in.left + 3, in.top + 2, in.left + 3 + side, in.top + 2 + side};
    HBRUSH b = ::CreateSolidBrush(colour_);
    HPEN p = ::CreatePen(PS_SOLID, 1, RGB(40, 40, 40));
    HGDIOBJ ob = ::SelectObject(dc, b), op = ::SelectObject(dc, p);
    ::Rectangle(dc, swatch.left, swatch.top, swatch.right, swatch.bottom);
    ::SelectObject(dc, ob);
    ::SelectObject(dc, op);
    ::DeleteObject(b);
    ::DeleteObject(p);
    in.left = swatch.right + 4;
    CKivStringT text;
    GetWindowText(text);
    ::SetTextColor(dc, state.enabled ? RGB(16, 32, 64) : ::GetSysColor(COLOR_GRAYTEXT));
    ::DrawTextW(dc, text, -1, &in, DT_SINGLELINE | DT_LEFT | DT_VCENTER | DT_NOPREFIX);
}
