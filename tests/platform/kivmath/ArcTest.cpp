// atan3's quadrants and CArc: direction of travel, bounds, distance and sample points.
#include "platform/kivmath/Arc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

constexpr double kPi = std::numbers::pi;

TEST(Atan3, CountsClockwiseFromNorthWithSineAlongX) {
    EXPECT_DOUBLE_EQ(atan3(0.0, 1.0), 0.0);
    EXPECT_DOUBLE_EQ(atan3(1.0, 0.0), kPi / 2);
    EXPECT_DOUBLE_EQ(atan3(0.0, -1.0), kPi);
    EXPECT_DOUBLE_EQ(atan3(-1.0, 0.0), 3 * kPi / 2);
    EXPECT_DOUBLE_EQ(atan3(-1.0, 1.0), 7 * kPi / 4);
    EXPECT_EQ(atan3(0.0, 0.0), 0.0);
    const double a = atan3(3.0, 4.0);
    EXPECT_DOUBLE_EQ(std::sin(a), 0.6);
    EXPECT_DOUBLE_EQ(std::cos(a), 0.8);
}

TEST(CArc, TurnsTheWayItIsToldAndEndsInTheFinishDirection) {
    CArc ccw, cw;
    ASSERT_TRUE(ccw.set_start_center_finish({1, 0}, {0, 0}, {0, 5}, false));
    ASSERT_TRUE(cw.set_start_center_finish({1, 0}, {0, 0}, {0, 5}, true));
    EXPECT_NEAR(ccw.getSweep(), -kPi / 2, 1e-12);
    EXPECT_NEAR(cw.getSweep(), 3 * kPi / 2, 1e-12);
    EXPECT_NEAR(ccw.getFinish().y, 1.0, 1e-12);  // radius from the start only
    EXPECT_NEAR(ccw.pointAt(0.5).x, std::sqrt(0.5), 1e-12);
    EXPECT_NEAR(cw.pointAt(1.0 / 3).y, -1.0, 1e-12);
    EXPECT_NEAR(cw.getLength(), 1.5 * kPi, 1e-12);
}

TEST(CArc, FinishAtTheStartMakesAFullCircleAndNoRadiusMakesNone) {
    CArc circle, empty;
    ASSERT_TRUE(circle.set_start_center_finish({2, 0}, {0, 0}, {4, 0}, true));
    EXPECT_NEAR(circle.getSweep(), 2 * kPi, 1e-12);
    double l, t, r, b;
    circle.getBounds(l, t, r, b);
    EXPECT_DOUBLE_EQ(l, -2.0);
    EXPECT_DOUBLE_EQ(t, 2.0);
    EXPECT_FALSE(empty.set_start_center_finish({1, 1}, {1, 1}, {2, 2}, false));
    EXPECT_TRUE(empty.isEmpty());
}

TEST(CArc, DistanceIsToTheArcNotTheWholeCircle) {
    CArc quarter;  // east to north, counter-clockwise, radius 10
    ASSERT_TRUE(quarter.set_start_center_finish({10, 0}, {0, 0}, {0, 10}, false));
    EXPECT_NEAR(quarter.distanceTo({7.0710678118654755 * 1.2, 7.0710678118654755 * 1.2}), 2.0, 1e-9);
    EXPECT_NEAR(quarter.distanceTo({-10, 0}), std::hypot(10.0, 10.0), 1e-9);  // nearest is the north end
    EXPECT_NEAR(quarter.distanceTo({0, 0}), 10.0, 1e-12);
}
