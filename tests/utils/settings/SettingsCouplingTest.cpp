// The process-wide settings: every setter lands in its own variable and no other, the
// coupled settings (country and EU style, the PTL reference points, the vertical layout,
// strings always shown), the per-field character types and the window-position record.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "tests/utils/settings/RecordingKeyboard.h"
#include "utils/settings/SettingsStore.h"

namespace {

struct Setting {
    const char* name;
    std::function<void()> set;        // to a value other than the initial one
    std::function<bool()> isChanged;  // whether the getter shows that value
};

std::vector<Setting> Settings() {
    static int handle = 0;
    return {
        {"menu system", [] { SetTicMenuSystem(eMenuSystemUser); }, [] { return GetTicMenuSystem() == eMenuSystemUser; }},
        {"EU style", [] { SetEuStyle(true); }, [] { return GetEuStyle(); }},
        {"bold font", [] { SetBoldFont(true); }, [] { return GetBoldFont(); }},
        {"GIS mode", [] { SetGISMode(true); }, [] { return GetGISMode(); }},
        {"control code mode", [] { SetCodeControlCodeMode(true); }, [] { return GetCodeControlCodeMode(); }},
        {"PTL mode", [] { SetShowPtlMode(true); }, [] { return GetShowPtlMode(); }},
        {"PTL refs", [] { SetPtlModeRefPoints(2, 3); },
         [] {
             int a = 0, b = 0;
             GetPtlModeRefPoints(a, b);
             return a == 2 && b == 3;
         }},
        {"stake increment", [] { SetStkIncPtByVal(5); }, [] { return GetStkIncPtByVal() == 5; }},
        {"BT total station", [] { SetUseBluetoothTS(true); }, [] { return GetUseBluetoothTS(); }},
        {"BT GPS", [] { SetUseBluetoothGPS(true); }, [] { return GetUseBluetoothGPS(); }},
        {"internal BT", [] { SetUseInternalBT(true); }, [] { return GetUseInternalBT(); }},
        {"external receiver", [] { SetUseExternalReceiver(true); }, [] { return GetUseExternalReceiver(); }},
        {"receiver port", [] { SetExternalRcvPort(4); }, [] { return GetExternalRcvPort() == 4; }},
        {"BT port", [] { SetSelectedBluetoothPort(static_cast<kiv_df::ECommPort>(6)); },
         [] { return GetSelectedBluetoothPort() == 6; }},
        {"BT port 2", [] { SetSelectedBluetoothPort2(static_cast<kiv_df::ECommPort>(7)); },
         [] { return GetSelectedBluetoothPort2() == 7; }},
        {"serial port", [] { SetSelectedSerialPort(static_cast<kiv_df::ECommPort>(3)); },
         [] { return GetSelectedSerialPort() == 3; }},
        {"second control code", [] { SetShowSecondCtrlCode(true); }, [] { return GetShowSecondCtrlCode(); }},
        {"range delimiter", [] { SetRangeDelimiter(2); }, [] { return GetRangeDelimiter() == 2; }},
        {"alpha key mode", [] { SetShowAlphaKeyMode(true); }, [] { return GetShowAlphaKeyMode(); }},
        {"sensor port", [] { LumaroSettings::SensorPortIsSet(true); }, [] { return LumaroSettings::IsSensorPortSet(); }},
        {"image stakeout", [] { SetDoImageStakeout(true); }, [] { return GetDoImageStakeout(); }},
        {"mirror image", [] { SetMirrorImage(true); }, [] { return GetMirrorImage(); }},
        {"BS/FS control", [] { SetBsFsCtrl(&handle); }, [] { return GetBsFsCtrl() == &handle; }},
        {"last calc value", [] { SetLastCalcValue(L"12.5"); }, [] { return GetLastCalcValue() == L"12.5"; }},
        {"estimate scale", [] { SetEstimateScale(false); }, [] { return !IsEstimateScaleSet(); }},
        {"calculated scale", [] { SetUseCalculatedScale(true); }, [] { return IsUseCalculatedScaleSet(); }},
        {"3D resection", [] { SetResectionAs3D(false); }, [] { return !IsResection3D(); }},
        {"split resection", [] { Set3DResectionMethodAsSplit(false); }, [] { return !Is3DResectionMethodSplit(); }},
        {"default accuracies", [] { SetUseDefaultMeasurementAccuracies(false); },
         [] { return !IsUseDefaultMeasurementAccuraciesChecked(); }},
        {"distance error", [] { SetDistanceError(0.01); }, [] { return dGetDistanceError() == 0.01; }},
        {"distance ppm", [] { SetDistancePPM(2.0); }, [] { return dGetDistancePPM() == 2.0; }},
        {"horizontal error", [] { SetHorizontalError(7.0); }, [] { return dGetHorizontalError() == 7.0; }},
        {"vertical error", [] { SetVerticalError(12.0); }, [] { return dGetVerticalError() == 12.0; }},
    };
}

class SettingsCouplingTest : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root_;
};

TEST_F(SettingsCouplingTest, EverySetterReachesItsOwnGetterAndNoOther) {
    const auto settings = Settings();
    for (size_t i = 0; i < settings.size(); ++i) {
        kiv_host::ResetForTesting();
        settings[i].set();
        for (size_t j = 0; j < settings.size(); ++j)
            EXPECT_EQ(settings[j].isChanged(), i == j) << "after setting " << settings[i].name << ", " << settings[j].name;
    }
}

TEST_F(SettingsCouplingTest, CountryDecidesEuStyleUntilEuStyleIsSetAfterIt) {
    SetCountry(eCountryUK);
    EXPECT_EQ(GetCountry(), eCountryUK);
    EXPECT_TRUE(GetEuStyle());
    SetEuStyle(false);
    EXPECT_FALSE(GetEuStyle());
    SetCountry(eCountryUSA);
    EXPECT_FALSE(GetEuStyle());
    SetEuStyle(true);
    EXPECT_TRUE(GetEuStyle()) << "EU style set after the country overrides it";
    SetCountry(eCountryNone);
    EXPECT_TRUE(GetEuStyle()) << "only country 1 goes without EU style";

    SetShowString(false);
    EXPECT_TRUE(GetShowString()) << "strings are always shown";
}

TEST_F(SettingsCouplingTest, PtlModeNeedsTwoUsableReferencePoints) {
    const struct {
        int first, second;
        bool staysOn;
    } cases[] = {{1, 1, true}, {3, 9, true}, {0, 5, false}, {1, 0, false}, {-1, 4, false}, {2, -3, false}};
    for (const auto& c : cases) {
        SetShowPtlMode(true);
        SetPtlModeRefPoints(c.first, c.second);
        int a = -99, b = -99;
        EXPECT_EQ(GetPtlModeRefPoints(a, b), c.staysOn) << c.first << "," << c.second;
        EXPECT_EQ(a, c.first);
        EXPECT_EQ(b, c.second);
        EXPECT_EQ(GetShowPtlMode(), c.staysOn);
    }
    // Good points do not switch the mode on by themselves.
    SetShowPtlMode(false);
    SetPtlModeRefPoints(2, 2);
    EXPECT_FALSE(GetShowPtlMode());
}

TEST_F(SettingsCouplingTest, VerticalLayoutNeedsBothTheFlagAndTheDebugOption) {
    SetVerticalScreenDesktopUI(true);
    EXPECT_FALSE(IsVerticalScreenDesktopUI()) << "the flag alone";
    AdvDbgMode().verticalScreenDesktopUI = true;
    EXPECT_TRUE(IsVerticalScreenDesktopUI());
    SetVerticalScreenDesktopUI(false);
    EXPECT_FALSE(IsVerticalScreenDesktopUI()) << "the debug option alone";
}

TEST_F(SettingsCouplingTest, WindowPositionsStartInvalidOnceAndKeepWhatIsStored) {
    LastWindowPositions& p = GetLastWindowPositions();
    EXPECT_FALSE(p.valid);
    p.valid = true;
    p.left[2] = 40;
    EXPECT_EQ(&GetLastWindowPositions(), &p);
    EXPECT_TRUE(GetLastWindowPositions().valid) << "cleared on first use only";
    EXPECT_EQ(GetLastWindowPositions().left[2], 40);
}

// The character type kept per field reaches a keyboard window that records the switches.
bool& g_alpha = kiv_test::RecordingKeyboard::alpha;
std::vector<LPARAM>& g_switches = kiv_test::RecordingKeyboard::switches;

TEST_F(SettingsCouplingTest, FieldCharacterTypesSwitchTheKeyboardForFieldsZeroToFour) {
    HWND keyboard = kiv_test::RecordingKeyboard::Create();
    ASSERT_NE(keyboard, nullptr);
    g_alpha = true;

    // Every field starts numeric: a field asks the keyboard to leave letters.
    CtrlCharByFieldType(eFieldCode);
    EXPECT_EQ(g_switches, std::vector<LPARAM>{0});

    SetDefaultCharType(eFieldCode, eCharUpper);
    SetDefaultCharType(static_cast<FIELD_TYPE>(5), eCharUpper);   // ignored
    SetDefaultCharType(static_cast<FIELD_TYPE>(-1), eCharUpper);  // ignored
    CtrlCharByFieldType(eFieldCode);
    EXPECT_EQ(g_switches, (std::vector<LPARAM>{0, 1}));
    CtrlCharByFieldType(eFieldPointName);
    EXPECT_EQ(g_switches, (std::vector<LPARAM>{0, 1, 0})) << "other fields keep their own type";

    g_switches.clear();
    CtrlCharByFieldType(static_cast<FIELD_TYPE>(5));
    CtrlCharByFieldType(static_cast<FIELD_TYPE>(-1));
    EXPECT_TRUE(g_switches.empty());

    // Upper case turned Caps Lock on; it goes back off for the tests after this one.
    if (GetKeyState(VK_CAPITAL) & 1) {
        keybd_event(VK_CAPITAL, 0, 0, 0);
        keybd_event(VK_CAPITAL, 0, KEYEVENTF_KEYUP, 0);
    }
    DestroyWindow(keyboard);
}

}  // namespace
