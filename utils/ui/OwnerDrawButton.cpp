// The owner-drawn button: the host's button underneath, the derived class's face on top.
#include "utils/ui/OwnerDrawButton.h"

#include "utils/ui/DlgSupport.h"

BOOL CKivOwnerDrawButton::Attach(UINT id, CWnd* dialog) {
    if (!dialog || !SubclassDlgItem(id, dialog)) return FALSE;
    Redraw();
    return TRUE;
}

LRESULT CKivOwnerDrawButton::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // Enter on a focused owner-drawn button presses it, as on any push button.
    if (message == WM_GETDLGCODE) return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    HWND self = m_hWnd;
    const LRESULT r = CWnd::WindowProc(message, wParam, lParam);
    // A click may have closed the dialog with this button: the window is asked first.
    if (message != WM_NCDESTROY && message != WM_DESTROY && ::IsWindow(self) &&
        CWnd::FromHandlePermanent(self) == this && !drawing_)
        Redraw();
    return r;
}

void CKivOwnerDrawButton::Redraw() {
    if (!m_hWnd || drawing_) return;
    drawing_ = true;
    HDC dc = ::GetDC(m_hWnd);
    if (dc) {
        RECT r{};
        ::GetClientRect(m_hWnd, &r);
        TButtonState s;
        s.pushed = (SendMessage(BM_GETSTATE) & 4) != 0;
        s.focused = ::GetFocus() == m_hWnd;
        s.enabled = ::IsWindowEnabled(m_hWnd) != FALSE;
        HFONT font = reinterpret_cast<HFONT>(SendMessage(WM_GETFONT));
        HGDIOBJ of = ::SelectObject(dc, font ? font : kiv_ui::StandardFont());
        ::SetBkMode(dc, TRANSPARENT);
        DrawItem(dc, r, s);
        ::SelectObject(dc, of);
        ::ReleaseDC(m_hWnd, dc);
    }
    drawing_ = false;
}

RECT CKivOwnerDrawButton::DrawFace(HDC dc, const RECT& r, const TButtonState& s, COLORREF face) {
    ::FillRect(dc, &r, ::GetSysColorBrush(COLOR_BTNFACE));
    HBRUSH brush = ::CreateSolidBrush(face);
    HPEN edge = ::CreatePen(PS_SOLID, s.focused ? 2 : 1, s.focused ? RGB(22, 64, 112) : RGB(110, 124, 140));
    HGDIOBJ ob = ::SelectObject(dc, brush), op = ::SelectObject(dc, edge);
    const POINT shape[8] = {{r.left + 3, r.top}, {r.right - 4, r.top}, {r.right - 1, r.top + 3}, {r.right - 1, r.bottom - 4},
                            {r.right - 4, r.bottom - 1}, {r.left + 3, r.bottom - 1}, {r.left, r.bottom - 4}, {r.left, r.top + 3}};
    ::Polygon(dc, shape, 8);
    ::SelectObject(dc, ob);
    ::SelectObject(dc, op);
    ::DeleteObject(brush);
    ::DeleteObject(edge);
    RECT inner{r.left + 3, r.top + 2, r.right - 3, r.bottom - 2};
    if (s.pushed) ::OffsetRect(&inner, 1, 1);
    return inner;
}

void CKivOwnerDrawButton::DrawLabel(HDC dc, const RECT& r, const TButtonState& s) {
    CKivStringT text;
    GetWindowText(text);
    ::SetTextColor(dc, s.enabled ? RGB(16, 32, 64) : ::GetSysColor(COLOR_GRAYTEXT));
    RECT t = r;
    ::DrawTextW(dc, text, -1, &t, DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOPREFIX);
}

void CKivOwnerDrawButton::DrawItem(HDC dc, const RECT& rect, const TButtonState& state) {
    const RECT inner = DrawFace(dc, rect, state, state.pushed ? RGB(170, 190, 215) : RGB(232, 238, 246));
    DrawLabel(dc, inner, state);
}
