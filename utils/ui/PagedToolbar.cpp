// The paged toolbar: slots of the page shown, the page button, keys and taps.
#include "utils/ui/PagedToolbar.h"

#include <algorithm>

#include "platform/kivutils/Xlate.h"
#include "utils/ui/DlgSupport.h"

BOOL CKivPagedToolbar::Create(CWnd* dialog, UINT id, int buttonsPerPage) {
    if (!dialog || !dialog->m_hWnd) return FALSE;
    perPage_ = std::clamp(buttonsPerPage, 1, 8);
    RECT r{};
    dialog->GetClientRect(&r);
    return CreateEx(0, nullptr, L"", WS_CHILD | WS_VISIBLE, RECT{0, r.bottom - kPagedToolbarHeight, r.right, r.bottom}, dialog, id);
}

int CKivPagedToolbar::AddButton(LPCWSTR text, UINT command) {
    buttons_.push_back({text ? text : L"", command, true});
    Paint();
    return static_cast<int>(buttons_.size()) - 1;
}

int CKivPagedToolbar::GetPageCount() const {
    return static_cast<int>((buttons_.size() + static_cast<size_t>(perPage_) - 1) / static_cast<size_t>(perPage_));
}

void CKivPagedToolbar::SetPage(int page) {
    if (page < 0 || page >= GetPageCount()) return;
    page_ = page;
    Paint();
}

const CKivPagedToolbar::Button* CKivPagedToolbar::SlotButton(int slot) const {
    if (slot < 0 || slot >= perPage_) return nullptr;
    const size_t i = static_cast<size_t>(page_ * perPage_ + slot);
    return i < buttons_.size() ? &buttons_[i] : nullptr;
}

UINT CKivPagedToolbar::GetSlotCommand(int slot) const {
    const Button* b = SlotButton(slot);
    return b ? b->command : 0;
}

BOOL CKivPagedToolbar::PressSlot(int slot) {
    const Button* b = SlotButton(slot);
    if (!b || !b->enabled) return FALSE;
    return ::PostMessageW(::GetParent(m_hWnd), WM_COMMAND, MAKEWPARAM(b->command, 0), reinterpret_cast<LPARAM>(m_hWnd));
}

void CKivPagedToolbar::EnableButton(UINT command, BOOL enable) {
    for (Button& b : buttons_)
        if (b.command == command) b.enabled = enable != FALSE;
    Paint();
}

BOOL CKivPagedToolbar::TranslateKey(const MSG* msg) {
    if (!msg || msg->message != WM_KEYDOWN || !m_hWnd || !::IsWindowVisible(m_hWnd)) return FALSE;
    const WPARAM key = msg->wParam;
    if (key == pageKey_ && GetPageCount() > 1) {
        NextPage();
        return TRUE;
    }
    if (key >= VK_F1 && key < static_cast<WPARAM>(VK_F1 + perPage_)) return PressSlot(static_cast<int>(key - VK_F1));
    return FALSE;
}

RECT CKivPagedToolbar::GetSlotRect(int slot) const {
    RECT r{};
    if (m_hWnd) ::GetClientRect(m_hWnd, &r);
    // The page button takes a narrow slot at the right when there is more than one page.
    const int pager = GetPageCount() > 1 ? 30 : 0;
    if (slot == perPage_) return pager ? RECT{r.right - pager, 0, r.right, r.bottom} : RECT{};
    const int width = (static_cast<int>(r.right) - pager) / perPage_;
    return RECT{slot * width, 0, (slot + 1) * width, r.bottom};
}

void CKivPagedToolbar::Paint() {
    if (!m_hWnd) return;
    HDC dc = ::GetDC(m_hWnd);
    RECT r{};
    ::GetClientRect(m_hWnd, &r);
    kiv_ui::FillColour(dc, r, RGB(22, 64, 112));
    HFONT font = reinterpret_cast<HFONT>(::SendMessageW(::GetParent(m_hWnd), WM_GETFONT, 0, 0));
    HGDIOBJ oldFont = ::SelectObject(dc, font ? font : kiv_ui::StandardFont());
    ::SetBkMode(dc, TRANSPARENT);
    for (int slot = 0; slot < perPage_; ++slot) {
        const Button* b = SlotButton(slot);
        RECT s = GetSlotRect(slot);
        RECT face{s.left + 1, s.top + 2, s.right - 1, s.bottom - 2};
        if (!b) continue;
        kiv_ui::FillColour(dc, face, slot == pressed_ ? RGB(170, 190, 215) : RGB(232, 238, 246));
        // The key's name in small grey before the text, as printed on the keypad.
        CKivStringT key;
        key.Format(L"F%d", slot + 1);
        ::SetTextColor(dc, RGB(110, 124, 140));
        RECT k{face.left + 2, face.top, face.left + 18, face.bottom};
        ::DrawTextW(dc, key, -1, &k, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
        ::SetTextColor(dc, b->enabled ? RGB(16, 32, 64) : ::GetSysColor(COLOR_GRAYTEXT));
        RECT t{face.left + 18, face.top, face.right - 1, face.bottom};
        ::DrawTextW(dc, Xlate(b->text), -1, &t, DT_SINGLELINE | DT_VCENTER | DT_CENTER | DT_NOPREFIX);
    }
    if (GetPageCount() > 1) {
        RECT s = GetSlotRect(perPage_);
        RECT face{s.left + 1, s.top + 2, s.right - 1, s.bottom - 2};
        kiv_ui::FillColour(dc, face, pressed_ == perPage_ ? RGB(170, 190, 215) : RGB(255, 214, 120));
        CKivStringT pages;
        pages.Format(L"%d/%d", page_ + 1, GetPageCount());
        ::SetTextColor(dc, RGB(16, 32, 64));
        ::DrawTextW(dc, pages, -1, &face, DT_SINGLELINE | DT_VCENTER | DT_CENTER | DT_NOPREFIX);
    }
    ::SelectObject(dc, oldFont);
    ::ReleaseDC(m_hWnd, dc);
}

LRESULT CKivPagedToolbar::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    auto hit = [&] {
        const POINT p{static_cast<short>(LOWORD(static_cast<DWORD_PTR>(lParam))), static_cast<short>(HIWORD(static_cast<DWORD_PTR>(lParam)))};
        for (int slot = 0; slot <= perPage_; ++slot) {
            const RECT s = GetSlotRect(slot);
            if (p.x >= s.left && p.x < s.right && p.y >= s.top && p.y < s.bottom) return slot;
        }
        return -1;
    };
    switch (message) {
        case WM_PAINT: Paint(); ::ValidateRect(m_hWnd, nullptr); return 0;
        case WM_LBUTTONDOWN:
            pressed_ = hit();
            Paint();
            return 0;
        case WM_LBUTTONUP: {
            const int slot = hit();
            const bool same = slot >= 0 && slot == pressed_;
            pressed_ = -1;
            if (same && slot == perPage_) NextPage();
            else if (same) PressSlot(slot);
            Paint();
            return 0;
        }
        default: return CWnd::WindowProc(message, wParam, lParam);
    }
}
