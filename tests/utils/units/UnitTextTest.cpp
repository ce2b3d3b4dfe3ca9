#include <gtest/gtest.h>

#include <clocale>
#include <cmath>

#include "platform/kivutils/Xlate.h"
#include "tests/support/TestSupport.h"
#include "utils/units/UnitConvertEx.h"

using namespace kiv_df;

TEST(DistanceText, TypicalValueInUsFeetAdaptive) {
    UNITS u = eUSFeet;
    EXPECT_EQ(FromMetersStrEx(12.3456, eDecDigits3, u, true), L"40.504");
    EXPECT_EQ(u, eUSFeet);
    EXPECT_STREQ(DispDistUnitsStrShortEx(u), L"USft");
}

TEST(DistanceText, NeverShowsANegativeZero) {
    UNITS u = eMeters;
    EXPECT_EQ(FromMetersStrEx(0.0004, eDecDigits3, u, false), L"0.000");
    EXPECT_EQ(FromMetersStrEx(-0.0004, eDecDigits3, u, false), L"0.000");
    EXPECT_EQ(FromMetersStrEx(-0.0005, eDecDigits3, u, false), L"-0.001");
    EXPECT_EQ(FromMetersStrEx(-0.4, eDecDigits0, u, false), L"0");
}

TEST(DistanceText, SwitchesToKilometresAndLeavesUnitsAloneOnOverflow) {
    UNITS u = eMeters;
    EXPECT_EQ(FromMetersStrEx(1500.0, eDecDigits2, u, true), L"1.50");
    EXPECT_EQ(u, eKilometers);
    u = eUSFeet;
    EXPECT_EQ(FromMetersStrEx(2e64, eDecDigits2, u, true), L"#####");
    EXPECT_EQ(FromMetersStrEx(std::nan(""), eDecDigits2, u, true), L"#####");
    EXPECT_EQ(u, eUSFeet);
    EXPECT_NE(FromMetersStrEx(1e64, eDecDigits2, u, false), L"#####");  // the bound is valid
}


TEST(DistanceText, YardsAreLoggedButStillFormatted) {
    kiv_test::LogCapture logs;
    UNITS u = eIntlYards;
    EXPECT_EQ(FromMetersStrEx(5.0, eDecDigits2, u, false), L"1.00");  // 1.0: yards do not convert
    EXPECT_EQ(logs.count(), 2u);  // once by the conversion, once by the text
}

TEST(DistanceText, NegativeUnitsAreLoggedButStillFormatted) {
    kiv_test::LogCapture logs;
    UNITS u = static_cast<UNITS>(-1);
    EXPECT_EQ(FromMetersStrEx(5.0, eDecDigits2, u, false), L"1.00");
    EXPECT_EQ(logs.count(), 2u);
}

TEST(DistanceText, DigitCountsBeyondTheEnumerationBehaveAsPrintf) {
    UNITS u = eMeters;
    EXPECT_EQ(FromMetersStrEx(1.5, static_cast<EKivDecimalDigits>(-1), u, false), L"0.000000");  // |v| < 5
    EXPECT_EQ(FromMetersStrEx(7.5, static_cast<EKivDecimalDigits>(-1), u, false), L"7.500000");
    EXPECT_EQ(FromMetersStrEx(7.5e12, static_cast<EKivDecimalDigits>(-12), u, false), L"7500000000000.000000");
    EXPECT_EQ(FromMetersStrEx(7.5, static_cast<EKivDecimalDigits>(-12), u, false), L"0.000000   ");
    EXPECT_EQ(FromMetersStrEx(1.5, static_cast<EKivDecimalDigits>(2147483647), u, false).GetLength(), 64);
}

TEST(DistanceText, IsIdenticalUnderACommaDecimalLocale) {
    UNITS u = eUSFeet;
    const CKivStringT before = FromMetersStrEx(12.3456, eDecDigits3, u, true);
    kiv_test::ScopedLocale german("de_DE.UTF-8");
    ASSERT_TRUE(german.ok()) << "de_DE.UTF-8 is provided by scripts/install-deps.sh";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    u = eUSFeet;
    EXPECT_EQ(FromMetersStrEx(12.3456, eDecDigits3, u, true), before);
    double v = 0;
    EXPECT_TRUE(StringToLinearValEx(L"12.5m", v, eMeters));
    EXPECT_EQ(v, 12.5);
    CKivStringT out;
    FromDispDegStr(out, 100.126, eGrads, 2);
    EXPECT_EQ(out, L"100.13");
}

TEST(UnitNames, ShortTextsAndTheirLimits) {
    EXPECT_STREQ(DispDistUnitsStrShortEx(eUSYards), L"USyds");
    EXPECT_STREQ(DispDistUnitsStrShortEx(static_cast<UNITS>(11)), L"m");
    EXPECT_STREQ(DispDistUnitsStrShortEx(static_cast<UNITS>(-3)), L"m");
    EXPECT_STREQ(DispAngleUnitsStrShortEx(eMils), L"mls");
    EXPECT_STREQ(DispAngleUnitsStrShortEx(eDMS), L"");
    EXPECT_EQ(DispAngleUnitsStrShortEx(eAngleUnit4), nullptr);
    EXPECT_EQ(DispAngleUnitsStrShortEx(eDMSPacked), nullptr);
}

TEST(TypedSuffix, FirstOccurrenceDecidesIncludingTheStrayLetter) {
    CKivStringT text = L"5ich";
    UNITS u = eMeters;
    EXPECT_TRUE(FindUnitsinStr(text, u));
    EXPECT_EQ(u, eUSChains);
    EXPECT_EQ(text, L"5i");
    text = L"3ifti";
    EXPECT_TRUE(FindUnitsinStr(text, u));
    EXPECT_EQ(u, eUSFeetInches);
    EXPECT_EQ(text, L"3i");
    text = L"12 M ";
    EXPECT_TRUE(FindUnitsinStr(text, u));
    EXPECT_EQ(u, eMeters);
    EXPECT_EQ(text, L"12 ");
    text = L"2f5f";  // the first "f" is not at the end: that row fails, so do the others
    u = eIntlChains;
    EXPECT_FALSE(FindUnitsinStr(text, u));
    EXPECT_EQ(text, L"2f5f");
    EXPECT_EQ(u, eIntlChains);
}


TEST(TypedSuffix, PassesThroughTheLanguageFile) {
    kiv_test::TempDeviceRoot root;
    kiv_test::WriteFileBytes(root.HostPath(L"\\lang.txt"), "ch\tkt\n");
    ASSERT_TRUE(LoadLanguageFile(L"\\lang.txt"));
    CKivStringT text = L"4kt";
    UNITS u = eMeters;
    EXPECT_TRUE(FindUnitsinStr(text, u));
    EXPECT_EQ(u, eUSChains);
    EXPECT_EQ(text, L"4");
}

TEST(TypedLength, ConvertsTheTypedUnitIntoTheCurrentUnit) {
    double v = 0;
    EXPECT_TRUE(StringToLinearValEx(L"12,5m", v, eMeters));
    EXPECT_EQ(v, 12.5);
    EXPECT_TRUE(StringToLinearValEx(L"10f", v, eMeters));
    EXPECT_DOUBLE_EQ(v, 10 * 1200.0 / 3937.0);
    EXPECT_TRUE(StringToLinearValEx(L"10if", v, eUSFeet));
    EXPECT_DOUBLE_EQ(v, 3.048 * 3937.0 / 1200.0);
    EXPECT_TRUE(StringToLinearValEx(L"7.25", v, eUSChains));
    EXPECT_EQ(v, 7.25);
    EXPECT_TRUE(StringToLinearValEx(L"5'6\"3/8", v, eUSFeetInches));
    EXPECT_DOUBLE_EQ(v, 5 + 6.375 / 12);
    EXPECT_TRUE(StringToLinearValEx(L"3m", v, eIntlFeetInches));
    EXPECT_DOUBLE_EQ(v, 3 / 0.3048);
    EXPECT_TRUE(StringToLinearValEx(L"5.6fti", v, eMeters));  // typed feet and inches
    EXPECT_DOUBLE_EQ(v, 5.5 * 1200.0 / 3937.0);
    EXPECT_FALSE(StringToLinearValEx(L"5ich", v, eMeters));  // the stray "i" spoils the number
    EXPECT_FALSE(StringToLinearValEx(L"", v, eMeters));
    EXPECT_FALSE(StringToLinearValEx(L"abc", v, eMeters));
}


TEST(AngleText, FormatsByUnit) {
    CKivStringT out;
    FromDispDegStr(out, 1.23456789, eRadians, 4);
    EXPECT_EQ(out, L"1.2346");
    FromDispDegStr(out, 12.5, eDMS, 1);
    EXPECT_EQ(out, L"12°30'00.0\"");
    FromDispDegStr(out, 12.3015, eDMSPacked, 4);
    EXPECT_EQ(out, L"12.3015");
    FromDispDegStr(out, 1.0, eAngleUnit4, 4);
    EXPECT_EQ(out, L"#####");
    FromDispDegStr(out, 1.0, static_cast<ANGLES>(-1), 4);
    EXPECT_EQ(out, L"#####");
    FromDispDegStr(out, -2e64, eGrads, 4);
    EXPECT_EQ(out, L"#####");
}

TEST(AngleText, ReadsByUnitWithTurningAndLevel) {
    double d = 0;
    EXPECT_TRUE(ToDegreesExStr(L"100", d, eGrads));
    EXPECT_DOUBLE_EQ(d, 90.0);
    EXPECT_TRUE(ToDegreesExStr(L"12 30", d, eDMS));
    EXPECT_DOUBLE_EQ(d, 12.5);
    EXPECT_TRUE(ToDegreesExStr(L"12.3", d, eDMSPacked));
    EXPECT_DOUBLE_EQ(d, 12.3);  // stored as decimal degrees, not unpacked
    EXPECT_TRUE(ToDegreesHAExStr(L"90", d, eAngleUnit4, true));
    EXPECT_DOUBLE_EQ(d, 270.0);
    EXPECT_TRUE(ToDegreesVAExStr(L"100", d, eGrads, true));
    EXPECT_DOUBLE_EQ(d, 0.0);
    EXPECT_FALSE(ToDegreesVAExStr(L"x", d, eGrads, true));
    EXPECT_NE(d, 90.0);  // a failed reading is not turned into a zenith angle
}

TEST(GradText, SwitchesScaleAtFourDigits) {
    // 3240 seconds of arc are exactly one grad, 10000 centesimal seconds.
    EXPECT_EQ(ConvertDegSecToGradInPrecision(3240.0, eDecDigits3), L"1.000");
    EXPECT_EQ(ConvertDegSecToGradInPrecision(3240.0, eDecDigits4), L"10000");
    EXPECT_EQ(ConvertDegSecToGradInPrecision(3240.0, eDecDigits5), L"10000.0");
    EXPECT_EQ(ConvertDegSecToGradInPrecision(1.0, eDecDigits5), L"3.1");
}
