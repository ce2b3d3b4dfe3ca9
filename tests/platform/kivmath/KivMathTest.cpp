#include <gtest/gtest.h>

#include <cmath>

#include "platform/kivmath/KivMath.h"

// Reference factors from the definitions: the US survey foot is 1200/3937 m, the
// international foot 0.3048 m, the chain 66 feet, the acre 43560 international square feet.
TEST(LengthFactors, MatchTheLegalDefinitionsOfTheFeet) {
    EXPECT_DOUBLE_EQ(USFeet2Meter(3937.0), 1200.0);
    EXPECT_DOUBLE_EQ(Meter2USFeet(1200.0), 3937.0);
    EXPECT_DOUBLE_EQ(IFeet2Meter(1.0), 0.3048);
    EXPECT_DOUBLE_EQ(Meter2IFeet(0.3048), 1.0);
    EXPECT_NEAR(Meter2USFeet(1.0), 3.2808333333, 1e-10);
    EXPECT_NEAR(Meter2IFeet(1.0), 3.2808398950, 1e-10);
    EXPECT_NEAR(Chain2Meter(1.0, true), 66.0 * 1200.0 / 3937.0, 1e-12);
    EXPECT_DOUBLE_EQ(Chain2Meter(1.0, false), 20.1168);
    EXPECT_NEAR(Meter2Chain(Chain2Meter(7.25, true), true), 7.25, 1e-12);
}


TEST(AngleFactors, CircleIs400GradsAnd6400Mils) {
    EXPECT_DOUBLE_EQ(Deg2Grad(360.0), 400.0);
    EXPECT_DOUBLE_EQ(Grad2Deg(100.0), 90.0);
    EXPECT_DOUBLE_EQ(Deg2Mil(360.0), 6400.0);
    EXPECT_DOUBLE_EQ(Mil2Deg(1600.0), 90.0);
    EXPECT_NEAR(Rad2Deg(M_PI), 180.0, 1e-12);
    EXPECT_NEAR(Deg2Rad(90.0), M_PI / 2, 1e-15);
    EXPECT_NEAR(DegSec2GradCC(3240.0), 10000.0, 1e-9);  // 0.9 degrees is one grad
}

TEST(PackedSexagesimal, ReadsMinutesAndSecondsDigits) {
    EXPECT_NEAR(DDDMMSS2Deg(12.3000), 12.5, 1e-12);
    EXPECT_NEAR(DDDMMSS2Deg(12.3015), 12.0 + 30 / 60.0 + 15 / 3600.0, 1e-12);
    EXPECT_NEAR(DDDMMSS2Deg(-12.3015), -(12.0 + 30 / 60.0 + 15 / 3600.0), 1e-12);
    EXPECT_NEAR(DDDMMSS2Deg(0.00305), 30.5 / 3600.0, 1e-12);
}

TEST(PackedSexagesimal, CarriesRoundedSecondsIntoMinutesAndDegrees) {
    // 59.99996" rounds to 60.0000" at four decimals of a second: it must carry.
    const double almost = 10.0 + 59.0 / 60.0 + 59.99996 / 3600.0;
    EXPECT_NEAR(Deg2DDDMMSS(almost, 8, false), 11.0, 1e-12);
    EXPECT_NEAR(Deg2DDDMMSS(12.5, 7, false), 12.3, 1e-12);
    EXPECT_NEAR(Deg2DDDMMSS(-12.5, 7, false), -12.3, 1e-12);
    EXPECT_NEAR(Deg2DDDMMSS(-90.0, 7, true), 270.0, 1e-12);
    EXPECT_NEAR(Deg2DDDMMSS(1.0 + 1.0 / 3600.0 * 1.23456, 6, false), 1.000123, 1e-12);
}

TEST(PackedSexagesimal, FewDecimalsRoundAtTheirOwnDigit) {
    const double a = 12 + 30 / 60.0 + 44 / 3600.0;  // 12°30'44"
    EXPECT_NEAR(Deg2DDDMMSS(a, 4, false), 12.3044, 1e-12);
    EXPECT_NEAR(Deg2DDDMMSS(a, 3, false), 12.304, 1e-12);  // tens of seconds
    EXPECT_NEAR(Deg2DDDMMSS(a, 2, false), 12.31, 1e-12);   // minutes
    EXPECT_NEAR(Deg2DDDMMSS(a, 1, false), 12.3, 1e-12);    // tens of minutes
    EXPECT_NEAR(Deg2DDDMMSS(a, 0, false), 13.0, 1e-12);    // degrees
    EXPECT_NEAR(Deg2DDDMMSS(30000.5, 12, false), 30000.3, 1e-9);
}

TEST(PackedSexagesimal, RoundTripsThroughTheReader) {
    for (double d = -359.0; d < 360.0; d += 7.123456789) {
        const double packed = Deg2DDDMMSS(d, 8, false);
        EXPECT_NEAR(DDDMMSS2Deg(packed), d, 0.5e-4 / 3600.0 + 1e-12) << d;
    }
}

TEST(TurningAndLevel, StayInTheirNaturalRanges) {
    EXPECT_DOUBLE_EQ(HL2HR(90.0), 270.0);
    EXPECT_DOUBLE_EQ(HL2HR(0.0), 0.0);
    EXPECT_DOUBLE_EQ(HR2HL(HL2HR(123.4)), 123.4);
    EXPECT_DOUBLE_EQ(HL2HR(450.0), 270.0);
    EXPECT_DOUBLE_EQ(Level2Zenith(0.0), 90.0);
    EXPECT_DOUBLE_EQ(Level2Zenith(90.0), 0.0);
    EXPECT_DOUBLE_EQ(Level2Zenith(-30.0), 120.0);
    EXPECT_DOUBLE_EQ(Zenith2Level(120.0), -30.0);
    EXPECT_DOUBLE_EQ(Zenith2Level(270.0), 180.0);
    EXPECT_DOUBLE_EQ(Zenith2Level(Level2Zenith(45.5)), 45.5);
}

