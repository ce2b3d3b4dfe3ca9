#include "utils/settings/SettingsStore.h"

#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"

namespace {

std::vector<std::wstring> MruCodes() {
    std::vector<std::wstring> codes;
    CKivStringT code;
    for (int i = 0; GetCodeMRU(i, code); ++i) codes.push_back(code.str());
    return codes;
}

class GlobalSettingsTest : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root_;
};

}  // namespace

TEST_F(GlobalSettingsTest, StartWithTheirInitialValuesAndResetRestoresThem) {
    auto checkInitial = [] {
        int first = -1, second = -1;
        const bool ptlRefs = GetPtlModeRefPoints(first, second);
        const std::pair<const char*, bool> initial[] = {
            {"menu system", GetTicMenuSystem() == eMenuSystemStandard}, {"country", GetCountry() == eCountryUSA},
            {"EU style", !GetEuStyle()}, {"bold font", !GetBoldFont()}, {"GIS mode", !GetGISMode()},
            {"control code mode", !GetCodeControlCodeMode()}, {"show string", GetShowString()},
            {"PTL mode", !GetShowPtlMode()}, {"PTL refs", !ptlRefs && first == 0 && second == 0},
            {"stake increment", GetStkIncPtByVal() == 1}, {"BT total station", !GetUseBluetoothTS()},
            {"BT GPS", !GetUseBluetoothGPS()}, {"internal BT", !GetUseInternalBT()},
            {"external receiver", !GetUseExternalReceiver()}, {"receiver port", GetExternalRcvPort() == 0},
            {"BT port", GetSelectedBluetoothPort() == kiv_df::eCommNone},
            {"BT port 2", GetSelectedBluetoothPort2() == kiv_df::eCommNone},
            {"serial port", GetSelectedSerialPort() == 1}, {"second control code", !GetShowSecondCtrlCode()},
            {"range delimiter", GetRangeDelimiter() == 0}, {"alpha key mode", !GetShowAlphaKeyMode()},
            {"sensor port", !LumaroSettings::IsSensorPortSet()}, {"image stakeout", !GetDoImageStakeout()},
            {"mirror image", !GetMirrorImage()}, {"BS/FS control", GetBsFsCtrl() == nullptr},
            {"last calc value", GetLastCalcValue().IsEmpty()}, {"estimate scale", IsEstimateScaleSet()},
            {"calculated scale", !IsUseCalculatedScaleSet()}, {"3D resection", IsResection3D()},
            {"split resection", Is3DResectionMethodSplit()}, {"default accuracies", IsUseDefaultMeasurementAccuraciesChecked()},
            {"distance error", dGetDistanceError() == 0.003}, {"distance ppm", dGetDistancePPM() == 3.0},
            {"horizontal error", dGetHorizontalError() == 5.0}, {"vertical error", dGetVerticalError() == 10.0},
            {"vertical desktop UI", !IsVerticalScreenDesktopUI()}, {"code MRU", GetCodeMRUCount() == 0},
        };
        for (const auto& [what, holds] : initial) EXPECT_TRUE(holds) << what;
    };
    checkInitial();
    SetStkIncPtByVal(7);
    SetCodeMRU(L"TREE");
    SetCountry(eCountryUK);
    kiv_host::ResetForTesting();
    checkInitial();
}

TEST_F(GlobalSettingsTest, CodeMruKeepsTheFiveNewestAndAddsCaseSensitively) {
    for (const wchar_t* c : {L"A", L"B", L"C", L"D", L"E", L"F"}) SetCodeMRU(c);
    EXPECT_EQ(MruCodes(), (std::vector<std::wstring>{L"B", L"C", L"D", L"E", L"F"}));
    SetCodeMRU(L"B");
    EXPECT_EQ(MruCodes(), (std::vector<std::wstring>{L"B", L"C", L"D", L"E", L"F"}));
    SetCodeMRU(L"c");
    EXPECT_EQ(MruCodes(), (std::vector<std::wstring>{L"C", L"D", L"E", L"F", L"c"}));
    SetCodeMRU(nullptr);
    SetCodeMRU(L"");
    EXPECT_EQ(GetCodeMRUCount(), 5);
    CKivStringT code(L"kept");
    EXPECT_FALSE(GetCodeMRU(5, code));
    EXPECT_FALSE(GetCodeMRU(-1, code));
    EXPECT_EQ(code, L"kept");
}

TEST_F(GlobalSettingsTest, CodeMruDeletesTheFirstMatchIgnoringCase) {
    for (const wchar_t* c : {L"B", L"x", L"X"}) SetCodeMRU(c);
    DelMRUCodeIfExists(L"b");
    EXPECT_EQ(MruCodes(), (std::vector<std::wstring>{L"x", L"X"}));
    DelMRUCodeIfExists(L"X");
    EXPECT_EQ(MruCodes(), (std::vector<std::wstring>{L"X"}));
    DelMRUCodeIfExists(nullptr);
    DelMRUCodeIfExists(L"nothing");
    EXPECT_EQ(GetCodeMRUCount(), 1);
}
