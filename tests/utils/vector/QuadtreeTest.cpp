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

// The first end of every line a buffer draws, in drawing order.
class LineStarts : public IRenderer {
public:
    BoundingBox getViewport() const override { return {-1e9, 1e9, 1e9, -1e9}; }
    void drawPoint(const TCoord3d&, const TPointStyle&) override {}
    void drawPolyline(const TCoord3d* points, int, const TLineStyle&) override {
        starts.push_back({points[0].x, points[0].y});
    }
    void drawText(const TCoord3d&, const CKivStringT&, const TTextStyle&) override {}
    std::vector<std::pair<double, double>> starts;
};

std::vector<std::pair<double, double>> drawnStarts(const IRenderableBuffer* buffer, const VectorBlob& blob) {
    LineStarts renderer;
    Csx::CIdentityCs identity;
    if (buffer != nullptr) buffer->render(TRenderContext{&blob, &identity, &identity, &renderer});
    return renderer.starts;
}

}  // namespace

TEST(QuadtreeSplit, LinesGoWholeToEveryQuadrantTheyPassInTheirOrder) {
    // Against the box 0..100 (centre 50, 50), each line starting at a position of its own.
    VectorImageProducer producer;
    const int pen = producer.addLineStyle(RGB(4, 5, 6));
    producer.addLine({10, 60, 0}, {20, 70, 0}, pen);   // upper left only
    producer.addLine({11, 60, 0}, {70, 61, 0}, pen);   // side by side: upper left and right
    producer.addLine({12, 90, 0}, {95, 20, 0}, pen);   // 0 to 3, crossing y 50 right of the centre: also 1
    producer.addLine({90, 10, 0}, {13, 80, 0}, pen);   // 3 to 0, crossing left of it: also 2
    producer.addLine({14, 10, 0}, {80, 70, 0}, pen);   // 2 to 1, crossing y 50 at x 58: also 3
    producer.addLine({200, 60, 0}, {210, 70, 0}, pen);  // outside the box: nowhere
    producer.addLine({15, 61, 0}, {16, 62, 0}, pen);   // upper left again, after the others
    auto blob = producer.build();
    auto whole = LineBuffer::fromBlob(*blob);
    ASSERT_EQ(whole->getFeatureCount(), 7);

    const BoundingBox box(0, 100, 100, 0);
    std::shared_ptr<IRenderableBuffer> parts[4];
    ASSERT_TRUE(whole->split(box, parts));
    using Starts = std::vector<std::pair<double, double>>;
    EXPECT_EQ(drawnStarts(parts[0].get(), *blob), (Starts{{10, 60}, {11, 60}, {12, 90}, {90, 10}, {15, 61}}));
    EXPECT_EQ(drawnStarts(parts[1].get(), *blob), (Starts{{11, 60}, {12, 90}, {14, 10}}));
    EXPECT_EQ(drawnStarts(parts[2].get(), *blob), (Starts{{90, 10}, {14, 10}}));
    EXPECT_EQ(drawnStarts(parts[3].get(), *blob), (Starts{{12, 90}, {90, 10}, {14, 10}}));
    // Each part's box is that of its own lines, unclipped.
    const BoundingBox& upperRight = parts[1]->getBBox();
    EXPECT_EQ(upperRight.left, 11);
    EXPECT_EQ(upperRight.right, 95);
    EXPECT_EQ(upperRight.bottom, 10);
    EXPECT_EQ(upperRight.top, 90);

    // A part cut again (its lines now a selection of the image's) keeps the same rules.
    std::shared_ptr<IRenderableBuffer> quarters[4];
    ASSERT_TRUE(parts[0]->split(BoundingBox(0, 100, 50, 50), quarters));
    EXPECT_EQ(drawnStarts(quarters[0].get(), *blob), (Starts{{12, 90}, {90, 10}}));
    EXPECT_EQ(drawnStarts(quarters[1].get(), *blob), (Starts{{12, 90}}));
    EXPECT_EQ(drawnStarts(quarters[2].get(), *blob), (Starts{{10, 60}, {11, 60}, {90, 10}, {15, 61}}));
    EXPECT_EQ(drawnStarts(quarters[3].get(), *blob), (Starts{{11, 60}, {12, 90}, {90, 10}}));
}

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
