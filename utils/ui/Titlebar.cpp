// The title bar: its items, their layout from both ends of the bar, painting with the
// library's fonts, taps, and the menu window that the menu button opens.
#include "utils/ui/Titlebar.h"

#include <algorithm>

#include "utils/ui/UiBitmaps.h"

namespace {

constexpr const wchar_t* kBarClass = L"KivTitlebar";
constexpr const wchar_t* kMenuClass = L"KivTitlebarMenu";
constexpr int kMenuRow = 22;
constexpr int kMenuWidth = 150;

void RegisterBarClasses(WNDPROC bar, WNDPROC menu) {
    WNDCLASSW wc{};
    wc.lpfnWndProc = bar;
    wc.lpszClassName = kBarClass;
    RegisterClassW(&wc);
    wc.lpfnWndProc = menu;
    wc.lpszClassName = kMenuClass;
    RegisterClassW(&wc);
}

void Fill(HDC dc, const RECT& r, COLORREF c) {
    HBRUSH b = CreateSolidBrush(c);
    FillRect(dc, &r, b);
    DeleteObject(b);
}

void DrawBitmap(HDC dc, HBITMAP bitmap, const RECT& r) {
    if (!bitmap) return;
    BITMAP bm{};
    GetObjectW(bitmap, sizeof bm, &bm);
    HDC src = CreateCompatibleDC(dc);
    HGDIOBJ old = SelectObject(src, bitmap);
    const int x = r.left + (r.right - r.left - bm.bmWidth) / 2, y = r.top + (r.bottom - r.top - bm.bmHeight) / 2;
    BitBlt(dc, x, y, bm.bmWidth, bm.bmHeight, src, 0, 0, SRCCOPY);
    SelectObject(src, old);
    DeleteDC(src);
}

bool Same(LPCWSTR a, LPCWSTR b) { return a && b && std::wstring_view(a) == std::wstring_view(b); }

}  // namespace

enum class ItemKind { BitmapButton, MenuButton, TextButton, Title, Bitmap };

struct CTitlebar::Item {
    CKivStringT name;
    ItemKind kind = ItemKind::Bitmap;
    UINT id = 0;
    HBITMAP bitmap = nullptr;
    HBITMAP pressedBitmap = nullptr;
    BOOL flag = FALSE;
    CKivStringT text;
    RECT rect{};
    ~Item() {
        if (bitmap) DeleteObject(bitmap);
        if (pressedBitmap) DeleteObject(pressedBitmap);
    }
};

CTitlebar::CTitlebar() = default;

CTitlebar::~CTitlebar() {
    CloseMenu();
    if (window_ && IsWindow(window_)) {
        SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
        DestroyWindow(window_);
    }
}

CTitlebar::Item* CTitlebar::Find(LPCWSTR name) {
    for (auto& i : items_)
        if (Same(i->name, name)) return i.get();
    return nullptr;
}
const CTitlebar::Item* CTitlebar::Find(LPCWSTR name) const { return const_cast<CTitlebar*>(this)->Find(name); }

CTitlebar::Item& CTitlebar::Put(LPCWSTR name) {
    for (auto& i : items_)
        if (Same(i->name, name)) {
            i = std::make_unique<Item>();
            i->name = name;
            return *i;
        }
    items_.push_back(std::make_unique<Item>());
    items_.back()->name = name ? name : L"";
    return *items_.back();
}

void CTitlebar::AddBitmapButton(LPCWSTR name, UINT id, HBITMAP bitmap, BOOL flag) {
    Item& i = Put(name);
    i.kind = ItemKind::BitmapButton;
    i.id = id;
    i.bitmap = bitmap;
    i.flag = flag;
}

void CTitlebar::AddMenuButton(LPCWSTR name, UINT id, HBITMAP bitmap, HBITMAP pressed) {
    Item& i = Put(name);
    i.kind = ItemKind::MenuButton;
    i.id = id;
    i.bitmap = bitmap;
    i.pressedBitmap = pressed;
}

void CTitlebar::AddButton(LPCWSTR name, LPCWSTR text, UINT id) {
    Item& i = Put(name);
    i.kind = ItemKind::TextButton;
    i.id = id;
    i.text = text ? text : L"";
}

void CTitlebar::AddTitle(LPCWSTR name) {
    Item& i = Put(name);
    i.kind = ItemKind::Title;
    if (dialog_) {
        wchar_t text[256] = {};
        GetWindowTextW(dialog_, text, 256);
        i.text = text;
    }
}

void CTitlebar::AddBitmap(LPCWSTR name, HBITMAP bitmap) {
    Item& i = Put(name);
    i.kind = ItemKind::Bitmap;
    i.bitmap = bitmap;
    Repaint();
}

BOOL CTitlebar::ChangeBitmap(LPCWSTR name, HBITMAP bitmap) {
    Item* i = Find(name);
    if (!i) {
        if (bitmap) DeleteObject(bitmap);
        return FALSE;
    }
    if (i->bitmap) DeleteObject(i->bitmap);
    i->bitmap = bitmap;
    Repaint();
    return TRUE;
}

BOOL CTitlebar::ChangeTitle(LPCWSTR text) {
    for (auto& i : items_)
        if (i->kind == ItemKind::Title) {
            i->text = text ? text : L"";
            Repaint();
            return TRUE;
        }
    return FALSE;
}

BOOL CTitlebar::ChangeButtonText(LPCWSTR name, LPCWSTR text) {
    Item* i = Find(name);
    if (!i) return FALSE;
    i->text = text ? text : L"";
    FinalizeChanges();
    return TRUE;
}

BOOL CTitlebar::HasItem(LPCWSTR name) const { return Find(name) != nullptr; }
int CTitlebar::GetItemCommand(LPCWSTR name) const {
    const Item* i = Find(name);
    return i ? static_cast<int>(i->id) : -1;
}
CKivStringT CTitlebar::GetItemText(LPCWSTR name) const {
    const Item* i = Find(name);
    return i ? i->text : CKivStringT();
}
RECT CTitlebar::GetItemRect(LPCWSTR name) const {
    const Item* i = Find(name);
    return i ? i->rect : RECT{};
}

CKivStringT CTitlebar::GetLayoutOrder() const {
    std::vector<const Item*> sorted;
    for (auto& i : items_) sorted.push_back(i.get());
    std::stable_sort(sorted.begin(), sorted.end(), [](const Item* a, const Item* b) { return a->rect.left < b->rect.left; });
    CKivStringT order;
    for (const Item* i : sorted) order += i->name;
    return order;
}

// ---- the menu ------------------------------------------------------------------------------

void CTitlebar::AddMenuItem(LPCWSTR text, UINT id, int position) {
    TTitlebarMenuItem m;
    m.text = text ? text : L"";
    m.id = id;
    const auto at = position < 0 || position > static_cast<int>(menu_.size()) ? menu_.end() : menu_.begin() + position;
    menu_.insert(at, std::move(m));
}

void CTitlebar::AddPopupMenuItem(LPCWSTR text, const CTitlebarMenu& popup, int position) {
    TTitlebarMenuItem m;
    m.text = text ? text : L"";
    m.popup = popup.items;
    const auto at = position < 0 || position > static_cast<int>(menu_.size()) ? menu_.end() : menu_.begin() + position;
    menu_.insert(at, std::move(m));
}

void CTitlebar::AddSeparator(int position) {
    TTitlebarMenuItem m;
    m.separator = true;
    const auto at = position < 0 || position > static_cast<int>(menu_.size()) ? menu_.end() : menu_.begin() + position;
    menu_.insert(at, std::move(m));
}

BOOL CTitlebar::RemoveMenuItem(int position) {
    if (position < 0 || position >= static_cast<int>(menu_.size())) return FALSE;
    menu_.erase(menu_.begin() + position);
    return TRUE;
}

void CTitlebar::RemoveAllMenuItems() { menu_.clear(); }

namespace {
template <class F>
bool ForEachMenuItem(std::vector<TTitlebarMenuItem>& items, UINT id, F&& f) {
    bool found = false;
    for (auto& m : items) {
        if (!m.separator && m.popup.empty() && m.id == id) {
            f(m);
            found = true;
        }
        found = ForEachMenuItem(m.popup, id, f) || found;
    }
    return found;
}
}  // namespace

BOOL CTitlebar::CheckTbarMenuItem(UINT id, BOOL state) {
    return ForEachMenuItem(menu_, id, [&](TTitlebarMenuItem& m) { m.checked = state != FALSE; });
}

BOOL CTitlebar::EnableTbarMenuItem(UINT id, BOOL state) {
    return ForEachMenuItem(menu_, id, [&](TTitlebarMenuItem& m) { m.enabled = state != FALSE; });
}

BOOL CTitlebar::DisplayMenu(LPCWSTR name) {
    const Item* button = Find(name);
    if (!button || !dialog_ || menu_.empty()) return FALSE;
    CloseMenu();
    parents_.clear();
    ShowEntries(menu_);
    RegisterBarClasses(&BarProc, &MenuProc);
    const int height = static_cast<int>(shown_.size()) * kMenuRow + 4;
    menuWindow_ = CreateWindowExW(0, kMenuClass, L"", WS_CHILD | WS_VISIBLE, button->rect.left, kTitlebarHeight,
                                  kMenuWidth, height, dialog_, nullptr, nullptr, nullptr);
    if (!menuWindow_) return FALSE;
    SetWindowLongPtrW(menuWindow_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    focusBeforeMenu_ = GetFocus();
    SetFocus(menuWindow_);
    PaintMenu();
    return TRUE;
}

void CTitlebar::ShowEntries(const std::vector<TTitlebarMenuItem>& entries) {
    shown_.clear();
    for (const auto& m : entries) shown_.push_back(&m);
    menuCurrent_ = 0;
    while (menuCurrent_ < static_cast<int>(shown_.size()) && shown_[static_cast<size_t>(menuCurrent_)]->separator) ++menuCurrent_;
}

void CTitlebar::BackOrClose() {
    if (parents_.empty()) return CloseMenu();
    shown_ = std::move(parents_.back().first);
    menuCurrent_ = parents_.back().second;
    parents_.pop_back();
    MoveWindow(menuWindow_, GetItemRect(L"A").left, kTitlebarHeight, kMenuWidth, static_cast<int>(shown_.size()) * kMenuRow + 4,
               TRUE);
    PaintMenu();
}

void CTitlebar::CloseMenu() {
    parents_.clear();
    if (!menuWindow_) return;
    HWND w = menuWindow_;
    menuWindow_ = nullptr;
    if (IsWindow(w)) {
        SetWindowLongPtrW(w, GWLP_USERDATA, 0);
        DestroyWindow(w);
    }
    // The control that had the focus before the menu opened gets it back.
    if (IsWindow(focusBeforeMenu_) && GetFocus() != focusBeforeMenu_) SetFocus(focusBeforeMenu_);
    focusBeforeMenu_ = nullptr;
}

void CTitlebar::ChooseMenuItem(int index) {
    if (index < 0 || index >= static_cast<int>(shown_.size())) return;
    const TTitlebarMenuItem* m = shown_[static_cast<size_t>(index)];
    if (m->separator || !m->enabled) return;
    if (!m->popup.empty()) {
        // A popup replaces the list with its own entries; Left or Escape brings the list
        // above back.
        parents_.emplace_back(shown_, index);
        ShowEntries(m->popup);
        MoveWindow(menuWindow_, GetItemRect(L"A").left, kTitlebarHeight, kMenuWidth,
                   static_cast<int>(shown_.size()) * kMenuRow + 4, TRUE);
        PaintMenu();
        return;
    }
    const UINT id = m->id;
    HWND dialog = dialog_;
    CloseMenu();
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, 0), 0);
}

void CTitlebar::PaintMenu() {
    if (!menuWindow_) return;
    HDC dc = GetDC(menuWindow_);
    RECT r{};
    GetClientRect(menuWindow_, &r);
    Fill(dc, r, GetSysColor(COLOR_MENU));
    HBRUSH frame = CreateSolidBrush(RGB(60, 60, 60));
    RECT edges[4] = {{0, 0, r.right, 1}, {0, r.bottom - 1, r.right, r.bottom}, {0, 0, 1, r.bottom}, {r.right - 1, 0, r.right, r.bottom}};
    for (const RECT& e : edges) FillRect(dc, &e, frame);
    DeleteObject(frame);
    HGDIOBJ oldFont = SelectObject(dc, font_ ? font_ : kiv_win32::DefaultControlFont());
    SetBkMode(dc, TRANSPARENT);
    for (size_t i = 0; i < shown_.size(); ++i) {
        const TTitlebarMenuItem& m = *shown_[i];
        RECT row{2, 2 + static_cast<LONG>(i) * kMenuRow, r.right - 2, 2 + static_cast<LONG>(i + 1) * kMenuRow};
        if (m.separator) {
            Fill(dc, RECT{row.left + 4, (row.top + row.bottom) / 2, row.right - 4, (row.top + row.bottom) / 2 + 1},
                 GetSysColor(COLOR_BTNSHADOW));
            continue;
        }
        const bool current = static_cast<int>(i) == menuCurrent_;
        if (current) Fill(dc, row, GetSysColor(COLOR_HIGHLIGHT));
        SetTextColor(dc, !m.enabled ? GetSysColor(COLOR_GRAYTEXT)
                                    : GetSysColor(current ? COLOR_HIGHLIGHTTEXT : COLOR_MENUTEXT));
        RECT t{row.left + 18, row.top, row.right - 14, row.bottom};
        DrawTextW(dc, m.text, -1, &t, DT_SINGLELINE | DT_VCENTER);
        if (m.checked) {
            RECT mark{row.left + 4, row.top, row.left + 16, row.bottom};
            DrawTextW(dc, L"\u2713", -1, &mark, DT_SINGLELINE | DT_VCENTER);
        }
        if (!m.popup.empty()) {
            RECT arrow{row.right - 14, row.top, row.right - 2, row.bottom};
            DrawTextW(dc, L"\u25B8", -1, &arrow, DT_SINGLELINE | DT_VCENTER);
        }
    }
    SelectObject(dc, oldFont);
    ReleaseDC(menuWindow_, dc);
}

LRESULT CALLBACK CTitlebar::MenuProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* bar = reinterpret_cast<CTitlebar*>(GetWindowLongPtrW(w, GWLP_USERDATA));
    if (!bar) return DefWindowProcW(w, message, wParam, lParam);
    const int count = static_cast<int>(bar->shown_.size());
    auto step = [&](int dir) {
        for (int n = 0; n < count; ++n) {
            bar->menuCurrent_ = (bar->menuCurrent_ + dir + count) % count;
            if (!bar->shown_[static_cast<size_t>(bar->menuCurrent_)]->separator) break;
        }
        bar->PaintMenu();
    };
    switch (message) {
        case WM_GETDLGCODE: return DLGC_WANTALLKEYS;
        case WM_PAINT: bar->PaintMenu(); ValidateRect(w, nullptr); return 0;
        case WM_KEYDOWN:
            if (wParam == VK_DOWN) step(1);
            else if (wParam == VK_UP) step(-1);
            else if (wParam == VK_RETURN) bar->ChooseMenuItem(bar->menuCurrent_);
            else if (wParam == VK_RIGHT && count && !bar->shown_[static_cast<size_t>(bar->menuCurrent_)]->popup.empty())
                bar->ChooseMenuItem(bar->menuCurrent_);
            else if (wParam == VK_ESCAPE || wParam == VK_LEFT) bar->BackOrClose();
            return 0;
        case WM_LBUTTONUP: bar->ChooseMenuItem((static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam))) - 2) / kMenuRow); return 0;
        case WM_KILLFOCUS: {
            // Focus leaving the menu closes it, as tapping elsewhere does on the device.
            HWND to = reinterpret_cast<HWND>(wParam);
            if (to != w) PostMessageW(w, WM_CLOSE, 0, 0);
            return 0;
        }
        case WM_CLOSE:
            if (bar->menuWindow_ == w) bar->CloseMenu();
            return 0;
        default: return DefWindowProcW(w, message, wParam, lParam);
    }
}

// ---- the bar -----------------------------------------------------------------------------------

BOOL CTitlebar::InitDialog(HWND dialog, HFONT font, int) {
    dialog_ = dialog;
    font_ = font;
    RegisterBarClasses(&BarProc, &MenuProc);
    RECT r{};
    GetClientRect(dialog, &r);
    if (!window_)
        window_ = CreateWindowExW(0, kBarClass, L"", WS_CHILD | WS_VISIBLE, 0, 0, r.right, kTitlebarHeight, dialog,
                                  nullptr, nullptr, nullptr);
    if (!window_) return FALSE;
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    for (auto& i : items_)
        if (i->kind == ItemKind::Title) {
            wchar_t text[256] = {};
            GetWindowTextW(dialog, text, 256);
            i->text = text;
        }
    FinalizeChanges();
    return TRUE;
}

void CTitlebar::Activate(UINT state) {
    active_ = state != 0;
    Repaint();
}

void CTitlebar::FinalizeChanges() {
    RECT bar{0, 0, 240, kTitlebarHeight};
    if (window_) GetClientRect(window_, &bar);
    else if (dialog_) GetClientRect(dialog_, &bar);
    const int top = 2, bottom = kTitlebarHeight - 2;
    auto width = [&](const Item& i) {
        if (i.kind == ItemKind::TextButton) {
            HDC dc = GetDC(window_);
            HGDIOBJ old = SelectObject(dc, font_ ? font_ : kiv_win32::DefaultControlFont());
            SIZE s{};
            GetTextExtentPoint32W(dc, i.text, i.text.GetLength(), &s);
            SelectObject(dc, old);
            ReleaseDC(window_, dc);
            return static_cast<int>(s.cx) + 14;
        }
        return kTitlebarBitmapSize + 4;
    };
    // The menu button opens the bar on the left; Z closes it on the right with Y before
    // it; the other buttons line up leftwards from Y in the order they were added, and
    // the alpha indicator stands leftmost of them. The title takes what is left.
    int left = 2;
    if (Item* a = Find(L"A")) {
        a->rect = RECT{left, top, left + width(*a), bottom};
        left = a->rect.right + 4;
    }
    std::vector<Item*> right;
    if (Item* z = Find(L"Z")) right.push_back(z);
    if (Item* y = Find(L"Y")) right.push_back(y);
    for (auto& i : items_) {
        const CKivStringT& n = i->name;
        if (i->kind == ItemKind::Title || n == L"A" || n == L"Z" || n == L"Y" || n == L"R") continue;
        right.push_back(i.get());
    }
    if (Item* r = Find(L"R"); r && r->kind != ItemKind::Title) right.push_back(r);
    int x = bar.right - 2;
    for (Item* i : right) {
        const int w = width(*i);
        i->rect = RECT{x - w, top, x, bottom};
        x -= w + 2;
    }
    for (auto& i : items_)
        if (i->kind == ItemKind::Title) i->rect = RECT{left, top, std::max(left, x - 2), bottom};
    Repaint();
}

void CTitlebar::Repaint() {
    if (!window_) return;
    HDC dc = GetDC(window_);
    Paint(dc, active_ ? 0 : 1);
    ReleaseDC(window_, dc);
}

void CTitlebar::Paint(HDC dc, int flag) {
    RECT bar{0, 0, 240, kTitlebarHeight};
    if (window_) GetClientRect(window_, &bar);
    bar.bottom = kTitlebarHeight;
    Fill(dc, bar, flag ? RGB(110, 120, 134) : kTitlebarColour);
    Fill(dc, RECT{bar.left, bar.bottom - 1, bar.right, bar.bottom}, RGB(8, 30, 60));
    HGDIOBJ oldFont = SelectObject(dc, font_ ? font_ : kiv_win32::DefaultControlFont());
    SetBkMode(dc, TRANSPARENT);
    for (size_t n = 0; n < items_.size(); ++n) {
        const Item& i = *items_[n];
        const bool pressed = static_cast<int>(n) == pressed_ || i.flag;
        switch (i.kind) {
            case ItemKind::Title: {
                SetTextColor(dc, RGB(255, 255, 255));
                RECT t = i.rect;
                t.left += 2;
                DrawTextW(dc, i.text, -1, &t, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
                break;
            }
            case ItemKind::TextButton: {
                Fill(dc, i.rect, pressed ? RGB(200, 210, 225) : RGB(236, 240, 246));
                SetTextColor(dc, RGB(16, 32, 64));
                RECT t = i.rect;
                DrawTextW(dc, i.text, -1, &t, DT_SINGLELINE | DT_VCENTER | DT_CENTER);
                break;
            }
            case ItemKind::MenuButton:
                DrawBitmap(dc, pressed && i.pressedBitmap ? i.pressedBitmap : i.bitmap, i.rect);
                break;
            default:
                DrawBitmap(dc, i.bitmap, i.rect);
                if (pressed && i.kind == ItemKind::BitmapButton) {
                    RECT f = i.rect;
                    HBRUSH edge = CreateSolidBrush(RGB(255, 255, 255));
                    RECT lines[2] = {{f.left, f.bottom - 1, f.right, f.bottom}, {f.left, f.top, f.right, f.top + 1}};
                    for (const RECT& l : lines) FillRect(dc, &l, edge);
                    DeleteObject(edge);
                }
                break;
        }
    }
    SelectObject(dc, oldFont);
}

LRESULT CALLBACK CTitlebar::BarProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* bar = reinterpret_cast<CTitlebar*>(GetWindowLongPtrW(w, GWLP_USERDATA));
    if (!bar) return DefWindowProcW(w, message, wParam, lParam);
    auto hit = [&]() -> int {
        const POINT p{static_cast<short>(LOWORD(static_cast<DWORD_PTR>(lParam))), static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam)))};
        for (size_t n = 0; n < bar->items_.size(); ++n) {
            const Item& i = *bar->items_[n];
            if (i.kind != ItemKind::Title && i.kind != ItemKind::Bitmap && p.x >= i.rect.left && p.x < i.rect.right &&
                p.y >= i.rect.top && p.y < i.rect.bottom)
                return static_cast<int>(n);
        }
        return -1;
    };
    switch (message) {
        case WM_PAINT: bar->Repaint(); ValidateRect(w, nullptr); return 0;
        case WM_SETFONT: bar->font_ = reinterpret_cast<HFONT>(wParam); return 0;
        case WM_LBUTTONDOWN:
            bar->pressed_ = hit();
            bar->Repaint();
            return 0;
        case WM_LBUTTONUP: {
            const int n = hit();
            const bool same = n >= 0 && n == bar->pressed_;
            bar->pressed_ = -1;
            bar->Repaint();
            if (same) PostMessageW(bar->dialog_, WM_COMMAND, MAKEWPARAM(bar->items_[static_cast<size_t>(n)]->id, 0), 0);
            return 0;
        }
        default: return DefWindowProcW(w, message, wParam, lParam);
    }
}
