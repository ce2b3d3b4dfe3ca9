// Against a keyboard window of our own that answers the mode query and records every switch.
#include <gtest/gtest.h>

#include <vector>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/SettingsStore.h"

namespace {

bool g_alpha = false;
std::vector<LPARAM> g_switches;

LRESULT CALLBACK KeyboardProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && wParam == 7) return g_alpha ? 1 : 0;
    if (message == WM_COMMAND && wParam == 8) {
        g_switches.push_back(lParam);
        g_alpha = lParam != 0;
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class SoftKeyboardTest : public ::testing::Test {
protected:
    void SetUp() override {
        g_alpha = false;
        g_switches.clear();
        WNDCLASSW wc{};
        wc.lpfnWndProc = KeyboardProc;
        wc.lpszClassName = L"Keybord Window";
        RegisterClassW(&wc);
        keyboard_ = CreateWindowExW(0, L"Keybord Window", L"", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(keyboard_, nullptr);
        if (GetKeyState(VK_CAPITAL) & 1) Toggle();
    }
    void TearDown() override { DestroyWindow(keyboard_); }
    static void Toggle() {
        keybd_event(VK_CAPITAL, 0, 0, 0);
        keybd_event(VK_CAPITAL, 0, KEYEVENTF_KEYUP, 0);
    }
    static bool CapsLock() { return (GetKeyState(VK_CAPITAL) & 1) != 0; }

    kiv_test::TempDeviceRoot root_;
    HWND keyboard_ = nullptr;
};

}  // namespace

TEST_F(SoftKeyboardTest, UpperCaseSwitchesLettersAndCapsLockOn) {
    CtrlChar(eCharUpper);
    EXPECT_TRUE(g_alpha);
    EXPECT_TRUE(CapsLock());
    CtrlChar(eCharUpper);
    EXPECT_EQ(g_switches, std::vector<LPARAM>{1});
    EXPECT_TRUE(CapsLock());
}

TEST_F(SoftKeyboardTest, LowerCaseTurnsCapsLockOff) {
    Toggle();
    g_alpha = true;
    CtrlChar(eCharLower);
    EXPECT_TRUE(g_switches.empty());
    EXPECT_FALSE(CapsLock());
}

TEST_F(SoftKeyboardTest, NumericSwitchesLettersOffOnlyWhenOn) {
    CtrlChar(eCharNumeric);
    EXPECT_TRUE(g_switches.empty());
    g_alpha = true;
    CtrlChar(eCharNumeric);
    EXPECT_EQ(g_switches, std::vector<LPARAM>{0});
    EXPECT_FALSE(CapsLock());
}
