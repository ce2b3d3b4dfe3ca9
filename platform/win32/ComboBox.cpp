// The host's combo box, a drop list as the system keeps it. The box is as tall as its
// selection field, whatever height it was made with: that height is the box and its open
// list together. The list is a window of the desktop made with the box, hidden while
// closed and destroyed with the box; the box keeps the focus while it is open.
//
// Every step of the keys changes the selection at once. In the open list the owner hears
// CBN_SELCHANGE; on a closed box CBN_SELENDOK and then CBN_SELCHANGE. Both are told even
// where the step goes nowhere, at either end of the list: the system's list does so and
// owners count on hearing every key. Enter, a tap on the box or lifting the stylus from a
// row takes the selection (CBN_SELENDOK); Escape, F4, Alt+arrow, a touch outside the list
// or the focus leaving close it as cancelled (CBN_SELENDCANCEL), which keeps the
// selection the keys reached. CBN_CLOSEUP follows either when the list was open.
#include <algorithm>
#include <cwctype>
#include <utility>

#include "platform/win32/ControlState.h"
#include "platform/win32/GdiObjects.h"
#include "platform/win32/GdiShapes.h"
#include "platform/win32/GdiText.h"
#include "platform/win32/Keyboard.h"

namespace kiv_win32::controls {

const wchar_t kDropListClass[] = L"ComboLBox";

namespace {

constexpr int kNoStep = -2;

HWND ComboOf(HWND list) { return reinterpret_cast<HWND>(GetWindowLongPtrW(list, GWLP_USERDATA)); }

int FieldHeight(const ControlState& s) { return s.itemHeight + 4; }
int BoxHeight(const ControlState& s) { return FieldHeight(s) + 4; }

// The rows the open list shows: as many whole rows as the room under the box holds (its
// frame takes a pixel at either edge), no more than there are items.
int DropRows(const ControlState& s) {
    const int room = (s.droppedHeight - BoxHeight(s) - 2) / s.itemHeight;
    return std::clamp(room, 0, static_cast<int>(s.items.size()));
}

// Moves the selection as a step of the keys or the stylus, scrolling an open list to keep
// it in view; the caller tells the owner.
void MoveSelection(HWND w, ControlState& s, int index) {
    Select(w, s, index, false);
    ScrollIntoView(s);
}

void OpenDropDown(HWND w, ControlState& s) {
    if (s.dropped || !s.dropList) return;
    // The owner may fill the list only now, as it is about to be seen.
    Notify(w, CBN_DROPDOWN);
    RECT r{};
    GetWindowRect(w, &r);
    const int rows = DropRows(s);
    const int count = static_cast<int>(s.items.size());
    // The list opens with the selected item on its first row, as far as the items allow.
    s.top = s.current < 0 ? 0 : std::clamp(s.current, 0, std::max(0, count - rows));
    s.openedWith = s.current;
    s.pressing = false;
    s.dropped = true;
    MoveWindow(s.dropList, r.left, r.bottom, r.right - r.left, rows * s.itemHeight + 2, FALSE);
    ShowWindow(s.dropList, SW_SHOWNA);
    PaintDropList(s.dropList);
}

// Closes the open list, taking the selection reached (CBN_SELENDOK) or cancelling
// (CBN_SELENDCANCEL); either way the selection stays where it is.
void CloseDropDown(HWND w, ControlState& s, bool take) {
    if (!s.dropped) return;
    s.dropped = false;
    s.pressing = false;
    ShowWindow(s.dropList, SW_HIDE);
    Notify(w, take ? CBN_SELENDOK : CBN_SELENDCANCEL);
    Notify(w, CBN_CLOSEUP);
    Paint(w);
}

// The item a key steps to from `current`, or kNoStep for a key that does not step. A page
// is the open list's rows less one, the row kept in view.
int StepTarget(WPARAM key, int current, int count, int rows) {
    const int page = std::max(rows - 1, 0);
    int to = current;
    switch (key) {
        case VK_UP:
        case VK_LEFT: to = current - 1; break;
        case VK_DOWN:
        case VK_RIGHT: to = current + 1; break;
        case VK_PRIOR: to = current - page; break;
        case VK_NEXT: to = current + page; break;
        case VK_HOME: to = 0; break;
        case VK_END: to = count - 1; break;
        default: return kNoStep;
    }
    return std::clamp(to, 0, count - 1);
}

// The next item after `current`, round the end, whose first letter is `c` in either case.
int NextStartingWith(const std::vector<std::wstring>& items, int current, wchar_t c) {
    const int count = static_cast<int>(items.size());
    const auto fold = [](wchar_t x) { return std::towlower(static_cast<wint_t>(x)); };
    for (int i = 1; i <= count; ++i) {
        const int j = ((current < 0 ? -1 : current) + i) % count;
        const std::wstring& item = items[static_cast<size_t>(j)];
        if (!item.empty() && fold(item[0]) == fold(c)) return j;
    }
    return -1;
}

LRESULT ComboKey(HWND w, ControlState& s, UINT message, WPARAM key) {
    const bool alt = message == WM_SYSKEYDOWN || GetKeyState(VK_MENU) < 0;
    if (key == VK_F4 || (alt && (key == VK_DOWN || key == VK_UP))) {
        if (s.dropped) CloseDropDown(w, s, false);
        else OpenDropDown(w, s);
        return 0;
    }
    if (message == WM_SYSKEYDOWN) return kUnhandled;
    if (s.dropped && (key == VK_RETURN || key == VK_ESCAPE)) {
        CloseDropDown(w, s, key == VK_RETURN);
        return 0;
    }
    const int count = static_cast<int>(s.items.size());
    const int to = count ? StepTarget(key, s.current, count, DropRows(s)) : kNoStep;
    if (to == kNoStep) return 0;
    MoveSelection(w, s, to);
    if (!s.dropped) Notify(w, CBN_SELENDOK);
    Notify(w, CBN_SELCHANGE);
    return 0;
}

// A typed letter selects the next item starting with it and takes it at once, closing an
// open list; the change is told last.
LRESULT ComboChar(HWND w, ControlState& s, WPARAM c) {
    if (c < 0x20 || s.items.empty()) return 0;
    const int found = NextStartingWith(s.items, s.current, static_cast<wchar_t>(c));
    if (found < 0) return 0;
    MoveSelection(w, s, found);
    if (s.dropped) CloseDropDown(w, s, true);
    else Notify(w, CBN_SELENDOK);
    Notify(w, CBN_SELCHANGE);
    return 0;
}

// The stylus in the open list: touching a row selects it at once, dragging follows it, and
// lifting takes it (CBN_SELENDOK, CBN_CLOSEUP, then CBN_SELCHANGE). A touch outside the
// list closes it as cancelled; lifting outside after touching a row also puts the
// selection back where it was when the list opened.
LRESULT ListTap(HWND combo, ControlState& s, HWND list, UINT message, LPARAM lParam) {
    if (!s.dropped) return 0;
    RECT r{};
    GetClientRect(list, &r);
    const POINT at{static_cast<short>(LOWORD(static_cast<DWORD_PTR>(lParam))),
                   static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam)))};
    const bool inside = PtInRect(&r, at);
    const int row = at.y >= 1 ? s.top + (at.y - 1) / s.itemHeight : -1;
    const bool onItem = inside && row >= 0 && row < static_cast<int>(s.items.size());
    switch (message) {
        case WM_LBUTTONDOWN:
            if (!inside) {
                CloseDropDown(combo, s, false);
                return 0;
            }
            s.pressing = true;
            if (onItem) MoveSelection(combo, s, row);
            return 0;
        case WM_MOUSEMOVE:
            if (s.pressing && onItem) MoveSelection(combo, s, row);
            return 0;
        default:  // WM_LBUTTONUP
            if (!s.pressing) return 0;
            if (!inside) {
                MoveSelection(combo, s, s.openedWith);
                CloseDropDown(combo, s, false);
                return 0;
            }
            CloseDropDown(combo, s, true);
            // Deliberately told after the list has closed, as the system's list tells it.
            Notify(combo, CBN_SELCHANGE);
            return 0;
    }
}

}  // namespace

void PaintCombo(HWND w, HDC dc, const RECT& r, ControlState& s) {
    Fill(dc, r, GetSysColor(COLOR_WINDOW));
    Frame(dc, r, Focused(w) ? GetSysColor(COLOR_HIGHLIGHT) : GetSysColor(COLOR_BTNSHADOW), Focused(w) ? 2 : 1);
    const int arrow = r.bottom - r.top;
    RECT box{r.right - arrow, r.top + 1, r.right - 1, r.bottom - 1};
    Fill(dc, box, GetSysColor(COLOR_BTNFACE));
    HBRUSH black = CreateSolidBrush(GetSysColor(COLOR_BTNTEXT));
    HGDIOBJ old = SelectObject(dc, black), oldP = SelectObject(dc, GetStockObject(NULL_PEN));
    const int cx = (box.left + box.right) / 2, cy = (box.top + box.bottom) / 2;
    const POINT tri[3] = {{cx - 5, cy - 2}, {cx + 5, cy - 2}, {cx, cy + 4}};
    Polygon(dc, tri, 3);
    SelectObject(dc, old);
    SelectObject(dc, oldP);
    DeleteObject(black);
    if (s.current >= 0 && s.current < static_cast<int>(s.items.size())) {
        SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
        RECT t{r.left + 4, r.top, box.left - 2, r.bottom};
        DrawTextW(dc, s.items[static_cast<size_t>(s.current)].c_str(), -1, &t, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
}

void FitBox(HWND w, ControlState& s) {
    s.itemHeight = FontHeight(w, s);
    RECT r{};
    GetWindowRect(w, &r);
    POINT at{r.left, r.top};
    if (HWND parent = GetParent(w)) ScreenToClient(parent, &at);
    MoveWindow(w, at.x, at.y, r.right - r.left, BoxHeight(s), TRUE);
}

void PaintDropList(HWND list) {
    HWND combo = ComboOf(list);
    ControlState* s = combo ? StateOf(combo) : nullptr;
    if (!s || !s->dropped) return;
    HDC dc = GetDC(list);
    RECT r{};
    GetClientRect(list, &r);
    HGDIOBJ oldFont = SelectObject(dc, s->font ? s->font : kiv_win32::DefaultControlFont());
    SetBkMode(dc, TRANSPARENT);
    const int h = s->itemHeight;
    PaintRows(dc, r, s->items, s->current, RowLayout{s->top, (r.bottom - 2) / h, h, 1},
              GetSysColor(COLOR_WINDOWFRAME), 1);
    SelectObject(dc, oldFont);
    ReleaseDC(list, dc);
}

void ScrollIntoView(ControlState& s) {
    const int rows = DropRows(s);
    if (s.current >= 0 && s.current < s.top) s.top = s.current;
    else if (rows > 0 && s.current >= s.top + rows) s.top = s.current - rows + 1;
    if (s.dropped) PaintDropList(s.dropList);
}

LRESULT CALLBACK DropListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(list, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        return DefWindowProcW(list, message, wParam, lParam);
    }
    HWND combo = ComboOf(list);
    ControlState* s = combo ? StateOf(combo) : nullptr;
    if (!s || s->dropList != list) return DefWindowProcW(list, message, wParam, lParam);
    switch (message) {
        case WM_PAINT: PaintDropList(list); return 0;
        case WM_LBUTTONDOWN:
        case WM_MOUSEMOVE:
        case WM_LBUTTONUP: return ListTap(combo, *s, list, message, lParam);
        case WM_NCDESTROY:
            // Gone before its box: the box carries on without a list.
            s->dropList = nullptr;
            s->dropped = false;
            return DefWindowProcW(list, message, wParam, lParam);
        default: return DefWindowProcW(list, message, wParam, lParam);
    }
}

LRESULT ComboMessage(HWND w, ControlState& s, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE: {
            const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            s.droppedHeight = create ? create->cy : 0;
            FitBox(w, s);
            s.dropList = CreateWindowExW(0, kDropListClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, w);
            return s.dropList ? 0 : -1;
        }
        case WM_DESTROY:
            s.dropped = false;
            if (HWND list = std::exchange(s.dropList, nullptr)) DestroyWindow(list);
            return kUnhandled;
        case WM_GETDLGCODE: {
            LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
            // Enter and Escape belong to an open list, not to the dialog.
            const auto* m = reinterpret_cast<const MSG*>(lParam);
            if (s.dropped && m && m->message == WM_KEYDOWN && (m->wParam == VK_RETURN || m->wParam == VK_ESCAPE))
                code |= DLGC_WANTMESSAGE;
            return code;
        }
        case CB_SHOWDROPDOWN:
            if (wParam) OpenDropDown(w, s);
            else CloseDropDown(w, s, false);
            return TRUE;
        case CB_GETDROPPEDSTATE: return s.dropped ? TRUE : FALSE;
        case CB_GETITEMHEIGHT:
            return static_cast<INT_PTR>(wParam) == -1 ? FieldHeight(s) : s.itemHeight;
        case CB_GETTOPINDEX: return s.top;
        case WM_LBUTTONDOWN:
            SetFocus(w);
            // A tap on the box with its list open takes what the list shows.
            if (s.dropped) CloseDropDown(w, s, true);
            else OpenDropDown(w, s);
            return 0;
        case WM_SETFOCUS:
            Paint(w);
            Notify(w, CBN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            // Deliberately cancelled even with the list closed, as the system's box tells it.
            if (s.dropped) CloseDropDown(w, s, false);
            else Notify(w, CBN_SELENDCANCEL);
            Notify(w, CBN_KILLFOCUS);
            Paint(w);
            return 0;
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN: return ComboKey(w, s, message, wParam);
        case WM_CHAR: return ComboChar(w, s, wParam);
        default: return kUnhandled;
    }
}

}  // namespace kiv_win32::controls
