// Fonts, translation and the top-most dialog stack of the dialog framework.
#include "utils/ui/DlgSupport.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/kivutils/KivString.h"
#include "platform/kivutils/Xlate.h"

namespace kiv_ui {

namespace {
constexpr int kFontPixels = 13;

std::vector<HWND>& Stack() {
    static std::vector<HWND> stack;  // user-interface thread only
    return stack;
}

HFONT MakeFont(LONG weight) {
    CFont f;
    f.CreatePixelFont(kFontPixels, weight, L"DejaVu Sans");
    return static_cast<HFONT>(f.Detach());
}
}  // namespace

HFONT StandardFont() {
    static HFONT font = MakeFont(FW_NORMAL);
    return font;
}

HFONT BoldFont() {
    static HFONT font = MakeFont(FW_BOLD);
    return font;
}

bool IsWindowOfClass(HWND window, const wchar_t* className) {
    wchar_t cls[64] = {};
    if (className == nullptr || GetClassNameW(window, cls, 64) == 0) return false;
    return CKivStringT(cls).CompareNoCase(className) == 0;
}

void ApplyFontToDescendants(HWND window, HFONT font) {
    for (HWND c = GetWindow(window, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
        SendMessageW(c, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
        ApplyFontToDescendants(c, font);
    }
}

void TranslateDialogTexts(HWND window) {
    const int n = GetWindowTextLengthW(window);
    if (n > 0) {
        std::wstring text(static_cast<size_t>(n) + 1, L'\0');
        GetWindowTextW(window, text.data(), n + 1);
        text.resize(static_cast<size_t>(n));
        const wchar_t* translated = Xlate(text.c_str());
        if (text != translated) SetWindowTextW(window, translated);
    }
    for (HWND c = GetWindow(window, GW_CHILD); c; c = GetWindow(c, GW_HWNDNEXT)) {
        // An edit field holds what the user typed, not a label.
        if (IsWindowOfClass(c, L"Edit")) continue;
        TranslateDialogTexts(c);
    }
}

void PushTopMostDialog(HWND window) {
    RemoveTopMostDialog(window);
    Stack().push_back(window);
}

void RemoveTopMostDialog(HWND window) { std::erase(Stack(), window); }

HWND GetTopMostDialog() { return Stack().empty() ? nullptr : Stack().back(); }
int GetTopMostDialogCount() { return static_cast<int>(Stack().size()); }

void FillColour(HDC dc, const RECT& rect, COLORREF colour) {
    HBRUSH b = CreateSolidBrush(colour);
    FillRect(dc, &rect, b);
    DeleteObject(b);
}

void DrawFrame(HDC dc, const RECT& r, COLORREF colour) {
    FillColour(dc, RECT{r.left, r.top, r.right, r.top + 1}, colour);
    FillColour(dc, RECT{r.left, r.bottom - 1, r.right, r.bottom}, colour);
    FillColour(dc, RECT{r.left, r.top, r.left + 1, r.bottom}, colour);
    FillColour(dc, RECT{r.right - 1, r.top, r.right, r.bottom}, colour);
}

}  // namespace kiv_ui
