// The keyboard state through GetKeyState and keybd_event, and the characters that
// TranslateMessage makes of key presses.
#include <gtest/gtest.h>

#include <vector>

#include "platform/win32/Win32.h"
#include "tests/platform/win32/PostedMessages.h"
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
    static std::vector<MSG> Drain() { return kiv_test::DrainPosted(); }
};

}  // namespace

// GetKeyState gives the state as of the key messages the thread has read, so each step
// reads its messages before it asks.
TEST_F(Keyboard, CapsLockTogglesOnEachPressAndReachesTheFocusedWindow) {
    EXPECT_EQ(GetKeyState(VK_CAPITAL) & 1, 0);
    std::vector<MSG> got;
    auto read = [&] {
        for (const MSG& m : Drain()) got.push_back(m);
    };
    keybd_event(VK_CAPITAL, 0x3A, 0, 0);
    read();
    EXPECT_EQ(GetKeyState(VK_CAPITAL) & 1, 1);
    EXPECT_LT(GetKeyState(VK_CAPITAL), 0);  // held down: the high bit
    keybd_event(VK_CAPITAL, 0x3A, KEYEVENTF_KEYUP, 0);
    read();
    EXPECT_EQ(GetKeyState(VK_CAPITAL), 1);
    Press(VK_CAPITAL);
    read();
    EXPECT_EQ(GetKeyState(VK_CAPITAL) & 1, 0);

    ASSERT_EQ(got.size(), 4u);
    EXPECT_EQ(got[0].message, WM_KEYDOWN);
    EXPECT_EQ(got[1].message, WM_KEYUP);
    EXPECT_EQ(got[0].hwnd, edit);
    EXPECT_EQ(got[0].wParam, VK_CAPITAL);
    EXPECT_EQ((got[0].lParam >> 16) & 0xFF, 0x3A);
    EXPECT_EQ((got[1].lParam >> 31) & 1, 1);  // the release bit
}
