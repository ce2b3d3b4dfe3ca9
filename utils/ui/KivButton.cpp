// The library's push button: the control keeps its behaviour, and after every message
// the face is drawn again over what the control drew.
#include "utils/ui/KivButton.h"

#include <string>

#include "utils/ui/DlgSupport.h"

int CKivButton::SubclassAllBtnsInDlg(CWnd* dialog) {
    if (!dialog || !dialog->m_hWnd) return 0;
    int count = 0;
    for (HWND c = GetWindow(dialog->m_hWnd, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
        const DWORD type = static_cast<DWORD>(GetWindowLongW(c, GWL_STYLE)) & BS_TYPEMASK;
        if (!kiv_ui::IsWindowOfClass(c, L"Button") || (type != BS_PUSHBUTTON && type != BS_DEFPUSHBUTTON)) continue;
        if (CWnd::FromHandlePermanent(c)) continue;
        auto* b = new CKivButton;
        if (!b->SubclassWindow(c)) {
            delete b;
            continue;
        }
        b->Draw();
        ++count;
    }
    return count;
}

bool CKivButton::IsKivButton(HWND window) { return dynamic_cast<CKivButton*>(CWnd::FromHandlePermanent(window)) != nullptr; }

LRESULT CKivButton::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    HWND self = m_hWnd;
    const LRESULT r = CWnd::WindowProc(message, wParam, lParam);
    // The face's own queries (state, text, font) come back here and must not draw again.
    // A click may have closed the dialog and deleted this object with its button, so the
    // window is asked first and the object's members only after.
    if (message != WM_NCDESTROY && message != WM_DESTROY && ::IsWindow(self) &&
        CWnd::FromHandlePermanent(self) == this && !drawing_) {
        drawing_ = true;
        Draw();
        drawing_ = false;
    }
    return r;
}

void CKivButton::Draw() {
    HDC dc = ::GetDC(m_hWnd);
    if (!dc) return;
    RECT r{};
    ::GetClientRect(m_hWnd, &r);
    const bool pushed = (SendMessage(BM_GETSTATE) & 4) != 0;
    const bool focused = ::GetFocus() == m_hWnd;
    const bool enabled = ::IsWindowEnabled(m_hWnd);
    HBRUSH back = ::GetSysColorBrush(COLOR_BTNFACE);
    ::FillRect(dc, &r, back);
    HBRUSH face = ::CreateSolidBrush(pushed ? RGB(170, 190, 215) : RGB(232, 238, 246));
    HPEN edge = ::CreatePen(PS_SOLID, focused ? 2 : 1, focused ? RGB(22, 64, 112) : RGB(110, 124, 140));
    HGDIOBJ ob = ::SelectObject(dc, face), op = ::SelectObject(dc, edge);
    // A rounded face: corners cut by three pixels.
    const POINT shape[8] = {{r.left + 3, r.top}, {r.right - 4, r.top}, {r.right - 1, r.top + 3}, {r.right - 1, r.bottom - 4},
                            {r.right - 4, r.bottom - 1}, {r.left + 3, r.bottom - 1}, {r.left, r.bottom - 4}, {r.left, r.top + 3}};
    ::Polygon(dc, shape, 8);
    ::SelectObject(dc, ob);
    ::SelectObject(dc, op);
    ::DeleteObject(face);
    ::DeleteObject(edge);
    HFONT font = reinterpret_cast<HFONT>(SendMessage(WM_GETFONT));
    HGDIOBJ of = ::SelectObject(dc, font ? font : kiv_ui::StandardFont());
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, enabled ? RGB(16, 32, 64) : ::GetSysColor(COLOR_GRAYTEXT));
    CKivStringT text;
    GetWindowText(text);
    RECT t = r;
    if (pushed) ::OffsetRect(&t, 1, 1);
    ::DrawTextW(dc, text, -1, &t, DT_SINGLELINE | DT_CENTER | DT_VCENTER);
    ::SelectObject(dc, of);
    ::ReleaseDC(m_hWnd, dc);
}
