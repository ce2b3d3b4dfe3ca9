// The check list's window procedure: its rows live with the window and go with it.
#include "utils/ui/CheckListBox.h"

#include <algorithm>
#include <string>
#include <vector>

#include "utils/ui/DlgSupport.h"

namespace {

constexpr int kRow = 22;
constexpr int kBox = 13;

struct Row {
    std::wstring text;
    int state = BST_UNCHECKED;
};

struct CheckList {
    std::vector<Row> rows;
    int current = -1;
    int top = 0;
    HFONT font = nullptr;
};

CheckList* StateOf(HWND w) { return reinterpret_cast<CheckList*>(GetWindowLongPtrW(w, GWLP_USERDATA)); }

void Notify(HWND w, WORD code) {
    SendMessageW(GetParent(w), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(w), code), reinterpret_cast<LPARAM>(w));
}

int VisibleRows(HWND w) {
    RECT r{};
    GetClientRect(w, &r);
    return std::max(1, static_cast<int>(r.bottom - 2) / kRow);
}

void Paint(HWND w, CheckList& s) {
    HDC dc = GetDC(w);
    RECT r{};
    GetClientRect(w, &r);
    FillRect(dc, &r, GetSysColorBrush(COLOR_WINDOW));
    kiv_ui::DrawFrame(dc, r, GetFocus() == w ? RGB(22, 64, 112) : RGB(110, 124, 140));
    HGDIOBJ oldFont = SelectObject(dc, s.font ? s.font : kiv_ui::StandardFont());
    SetBkMode(dc, TRANSPARENT);
    const int shown = VisibleRows(w);
    for (int i = s.top; i < static_cast<int>(s.rows.size()) && i < s.top + shown; ++i) {
        RECT row{1, 1 + (i - s.top) * kRow, r.right - 1, 1 + (i - s.top + 1) * kRow};
        const bool current = i == s.current;
        if (current) FillRect(dc, &row, GetSysColorBrush(COLOR_HIGHLIGHT));
        RECT box{row.left + 4, row.top + (kRow - kBox) / 2, row.left + 4 + kBox, row.top + (kRow - kBox) / 2 + kBox};
        FillRect(dc, &box, GetSysColorBrush(COLOR_WINDOW));
        kiv_ui::DrawFrame(dc, box, RGB(60, 60, 60));
        const int state = s.rows[static_cast<size_t>(i)].state;
        if (state == BST_CHECKED) {
            HPEN tick = CreatePen(PS_SOLID, 2, RGB(0, 110, 0));
            HGDIOBJ op = SelectObject(dc, tick);
            const POINT mark[3] = {{box.left + 2, box.top + 6}, {box.left + 5, box.top + 10}, {box.left + 11, box.top + 2}};
            Polyline(dc, mark, 3);
            SelectObject(dc, op);
            DeleteObject(tick);
        } else if (state == BST_INDETERMINATE) {
            RECT fill{box.left + 3, box.top + 3, box.right - 3, box.bottom - 3};
            kiv_ui::FillColour(dc, fill, RGB(140, 140, 140));
        }
        SetTextColor(dc, GetSysColor(current ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
        RECT t{box.right + 6, row.top, row.right - 2, row.bottom};
        DrawTextW(dc, s.rows[static_cast<size_t>(i)].text.c_str(), -1, &t, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
    SelectObject(dc, oldFont);
    ReleaseDC(w, dc);
}

void Select(HWND w, CheckList& s, int row, bool notify) {
    if (row < 0 || row >= static_cast<int>(s.rows.size())) return;
    const bool changed = row != s.current;
    s.current = row;
    const int shown = VisibleRows(w);
    if (s.current < s.top) s.top = s.current;
    if (s.current >= s.top + shown) s.top = s.current - shown + 1;
    if (changed && notify) Notify(w, LBN_SELCHANGE);
}

// A tap or Space moves unchecked and indeterminate rows to checked, checked ones to
// unchecked: the third state is only ever the program's.
void Toggle(HWND w, CheckList& s, int row) {
    if (row < 0 || row >= static_cast<int>(s.rows.size())) return;
    int& state = s.rows[static_cast<size_t>(row)].state;
    state = state == BST_CHECKED ? BST_UNCHECKED : BST_CHECKED;
    Notify(w, CLBN_CHKCHANGE);
}

LRESULT CALLBACK CheckListProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) SetWindowLongPtrW(w, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new CheckList));
    CheckList* s = StateOf(w);
    if (!s) return DefWindowProcW(w, message, wParam, lParam);
    const int count = static_cast<int>(s->rows.size());
    const bool valid = wParam < static_cast<WPARAM>(count);
    switch (message) {
        case WM_NCDESTROY:
            SetWindowLongPtrW(w, GWLP_USERDATA, 0);
            delete s;
            return DefWindowProcW(w, message, wParam, lParam);
        case WM_GETDLGCODE: return DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_SETFONT: s->font = reinterpret_cast<HFONT>(wParam); break;
        case WM_GETFONT: return reinterpret_cast<LRESULT>(s->font);
        case WM_PAINT: ValidateRect(w, nullptr); break;  // painted whole below
        case WM_SETFOCUS:
        case WM_KILLFOCUS: break;
        case LB_ADDSTRING:
            s->rows.push_back({lParam ? reinterpret_cast<LPCWSTR>(lParam) : L"", BST_UNCHECKED});
            if (s->current < 0) s->current = 0;
            Paint(w, *s);
            return count;
        case LB_DELETESTRING:
            if (!valid) return LB_ERR;
            s->rows.erase(s->rows.begin() + static_cast<long>(wParam));
            s->current = std::min(s->current, count - 2);
            s->top = std::max(0, std::min(s->top, count - 2));
            Paint(w, *s);
            return count - 1;
        case LB_RESETCONTENT:
            s->rows.clear();
            s->current = -1;
            s->top = 0;
            break;
        case LB_GETCOUNT: return count;
        case LB_GETCURSEL: return s->current;
        case LB_SETCURSEL:
            if (!valid) return LB_ERR;
            Select(w, *s, static_cast<int>(wParam), false);
            Paint(w, *s);
            return static_cast<LRESULT>(wParam);
        case LB_GETTEXTLEN: return valid ? static_cast<LRESULT>(s->rows[wParam].text.size()) : LB_ERR;
        case LB_GETTEXT: {
            if (!valid || !lParam) return LB_ERR;
            const std::wstring& t = s->rows[wParam].text;
            std::copy(t.begin(), t.end(), reinterpret_cast<LPWSTR>(lParam));
            reinterpret_cast<LPWSTR>(lParam)[t.size()] = L'\0';
            return static_cast<LRESULT>(t.size());
        }
        case CLB_SETCHECK:
            if (!valid || lParam < 0 || lParam > BST_INDETERMINATE) return LB_ERR;
            s->rows[wParam].state = static_cast<int>(lParam);
            break;
        case CLB_GETCHECK: return valid ? s->rows[wParam].state : LB_ERR;
        case WM_KEYDOWN:
            if (wParam == VK_UP) Select(w, *s, s->current - 1, true);
            else if (wParam == VK_DOWN) Select(w, *s, s->current + 1, true);
            else if (wParam == VK_HOME) Select(w, *s, 0, true);
            else if (wParam == VK_END) Select(w, *s, count - 1, true);
            else if (wParam == VK_SPACE) Toggle(w, *s, s->current);
            else return 0;
            break;
        case WM_LBUTTONDOWN: {
            SetFocus(w);
            const int x = static_cast<short>(LOWORD(static_cast<DWORD_PTR>(lParam)));
            const int y = static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam)));
            const int row = s->top + (y - 1) / kRow;
            if (y < 1 || row >= count) return 0;
            Select(w, *s, row, true);
            if (x < 4 + kBox + 4) Toggle(w, *s, row);
            break;
        }
        default: return DefWindowProcW(w, message, wParam, lParam);
    }
    if (IsWindow(w) && StateOf(w) == s) Paint(w, *s);
    return 0;
}

}  // namespace

void CKivCheckListBox::RegisterClass() {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &CheckListProc;
    wc.lpszClassName = kCheckListClass;
    ::RegisterClassW(&wc);
}

BOOL CKivCheckListBox::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    RegisterClass();
    return CreateEx(0, kCheckListClass, L"", style | WS_CHILD | WS_VISIBLE | WS_TABSTOP, rect, parent, id);
}

CKivStringT CKivCheckListBox::GetText(int row) const {
    const LRESULT length = SendMessage(LB_GETTEXTLEN, static_cast<WPARAM>(row));
    if (length < 0) return CKivStringT();
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    SendMessage(LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(length));
    return CKivStringT(text.c_str());
}
