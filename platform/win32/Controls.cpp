// The host's standard controls. Each keeps its state behind GWLP_USERDATA and paints its
// whole client area on WM_PAINT and after every change of what it shows, so that its
// surface always holds its current picture.
#include "platform/win32/Controls.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/win32/ControlState.h"

#include "platform/win32/GdiBlit.h"
#include "platform/win32/GdiLines.h"
#include "platform/win32/GdiObjects.h"
#include "platform/win32/GdiShapes.h"
#include "platform/win32/GdiText.h"
#include "platform/win32/Keyboard.h"

namespace kiv_win32::controls {

namespace {

std::wstring TextOf(HWND w) {
    const int n = GetWindowTextLengthW(w);
    std::wstring text(static_cast<size_t>(n) + 1, L'\0');
    GetWindowTextW(w, text.data(), n + 1);
    text.resize(static_cast<size_t>(n));
    return text;
}

int TextWidth(HDC dc, const std::wstring& text, size_t count) {
    SIZE s{};
    if (count == 0) return 0;
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(count), &s);
    return s.cx;
}

void PaintStatic(HWND w, HDC dc, const RECT& r, ControlState&) {
    Fill(dc, r, GetSysColor(COLOR_BTNFACE));
    const DWORD style = static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE));
    RECT t = r;
    UINT format = DT_WORDBREAK;
    if ((style & 3) == SS_CENTER) format |= DT_CENTER;
    if ((style & 3) == SS_RIGHT) format |= DT_RIGHT;
    SetTextColor(dc, GetSysColor(IsWindowEnabled(w) ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT));
    const std::wstring text = TextOf(w);
    DrawTextW(dc, text.c_str(), -1, &t, format);
}

void PaintEdit(HWND w, HDC dc, const RECT& r, ControlState& s) {
    const bool enabled = IsWindowEnabled(w);
    Fill(dc, r, GetSysColor(enabled && !s.readOnly ? COLOR_WINDOW : COLOR_BTNFACE));
    Frame(dc, r, Focused(w) ? GetSysColor(COLOR_HIGHLIGHT) : GetSysColor(COLOR_BTNSHADOW), Focused(w) ? 2 : 1);
    std::wstring text = TextOf(w);
    if (GetWindowLongW(w, GWL_STYLE) & ES_PASSWORD) text.assign(text.size(), L'*');
    const int h = LineHeight(dc);
    const int top = r.top + std::max(0, (r.bottom - r.top - h) / 2);
    const int from = std::min(s.anchor, s.caret), to = std::max(s.anchor, s.caret);
    // Scroll so that the caret stays inside the field.
    const int inner = r.right - r.left - 8;
    int shift = std::max(0, TextWidth(dc, text, static_cast<size_t>(s.caret)) - inner);
    int x0 = r.left + 4 - shift;
    // Right-aligned text that fits ends at the right margin.
    if ((GetWindowLongW(w, GWL_STYLE) & ES_RIGHT) && shift == 0) x0 = r.right - 4 - TextWidth(dc, text, text.size());
    SetTextColor(dc, GetSysColor(enabled ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT));
    RECT clip{r.left + 2, r.top + 2, r.right - 2, r.bottom - 2};
    ExtTextOutW(dc, x0, top, ETO_CLIPPED, &clip, text.c_str(), static_cast<UINT>(text.size()), nullptr);
    if (Focused(w) && from != to) {
        const int a = x0 + TextWidth(dc, text, static_cast<size_t>(from));
        const int b = x0 + TextWidth(dc, text, static_cast<size_t>(to));
        RECT sel{std::max(a, clip.left), top, std::min(b, clip.right), top + h};
        Fill(dc, sel, GetSysColor(COLOR_HIGHLIGHT));
        SetTextColor(dc, GetSysColor(COLOR_HIGHLIGHTTEXT));
        ExtTextOutW(dc, a, top, ETO_CLIPPED, &sel, text.c_str() + from, static_cast<UINT>(to - from), nullptr);
    } else if (Focused(w)) {
        const int x = x0 + TextWidth(dc, text, static_cast<size_t>(s.caret));
        Fill(dc, RECT{x, top, x + 1, top + h}, GetSysColor(COLOR_WINDOWTEXT));
    }
}

void DrawCheck(HDC dc, int x, int y, int size) {
    HPEN pen = CreatePen(PS_SOLID, 2, GetSysColor(COLOR_WINDOWTEXT));
    HGDIOBJ old = SelectObject(dc, pen);
    const POINT mark[3] = {{x + size / 5, y + size / 2}, {x + size * 2 / 5, y + size * 3 / 4}, {x + size * 4 / 5, y + size / 4}};
    Polyline(dc, mark, 3);
    SelectObject(dc, old);
    DeleteObject(pen);
}

void PaintButton(HWND w, HDC dc, const RECT& r, ControlState& s) {
    const DWORD style = static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE));
    const DWORD type = style & BS_TYPEMASK;
    const bool enabled = IsWindowEnabled(w);
    const std::wstring text = TextOf(w);
    Fill(dc, r, GetSysColor(COLOR_BTNFACE));
    SetTextColor(dc, GetSysColor(enabled ? COLOR_BTNTEXT : COLOR_GRAYTEXT));
    const int h = LineHeight(dc);
    if (type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON) {
        const int box = std::min<int>(h, r.bottom - r.top - 2);
        const int y = r.top + (r.bottom - r.top - box) / 2;
        const bool radio = type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
        HBRUSH white = CreateSolidBrush(GetSysColor(COLOR_WINDOW));
        HPEN pen = CreatePen(PS_SOLID, 1, GetSysColor(Focused(w) ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW));
        HGDIOBJ oldBrush = SelectObject(dc, white), oldPen = SelectObject(dc, pen);
        if (radio) Ellipse(dc, r.left + 1, y, r.left + 1 + box, y + box);
        else Rectangle(dc, r.left + 1, y, r.left + 1 + box, y + box);
        SelectObject(dc, oldBrush);
        SelectObject(dc, oldPen);
        DeleteObject(white);
        DeleteObject(pen);
        if (s.check && radio) {
            HBRUSH dot = CreateSolidBrush(GetSysColor(COLOR_WINDOWTEXT));
            HGDIOBJ old = SelectObject(dc, dot);
            HGDIOBJ oldP = SelectObject(dc, GetStockObject(NULL_PEN));
            Ellipse(dc, r.left + 1 + box / 4, y + box / 4, r.left + 1 + box - box / 4, y + box - box / 4);
            SelectObject(dc, old);
            SelectObject(dc, oldP);
            DeleteObject(dot);
        } else if (s.check) {
            DrawCheck(dc, r.left + 1, y, box);
        }
        RECT t{r.left + box + 6, r.top, r.right, r.bottom};
        DrawTextW(dc, text.c_str(), -1, &t, DT_SINGLELINE | DT_VCENTER);
        return;
    }
    if (type == BS_GROUPBOX) {
        Frame(dc, RECT{r.left, r.top + h / 2, r.right, r.bottom}, GetSysColor(COLOR_BTNSHADOW));
        RECT t{r.left + 6, r.top, r.right, r.top + h};
        SetBkMode(dc, OPAQUE);
        SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
        DrawTextW(dc, text.c_str(), -1, &t, DT_SINGLELINE);
        return;
    }
    // Push button: raised face, sunken while pushed, a heavier frame for the default one.
    const bool isDefault = type == BS_DEFPUSHBUTTON;
    Fill(dc, r, s.pushed ? GetSysColor(COLOR_BTNSHADOW) : GetSysColor(COLOR_BTNFACE));
    Frame(dc, r, GetSysColor(COLOR_WINDOWFRAME), isDefault || Focused(w) ? 2 : 1);
    if (!s.pushed) {
        Fill(dc, RECT{r.left + 2, r.top + 2, r.right - 2, r.top + 3}, GetSysColor(COLOR_BTNHIGHLIGHT));
        Fill(dc, RECT{r.left + 2, r.bottom - 3, r.right - 2, r.bottom - 2}, GetSysColor(COLOR_BTNSHADOW));
    }
    RECT t = r;
    if (s.pushed) OffsetRect(&t, 1, 1);
    DrawTextW(dc, text.c_str(), -1, &t, DT_SINGLELINE | DT_CENTER | DT_VCENTER);
}

// The first row shown in a list of `rows` visible rows, so that the selected row is in view.
int FirstRow(int selected, int rows) { return selected >= rows ? selected - rows + 1 : 0; }

void PaintList(HWND w, HDC dc, const RECT& r, ControlState& s) {
    const int h = LineHeight(dc) + 2;
    const int rows = std::max(1, static_cast<int>(r.bottom - r.top - 4) / h);
    PaintRows(dc, r, s.items, s.current, RowLayout{FirstRow(s.current, rows), rows, h, 2},
              GetSysColor(Focused(w) ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW), Focused(w) ? 2 : 1);
}

}  // namespace

// ---- what the controls share -----------------------------------------------------------------

void Notify(HWND w, WORD code) {
    if (HWND parent = GetParent(w))
        SendMessageW(parent, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(w), code), reinterpret_cast<LPARAM>(w));
}

void Fill(HDC dc, const RECT& r, COLORREF c) {
    HBRUSH b = CreateSolidBrush(c);
    FillRect(dc, &r, b);
    DeleteObject(b);
}

void Frame(HDC dc, const RECT& r, COLORREF c, int width) {
    for (int i = 0; i < width; ++i) {
        Fill(dc, RECT{r.left + i, r.top + i, r.right - i, r.top + i + 1}, c);
        Fill(dc, RECT{r.left + i, r.bottom - i - 1, r.right - i, r.bottom - i}, c);
        Fill(dc, RECT{r.left + i, r.top + i, r.left + i + 1, r.bottom - i}, c);
        Fill(dc, RECT{r.right - i - 1, r.top + i, r.right - i, r.bottom - i}, c);
    }
}

int LineHeight(HDC dc) {
    TEXTMETRICW tm{};
    GetTextMetricsW(dc, &tm);
    return tm.tmHeight > 0 ? tm.tmHeight : 16;
}

int FontHeight(HWND w, const ControlState& s) {
    HDC dc = GetDC(w);
    HGDIOBJ old = SelectObject(dc, s.font ? s.font : kiv_win32::DefaultControlFont());
    const int h = LineHeight(dc);
    SelectObject(dc, old);
    ReleaseDC(w, dc);
    return h;
}

void PaintRows(HDC dc, const RECT& r, const std::vector<std::wstring>& items, int selected, RowLayout layout,
               COLORREF frame, int frameWidth) {
    Fill(dc, r, GetSysColor(COLOR_WINDOW));
    Frame(dc, r, frame, frameWidth);
    const int first = layout.first, h = layout.height, in = layout.inset;
    for (int i = first; i < static_cast<int>(items.size()) && i - first < layout.rows; ++i) {
        RECT row{r.left + in, r.top + in + (i - first) * h, r.right - in, r.top + in + (i - first + 1) * h};
        const bool isSelected = i == selected;
        if (isSelected) Fill(dc, row, GetSysColor(COLOR_HIGHLIGHT));
        SetTextColor(dc, GetSysColor(isSelected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
        RECT t{row.left + 3, row.top, row.right, row.bottom};
        DrawTextW(dc, items[static_cast<size_t>(i)].c_str(), -1, &t, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
}

void Paint(HWND w) {
    ControlState* s = StateOf(w);
    if (!s) return;
    HDC dc = GetDC(w);
    if (!dc) return;
    RECT r{};
    GetClientRect(w, &r);
    HGDIOBJ oldFont = SelectObject(dc, s->font ? s->font : kiv_win32::DefaultControlFont());
    SetBkMode(dc, TRANSPARENT);
    switch (s->kind) {
        case Kind::Static: PaintStatic(w, dc, r, *s); break;
        case Kind::Edit: PaintEdit(w, dc, r, *s); break;
        case Kind::Button: PaintButton(w, dc, r, *s); break;
        case Kind::ListBox: PaintList(w, dc, r, *s); break;
        case Kind::ComboBox: PaintCombo(w, dc, r, *s); break;
    }
    SelectObject(dc, oldFont);
    ReleaseDC(w, dc);
}

bool Select(HWND w, ControlState& s, int index, bool notify) {
    const bool combo = s.kind == Kind::ComboBox;
    if (index < -1 || index >= static_cast<int>(s.items.size())) return false;
    const bool changed = index != s.current;
    s.current = index;
    if (combo) DefWindowProcW(w, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(index >= 0 ? s.items[static_cast<size_t>(index)].c_str() : L""));
    Paint(w);
    if (notify && changed) Notify(w, combo ? CBN_SELCHANGE : LBN_SELCHANGE);
    return true;
}

namespace {

// ---- edit ----------------------------------------------------------------------------------

void ReplaceSelection(HWND w, ControlState& s, const std::wstring& with) {
    std::wstring text = TextOf(w);
    const int from = std::min(s.anchor, s.caret), to = std::max(s.anchor, s.caret);
    std::wstring insert = with;
    const int room = s.limit - (static_cast<int>(text.size()) - (to - from));
    if (room < static_cast<int>(insert.size())) insert.resize(static_cast<size_t>(std::max(0, room)));
    if (insert.empty() && from == to) return;
    text.replace(static_cast<size_t>(from), static_cast<size_t>(to - from), insert);
    s.anchor = s.caret = from + static_cast<int>(insert.size());
    DefWindowProcW(w, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
    Notify(w, EN_CHANGE);
}

LRESULT EditMessage(HWND w, ControlState& s, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETTEXT || message == WM_GETTEXTLENGTH || message == WM_NCCREATE) return kUnhandled;
    const int length = GetWindowTextLengthW(w);
    switch (message) {
        case WM_GETDLGCODE: return DLGC_WANTCHARS | DLGC_WANTARROWS | DLGC_HASSETSEL;
        case WM_CHAR: {
            const auto ch = static_cast<wchar_t>(wParam);
            if (s.readOnly) return 0;
            if (ch == L'\b') {
                if (s.anchor == s.caret && s.caret > 0) s.anchor = s.caret - 1;
                ReplaceSelection(w, s, L"");
            } else if (ch >= L' ' && ch != 0x7F) {
                ReplaceSelection(w, s, std::wstring(1, ch));
            }
            break;
        }
        case WM_KEYDOWN: {
            const bool shift = GetKeyState(VK_SHIFT) < 0;
            int caret = s.caret;
            switch (wParam) {
                case VK_LEFT: caret = std::max(0, caret - 1); break;
                case VK_RIGHT: caret = std::min(length, caret + 1); break;
                case VK_HOME: caret = 0; break;
                case VK_END: caret = length; break;
                case VK_DELETE:
                    if (s.readOnly) return 0;
                    if (s.anchor == s.caret && s.caret < length) s.anchor = s.caret + 1;
                    ReplaceSelection(w, s, L"");
                    Paint(w);
                    return 0;
                default: return 0;
            }
            s.caret = caret;
            if (!shift) s.anchor = caret;
            break;
        }
        case EM_SETSEL: {
            // (0, -1) selects everything; a start of -1 removes the selection.
            int from = static_cast<int>(wParam), to = static_cast<int>(lParam);
            if (from < 0) {
                s.anchor = s.caret;
                break;
            }
            if (to < 0 || to > length) to = length;
            s.anchor = std::min(from, length);
            s.caret = to;
            break;
        }
        case EM_GETSEL: {
            const int from = std::min(s.anchor, s.caret), to = std::max(s.anchor, s.caret);
            return MAKELONG(from, to);
        }
        case EM_LIMITTEXT: s.limit = wParam ? static_cast<int>(std::min<WPARAM>(wParam, 0x7FFFFFFE)) : 0x7FFFFFFE; return 0;
        case EM_SETREADONLY: {
            s.readOnly = wParam != 0;
            const auto style = static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE));
            SetWindowLongW(w, GWL_STYLE, static_cast<LONG_PTR>(s.readOnly ? style | ES_READONLY : style & ~ES_READONLY));
            break;
        }
        case WM_SETTEXT: {
            const LRESULT r = DefWindowProcW(w, message, wParam, lParam);
            s.anchor = s.caret = 0;
            Paint(w);
            return r;
        }
        case WM_LBUTTONDOWN: SetFocus(w); return 0;
        case WM_SETFOCUS: Paint(w); Notify(w, EN_SETFOCUS); return 0;
        case WM_KILLFOCUS: Paint(w); Notify(w, EN_KILLFOCUS); return 0;
        default: return kUnhandled;
    }
    Paint(w);
    return 0;
}

// ---- buttons ---------------------------------------------------------------------------------

bool StartsGroup(HWND w) { return (static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE)) & WS_GROUP) != 0; }

// The sibling controls of w's group, in order: a group begins at a control with WS_GROUP
// (or at the first control) and runs up to the next control with WS_GROUP.
std::vector<HWND> GroupOf(HWND w) {
    HWND first = w;
    while (!StartsGroup(first))
        if (HWND previous = GetWindow(first, GW_HWNDPREV)) first = previous;
        else break;
    std::vector<HWND> group{first};
    for (HWND o = GetWindow(first, GW_HWNDNEXT); o && !StartsGroup(o); o = GetWindow(o, GW_HWNDNEXT)) group.push_back(o);
    return group;
}

void Click(HWND w, ControlState& s) {
    const DWORD type = static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE)) & BS_TYPEMASK;
    if (type == BS_AUTOCHECKBOX) s.check = !s.check;
    if (type == BS_AUTORADIOBUTTON) {
        // The other automatic radio buttons of its group lose their mark.
        for (HWND o : GroupOf(w)) {
            if (o == w) continue;
            if ((static_cast<DWORD>(GetWindowLongW(o, GWL_STYLE)) & BS_TYPEMASK) == BS_AUTORADIOBUTTON)
                SendMessageW(o, BM_SETCHECK, BST_UNCHECKED, 0);
        }
        s.check = 1;
    }
    Paint(w);
    Notify(w, BN_CLICKED);
}

LRESULT ButtonMessage(HWND w, ControlState& s, UINT message, WPARAM wParam, LPARAM) {
    const DWORD type = static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE)) & BS_TYPEMASK;
    switch (message) {
        case WM_GETDLGCODE:
            if (type == BS_DEFPUSHBUTTON) return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
            if (type == BS_PUSHBUTTON) return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
            if (type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON) return DLGC_BUTTON | DLGC_RADIOBUTTON;
            return DLGC_BUTTON;
        case BM_GETCHECK: return s.check;
        case BM_SETCHECK: s.check = static_cast<int>(wParam); break;
        case BM_GETSTATE: return s.check | (s.pushed ? BST_PUSHED : 0) | (Focused(w) ? BST_FOCUS : 0);
        case BM_SETSTATE: s.pushed = wParam != 0; break;
        case BM_SETSTYLE: {
            const DWORD style = static_cast<DWORD>(GetWindowLongW(w, GWL_STYLE));
            SetWindowLongW(w, GWL_STYLE, static_cast<LONG_PTR>((style & ~0xFFFFu) | (wParam & 0xFFFF)));
            break;
        }
        case BM_CLICK:
            // A press and a release, as a tap gives them, so subclassed buttons see the tap.
            SendMessageW(w, WM_LBUTTONDOWN, 0, 0);
            SendMessageW(w, WM_LBUTTONUP, 0, 0);
            return 0;
        case WM_LBUTTONDOWN: SetFocus(w); s.pushed = true; break;
        case WM_LBUTTONUP:
            if (!s.pushed) return 0;
            s.pushed = false;
            Click(w, s);
            return 0;
        case WM_KEYDOWN:
            if (wParam != VK_SPACE) return 0;
            Click(w, s);
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS: break;
        default: return kUnhandled;
    }
    Paint(w);
    return 0;
}

// ---- list box and combo box ------------------------------------------------------------------

int RowHeight(HWND w, const ControlState& s) { return FontHeight(w, s) + 2; }

// The item under a tap at lParam in `window`, which shows the rows of `s` with `selected`
// in view; -1 past the rows.
int RowAt(HWND window, const ControlState& s, int selected, LPARAM lParam) {
    const int h = RowHeight(window, s);
    RECT r{};
    GetClientRect(window, &r);
    const int y = static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam))) - 2;
    if (y < 0) return -1;
    const int row = FirstRow(selected, std::max(1, static_cast<int>(r.bottom - 4) / h)) + y / h;
    return row < static_cast<int>(s.items.size()) ? row : -1;
}

LRESULT ListMessage(HWND w, ControlState& s, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool combo = s.kind == Kind::ComboBox;
    const int count = static_cast<int>(s.items.size());
    const LRESULT err = combo ? CB_ERR : LB_ERR;
    auto select = [&](int index, bool notify) { return Select(w, s, index, notify); };
    if (combo) {
        const LRESULT r = ComboMessage(w, s, message, wParam, lParam);
        if (r != kUnhandled) return r;
    }
    switch (message) {
        case WM_GETDLGCODE: return DLGC_WANTARROWS;
        case LB_ADDSTRING:
        case CB_ADDSTRING:
            if (message != (combo ? CB_ADDSTRING : LB_ADDSTRING)) return kUnhandled;
            s.items.emplace_back(lParam ? reinterpret_cast<LPCWSTR>(lParam) : L"");
            Paint(w);
            if (s.dropped) PaintDropList(s.dropList);
            return count;
        case LB_DELETESTRING:
        case CB_DELETESTRING:
            if (wParam >= static_cast<WPARAM>(count)) return err;
            s.items.erase(s.items.begin() + static_cast<std::ptrdiff_t>(wParam));
            if (s.current >= static_cast<int>(s.items.size())) s.current = -1;
            s.top = std::max(0, std::min(s.top, static_cast<int>(s.items.size()) - 1));
            Paint(w);
            if (s.dropped) PaintDropList(s.dropList);
            return static_cast<LRESULT>(s.items.size());
        case LB_RESETCONTENT:
        case CB_RESETCONTENT:
            s.items.clear();
            s.current = -1;
            s.top = 0;
            Paint(w);
            if (s.dropped) PaintDropList(s.dropList);
            return 0;
        case LB_SETCURSEL:
        case CB_SETCURSEL: {
            const int index = static_cast<int>(static_cast<INT_PTR>(wParam));
            if (!select(index, false)) return err;
            if (combo) ScrollIntoView(s);  // an open list scrolls to it
            return s.current;
        }
        case LB_GETCURSEL:
        case CB_GETCURSEL: return s.current;
        case LB_GETCOUNT:
        case CB_GETCOUNT: return count;
        case LB_GETTEXTLEN: return wParam < static_cast<WPARAM>(count) ? static_cast<LRESULT>(s.items[wParam].size()) : err;
        case LB_GETTEXT:
        case CB_GETLBTEXT: {
            // The caller's buffer holds the item's length plus one, as the device's does.
            if (wParam >= static_cast<WPARAM>(count) || !lParam) return err;
            const std::wstring& item = s.items[wParam];
            std::copy(item.begin(), item.end(), reinterpret_cast<LPWSTR>(lParam));
            reinterpret_cast<LPWSTR>(lParam)[item.size()] = L'\0';
            return static_cast<LRESULT>(item.size());
        }
        case WM_KEYDOWN:
            if (wParam == VK_UP && s.current > 0) select(s.current - 1, true);
            else if (wParam == VK_DOWN && s.current + 1 < count) select(s.current + 1, true);
            else if (wParam == VK_HOME && count) select(0, true);
            else if (wParam == VK_END && count) select(count - 1, true);
            return 0;
        case WM_LBUTTONDOWN: {
            SetFocus(w);
            const int row = RowAt(w, s, s.current, lParam);
            if (row >= 0 && row < count) select(row, true);
            return 0;
        }
        case WM_SETFOCUS:
        case WM_KILLFOCUS: Paint(w); return 0;
        default: return kUnhandled;
    }
}

LRESULT CALLBACK ControlProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam, Kind kind) {
    if (message == WM_NCCREATE) {
        auto* s = new ControlState{};
        s->kind = kind;
        if (kind == Kind::Edit) {
            const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            s->readOnly = create && (static_cast<DWORD>(create->style) & ES_READONLY);
        }
        SetWindowLongPtrW(w, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(s));
        return DefWindowProcW(w, message, wParam, lParam);
    }
    ControlState* s = StateOf(w);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(w, GWLP_USERDATA, 0);
        delete s;
        return 0;
    }
    if (!s) return DefWindowProcW(w, message, wParam, lParam);
    switch (message) {
        case WM_PAINT: Paint(w); return 0;
        case WM_SETFONT:
            s->font = reinterpret_cast<HFONT>(wParam);
            if (kind == Kind::ComboBox) FitBox(w, *s);
            if (lParam) Paint(w);
            return 0;
        case WM_GETFONT: return reinterpret_cast<LRESULT>(s->font);
        case WM_ENABLE: Paint(w); return 0;
        default: break;
    }
    LRESULT r = kUnhandled;
    switch (kind) {
        case Kind::Edit: r = EditMessage(w, *s, message, wParam, lParam); break;
        case Kind::Button: r = ButtonMessage(w, *s, message, wParam, lParam); break;
        case Kind::ListBox:
        case Kind::ComboBox: r = ListMessage(w, *s, message, wParam, lParam); break;
        case Kind::Static:
            if (message == WM_GETDLGCODE) return DLGC_STATIC;
            break;
    }
    if (r != kUnhandled) return r;
    r = DefWindowProcW(w, message, wParam, lParam);
    if (message == WM_SETTEXT) Paint(w);
    return r;
}

template <Kind K>
LRESULT CALLBACK Proc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    return ControlProc(w, message, wParam, lParam, K);
}

}  // namespace

}  // namespace kiv_win32::controls

namespace kiv_win32 {

void RegisterStandardControls() {
    using namespace controls;
    const struct {
        const wchar_t* name;
        WNDPROC proc;
    } classes[] = {// The system's spelling, which GetClassNameW gives back whatever spelling made
                   // the window (class names ignore case).
                   {L"Static", &Proc<Kind::Static>},
                   {L"Edit", &Proc<Kind::Edit>},
                   {L"Button", &Proc<Kind::Button>},
                   {L"ListBox", &Proc<Kind::ListBox>},
                   {L"ComboBox", &Proc<Kind::ComboBox>},
                   {kDropListClass, &DropListProc}};
    for (const auto& c : classes) {
        WNDCLASSW wc{};
        wc.lpfnWndProc = c.proc;
        wc.lpszClassName = c.name;
        RegisterClassW(&wc);  // already there after the first call: refused, which is fine
    }
}

HFONT DefaultControlFont() { return static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT)); }

void RedrawWindowTree(HWND window) {
    if (!IsWindow(window)) return;
    SendMessageW(window, WM_PAINT, 0, 0);
    HDC target = nullptr;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (!(GetWindowLongW(child, GWL_STYLE) & WS_VISIBLE)) continue;
        RedrawWindowTree(child);
        RECT r{};
        GetWindowRect(child, &r);
        POINT p{r.left, r.top};
        ScreenToClient(window, &p);
        if (!target) target = GetDC(window);
        HDC source = GetDC(child);
        BitBlt(target, p.x, p.y, r.right - r.left, r.bottom - r.top, source, 0, 0, SRCCOPY);
        ReleaseDC(child, source);
    }
    if (target) ReleaseDC(window, target);
}

}  // namespace kiv_win32
