// How point, line and arc buffers divide against a node's box: the quadrant rule on
// the dividing lines, lines handed whole to every quadrant they cross, arcs by box.
#include "utils/vector/RenderableBuffers.h"

#include <gtest/gtest.h>

#include "utils/vector/VectorImageProducer.h"

namespace {

const BoundingBox kBox(0.0, 10.0, 10.0, 0.0);  // centre (5, 5)

std::vector<int> countsOf(const std::shared_ptr<IRenderableBuffer> (&parts)[4]) {
    std::vector<int> counts;
    for (const auto& part : parts) counts.push_back(part ? part->getFeatureCount() : 0);
    return counts;
}

std::vector<int> quadrantsOfLine(double x1, double y1, double x2, double y2) {
    LineBuffer lines({{x1, y1, x2, y2, 0, 0}});
    std::shared_ptr<IRenderableBuffer> parts[4];
    EXPECT_TRUE(lines.split(kBox, parts));
    return countsOf(parts);
}

}  // namespace

TEST(BufferQuadrants, DividingLinesBelongToTheRightAndUpperSides) {
    EXPECT_EQ(quadrantOf(kBox, 4.9, 5.0), 0);
    EXPECT_EQ(quadrantOf(kBox, 5.0, 5.0), 1);
    EXPECT_EQ(quadrantOf(kBox, 4.9, 4.9), 2);
    EXPECT_EQ(quadrantOf(kBox, 5.0, 4.9), 3);
}

TEST(BufferSplit, PointsGoToExactlyOneQuadrantEach) {
    PointBuffer points({{1, 9, 0}, {9, 9, 1}, {9, 8, 2}, {5, 5, 3}, {1, 1, 4}});
    std::shared_ptr<IRenderableBuffer> parts[4];
    ASSERT_TRUE(points.split(kBox, parts));
    EXPECT_EQ(countsOf(parts), (std::vector<int>{1, 3, 1, 0}));
    EXPECT_EQ(parts[3], nullptr);
}

TEST(BufferSplit, LinesGoWholeToTheQuadrantsOfTheirEnds) {
    EXPECT_EQ(quadrantsOfLine(1, 9, 2, 8), (std::vector<int>{1, 0, 0, 0}));  // one quadrant
    EXPECT_EQ(quadrantsOfLine(1, 9, 9, 9), (std::vector<int>{1, 1, 0, 0}));  // side by side
    EXPECT_EQ(quadrantsOfLine(1, 9, 1, 1), (std::vector<int>{1, 0, 1, 0}));
    // Diagonal ends: the third quadrant is where the segment crosses y = 5.
    EXPECT_EQ(quadrantsOfLine(1, 9, 9, 3), (std::vector<int>{1, 1, 0, 1}));  // crosses at x = 6.33
    EXPECT_EQ(quadrantsOfLine(1, 7, 9, 1), (std::vector<int>{1, 0, 1, 1}));  // crosses at x = 3.67
    EXPECT_EQ(quadrantsOfLine(9, 9, 1, 3), (std::vector<int>{1, 1, 1, 0}));  // crosses at x = 3.67
    EXPECT_EQ(quadrantsOfLine(9, 7, 1, 1), (std::vector<int>{0, 1, 1, 1}));  // crosses at x = 6.33
}

TEST(BufferSplit, DiagonalThroughTheCentreCountsAsRightOfIt) {
    // Crossing exactly at the centre (within 1e-12) takes the right-hand side.
    EXPECT_EQ(quadrantsOfLine(1, 9, 9, 1), (std::vector<int>{1, 1, 0, 1}));
    EXPECT_EQ(quadrantsOfLine(9, 9, 1, 1), (std::vector<int>{0, 1, 1, 1}));
    // Crossing at x = 5 - 5e-13 is still the centre; at 5 - 2e-12 it is left of it.
    EXPECT_EQ(quadrantsOfLine(1 - 5e-13, 9, 9 - 5e-13, 1), (std::vector<int>{1, 1, 0, 1}));
    EXPECT_EQ(quadrantsOfLine(9 - 5e-13, 9, 1 - 5e-13, 1), (std::vector<int>{0, 1, 1, 1}));
    EXPECT_EQ(quadrantsOfLine(1 - 2e-12, 9, 9 - 2e-12, 1), (std::vector<int>{1, 0, 1, 1}));
    EXPECT_EQ(quadrantsOfLine(9 - 2e-12, 9, 1 - 2e-12, 1), (std::vector<int>{1, 1, 1, 0}));
}

TEST(BufferSplit, LinesOutsideTheBoxAreLeftOut) {
    EXPECT_EQ(quadrantsOfLine(20, 20, 30, 30), (std::vector<int>{0, 0, 0, 0}));
}

TEST(BufferSplit, ArcGoesToEachQuadrantItsBoxTouches) {
    VectorImageProducer producer;
    const int style = producer.addLineStyle(0);
    producer.addArc({9, 8, 0}, {8, 8, 0}, {8, 9, 0}, false, style);   // small, in the upper right
    producer.addArc({2, 8, 0}, {5, 8, 0}, {8, 8, 0}, true, style);    // over the top, both upper
    producer.addArc({8, 5, 0}, {5, 5, 0}, {8, 5, 0}, false, style);   // full circle round the centre
    auto blob = producer.build();
    std::shared_ptr<IRenderableBuffer> parts[4];

    ASSERT_TRUE(ArcBuffer(*blob, 0).split(kBox, parts));
    EXPECT_EQ(countsOf(parts), (std::vector<int>{0, 1, 0, 0}));
    ASSERT_TRUE(ArcBuffer(*blob, 1).split(kBox, parts));
    EXPECT_EQ(countsOf(parts), (std::vector<int>{1, 1, 0, 0}));
    EXPECT_FALSE(ArcBuffer(*blob, 2).split(kBox, parts));
}

TEST(BufferBounds, ArcBoxHoldsOnlyTheExtremesItPasses) {
    VectorImageProducer producer;
    const int style = producer.addLineStyle(0);
    producer.addArc({12, 10, 0}, {10, 10, 0}, {10, 12, 0}, false, style);  // east to north, counter-clockwise
    producer.addArc({12, 10, 0}, {10, 10, 0}, {10, 12, 0}, true, style);   // the other three quarters
    auto blob = producer.build();
    const BoundingBox quarter = ArcBuffer(*blob, 0).getBBox();
    EXPECT_DOUBLE_EQ(quarter.left, 10.0);
    EXPECT_DOUBLE_EQ(quarter.bottom, 10.0);
    EXPECT_DOUBLE_EQ(quarter.right, 12.0);
    EXPECT_DOUBLE_EQ(quarter.top, 12.0);
    const BoundingBox rest = ArcBuffer(*blob, 1).getBBox();
    EXPECT_DOUBLE_EQ(rest.left, 8.0);
    EXPECT_DOUBLE_EQ(rest.bottom, 8.0);
    EXPECT_DOUBLE_EQ(rest.top, 12.0);
}
