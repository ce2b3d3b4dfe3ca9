// Splines: the curve itself against known shapes, and what a blob gives back.
#include "utils/vector/Spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "utils/vector/VectorImageProducer.h"

TEST(SplineCurve, RationalQuadraticIsAnExactQuarterCircleAndClampedEndsAreHit) {
    TSplineCurve quarter;
    quarter.degree = 2;
    quarter.controlPoints = {{10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
    quarter.weights = {1.0, std::numbers::sqrt2 / 2, 1.0};
    quarter.knots = {0, 0, 0, 1, 1, 1};
    ASSERT_TRUE(quarter.isValid());
    for (const TCoord3d& p : quarter.sample(50)) EXPECT_NEAR(std::hypot(p.x, p.y), 10.0, 1e-12);

    VectorImageProducer producer;
    const int pen = producer.addLineStyle(RGB(1, 2, 3), 2, 4);
    ASSERT_EQ(producer.addSpline({{0, 0, 1}, {5, 10, 1}, {10, -10, 1}, {15, 0, 1}, {20, 5, 1}}, 3, pen, true), 0);
    EXPECT_EQ(producer.addSpline({{0, 0, 0}, {1, 1, 0}}, 2, pen), -1);       // too few points for the degree
    EXPECT_EQ(producer.addSpline({{0, 0, 0}, {1, 1, 0}}, 1, pen, false, {1.0}), -1);  // weights do not match
    auto blob = producer.build();
    ASSERT_EQ(blob->getSplineCount(), 1u);
    TSpline spline;
    ASSERT_TRUE(blob->getSpline(0, spline));
    EXPECT_EQ(spline.curve.degree, 3);
    EXPECT_TRUE(spline.curve.closed);
    EXPECT_EQ(spline.style.colour, RGB(1, 2, 3));
    EXPECT_EQ(spline.style.penStyle, 2);
    EXPECT_EQ(spline.style.width, 4);
    const std::vector<TCoord3d> points = spline.curve.sample(10);
    EXPECT_EQ(points.front().x, 0.0);
    EXPECT_NEAR(points.back().x, 20.0, 1e-12);
    EXPECT_NEAR(points.back().y, 5.0, 1e-12);
    EXPECT_TRUE(blob->verifyTagSet());
}

TEST(SplineCurve, BlobRefusesKnotsThatDoNotMatchOrRunOutsideTheImage) {
    VectorImageProducer producer;
    const int pen = producer.addLineStyle(RGB(0, 0, 0));
    producer.addSpline({{0, 0, 0}, {5, 10, 0}, {10, 0, 0}}, 2, pen);
    auto blob = producer.build();
    auto* list = blob->getEntity(VectorFormat::eSplinesList);
    ASSERT_NE(list, nullptr);
    TSpline spline;
    ASSERT_TRUE(blob->getSpline(0, spline));

    VectorFormat::writeU32(list->data() + 8, 7);  // knot count no longer control points + degree + 1
    EXPECT_FALSE(blob->getSpline(0, spline));
    VectorFormat::writeU32(list->data() + 8, 6);
    VectorFormat::writeU32(list->data() + VectorFormat::kSplineKnotsField, 0xFFFFFFF0u);
    EXPECT_FALSE(blob->getSpline(0, spline));
    EXPECT_FALSE(blob->getSpline(1, spline));
}
