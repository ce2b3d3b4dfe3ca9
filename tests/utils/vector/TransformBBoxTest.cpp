// transformBBox over affine coordinate systems: only two corners are sampled, and the
// affine system itself round-trips points and passes z through.
#include "utils/vector/TransformBBox.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(AffineCs, ConvertsThroughTheWorldAndBack) {
    Csx::CAffineCs site(30.0, 2.0, 100.0, -50.0);
    Csx::CIdentityCs world;
    const TCoord3d p = site.convert(3.0, 4.0, 7.5, world);
    EXPECT_NEAR(std::hypot(p.x - 100.0, p.y + 50.0), 10.0, 1e-12);  // scale 2 of a 5-long vector
    EXPECT_EQ(p.z, 7.5);
    const TCoord3d back = world.convert(p, site);
    EXPECT_NEAR(back.x, 3.0, 1e-12);
    EXPECT_NEAR(back.y, 4.0, 1e-12);
}

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

TEST(TransformBBox, SamplesTwoHeightsSoHeightDependentSystemsWiden) {
    // A system whose x leans with height: the samples at z = 1000 reach further.
    struct Leaning : Csx::CCs {
        TCoord3d toWorld(const TCoord3d& p) const override { return {p.x + p.z / 1000.0, p.y, p.z}; }
        TCoord3d fromWorld(const TCoord3d& p) const override { return {p.x - p.z / 1000.0, p.y, p.z}; }
    } leaning;
    Csx::CIdentityCs world;
    const BoundingBox box = transformBBox(BoundingBox(0.0, 1.0, 1.0, 0.0), leaning, world);
    EXPECT_EQ(box.left, 0.0);
    EXPECT_EQ(box.right, 2.0);
}
