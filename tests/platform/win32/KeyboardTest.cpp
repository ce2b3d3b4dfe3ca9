// The keyboard state through GetKeyState and keybd_event, and the characters that
// TranslateMessage makes of key presses.
#include <gtest/gtest.h>

#include <vector>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

LRESULT CALLBACK Plain(HWND h, UINT m, WPARAM w, LPARAM l) { return DefWindowProcW(h, m, w, l); }

class Keyboard : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
    HWND edit = nullptr;

    void SetUp() override {
        WNDCLASSW c{};
        c.lpfnWndProc = Plain;
        c.lpszClassName = L"Edit field";
        RegisterClassW(&c);
        edit = CreateWindowExW(0, L"Edit field", L"", WS_VISIBLE, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
        SetFocus(edit);
    }
    static void Press(BYTE key) {
        keybd_event(key, 0, 0, 0);
        keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
    }
    static std::vector<MSG> Drain() {
        std::vector<MSG> all;
        MSG m;
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) all.push_back(m);
        return all;
    }
};

}  // namespace

TEST_F(Keyboard, CapsLockTogglesOnEachPressAndReachesTheFocusedWindow) {
    EXPECT_EQ(GetKeyState(VK_CAPITAL) & 1, 0);
    keybd_event(VK_CAPITAL, 0x3A, 0, 0);
    EXPECT_EQ(GetKeyState(VK_CAPITAL) & 1, 1);
    EXPECT_LT(GetKeyState(VK_CAPITAL), 0);  // held down: the high bit
    keybd_event(VK_CAPITAL, 0x3A, KEYEVENTF_KEYUP, 0);
    EXPECT_EQ(GetKeyState(VK_CAPITAL), 1);
    Press(VK_CAPITAL);
    EXPECT_EQ(GetKeyState(VK_CAPITAL) & 1, 0);

    const std::vector<MSG> got = Drain();
    ASSERT_EQ(got.size(), 4u);
    EXPECT_EQ(got[0].message, WM_KEYDOWN);
    EXPECT_EQ(got[1].message, WM_KEYUP);
    EXPECT_EQ(got[0].hwnd, edit);
    EXPECT_EQ(got[0].wParam, VK_CAPITAL);
    EXPECT_EQ((got[0].lParam >> 16) & 0xFF, 0x3A);
    EXPECT_EQ((got[1].lParam >> 31) & 1, 1);  // the release bit
}

TEST_F(Keyboard, TranslatedLettersFollowShiftAndCapsLock) {
    std::wstring typed;
    // The user-interface thread handles each key before the next one comes.
    auto pump = [&typed] {
        MSG m;
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&m);
            if (m.message == WM_CHAR) typed += static_cast<wchar_t>(m.wParam);
        }
    };
    Press('A');
    pump();
    Press(VK_CAPITAL);
    Press('B');
    pump();
    keybd_event(VK_SHIFT, 0, 0, 0);
    Press('C');
    pump();
    keybd_event(VK_SHIFT, 0, KEYEVENTF_KEYUP, 0);
    Press('1');
    pump();
    EXPECT_EQ(typed, L"aBc1");
}

TEST_F(Keyboard, WithoutFocusOnlyTheStateChanges) {
    SetFocus(nullptr);
    Press(VK_F24);
    EXPECT_EQ(GetKeyState(VK_F24), 1);
    EXPECT_TRUE(Drain().empty());
    kiv_host::ResetForTesting();
    EXPECT_EQ(GetKeyState(VK_F24), 0);
}
