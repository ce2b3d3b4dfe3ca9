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

}  // namespace

TEST(BufferSplit, PointsGoToExactlyOneQuadrantAndDividingLinesBelongRightAndUp) {
    EXPECT_EQ(quadrantOf(kBox, 4.9, 5.0), 0);
    EXPECT_EQ(quadrantOf(kBox, 5.0, 5.0), 1);
    EXPECT_EQ(quadrantOf(kBox, 4.9, 4.9), 2);
    EXPECT_EQ(quadrantOf(kBox, 5.0, 4.9), 3);
    PointBuffer points({{1, 9, 0}, {9, 9, 1}, {9, 8, 2}, {5, 5, 3}, {1, 1, 4}});
    std::shared_ptr<IRenderableBuffer> parts[4];
    ASSERT_TRUE(points.split(kBox, parts));
    EXPECT_EQ(countsOf(parts), (std::vector<int>{1, 3, 1, 0}));
    EXPECT_EQ(parts[3], nullptr);
}

TEST(BufferSplit, LinesGoWholeToEveryQuadrantTheyCross) {
    // With diagonal ends the third quadrant is where the segment crosses y = 5; a crossing
    // within 1e-12 of the centre takes the right-hand side.
    const struct {
        double x1, y1, x2, y2;
        std::vector<int> counts;
    } cases[] = {
        {1, 9, 2, 8, {1, 0, 0, 0}},
        {1, 9, 9, 9, {1, 1, 0, 0}},
        {1, 9, 1, 1, {1, 0, 1, 0}},
        {1, 9, 9, 3, {1, 1, 0, 1}},  // crosses at x = 6.33
        {1, 7, 9, 1, {1, 0, 1, 1}},  // crosses at x = 3.67
        {9, 9, 1, 3, {1, 1, 1, 0}},
        {9, 7, 1, 1, {0, 1, 1, 1}},
        {1, 9, 9, 1, {1, 1, 0, 1}},  // through the centre
        {9, 9, 1, 1, {0, 1, 1, 1}},
        {1 - 5e-13, 9, 9 - 5e-13, 1, {1, 1, 0, 1}},
        {9 - 5e-13, 9, 1 - 5e-13, 1, {0, 1, 1, 1}},
        {1 - 2e-12, 9, 9 - 2e-12, 1, {1, 0, 1, 1}},  // left of the centre
        {9 - 2e-12, 9, 1 - 2e-12, 1, {1, 1, 1, 0}},
        {20, 20, 30, 30, {0, 0, 0, 0}},  // outside the box
    };
    for (const auto& c : cases) {
        LineBuffer lines({{c.x1, c.y1, c.x2, c.y2, 0, 0}});
        std::shared_ptr<IRenderableBuffer> parts[4];
        EXPECT_TRUE(lines.split(kBox, parts));
        EXPECT_EQ(countsOf(parts), c.counts) << c.x1 << "," << c.y1 << " - " << c.x2 << "," << c.y2;
    }
}

TEST(BufferSplit, ArcGoesToEachQuadrantItsBoxTouches) {
    VectorImageProducer producer;
    const int style = producer.addLineStyle(0);
    producer.addArc({9, 8, 0}, {8, 8, 0}, {8, 9, 0}, false, style);  // small, in the upper right
    producer.addArc({2, 8, 0}, {5, 8, 0}, {8, 8, 0}, true, style);   // over the top, both upper
    producer.addArc({8, 5, 0}, {5, 5, 0}, {8, 5, 0}, false, style);  // full circle round the centre
    producer.addArc({12, 10, 0}, {10, 10, 0}, {10, 12, 0}, false, style);  // east to north
    producer.addArc({12, 10, 0}, {10, 10, 0}, {10, 12, 0}, true, style);   // the other three quarters
    auto blob = producer.build();
    std::shared_ptr<IRenderableBuffer> parts[4];

    ASSERT_TRUE(ArcBuffer(*blob, 0).split(kBox, parts));
    EXPECT_EQ(countsOf(parts), (std::vector<int>{0, 1, 0, 0}));
    ASSERT_TRUE(ArcBuffer(*blob, 1).split(kBox, parts));
    EXPECT_EQ(countsOf(parts), (std::vector<int>{1, 1, 0, 0}));
    EXPECT_FALSE(ArcBuffer(*blob, 2).split(kBox, parts));

    // The box holds only the extremes the arc passes.
    const BoundingBox quarter = ArcBuffer(*blob, 3).getBBox();
    EXPECT_DOUBLE_EQ(quarter.left, 10.0);
    EXPECT_DOUBLE_EQ(quarter.bottom, 10.0);
    EXPECT_DOUBLE_EQ(quarter.right, 12.0);
    EXPECT_DOUBLE_EQ(quarter.top, 12.0);
    const BoundingBox rest = ArcBuffer(*blob, 4).getBBox();
    EXPECT_DOUBLE_EQ(rest.left, 8.0);
    EXPECT_DOUBLE_EQ(rest.bottom, 8.0);
    EXPECT_DOUBLE_EQ(rest.top, 12.0);
}
