// The message popup: its template is made for each message, sized to the wrapped text.
#include "utils/ui/MessagePopup.h"

#include <algorithm>
#include <vector>

#include "platform/kivutils/Xlate.h"
#include "utils/ui/DlgSupport.h"

namespace kiv_ui {

namespace {

struct Button {
    int id;
    const wchar_t* text;
};

std::vector<Button> ButtonsOf(UINT type) {
    switch (type & MB_TYPEMASK) {
        case MB_OKCANCEL: return {{IDOK, L"OK"}, {IDCANCEL, L"Cancel"}};
        case MB_ABORTRETRYIGNORE: return {{IDABORT, L"Abort"}, {IDRETRY, L"Retry"}, {IDIGNORE, L"Ignore"}};
        case MB_YESNOCANCEL: return {{IDYES, L"Yes"}, {IDNO, L"No"}, {IDCANCEL, L"Cancel"}};
        case MB_YESNO: return {{IDYES, L"Yes"}, {IDNO, L"No"}};
        case MB_RETRYCANCEL: return {{IDRETRY, L"Retry"}, {IDCANCEL, L"Cancel"}};
        default: return {{IDOK, L"OK"}};
    }
}

constexpr int kWidth = 220;

class CMessagePopup : public CDialog {
public:
    CMessagePopup(CWnd* owner, std::vector<Button> buttons)
        : CDialog(L"#MessagePopup", owner), buttons_(std::move(buttons)) {}
    BOOL OnInitDialog() override {
        ApplyFontToDescendants(m_hWnd, StandardFont());
        SetDefID(static_cast<UINT>(buttons_.front().id));
        ::SetFocus(::GetDlgItem(m_hWnd, buttons_.front().id));
        return FALSE;
    }
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        const int id = LOWORD(wParam);
        for (const Button& b : buttons_)
            if (b.id == id) {
                EndDialog(id);
                return TRUE;
            }
        if (id == IDCANCEL) {
            EndDialog(buttons_.back().id);  // Escape gives the last button: Cancel, No or Ignore
            return TRUE;
        }
        return CDialog::OnCommand(wParam, lParam);
    }

private:
    std::vector<Button> buttons_;
};

}  // namespace

CDialogTemplate MessagePopupTemplate(LPCWSTR text, LPCWSTR caption, UINT type) {
    const auto buttons = ButtonsOf(type);
    CDialogTemplate t;
    t.caption = caption ? caption : L"";
    // The text's height at the popup's width decides the popup's height.
    HDC dc = GetDC(nullptr);
    HGDIOBJ old = SelectObject(dc, StandardFont());
    RECT measure{0, 0, kWidth - 16, 0};
    DrawTextW(dc, text ? text : L"", -1, &measure, DT_CALCRECT | DT_WORDBREAK);
    SelectObject(dc, old);
    ReleaseDC(nullptr, dc);
    const int textHeight = std::max<int>(18, measure.bottom);
    t.items.push_back({L"STATIC", caption ? caption : L"", -1, SS_LEFT, RECT{8, 6, kWidth - 8, 24}});
    t.items.push_back({L"STATIC", text ? text : L"", -1, SS_LEFT, RECT{8, 30, kWidth - 8, 30 + textHeight}});
    const int top = 38 + textHeight;
    const int width = 64, gap = 6;
    const int total = static_cast<int>(buttons.size()) * width + (static_cast<int>(buttons.size()) - 1) * gap;
    int x = (kWidth - total) / 2;
    for (const Button& b : buttons) {
        t.items.push_back({L"BUTTON", Xlate(b.text), b.id, WS_TABSTOP | BS_PUSHBUTTON, RECT{x, top, x + width, top + 24}});
        x += width + gap;
    }
    t.rect = RECT{10, 60, 10 + kWidth, 60 + top + 32};
    return t;
}

int MessagePopup(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
    AfxRegisterDialogTemplate(L"#MessagePopup", MessagePopupTemplate(text, caption, type));
    CWnd ownerWnd;
    CWnd* o = CWnd::FromHandlePermanent(owner);
    if (!o && owner) {
        ownerWnd.Attach(owner);
        o = &ownerWnd;
    }
    CMessagePopup popup(o, ButtonsOf(type));
    const INT_PTR r = popup.DoModal();
    if (o == &ownerWnd) ownerWnd.Detach();
    return static_cast<int>(r);
}

}  // namespace kiv_ui
