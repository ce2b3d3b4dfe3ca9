// Against a keyboard window of our own that answers the mode query and records every switch.
#include <gtest/gtest.h>

#include <vector>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "tests/utils/settings/RecordingKeyboard.h"
#include "utils/settings/SettingsStore.h"

namespace {

bool& g_alpha = kiv_test::RecordingKeyboard::alpha;
std::vector<LPARAM>& g_switches = kiv_test::RecordingKeyboard::switches;

class SoftKeyboardTest : public ::testing::Test {
protected:
    void SetUp() override {
        keyboard_ = kiv_test::RecordingKeyboard::Create();
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
