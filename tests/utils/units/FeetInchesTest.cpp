#include <gtest/gtest.h>

#include <cmath>

#include "platform/kivutils/KivFormats.h"
#include "utils/units/FeetInches.h"

namespace {
double ReadBack(const wchar_t* typed) {
    CKivStringT text = typed;
    EXPECT_TRUE(ConvertFeetInchesToNormalDoubleString(text)) << typed;
    double v = NAN;
    EXPECT_TRUE(kiv_formats::StringToDouble(text, v)) << text.GetString();
    return v;
}
}  // namespace

TEST(FeetInchesText, WritesFeetInchesAndReducedFractions) {
    EXPECT_EQ(ToFeetInchesString(5.5, eDecDigits3), L"5'6\"");
    EXPECT_EQ(ToFeetInchesString(5 + 6.375 / 12, eDecDigits3), L"5'6\"3/8");
    EXPECT_EQ(ToFeetInchesString(-0.5, eDecDigits0), L"-0'6\"");
    EXPECT_EQ(ToFeetInchesString(0.0, eDecDigits2), L"0'0\"");
    EXPECT_EQ(ToFeetInchesString(1 + 1.0 / 12 / 256, eDecDigits6), L"1'0\"1/256");
    EXPECT_EQ(ToFeetInchesString(1e12, eDecDigits2), L"#####");
}

TEST(FeetInchesText, RoundsUpToTheNextWholeInchWithoutFraction) {
    // 0.01" below 7" is within half of 1/32".
    EXPECT_EQ(ToFeetInchesString(5 + 6.99 / 12, eDecDigits3), L"5'7\"");
    EXPECT_EQ(ToFeetInchesString(5 + 11.995 / 12, eDecDigits3), L"6'0\"");
}

TEST(FeetInchesText, ExactCaseKeepsTheFinestDenominator) {
    // 31/64" plus the half step lands on exactly 1/2, found at d = 2, written over D = 32.
    EXPECT_EQ(ToFeetInchesString(2 + (6 + 31.0 / 64) / 12, eDecDigits3), L"2'6\"1/32");
}

TEST(FeetInchesText, CarriesRoundedInchIntoInchesNotFeet) {
    // Within a rounding of the sixth decimal below a whole foot, the inches count up to 12
    // while the feet already written stay.
    const double value = 4 + (11.9999996 - 1.0 / 64) / 12;
    EXPECT_EQ(ToFeetInchesString(value, eDecDigits3), L"4'12\"");
}

TEST(DottedFeetInches, ReadsFeetInchesAndFractions) {
    EXPECT_DOUBLE_EQ(ReadBack(L"5.6"), 5.5);
    EXPECT_DOUBLE_EQ(ReadBack(L"5.14"), 6 + 2.0 / 12);  // 14 inches carry a foot
    EXPECT_DOUBLE_EQ(ReadBack(L"5.-3"), -5.25);
    EXPECT_DOUBLE_EQ(ReadBack(L"-0.6"), -0.5);
    EXPECT_DOUBLE_EQ(ReadBack(L"5.6.3.8"), 5.5 + 3.0 / 8 / 12);
    EXPECT_LT(ReadBack(L"5.6.0.8"), 0);  // a zero numerator makes the value negative
    EXPECT_DOUBLE_EQ(ReadBack(L"5.6.3.10"), 5.5);  // 10 is no power of two: fraction ignored
    CKivStringT text = L"5.6.9.8";
    ASSERT_TRUE(StrFeetInchesFormat1ToNormalDoubleStr(text));
    EXPECT_EQ(text, L"5.500000");  // improper fraction: ignored, default precision
    text = L"5.6.3";
    EXPECT_FALSE(StrFeetInchesFormat1ToNormalDoubleStr(text));
    EXPECT_EQ(text, L"5.6.3");
    text = L"...";
    EXPECT_FALSE(StrFeetInchesFormat1ToNormalDoubleStr(text));
}

TEST(MarkedFeetInches, RewritesIntoTheDottedForm) {
    EXPECT_DOUBLE_EQ(ReadBack(L"5'6\"3/8"), 5.5 + 3.0 / 8 / 12);
    EXPECT_DOUBLE_EQ(ReadBack(L"5 6 3/8"), 5.5 + 3.0 / 8 / 12);
    EXPECT_DOUBLE_EQ(ReadBack(L"6\""), 0.5);
    EXPECT_DOUBLE_EQ(ReadBack(L"3/8"), 3.0 / 8 / 12);
    EXPECT_DOUBLE_EQ(ReadBack(L"6 3/8"), (6 + 3.0 / 8) / 12);
    EXPECT_DOUBLE_EQ(ReadBack(L"6 3 8"), (6 + 3.0 / 8) / 12);
    EXPECT_DOUBLE_EQ(ReadBack(L"5 6 3 8"), 5.5 + 3.0 / 8 / 12);
    EXPECT_DOUBLE_EQ(ReadBack(L"5'  6\""), 5.5);
    CKivStringT text = L"12";
    ASSERT_TRUE(StrFeetInchesFormat2ToNormalDoubleStr(text));
    EXPECT_EQ(text, L"12");  // twelve feet
    text = L"\"12";  // a leading double quote is no inch mark: decimal feet
    ASSERT_TRUE(StrFeetInchesFormat2ToNormalDoubleStr(text));
    EXPECT_EQ(text, L"12");
    text = L"1 2 3 4 5";
    EXPECT_FALSE(StrFeetInchesFormat2ToNormalDoubleStr(text));
    EXPECT_EQ(text, L"1 2 3 4 5");
    text = L"\"'";
    EXPECT_FALSE(StrFeetInchesFormat2ToNormalDoubleStr(text));
}


TEST(FeetInchesRoundTrip, DenseSweepReadsBackWithinHalfTheFinestFraction) {
    // Values are sampled every 0.001 ft, which never lands on the lattice where the
    // deliberate exact-case denominator applies (pinned separately above).
    for (int digits = 0; digits <= 6; ++digits) {
        const int D = digits == 0 ? 1 : (digits >= 6 ? 256 : 4 << digits);
        const double halfFraction = 0.5 / D / 12.0;
        for (int i = -30000; i <= 30000; ++i) {
            const double feet = i * 0.001;
            CKivStringT text = ToFeetInchesString(feet, static_cast<EKivDecimalDigits>(digits));
            const CKivStringT shown = text;
            ASSERT_TRUE(ConvertFeetInchesToNormalDoubleString(text)) << shown.GetString();
            double back = NAN;
            ASSERT_TRUE(kiv_formats::StringToDouble(text, back)) << shown.GetString();
            ASSERT_NEAR(back, feet, halfFraction + 1e-9) << shown.GetString() << " digits " << digits;
        }
    }
}
