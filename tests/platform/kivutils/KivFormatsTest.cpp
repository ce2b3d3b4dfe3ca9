#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "platform/kivutils/KivFormats.h"
#include "tests/support/TestSupport.h"

using namespace kiv_formats;

TEST(DecimalText, ReadsPlainNumbersWithSurroundingBlanks) {
    double v = -1;
    EXPECT_TRUE(StringToDouble(L"12.5", v));
    EXPECT_EQ(v, 12.5);
    EXPECT_TRUE(StringToDouble(L"  -0.25 ", v));
    EXPECT_EQ(v, -0.25);
    EXPECT_TRUE(StringToDouble(L"+.5", v));
    EXPECT_EQ(v, 0.5);
    EXPECT_TRUE(StringToDouble(L"5.", v));
    EXPECT_EQ(v, 5.0);
    EXPECT_TRUE(StringToDouble(L"1.5e3", v));
    EXPECT_EQ(v, 1500.0);
    EXPECT_TRUE(StringToDouble(L"0.1", v));
    EXPECT_EQ(v, 0.1);  // correctly rounded, like strtod
}

TEST(DecimalText, RejectsAnythingElseAndLeavesTheValue) {
    double v = 7;
    for (const wchar_t* bad : {L"", L"  ", L"5i", L"1,5", L"12 5", L"-", L".", L"e5", L"1e", L"inf", L"nan",
                               L"0x10", L"1e999", L"--1", L"5\u00A0"}) {
        EXPECT_FALSE(StringToDouble(bad, v)) << bad;
        EXPECT_EQ(v, 7.0);
    }
    EXPECT_FALSE(StringToDouble(nullptr, v));
}

TEST(DecimalText, WritesFixedDecimalsWithCorrectRounding) {
    EXPECT_EQ(DoubleToString(40.50403, 3), L"40.504");
    EXPECT_EQ(DoubleToString(2.5, 0), L"2");  // round half to even, exactly as printf
    EXPECT_EQ(DoubleToString(-0.0004, 3), L"-0.000");
    EXPECT_EQ(DoubleToString(1.0 / 3.0), L"0.333333");
    EXPECT_EQ(DoubleToString(1e20, 2), L"100000000000000000000.00");
    EXPECT_EQ(DoubleToString(NAN, 2), L"#####");
    EXPECT_EQ(DoubleToString(0.125, 15), L"0.125000000000000");
}

TEST(DecimalText, IgnoresACommaDecimalLocale) {
    kiv_test::ScopedLocale german("de_DE.UTF-8");
    ASSERT_TRUE(german.ok()) << "de_DE.UTF-8 is provided by scripts/install-deps.sh";
    double v = 0;
    EXPECT_TRUE(StringToDouble(L"1.5", v));
    EXPECT_EQ(v, 1.5);
    EXPECT_FALSE(StringToDouble(L"1,5", v));
    EXPECT_EQ(DoubleToString(1.5, 2), L"1.50");
    EXPECT_EQ(DMSToString(12.5, false, 1), L"12 30 00.0");
    CKivStringT formatted;
    formatted.Format(L"%.2f", 1.5);
    EXPECT_EQ(formatted, L"1.50");
}


TEST(DelimitedFields, SkipEmptyFieldsBetweenAdjacentDelimiters) {
    CKivArray<CKivStringT> f;
    EXPECT_EQ(ParseDelimitersValues(L"5'  6\"3/8", L" '\"", f), 3);
    EXPECT_EQ(f[0], L"5");
    EXPECT_EQ(f[1], L"6");
    EXPECT_EQ(f[2], L"3/8");
    EXPECT_EQ(ParseDelimitersValues(L"...", L".", f), 0);
    EXPECT_EQ(ParseDelimitersValues(L"abc", L"", f), 1);
    EXPECT_EQ(ReplaceCommasWithDecPt(L"1,5,6"), L"1.5.6");
}

TEST(SexagesimalText, ReadsWhatSurveyorsType) {
    const double expected = 12 + 30 / 60.0 + 15.5 / 3600.0;
    for (const wchar_t* text : {L"12°30'15.5\"", L"12d30'15.5\"", L"12 30 15.5", L"12:30:15.5", L" 12° 30' 15.5\" ",
                                L"N 12 30 15.5", L"12 30 15.5N", L"12\u00BA30\u203215.5\u2033", L"12D 30 15.5"}) {
        double d = 0;
        EXPECT_TRUE(StringToDegree(text, d)) << text;
        EXPECT_NEAR(d, expected, 1e-12) << text;
    }
    double d = 0;
    EXPECT_TRUE(StringToDegree(L"-12 30", d));
    EXPECT_NEAR(d, -12.5, 1e-12);
    EXPECT_TRUE(StringToDegree(L"S12 30", d));
    EXPECT_NEAR(d, -12.5, 1e-12);
    EXPECT_TRUE(StringToDegree(L"12 30W", d));
    EXPECT_NEAR(d, -12.5, 1e-12);
    EXPECT_TRUE(StringToDegree(L"12.5", d));
    EXPECT_NEAR(d, 12.5, 1e-12);
    EXPECT_TRUE(StringToDegree(L"12°30.5'", d));
    EXPECT_NEAR(d, 12 + 30.5 / 60, 1e-12);
}

TEST(SexagesimalText, RejectsMalformedAngles) {
    double d = 3;
    for (const wchar_t* bad : {L"", L"12 60", L"12 30 60", L"12.5 30", L"12 30.5 10", L"12'30", L"12 30 15 1",
                               L"-N12", L"N12S", L"12°°", L"abc", L"12 30x", L"- 12", L"12::30", L"12 30'15\"7"}) {
        EXPECT_FALSE(StringToDegree(bad, d)) << bad;
        EXPECT_EQ(d, 3.0) << bad;
    }
}

TEST(SexagesimalText, StopsAtTheEndPointerWhenAsked) {
    const wchar_t* text = L"12 30 15, next";
    const wchar_t* end = nullptr;
    double d = 0;
    EXPECT_TRUE(StringToDegree(text, d, &end));
    EXPECT_EQ(end, text + 8);
    EXPECT_NEAR(d, 12 + 30 / 60.0 + 15 / 3600.0, 1e-12);
}

TEST(SexagesimalText, WritesWithCarriesAndNoNegativeZero) {
    EXPECT_EQ(DMSToString(12 + 5 / 60.0 + 3.123 / 3600.0, true, 3), L"12°05'03.123\"");
    EXPECT_EQ(DMSToString(10 + 59 / 60.0 + 59.99996 / 3600.0, true, 4), L"11°00'00.0000\"");
    EXPECT_EQ(DMSToString(-0.00000001, true, 2), L"0°00'00.00\"");
    EXPECT_EQ(DMSToString(-12.5, false, 0), L"-12 30 00");
    EXPECT_EQ(DMSToString(3000.5, true, 9), L"3000°30'00.000000000\"");
    EXPECT_EQ(DMSToString(NAN, true, 3), L"#####");
}

TEST(SexagesimalText, RoundTripsToThePrintedPrecision) {
    std::mt19937_64 rng(20261122);
    std::uniform_real_distribution<double> angle(-720.0, 720.0);
    for (int i = 0; i < 20000; ++i) {
        const double a = angle(rng);
        const int precision = i % 6;
        const double halfDigit = 0.5 * std::pow(10.0, -precision) / 3600.0;
        for (bool symbols : {true, false}) {
            const CKivStringT text = DMSToString(a, symbols, precision);
            double back = 0;
            ASSERT_TRUE(StringToDegree(text, back)) << text.GetString();
            ASSERT_NEAR(back, a, halfDigit * 1.000001 + 1e-12) << text.GetString();
        }
    }
}
