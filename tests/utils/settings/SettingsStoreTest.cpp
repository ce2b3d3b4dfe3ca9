// The process-wide settings: initial values, the coupled setters, the code MRU list's
// rules, and the debug-mode and window records.
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

TEST_F(GlobalSettingsTest, StartWithTheirInitialValues) {
    EXPECT_EQ(GetTicMenuSystem(), eMenuSystemStandard);
    EXPECT_FALSE(GetEuStyle());
    EXPECT_EQ(GetCountry(), eCountryUSA);
    EXPECT_FALSE(GetBoldFont());
    EXPECT_FALSE(GetGISMode());
    EXPECT_FALSE(GetCodeControlCodeMode());
    EXPECT_TRUE(GetShowString());
    EXPECT_FALSE(GetShowPtlMode());
    int first = -1, second = -1;
    EXPECT_FALSE(GetPtlModeRefPoints(first, second));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(GetStkIncPtByVal(), 1);
    EXPECT_FALSE(GetUseBluetoothTS());
    EXPECT_FALSE(GetUseBluetoothGPS());
    EXPECT_FALSE(GetUseInternalBT());
    EXPECT_FALSE(GetUseExternalReceiver());
    EXPECT_EQ(GetExternalRcvPort(), 0);
    EXPECT_EQ(GetSelectedBluetoothPort(), kiv_df::eCommNone);
    EXPECT_EQ(GetSelectedBluetoothPort2(), kiv_df::eCommNone);
    EXPECT_EQ(GetSelectedSerialPort(), 1);
    EXPECT_FALSE(GetShowSecondCtrlCode());
    EXPECT_EQ(GetRangeDelimiter(), 0);
    EXPECT_FALSE(GetShowAlphaKeyMode());
    EXPECT_FALSE(LumaroSettings::IsSensorPortSet());
    EXPECT_FALSE(GetDoImageStakeout());
    EXPECT_FALSE(GetMirrorImage());
    EXPECT_EQ(GetBsFsCtrl(), nullptr);
    EXPECT_TRUE(GetLastCalcValue().IsEmpty());
    EXPECT_TRUE(IsEstimateScaleSet());
    EXPECT_FALSE(IsUseCalculatedScaleSet());
    EXPECT_TRUE(IsResection3D());
    EXPECT_TRUE(Is3DResectionMethodSplit());
    EXPECT_TRUE(IsUseDefaultMeasurementAccuraciesChecked());
    EXPECT_EQ(dGetDistanceError(), 0.003);
    EXPECT_EQ(dGetDistancePPM(), 3.0);
    EXPECT_EQ(dGetHorizontalError(), 5.0);
    EXPECT_EQ(dGetVerticalError(), 10.0);
    EXPECT_FALSE(IsVerticalScreenDesktopUI());
    EXPECT_EQ(GetCodeMRUCount(), 0);
}

TEST_F(GlobalSettingsTest, ResetForTestingRestoresInitialValues) {
    SetStkIncPtByVal(7);
    SetCodeMRU(L"TREE");
    kiv_host::ResetForTesting();
    EXPECT_EQ(GetStkIncPtByVal(), 1);
    EXPECT_EQ(GetCodeMRUCount(), 0);
}

TEST_F(GlobalSettingsTest, CountryDecidesEuStyleUntilOverridden) {
    SetCountry(eCountryUK);
    EXPECT_TRUE(GetEuStyle());
    SetCountry(eCountryUSA);
    EXPECT_FALSE(GetEuStyle());
    SetEuStyle(true);
    EXPECT_TRUE(GetEuStyle());
    EXPECT_EQ(GetCountry(), eCountryUSA);
}

TEST_F(GlobalSettingsTest, ShowStringIsStoredButAlwaysReadsTrue) {
    SetShowString(false);
    EXPECT_TRUE(GetShowString());
}

TEST_F(GlobalSettingsTest, PtlModeNeedsTwoUsableReferencePoints) {
    SetShowPtlMode(true);
    SetPtlModeRefPoints(1, 2);
    int a = 0, b = 0;
    EXPECT_TRUE(GetPtlModeRefPoints(a, b));
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 2);
    SetPtlModeRefPoints(0, 5);
    EXPECT_FALSE(GetPtlModeRefPoints(a, b));
    EXPECT_EQ(a, 0);
    EXPECT_EQ(b, 5);
    SetShowPtlMode(true);
    SetPtlModeRefPoints(3, 0);
    EXPECT_FALSE(GetShowPtlMode());
}

TEST_F(GlobalSettingsTest, VerticalDesktopLayoutNeedsTheDebugModeOptionToo) {
    SetVerticalScreenDesktopUI(true);
    EXPECT_FALSE(IsVerticalScreenDesktopUI());
    AdvDbgMode().verticalScreenDesktopUI = true;
    EXPECT_TRUE(IsVerticalScreenDesktopUI());
    SetVerticalScreenDesktopUI(false);
    EXPECT_FALSE(IsVerticalScreenDesktopUI());
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

TEST_F(GlobalSettingsTest, CodeMruRefusesIndexesOutsideTheList) {
    for (const wchar_t* c : {L"A", L"B", L"C", L"D", L"E"}) SetCodeMRU(c);
    CKivStringT code(L"kept");
    EXPECT_FALSE(GetCodeMRU(5, code));
    EXPECT_FALSE(GetCodeMRU(-1, code));
    EXPECT_EQ(code, L"kept");
    EXPECT_TRUE(GetCodeMRU(0, code));
    EXPECT_EQ(code, L"A");
}

TEST_F(GlobalSettingsTest, WindowPositionsRecordIsClearedOnFirstUse) {
    LastWindowPositions& first = GetLastWindowPositions();
    EXPECT_FALSE(first.valid);
    first.valid = true;
    EXPECT_TRUE(GetLastWindowPositions().valid);
    EXPECT_EQ(&GetLastWindowPositions(), &first);
}

TEST_F(GlobalSettingsTest, SoundIsLoggedAtDebugLevel) {
    kiv_test::LogCapture log;
    Sound(eSoundWarning);
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.entries()[0].level, kiv_host::kLogDebug);
    EXPECT_NE(log.entries()[0].text.find(L"warning"), std::wstring::npos);
}
