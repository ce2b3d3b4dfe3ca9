#include <gtest/gtest.h>

#include "platform/kivmath/KivMath.h"
#include "tests/support/TestSupport.h"
#include "utils/units/UnitConvertEx.h"

using namespace kiv_df;


TEST(LengthConversion, UnsupportedUnitsGiveOneAndALogEntry) {
    kiv_test::LogCapture logs;
    EXPECT_EQ(ToMetersEx(12.0, eMiles), 1.0);
    EXPECT_EQ(ToMetersEx(12.0, eIntlYards), 1.0);
    EXPECT_EQ(FromMetersEx(12.0, eKilometers), 1.0);
    EXPECT_EQ(FromMetersEx(12.0, static_cast<UNITS>(-1)), 1.0);
    ASSERT_EQ(logs.count(), 4u);
    for (const auto& e : logs.entries()) {
        EXPECT_EQ(e.source, "UnitConvertEx");
        EXPECT_EQ(e.level, 0);
        EXPECT_TRUE(e.text.empty());
    }
}

TEST(LengthConversion, Vec3ConvertsEachComponentAndLeavesTheSource) {
    const double source[3] = {1.0, 2.0, 3.0};
    double target[3] = {0, 0, 0};
    FromMetersVec3Ex(source, target, eIntlFeet);
    EXPECT_EQ(source[0], 1.0);
    EXPECT_EQ(source[2], 3.0);
    EXPECT_DOUBLE_EQ(target[1], 2.0 / 0.3048);
    double xyz[3] = {0.3048, 0.6096, 0.9144};
    FromMetersVec3Ex(xyz, eIntlFeet);
    EXPECT_DOUBLE_EQ(xyz[2], 3.0);
    ToMetersVec3Ex(xyz, eIntlFeet);
    EXPECT_DOUBLE_EQ(xyz[0], 0.3048);
    ToMetersVec3Ex(source, target, eMeters);
    EXPECT_EQ(target[2], 3.0);
}

TEST(AdaptiveLength, SwitchesOnlyStrictlyAboveTheThreshold) {
    UNITS u = eMeters;
    EXPECT_EQ(FromMetersAdaptiveEx(1000.0, u), 1000.0);
    EXPECT_EQ(u, eMeters);
    EXPECT_EQ(FromMetersAdaptiveEx(1500.0, u), 1.5);
    EXPECT_EQ(u, eKilometers);
    u = eMeters;
    EXPECT_EQ(FromMetersAdaptiveEx(-5000.0, u), -5000.0);
    EXPECT_EQ(u, eMeters);
    u = eUSFeet;
    EXPECT_DOUBLE_EQ(FromMetersAdaptiveEx(1200.0, u), 3937.0);
    EXPECT_EQ(u, eUSFeet);
}

TEST(AdaptiveLength, FeetAndInchesBecomeMilesOfTheSameFoot) {
    UNITS u = eIntlFeetInches;
    EXPECT_NEAR(FromMetersAdaptiveEx(5281.0 * 0.3048, u), 5281.0 / 5280.0, 1e-12);
    EXPECT_EQ(u, eMiles);
    u = eUSChains;
    FromMetersAdaptiveEx(1e7, u);
    EXPECT_EQ(u, eUSChains);
}


TEST(AngleConversion, PackedUnitIsWrittenButNotReadAndUnknownIsLoggedOneWay) {
    kiv_test::LogCapture logs;
    EXPECT_EQ(ToDegreesEx(12.0, eDMSPacked), 1.0);
    EXPECT_EQ(ToDegreesEx(12.0, eAngleUnit4), 1.0);
    EXPECT_EQ(logs.count(), 0u);
    // Seven decimals: three of the second plus four for minutes and whole seconds.
    const double third = 12.0 + 1.0 / 3.0 / 3600.0;
    EXPECT_NEAR(FromDegreesEx(third, eDMSPacked, 3, false), 12.0000333, 1e-12);
    EXPECT_EQ(logs.count(), 0u);
    EXPECT_EQ(FromDegreesEx(12.0, eAngleUnit4, 3, false), 1.0);
    EXPECT_EQ(logs.count(), 1u);
}

TEST(AngleConversion, TurningAndLevelApplyInDegrees) {
    EXPECT_NEAR(ToDegreesHAEx(100.0, eGrads, true), 270.0, 1e-12);
    EXPECT_NEAR(FromDegreesHAEx(270.0, eGrads, true, 3), 100.0, 1e-12);
    EXPECT_NEAR(ToDegreesVAEx(10.0, eGrads, true), 81.0, 1e-12);
    EXPECT_NEAR(FromDegreesVAEx(81.0, eGrads, true, 3), 10.0, 1e-12);
    EXPECT_NEAR(FromDegreesVAEx(81.0, eGrads, false, 3), 90.0, 1e-12);
}

TEST(AreaAndVolume, ConvertByUnitAndPassUnknownUnitsThrough) {
    EXPECT_DOUBLE_EQ(ConvertAreaValueToDispUnits(1.0, eUSFeet), 10.76386736111111);
    EXPECT_DOUBLE_EQ(ConvertAreaValueToDispUnits(1.0, eIntlFeetInches), 10.76391041670972);
    EXPECT_NEAR(ConvertAreaToAcres(4046.8564224), 1.0, 1e-15);
    EXPECT_EQ(ConvertAreaValueToDispUnits(1.0, eKilometers), 1.0);
    EXPECT_EQ(ConvertVolumeValueToDispUnits(1.0, eMiles), 1.0);
    EXPECT_EQ(ConvertVolumeValueToDispUnits(1.0, static_cast<UNITS>(42)), 1.0);
    EXPECT_NEAR(ConvertVolumeValueToDispUnits(0.764554857984, eIntlYards), 1.0, 1e-12);
    EXPECT_NEAR(ConvertVolumeValueToDispUnits(1.0, eUSChains), CubicMeter2CubicChain(1.0, true), 1e-18);
}
