// transformBBox samples only two corners of the box, so a rotated box is not widened.
#include "utils/vector/TransformBBox.h"

#include <gtest/gtest.h>

TEST(TransformBBox, QuarterTurnKeepsTheBoxOfTheTwoSampledCorners) {
    Csx::CAffineCs quarterTurn(90.0, 1.0, 0.0, 0.0);
    Csx::CIdentityCs world;
    const BoundingBox box = transformBBox(BoundingBox(0.0, 10.0, 20.0, 0.0), quarterTurn, world);
    // (left, top) = (0, 10) goes to (-10, 0); (right, bottom) = (20, 0) to (0, 20).
    EXPECT_EQ(box.left, -10.0);
    EXPECT_EQ(box.right, 0.0);
    EXPECT_EQ(box.bottom, 0.0);
    EXPECT_EQ(box.top, 20.0);
}
