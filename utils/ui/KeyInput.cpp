// The soft keyboard's window and the decision whether a tap wants it.
#include "utils/ui/KeyInput.h"

#include "utils/ui/DlgSupport.h"

namespace {

LRESULT CALLBACK KeyboardProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && LOWORD(wParam) == kSoftKeyboardQueryAlpha) return GetWindowLongPtrW(w, GWLP_USERDATA) ? 1 : 0;
    if (message == WM_COMMAND && LOWORD(wParam) == kSoftKeyboardSetAlpha) {
        SetWindowLongPtrW(w, GWLP_USERDATA, lParam ? 1 : 0);
        return 0;
    }
    return DefWindowProcW(w, message, wParam, lParam);
}

}  // namespace

BOOL showKeyboardIfNeeded(HWND, const MSG* message) {
    if (!message || message->message != WM_LBUTTONUP || !IsWindow(message->hwnd)) return FALSE;
    if (!kiv_ui::IsWindowOfClass(message->hwnd, L"Edit")) return FALSE;
    if (!IsWindowEnabled(message->hwnd) || (GetWindowLongW(message->hwnd, GWL_STYLE) & ES_READONLY)) return FALSE;
    HWND keyboard = FindWindowW(kSoftKeyboardClass, nullptr);
    if (!keyboard) return FALSE;
    ShowWindow(keyboard, SW_SHOWNA);
    return TRUE;
}

namespace kiv_ui {

HWND CreateSoftKeyboardWindow() {
    if (HWND existing = FindWindowW(kSoftKeyboardClass, nullptr)) return existing;
    WNDCLASSW wc{};
    wc.lpfnWndProc = &KeyboardProc;
    wc.lpszClassName = kSoftKeyboardClass;
    RegisterClassW(&wc);
    return CreateWindowExW(0, kSoftKeyboardClass, L"SIP", WS_POPUP, 0, 200, 240, 80, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace kiv_ui
