// The copyable list's window procedure, its columns and rows, and the clipboard text.
#include "utils/ui/CopyListCtrl.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/win32/Clipboard.h"
#include "utils/settings/ColumnSettings.h"
#include "utils/ui/DlgSupport.h"

namespace {

constexpr int kRow = 20;

struct Column {
    std::wstring id;
    std::wstring heading;
    int width = 60;
};

struct CopyList {
    std::vector<Column> columns;
    std::vector<int> order;  // the shown columns, left to right
    std::vector<std::vector<std::wstring>> rows;
    std::vector<bool> selected;
    int current = -1;
    int anchor = -1;  // where a Shift+arrow selection started
    int top = 0;
    HFONT font = nullptr;
};

CopyList* StateOf(HWND w) { return reinterpret_cast<CopyList*>(GetWindowLongPtrW(w, GWLP_USERDATA)); }

int VisibleRows(HWND w) {
    RECT r{};
    GetClientRect(w, &r);
    return std::max(1, static_cast<int>(r.bottom - kRow - 2) / kRow);
}

const std::wstring& Cell(const CopyList& s, size_t row, int column) {
    static const std::wstring empty;
    const auto& cells = s.rows[row];
    return static_cast<size_t>(column) < cells.size() ? cells[static_cast<size_t>(column)] : empty;
}

void Paint(HWND w, CopyList& s) {
    HDC dc = GetDC(w);
    RECT r{};
    GetClientRect(w, &r);
    FillRect(dc, &r, GetSysColorBrush(COLOR_WINDOW));
    HGDIOBJ oldFont = SelectObject(dc, s.font ? s.font : kiv_ui::StandardFont());
    SetBkMode(dc, TRANSPARENT);
    RECT head{1, 1, r.right - 1, 1 + kRow};
    kiv_ui::FillColour(dc, head, RGB(214, 222, 232));
    int x = 1;
    for (int c : s.order) {
        const Column& col = s.columns[static_cast<size_t>(c)];
        RECT t{x + 3, head.top, std::min<LONG>(x + col.width, r.right - 1) - 2, head.bottom};
        SetTextColor(dc, RGB(16, 32, 64));
        DrawTextW(dc, col.heading.c_str(), -1, &t, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
        x += col.width;
        kiv_ui::FillColour(dc, RECT{x - 1, head.top, x, r.bottom - 1}, RGB(200, 206, 214));
    }
    const int shown = VisibleRows(w);
    for (int i = s.top; i < static_cast<int>(s.rows.size()) && i < s.top + shown; ++i) {
        RECT row{1, head.bottom + (i - s.top) * kRow, r.right - 1, head.bottom + (i - s.top + 1) * kRow};
        const bool sel = s.selected[static_cast<size_t>(i)];
        if (sel) FillRect(dc, &row, GetSysColorBrush(COLOR_HIGHLIGHT));
        if (i == s.current) kiv_ui::DrawFrame(dc, row, sel ? RGB(255, 255, 255) : RGB(22, 64, 112));
        SetTextColor(dc, GetSysColor(sel ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
        x = 1;
        for (int c : s.order) {
            const int width = s.columns[static_cast<size_t>(c)].width;
            RECT t{x + 3, row.top, std::min<LONG>(x + width, r.right - 1) - 2, row.bottom};
            DrawTextW(dc, Cell(s, static_cast<size_t>(i), c).c_str(), -1, &t, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
            x += width;
        }
    }
    kiv_ui::DrawFrame(dc, r, GetFocus() == w ? RGB(22, 64, 112) : RGB(110, 124, 140));
    SelectObject(dc, oldFont);
    ReleaseDC(w, dc);
}

void MoveTo(HWND w, CopyList& s, int row, bool extend) {
    const int count = static_cast<int>(s.rows.size());
    if (row < 0 || row >= count) return;
    if (extend) {
        if (s.anchor < 0) s.anchor = s.current < 0 ? row : s.current;
        const int lo = std::min(s.anchor, row), hi = std::max(s.anchor, row);
        for (int i = 0; i < count; ++i) s.selected[static_cast<size_t>(i)] = i >= lo && i <= hi;
    } else {
        s.anchor = -1;
    }
    s.current = row;
    const int shown = VisibleRows(w);
    if (s.current < s.top) s.top = s.current;
    if (s.current >= s.top + shown) s.top = s.current - shown + 1;
    SendMessageW(GetParent(w), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(w), LBN_SELCHANGE), reinterpret_cast<LPARAM>(w));
}

std::wstring CopyText(const CopyList& s) {
    std::vector<size_t> rows;
    for (size_t i = 0; i < s.rows.size(); ++i)
        if (s.selected[i]) rows.push_back(i);
    if (rows.empty() && s.current >= 0) rows.push_back(static_cast<size_t>(s.current));
    if (rows.empty()) return {};
    std::wstring text;
    auto line = [&](auto&& cell) {
        for (size_t k = 0; k < s.order.size(); ++k) {
            if (k) text += L'\t';
            text += cell(s.order[k]);
        }
        text += L"\r\n";
    };
    line([&](int c) { return s.columns[static_cast<size_t>(c)].heading; });
    for (size_t r : rows) line([&](int c) { return Cell(s, r, c); });
    return text;
}

int ApplySettings(CopyList& s, const CColumnSettings& settings) {
    std::vector<int> order;
    std::vector<bool> placed(s.columns.size(), false);
    for (int i = 0; i < settings.getColumnCount(); ++i) {
        const wchar_t* id = settings.getColumnId(i);
        if (!id) continue;
        for (size_t c = 0; c < s.columns.size(); ++c)
            if (!placed[c] && s.columns[c].id == id) {
                placed[c] = true;
                if (settings.getColumnShowFlag(i)) order.push_back(static_cast<int>(c));
                break;
            }
    }
    for (size_t c = 0; c < s.columns.size(); ++c)
        if (!placed[c]) order.push_back(static_cast<int>(c));
    s.order = std::move(order);
    return static_cast<int>(s.order.size());
}

LRESULT CALLBACK CopyListProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) SetWindowLongPtrW(w, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new CopyList));
    CopyList* s = StateOf(w);
    if (!s) return DefWindowProcW(w, message, wParam, lParam);
    const int count = static_cast<int>(s->rows.size());
    const bool valid = wParam < static_cast<WPARAM>(count);
    LRESULT result = 0;
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
        case KLM_ADDCOLUMN: {
            const auto* c = reinterpret_cast<const TKivListColumn*>(lParam);
            if (!c) return LB_ERR;
            s->columns.push_back({c->id ? c->id : L"", c->heading ? c->heading : L"", std::max(8, c->width)});
            s->order.push_back(static_cast<int>(s->columns.size()) - 1);
            result = static_cast<LRESULT>(s->columns.size()) - 1;
            break;
        }
        case KLM_ADDROW: {
            const auto* cells = reinterpret_cast<const LPCWSTR*>(lParam);
            std::vector<std::wstring> row;
            for (WPARAM i = 0; cells && i < wParam; ++i) row.emplace_back(cells[i] ? cells[i] : L"");
            s->rows.push_back(std::move(row));
            s->selected.push_back(false);
            if (s->current < 0) s->current = 0;
            result = count;
            break;
        }
        case KLM_APPLYCOLUMNS:
            if (!lParam) return LB_ERR;
            result = ApplySettings(*s, *reinterpret_cast<const CColumnSettings*>(lParam));
            break;
        case KLM_GETCOLUMNORDER:
            return wParam < s->order.size() ? s->order[wParam] : LB_ERR;
        case KLM_GETCELL:
            if (!valid || lParam < 0 || static_cast<size_t>(lParam) >= s->columns.size()) return 0;
            return reinterpret_cast<LRESULT>(Cell(*s, wParam, static_cast<int>(lParam)).c_str());
        case KLM_SETSEL:
            if (!valid) return LB_ERR;
            s->selected[wParam] = lParam != 0;
            break;
        case KLM_GETSEL: return valid ? (s->selected[wParam] ? 1 : 0) : LB_ERR;
        case KLM_GETSELCOUNT: return static_cast<LRESULT>(std::count(s->selected.begin(), s->selected.end(), true));
        case LB_GETCOUNT: return count;
        case LB_GETCURSEL: return s->current;
        case LB_SETCURSEL:
            if (!valid) return LB_ERR;
            s->current = static_cast<int>(wParam);
            result = s->current;
            break;
        case KLM_COPY: {
            const std::wstring text = CopyText(*s);
            if (text.empty()) return 0;
            if (!kiv_ui::SetClipboardText(w, CKivStringT(text.c_str()))) return LB_ERR;
            // Every line after the heading is a row.
            return static_cast<LRESULT>(std::count(text.begin(), text.end(), L'\n')) - 1;
        }
        case WM_KEYDOWN: {
            const bool shift = GetKeyState(VK_SHIFT) < 0, control = GetKeyState(VK_CONTROL) < 0;
            if (wParam == VK_UP) MoveTo(w, *s, s->current - 1, shift);
            else if (wParam == VK_DOWN) MoveTo(w, *s, s->current + 1, shift);
            else if (wParam == VK_HOME) MoveTo(w, *s, 0, shift);
            else if (wParam == VK_END) MoveTo(w, *s, count - 1, shift);
            else if (wParam == VK_SPACE && s->current >= 0) s->selected[static_cast<size_t>(s->current)] = !s->selected[static_cast<size_t>(s->current)];
            else if (control && wParam == 'A') std::fill(s->selected.begin(), s->selected.end(), true);
            else if (control && wParam == 'C') SendMessageW(w, KLM_COPY, 0, 0);
            else return 0;
            break;
        }
        case WM_LBUTTONDOWN: {
            SetFocus(w);
            const int y = static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam)));
            const int row = s->top + (y - 1 - kRow) / kRow;
            if (y < 1 + kRow || row >= count) return 0;
            MoveTo(w, *s, row, false);
            s->selected[static_cast<size_t>(row)] = !s->selected[static_cast<size_t>(row)];
            break;
        }
        default: return DefWindowProcW(w, message, wParam, lParam);
    }
    if (IsWindow(w) && StateOf(w) == s) Paint(w, *s);
    return result;
}

}  // namespace

void CKivCopyListCtrl::RegisterClass() {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &CopyListProc;
    wc.lpszClassName = kCopyListClass;
    ::RegisterClassW(&wc);
}

BOOL CKivCopyListCtrl::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    RegisterClass();
    return CreateEx(0, kCopyListClass, L"", style | WS_CHILD | WS_VISIBLE | WS_TABSTOP, rect, parent, id);
}

int CKivCopyListCtrl::AddColumn(LPCWSTR id, LPCWSTR heading, int width) {
    const TKivListColumn c{id, heading, width};
    return static_cast<int>(SendMessage(KLM_ADDCOLUMN, 0, reinterpret_cast<LPARAM>(&c)));
}

int CKivCopyListCtrl::AddRow(std::initializer_list<LPCWSTR> cells) {
    return static_cast<int>(SendMessage(KLM_ADDROW, cells.size(), reinterpret_cast<LPARAM>(cells.begin())));
}

int CKivCopyListCtrl::ApplyColumnSettings(const CColumnSettings& settings) {
    return static_cast<int>(SendMessage(KLM_APPLYCOLUMNS, 0, reinterpret_cast<LPARAM>(&settings)));
}

namespace kiv_ui {

bool SetClipboardText(HWND window, const CKivStringT& text) {
    if (!::OpenClipboard(window)) return false;
    const SIZE_T bytes = (static_cast<SIZE_T>(text.GetLength()) + 1) * sizeof(wchar_t);
    HGLOBAL block = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    bool done = false;
    if (block) {
        if (auto* p = static_cast<wchar_t*>(::GlobalLock(block))) {
            std::memcpy(p, text.GetString(), bytes);
            ::GlobalUnlock(block);
            ::EmptyClipboard();
            done = ::SetClipboardData(CF_UNICODETEXT, block) != nullptr;
        }
        if (!done) ::GlobalFree(block);
    }
    ::CloseClipboard();
    return done;
}

CKivStringT GetClipboardText(HWND window) {
    if (!::OpenClipboard(window)) return CKivStringT();
    CKivStringT text;
    if (HANDLE block = ::GetClipboardData(CF_UNICODETEXT)) {
        const auto* p = static_cast<const wchar_t*>(::GlobalLock(block));
        // Bounded by the block: a block without its terminating NUL is read to its end.
        const size_t most = ::GlobalSize(block) / sizeof(wchar_t);
        if (p) text = CKivStringT(std::wstring(p, std::find(p, p + most, L'\0')).c_str());
        ::GlobalUnlock(block);
    }
    ::CloseClipboard();
    return text;
}

}  // namespace kiv_ui
