// The quadtree: when a node is cut and when a cut is undone.
#include "utils/vector/Quadtree.h"

#include <gtest/gtest.h>

#include "utils/vector/VectorImageProducer.h"


namespace {

std::shared_ptr<PointBuffer> pointsOnAGrid(int count, double spacing) {
    std::vector<PointBuffer::Feature> features;
    for (int i = 0; i < count; ++i) {
        features.push_back({(i % 6) * spacing, (i / 6) * spacing, static_cast<std::uint32_t>(i)});
    }
    return std::make_shared<PointBuffer>(std::move(features));
}

QuadtreeNode nodeOver(std::shared_ptr<IRenderableBuffer> buffer) {
    QuadtreeNode node;
    node.insertBuffer(std::move(buffer));
    node.calcBBox();
    return node;
}

// Points in a row plus two lines and an arc, styles for all.
std::shared_ptr<VectorBlob> smallPlan() {
    VectorImageProducer producer;
    const int dot = producer.addPointStyle(RGB(1, 2, 3));
    const int pen = producer.addLineStyle(RGB(4, 5, 6));
    for (int i = 0; i < 10; ++i) producer.addPoint({i * 10.0, 0.0, 0.0}, dot);
    producer.addLine({0, 5, 0}, {90, 5, 0}, pen);               // polyline 0
    producer.addPolyline({{0, -5, 0}, {50, -5, 0}, {50, -20, 0}}, pen);  // polyline 1
    producer.addArc({110, 0, 0}, {100, 0, 0}, {100, 10, 0}, false, pen);  // polyline 2
    return producer.build();
}

}  // namespace

TEST(QuadtreeSplit, ThirtyFeaturesStayInOneLeafAndThirtyOneAreCut) {
    QuadtreeNode thirty = nodeOver(pointsOnAGrid(30, 2.0));
    thirty.rebalance(0);
    EXPECT_TRUE(thirty.isLeaf());

    QuadtreeNode thirtyOne = nodeOver(pointsOnAGrid(31, 2.0));
    thirtyOne.rebalance(0);
    ASSERT_FALSE(thirtyOne.isLeaf());
    EXPECT_EQ(thirtyOne.getNodeFeatureCount(), 0);
    int total = 0;
    for (int q = 0; q < 4; ++q) total += thirtyOne.getChild(q)->getNodeFeatureCount();
    EXPECT_EQ(total, 31);  // points are never duplicated
}

TEST(QuadtreeSplit, OneUnitIsTheSmallestSideThatIsCut) {
    QuadtreeNode unit = nodeOver(pointsOnAGrid(31, 0.2));  // exactly 1.0 by 1.0
    ASSERT_EQ(unit.getWidth(), 1.0);
    ASSERT_EQ(unit.getHeight(), 1.0);
    unit.rebalance(0);
    EXPECT_FALSE(unit.isLeaf());

    QuadtreeNode narrow = nodeOver(pointsOnAGrid(60, 0.9 / 5));
    ASSERT_LT(narrow.getWidth(), 1.0);
    ASSERT_GE(narrow.getHeight(), 1.0);
    narrow.rebalance(0);
    EXPECT_TRUE(narrow.isLeaf());
    EXPECT_FALSE(narrow.split());

    std::vector<PointBuffer::Feature> flat;  // wide enough, but 0.9 high
    for (std::uint32_t i = 0; i < 31; ++i) flat.push_back({i * 2.0, (i % 2) * 0.9, i});
    QuadtreeNode low = nodeOver(std::make_shared<PointBuffer>(std::move(flat)));
    ASSERT_EQ(low.getHeight(), 0.9);
    ASSERT_GE(low.getWidth(), 1.0);
    low.rebalance(0);
    EXPECT_TRUE(low.isLeaf());
}

TEST(QuadtreeSplit, CutThatLeavesAChildAsFullAsItsParentIsUndone) {
    QuadtreeNode node(0.0, 10.0, 10.0, 0.0);  // every point falls in one quadrant
    std::vector<PointBuffer::Feature> crowd;
    for (std::uint32_t i = 0; i < 40; ++i) crowd.push_back({7.0 + i * 0.01, 7.0, i});
    auto buffer = std::make_shared<PointBuffer>(std::move(crowd));
    node.insertBuffer(buffer);
    EXPECT_FALSE(node.split());
    EXPECT_TRUE(node.isLeaf());
    EXPECT_EQ(node.getChild(0), nullptr);
    ASSERT_EQ(node.getBuffers().GetSize(), 1);
    EXPECT_EQ(node.getBuffers()[0], buffer);
}

TEST(QuadtreePick, FindsTheNearestOfTheAskedKindsWithinTolerance) {
    auto blob = smallPlan();
    auto tree = buildQuadtree(*blob);
    Csx::CIdentityCs identity;
    const StakeableEntities both{eStakeablePoint, eStakeableLine};
    TPickResult result;

    TCoord2d at{31.0, 1.0};
    ASSERT_TRUE(tree->pick(at, identity, identity, 2.0, both, result));
    EXPECT_EQ(result.kind, TPickResult::ePoint);
    EXPECT_EQ(result.index, 3);
    EXPECT_EQ(at.x, 30.0);  // snapped to the point

    at = {31.0, 1.0};
    ASSERT_TRUE(tree->pick(at, identity, identity, 10.0, {eStakeableLine}, result));
    EXPECT_EQ(result.kind, TPickResult::eLine);
    EXPECT_EQ(result.index, 0);
    EXPECT_DOUBLE_EQ(result.distance, 4.0);

    at = {100.0, 9.5};
    ASSERT_TRUE(tree->pick(at, identity, identity, 1.0, {eStakeableLine}, result));
    EXPECT_EQ(result.index, 2);  // the arc, as its polyline

    at = {31.0, 1.0};
    EXPECT_FALSE(tree->pick(at, identity, identity, 0.5, both, result));
    EXPECT_FALSE(tree->pick(at, identity, identity, 5.0, {}, result));
}

TEST(QuadtreeBuild, ArcsSpanningEveryQuadrantCannotMultiplyTheTree) {
    // A grid of points that every cut divides, down to the deepest level, plus arcs whose
    // boxes span the whole image, so no cut can ever divide them.
    const auto build = [](int arcs) {
        VectorImageProducer producer;
        const int dot = producer.addPointStyle(RGB(1, 2, 3));
        const int pen = producer.addLineStyle(RGB(4, 5, 6));
        for (int i = 0; i < 64 * 64; ++i) producer.addPoint({(i % 64) * 100.0 / 63, (i / 64) * 100.0 / 63, 0}, dot);
        for (int i = 0; i < arcs; ++i) producer.addArc({100, 50, 0}, {50, 50, 0}, {99.99, 49, 0}, false, pen);
        auto blob = producer.build();
        return std::make_pair(blob, buildQuadtree(*blob));
    };
    const auto [plain, plainTree] = build(0);
    const TQuadtreeStats ordinary = getQuadtreeStats(*plainTree->getRoot());
    EXPECT_EQ(ordinary.depth, 4);  // 16 points a node there: no more cuts
    EXPECT_EQ(ordinary.leaves, 256);
    EXPECT_EQ(ordinary.leafFeatures, 64 * 64);

    const auto [hostile, tree] = build(1000);
    const TQuadtreeStats stats = getQuadtreeStats(*tree->getRoot());
    EXPECT_LE(stats.leafFeatures, QuadtreeNode::kMaxReferencesPerFeature * (64 * 64 + 1000));
    EXPECT_GE(stats.depth, 2);  // still an index, cut where the allowance lasted
}
